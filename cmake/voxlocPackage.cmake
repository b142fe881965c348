# What a user of the libraries finds them by: find_package(voxloc) and pkg-config.
include(CMakePackageConfigHelpers)

function(voxloc_install_program target)
  # Beside its libraries wherever the installed tree is moved.
  file(RELATIVE_PATH libraries "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")
  set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN/${libraries}")
  if(VOXLOC_INSTALL)
    install(TARGETS ${target} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  endif()
endfunction()

# voxloc_install_library(<target> <archive>): with its headers and its file for pkg-config.
function(voxloc_install_library target archive)
  if(NOT VOXLOC_INSTALL)
    return()
  endif()
  get_target_property(room ${target} ROOM)
  install(TARGETS ${target} EXPORT voxlocTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    PUBLIC_HEADER DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${room})
  voxloc_install_pkgconfig(${target} ${archive})
endfunction()

# The names of libraries' files for pkg-config: those that are of use by themselves go by their own.
function(voxloc_pkgconfig_names variable)
  set(names)
  foreach(library IN LISTS ARGN)
    if(NOT library MATCHES "^(voxloc|dsplib|audunittest)$")
      string(PREPEND library voxloc_)
    endif()
    list(APPEND names ${library})
  endforeach()
  list(JOIN names " " names)
  set(${variable} "${names}" PARENT_SCOPE)
endfunction()

# One file a library, so that nobody links the test harness to use the transforms. An archive needs
# on the command line what a shared library brings along by itself.
function(voxloc_install_pkgconfig target archive)
  get_target_property(name ${target} EXPORT_NAME)
  get_target_property(linked ${target} ROOMS_LINKED)
  get_target_property(used ${target} ROOMS_USED)
  get_target_property(description ${target} DESCRIPTION)
  set(libraries "-l${archive}")
  set(privateLibraries)
  if(BUILD_SHARED_LIBS)
    set(privateLibraries -lm)
  else()
    string(APPEND libraries " -lm")
    list(APPEND linked ${used})
    set(used)
  endif()
  voxloc_pkgconfig_names(linked ${linked})
  voxloc_pkgconfig_names(used ${used})
  voxloc_pkgconfig_names(file ${name})
  # Relative, so that the installed tree may be moved.
  file(RELATIVE_PATH prefixFromPkgconfig "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
  configure_file("${PROJECT_SOURCE_DIR}/cmake/library.pc.in" "${PROJECT_BINARY_DIR}/${file}.pc"
    @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/${file}.pc" DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()

function(voxloc_install_package)
  if(NOT VOXLOC_INSTALL)
    return()
  endif()
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
    "${PROJECT_SOURCE_DIR}/cmake/audunittestRun.cmake"
    DESTINATION ${packageDir})
endfunction()
