# Configures one folder for the baseline and then for a machine with wider vectors: the second time
# there must be one width, with nothing left of the first.
# cmake -D SOURCE_DIR=... -D FOLDER=... -P reconfigured.cmake

function(configure flags expected)
  execute_process(
    COMMAND "${CMAKE_COMMAND}" -S "${SOURCE_DIR}" -B "${FOLDER}" -G Ninja
      -D "CMAKE_CXX_FLAGS=${flags}" -D VOXLOC_PROGRAM=OFF -D VOXLOC_INSTALL=OFF
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  file(READ "${FOLDER}/build.ninja" rules)
  string(FIND "${rules}" "-mavx512f" found)
  if((expected STREQUAL "several") EQUAL (found EQUAL -1))
    message(FATAL_ERROR "configured with '${flags}': expected ${expected} widths")
  endif()
endfunction()

file(REMOVE_RECURSE "${FOLDER}")
configure("" several)
configure("-march=x86-64-v3" one)
configure("" several)
file(REMOVE_RECURSE "${FOLDER}")
