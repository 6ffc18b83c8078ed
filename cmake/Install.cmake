# What `cmake --install` puts where, and how others find it.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/TNV_SampleBenchNative)
set(data_dir ${CMAKE_INSTALL_DATADIR}/TNV_SampleBenchNative)

install(TARGETS TNV_SampleBenchNative EXPORT TNV_SampleBenchNativeTargets
  LIBRARY COMPONENT library NAMELINK_COMPONENT development)
install(DIRECTORY include/TNV_SampleBenchNative DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT development)
install(DIRECTORY platforms augments DESTINATION ${data_dir} COMPONENT program
  PATTERN .gitkeep EXCLUDE)
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)

install(EXPORT TNV_SampleBenchNativeTargets NAMESPACE TNV:: DESTINATION ${package_dir}
  COMPONENT development)
configure_package_config_file(cmake/TNV_SampleBenchNativeConfig.cmake.in
  ${PROJECT_BINARY_DIR}/TNV_SampleBenchNativeConfig.cmake INSTALL_DESTINATION ${package_dir} PATH_VARS data_dir)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/TNV_SampleBenchNativeConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/TNV_SampleBenchNativeConfig.cmake
  ${PROJECT_BINARY_DIR}/TNV_SampleBenchNativeConfigVersion.cmake
  DESTINATION ${package_dir} COMPONENT development)

file(RELATIVE_PATH pc_prefix
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/TNV_SampleBenchNative.pc.in ${PROJECT_BINARY_DIR}/TNV_SampleBenchNative.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/TNV_SampleBenchNative.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  COMPONENT development)
