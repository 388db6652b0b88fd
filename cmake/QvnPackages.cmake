# Debian packages, one for each part of the installed tree; scripts/package builds them.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vehicleclient)
set(CPACK_PACKAGE_CONTACT "Developers of vehicleclient <developers@vehicleclient.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has one of its own
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_COMPONENTS_ALL)

# Descriptions have lines of a terminal's width.
set(about "Applications for the camera and parking functions of a car's head unit see\n\
the vehicle through vehicleclient: they subscribe one callback to a list of\n\
properties, read last known values and set properties.")
set(same "(= ${PROJECT_VERSION})")

execute_process(COMMAND gzip -9nc "${PROJECT_SOURCE_DIR}/packaging/changelog"
    OUTPUT_FILE "${PROJECT_BINARY_DIR}/changelog.gz" COMMAND_ERROR_IS_FATAL ANY)

# qvn_package(part name section summary text [DEPENDS depends] [LIBRARY])
function(qvn_package part name section summary text)
    cmake_parse_arguments(PARSE_ARGV 5 arg "LIBRARY" "DEPENDS" "")
    string(TOUPPER "${part}" PART)
    set(prefix CPACK_DEBIAN_${PART}_PACKAGE)
    set(${prefix}_NAME ${name} PARENT_SCOPE)
    set(${prefix}_SECTION ${section} PARENT_SCOPE)
    set(${prefix}_DEPENDS "${arg_DEPENDS}" PARENT_SCOPE)
    set(CPACK_COMPONENT_${PART}_DESCRIPTION "${summary}\n${about}\n.\n${text}" PARENT_SCOPE)
    if(arg_LIBRARY)
        set(CPACK_DEBIAN_${PART}_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/packaging/triggers" PARENT_SCOPE)
    endif()
    set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} ${part} PARENT_SCOPE)
    install(FILES packaging/copyright "${PROJECT_BINARY_DIR}/changelog.gz"
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${part})
endfunction()

qvn_package(client libvehicleclient1 libs "vehicle properties for camera and parking applications"
    "This package holds the library that applications load." LIBRARY DEPENDS "vehicleclient-host-platform ${same}")
qvn_package(client-dev libvehicleclient-dev libdevel "vehicle properties: headers"
    "This package holds what is needed to build applications."
    DEPENDS "libvehicleclient1 ${same}, vehicleclient-host-platform ${same}")
qvn_package(host vehicleclient-host-platform libs "vehicle properties: the platform libraries on a Linux host"
    "This package holds the libraries that stand for those of the head unit: bus,\npersistency, GPIO lines, log." LIBRARY)
if(QVN_BUILD_TOOLS)
    qvn_package(tools vehicleclient-tools utils "vehicle properties: a CAN service for the desk, and a command line"
        "This package holds can-service-sim, which plays the vehicle, and vehiclectl,\nwhich reads, watches and sets properties."
        DEPENDS "libvehicleclient1 ${same}, vehicleclient-host-platform ${same}")
endif()
if(QVN_BUILD_TESTING_LIBRARY)
    qvn_package(testing libvehicleclient-testing-dev libdevel "vehicle properties: tests of applications without a car"
        "This package holds a vehicle for unit tests, in the test's own process." LIBRARY
        DEPENDS "libvehicleclient-dev ${same}")
endif()

include(CPack)
