include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS tesmo_hbbtv EXPORT tesmo_hbbtvTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/tesmo_hbbtv DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT tesmo_hbbtvTargets NAMESPACE tesmo_hbbtv::
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/tesmo_hbbtv)

configure_package_config_file(cmake/tesmo_hbbtvConfig.cmake.in
    ${PROJECT_BINARY_DIR}/tesmo_hbbtvConfig.cmake
    INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/tesmo_hbbtv)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tesmo_hbbtvConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tesmo_hbbtvConfig.cmake ${PROJECT_BINARY_DIR}/tesmo_hbbtvConfigVersion.cmake
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/tesmo_hbbtv)

file(RELATIVE_PATH TESMO_PC_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" TESMO_PC_TO_PREFIX "${TESMO_PC_TO_PREFIX}")
configure_file(cmake/tesmo_hbbtv.pc.in ${PROJECT_BINARY_DIR}/tesmo_hbbtv.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tesmo_hbbtv.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
