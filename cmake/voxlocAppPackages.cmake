# The options VOXLOC_APP, the program `voxloc`, which needs some packages (on where they are), and
# VOXLOC_APP_EXTRAS, what it has for desks alone.

option(VOXLOC_APP_EXTRAS
  "Give voxloc report pages, runs of many files, merge and sweep; a board does without" ON)

# Sets `result` to the missing ones, by their names in Debian.
function(voxloc_missing_app_packages result)
  set(missing)
  find_package(CLI11 QUIET GLOBAL)
  find_package(nlohmann_json QUIET GLOBAL)
  find_package(PkgConfig QUIET)
  if(NOT CLI11_FOUND)
    list(APPEND missing libcli11-dev)
  endif()
  if(NOT nlohmann_json_FOUND)
    list(APPEND missing nlohmann-json3-dev)
  endif()
  set(modules SNDFILE sndfile libsndfile1-dev SOXR soxr libsoxr-dev ALSA alsa libasound2-dev
    HTTPLIB cpp-httplib libcpp-httplib-dev)
  if(NOT PkgConfig_FOUND)
    list(APPEND missing pkg-config)
    set(modules)
  endif()
  while(modules)
    list(POP_FRONT modules prefix module package)
    pkg_check_modules(${prefix} QUIET IMPORTED_TARGET GLOBAL ${module})
    if(NOT ${prefix}_FOUND)
      list(APPEND missing ${package})
    endif()
  endwhile()
  set(${result} "${missing}" PARENT_SCOPE)
endfunction()

# A parent project does not get the program unless it asks. Nor does a cross build, unless
# PKG_CONFIG_LIBDIR says where the target's packages are: pkg-config finds the host's.
set(voxlocAppDefault OFF)
if(NOT PROJECT_IS_TOP_LEVEL)
elseif(NOT CMAKE_CROSSCOMPILING OR DEFINED ENV{PKG_CONFIG_LIBDIR})
  voxloc_missing_app_packages(voxlocAppMissing)
  if(NOT voxlocAppMissing)
    set(voxlocAppDefault ON)
  endif()
endif()
option(VOXLOC_APP "Build the program voxloc, which needs some packages" ${voxlocAppDefault})
if(VOXLOC_APP AND NOT voxlocAppDefault)
  voxloc_missing_app_packages(voxlocAppMissing)
  if(voxlocAppMissing)
    list(JOIN voxlocAppMissing " " voxlocAppMissing)
    message(FATAL_ERROR "VOXLOC_APP needs these packages (Debian's names): ${voxlocAppMissing}")
  endif()
endif()
