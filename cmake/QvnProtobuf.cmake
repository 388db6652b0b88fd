# Sets QVN_PROTOBUF_LIBRARY. The schema needs no more than the lite runtime, but an SDK's wrapper of protobuf messages may
# refer to the full one. Both in one process would be two copies of the same symbols, so everything links the same.
set(QVN_PROTOBUF auto CACHE STRING "Protobuf runtime: 'lite', 'full', or 'auto', the smaller one that links")
set_property(CACHE QVN_PROTOBUF PROPERTY STRINGS auto lite full)

set(runtime "${QVN_PROTOBUF}")
set(reason "chosen by QVN_PROTOBUF")
if(runtime STREQUAL "auto" AND QVN_PLATFORM STREQUAL "host")
    set(runtime lite)
    set(reason "the host platform needs no more")
elseif(runtime STREQUAL "auto")
    foreach(candidate IN ITEMS libprotobuf-lite libprotobuf)
        string(MAKE_C_IDENTIFIER "QVN_LINKS_${candidate}" links)
        try_compile(${links} "${CMAKE_CURRENT_BINARY_DIR}/probe-${candidate}"
            SOURCES "${CMAKE_CURRENT_LIST_DIR}/ProtobufProbe.cpp"
            LINK_OPTIONS "-Wl,-rpath-link,${QVN_SDK_ROOT}/lib"
            LINK_LIBRARIES qvn::common_base protobuf::${candidate} Threads::Threads
            OUTPUT_VARIABLE probe_output
            CXX_STANDARD 14 CXX_STANDARD_REQUIRED ON)
        if(${links})
            break()
        endif()
    endforeach()
    if(QVN_LINKS_libprotobuf_lite)
        set(runtime lite)
        set(reason "the SDK's CFdbProtoMsgBuilder.h links with it")
    elseif(QVN_LINKS_libprotobuf)
        set(runtime full)
        set(reason "the SDK's CFdbProtoMsgBuilder.h does not link with the lite one")
    else()
        message(FATAL_ERROR "No program that includes the SDK's CFdbProtoMsgBuilder.h links, neither with the lite nor "
            "with the full protobuf runtime. The last attempt:\n${probe_output}")
    endif()
endif()

if(runtime STREQUAL "lite")
    set(QVN_PROTOBUF_LIBRARY protobuf::libprotobuf-lite)
elseif(runtime STREQUAL "full")
    set(QVN_PROTOBUF_LIBRARY protobuf::libprotobuf)
else()
    message(FATAL_ERROR "QVN_PROTOBUF is '${QVN_PROTOBUF}'; expected 'auto', 'lite' or 'full'")
endif()
message(STATUS "Protobuf runtime: ${runtime} (${reason})")
