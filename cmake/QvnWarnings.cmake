# Warnings for our own code; generated code and third-party headers do not link this target.
add_library(qvn_warnings INTERFACE)
target_compile_options(qvn_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
    $<$<BOOL:${QVN_WERROR}>:-Werror>
    $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>)
