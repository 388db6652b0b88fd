include(CMakePackageConfigHelpers)

install(TARGETS vehicleclient EXPORT vehicleclientTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/vehicle DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT vehicleclientTargets NAMESPACE qvn:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vehicleclient)

configure_package_config_file(cmake/vehicleclientConfig.cmake.in
    "${CMAKE_CURRENT_BINARY_DIR}/vehicleclientConfig.cmake"
    INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vehicleclient)
write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/vehicleclientConfigVersion.cmake"
    COMPATIBILITY SameMajorVersion)
install(FILES
    "${CMAKE_CURRENT_BINARY_DIR}/vehicleclientConfig.cmake"
    "${CMAKE_CURRENT_BINARY_DIR}/vehicleclientConfigVersion.cmake"
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vehicleclient)
