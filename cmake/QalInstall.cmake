# Headers, library, a CMake package and a pkg-config file: consumers write
#   find_package(QalLib CONFIG REQUIRED)
#   target_link_libraries(app PRIVATE QalLib::qal)
# or compile with `pkg-config --cflags --libs qal`.
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

# qal.pc beside the CMake package. It reaches the prefix from its own directory, which
# needs the install directories relative to the prefix.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}" OR IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
  message(FATAL_ERROR "qal.pc needs CMAKE_INSTALL_LIBDIR and CMAKE_INSTALL_INCLUDEDIR relative to the prefix")
endif()
file(RELATIVE_PATH qal_pc_to_prefix "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" qal_pc_to_prefix "${qal_pc_to_prefix}")
set(qal_pc_cflags "")
if(BUILD_SHARED_LIBS)
  set(qal_pc_cflags " -DQAL_SHARED_LIBRARY")  # as the CMake target tells its consumers
endif()
configure_file("${PROJECT_SOURCE_DIR}/cmake/qal.pc.in" "${PROJECT_BINARY_DIR}/qal.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/qal.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
