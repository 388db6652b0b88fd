# The installed tree, in parts of which each has a Debian package and, where it has targets, is a component of the CMake
# package. With QVN_INSTALL off nothing is installed, and both functions do nothing.
include(CMakePackageConfigHelpers)

set(QVN_CMAKE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/vehicleclient")
set(QVN_DATA_DIR "${CMAKE_INSTALL_DATADIR}/vehicleclient")

# qvn_install_targets(component TARGETS target... [HEADERS directory...] [DEV part])
# Headers, the link without a version and the CMake file go with the part DEV, if there is one.
function(qvn_install_targets component)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "DEV" "TARGETS;HEADERS")
    if(NOT QVN_INSTALL)
        return()
    endif()
    set_property(GLOBAL APPEND PROPERTY QVN_COMPONENTS ${component})
    set(dev ${component})
    if(arg_DEV)
        set(dev ${arg_DEV})
    endif()
    install(TARGETS ${arg_TARGETS} EXPORT vehicleclient-${component}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT ${component}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${component} NAMELINK_COMPONENT ${dev})
    foreach(directory IN LISTS arg_HEADERS)
        install(DIRECTORY "${directory}" DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT ${dev})
    endforeach()
endfunction()

# qvn_install_data(part destination file-or-directory...)
function(qvn_install_data part destination)
    if(NOT QVN_INSTALL)
        return()
    endif()
    foreach(source IN LISTS ARGN)
        if(IS_DIRECTORY "${PROJECT_SOURCE_DIR}/${source}")
            install(DIRECTORY "${PROJECT_SOURCE_DIR}/${source}" DESTINATION ${destination} COMPONENT ${part})
        else()
            install(FILES "${PROJECT_SOURCE_DIR}/${source}" DESTINATION ${destination} COMPONENT ${part})
        endif()
    endforeach()
endfunction()

# Called last: the CMake package, the pkg-config file, and the files that belong to no target.
function(qvn_install_package)
    if(NOT QVN_INSTALL)
        return()
    endif()
    get_property(components GLOBAL PROPERTY QVN_COMPONENTS)
    list(REMOVE_DUPLICATES components)
    foreach(component IN LISTS components)
        set(part ${component})
        if(component STREQUAL "client")
            set(part client-dev)
        endif()
        install(EXPORT vehicleclient-${component} NAMESPACE qvn:: DESTINATION ${QVN_CMAKE_DIR} COMPONENT ${part})
    endforeach()

    set(binary_dir "${PROJECT_BINARY_DIR}/package-config")
    configure_package_config_file(cmake/vehicleclientConfig.cmake.in "${binary_dir}/vehicleclientConfig.cmake"
        INSTALL_DESTINATION ${QVN_CMAKE_DIR})
    write_basic_package_version_file("${binary_dir}/vehicleclientConfigVersion.cmake"
        COMPATIBILITY SameMajorVersion)
    install(FILES "${binary_dir}/vehicleclientConfig.cmake" "${binary_dir}/vehicleclientConfigVersion.cmake"
        DESTINATION ${QVN_CMAKE_DIR} COMPONENT client-dev)

    # The file tells its prefix from where it lies, so that the tree may be moved.
    file(RELATIVE_PATH QVN_PC_TO_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
    configure_file(cmake/vehicleclient.pc.in "${binary_dir}/vehicleclient.pc" @ONLY)
    install(FILES "${binary_dir}/vehicleclient.pc" DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT client-dev)

    qvn_install_data(client-dev ${QVN_DATA_DIR}/schema common/ipc_common_soc/common.base.canservice.proto)
    qvn_install_data(client-dev ${QVN_DATA_DIR}/examples/application examples/main.cpp
        examples/client.cpp examples/components.cpp examples/CMakeLists.txt)
endfunction()
