# What a user of the libraries finds them by: find_package(voxloc) and pkg-config.
include(CMakePackageConfigHelpers)

function(voxloc_install_package)
  set(packageDir "${CMAKE_INSTALL_LIBDIR}/cmake/voxloc")
  install(EXPORT voxlocTargets NAMESPACE voxloc:: DESTINATION ${packageDir})
  configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/voxlocConfig.cmake.in"
    "${PROJECT_BINARY_DIR}/voxlocConfig.cmake" INSTALL_DESTINATION ${packageDir})
  write_basic_package_version_file("${PROJECT_BINARY_DIR}/voxlocConfigVersion.cmake"
    COMPATIBILITY SameMajorVersion)
  install(FILES
    "${PROJECT_BINARY_DIR}/voxlocConfig.cmake"
    "${PROJECT_BINARY_DIR}/voxlocConfigVersion.cmake"
    "${PROJECT_SOURCE_DIR}/cmake/audunittestDiscoverTests.cmake"
    "${PROJECT_SOURCE_DIR}/cmake/audunittestAddTests.cmake"
    DESTINATION ${packageDir})

  # Relative, so that the installed tree may be moved.
  file(RELATIVE_PATH prefixFromPkgconfig "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
  configure_file("${PROJECT_SOURCE_DIR}/cmake/voxloc.pc.in" "${PROJECT_BINARY_DIR}/voxloc.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/voxloc.pc" DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()
