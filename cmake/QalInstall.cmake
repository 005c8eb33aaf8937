# Headers, library and a CMake package: consumers write
#   find_package(QalLib CONFIG REQUIRED)
#   target_link_libraries(app PRIVATE QalLib::qal)
include(CMakePackageConfigHelpers)

set(qal_config_dir "${CMAKE_INSTALL_LIBDIR}/cmake/QalLib")

install(TARGETS qal EXPORT QalLibTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/qal" "${PROJECT_BINARY_DIR}/include/qal"
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT QalLibTargets NAMESPACE QalLib:: DESTINATION ${qal_config_dir})

configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/QalLibConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/QalLibConfig.cmake"
  INSTALL_DESTINATION ${qal_config_dir})
write_basic_package_version_file("${PROJECT_BINARY_DIR}/QalLibConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/QalLibConfig.cmake" "${PROJECT_BINARY_DIR}/QalLibConfigVersion.cmake"
  DESTINATION ${qal_config_dir})
