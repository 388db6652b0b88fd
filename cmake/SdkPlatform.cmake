# The platform libraries of an SDK, under the names that the host platform's targets have:
#   QVN_SDK_ROOT/include/{common_base,psis,gpioport,lgklog}/ and QVN_SDK_ROOT/lib/lib{common_base,...}.so
if(NOT QVN_SDK_ROOT)
    message(FATAL_ERROR "QVN_PLATFORM=sdk needs -DQVN_SDK_ROOT=DIR, the folder that holds the SDK's include/ and lib/")
endif()

foreach(name IN ITEMS common_base psis_client gpioport_client lgklog)
    find_library(QVN_SDK_${name} ${name} PATHS "${QVN_SDK_ROOT}/lib" NO_DEFAULT_PATH NO_CACHE REQUIRED)
    add_library(qvn::${name} SHARED IMPORTED GLOBAL)
    set_target_properties(qvn::${name} PROPERTIES
        IMPORTED_LOCATION "${QVN_SDK_${name}}"
        INTERFACE_INCLUDE_DIRECTORIES "${QVN_SDK_ROOT}/include"
        INTERFACE_SYSTEM_INCLUDE_DIRECTORIES "${QVN_SDK_ROOT}/include")
endforeach()

# FDBus's headers ask on Linux for the system's name in this form.
set_property(TARGET qvn::common_base PROPERTY
    INTERFACE_COMPILE_DEFINITIONS "$<$<PLATFORM_ID:Linux>:__LINUX__>")

# The SDK's libraries may need each other; let the linker look beside them.
add_link_options("-Wl,-rpath-link,${QVN_SDK_ROOT}/lib")
