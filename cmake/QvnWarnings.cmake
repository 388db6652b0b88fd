# Warnings for our own code; generated code and third-party headers do not link this target.
add_library(qvn_warnings INTERFACE)
# Where several sources are one unit, that an unnamed namespace lies in an included file is the rule.
target_compile_options(qvn_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
    $<$<AND:$<BOOL:${CMAKE_UNITY_BUILD}>,$<CXX_COMPILER_ID:GNU>>:-Wno-subobject-linkage>
    $<$<BOOL:${QVN_WERROR}>:-Werror>
    $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>)
