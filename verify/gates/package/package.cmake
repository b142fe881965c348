# One step of the package test; see CMakeLists.txt here for the settings.

separate_arguments(EMULATOR UNIX_COMMAND "${EMULATOR}")
set(prefix "${WORK_DIR}/prefix")
set(headers
  audunittest/audunittest.h audunittest/audunittest_checks.h
  console/audtime.h console/console.h console/eventlog.h
  dsplib/cfft_pow2_conjpair_splitrad_c89_neon.h dsplib/sp_fir_neon.h
  voxloc/unittestGenerator.h voxloc/voxloc.h)

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY OUTPUT_VARIABLE output)
  set(output "${output}" PARENT_SCOPE)
endfunction()

# The talker of locate.c stands at 15 degrees, 4.2 degrees and 5.6 m; ten frames find it within the
# tests' own tolerances.
function(expect_talker program)
  run(${EMULATOR} "${program}")
  if(NOT output MATCHES "^azimuth (1[45]\\.[0-9]) elevation (4\\.[0-9]) range (5\\.[0-9]|6\\.[01])\n$")
    message(FATAL_ERROR "the talker was not found: ${output}")
  endif()
endfunction()

if(STEP STREQUAL "install")
  file(REMOVE_RECURSE "${WORK_DIR}")
  run(${CMAKE_COMMAND} --install "${BUILD_DIR}" --prefix "${prefix}")
  file(GLOB_RECURSE installed RELATIVE "${prefix}/include" "${prefix}/include/*")
  list(SORT installed)
  list(SORT headers)
  if(NOT installed STREQUAL headers)
    message(FATAL_ERROR "public headers are ${installed}; expected ${headers}")
  endif()
elseif(STEP STREQUAL "find_package")
  set(toolchain)
  if(TOOLCHAIN)
    set(toolchain -D "CMAKE_TOOLCHAIN_FILE=${TOOLCHAIN}" -D CMAKE_FIND_ROOT_PATH_MODE_PACKAGE=BOTH)
  endif()
  run(${CMAKE_COMMAND} -S "${SOURCE_DIR}" -B "${WORK_DIR}/consumer" -G "${GENERATOR}"
    -D "CMAKE_PREFIX_PATH=${prefix}" -D "CMAKE_C_COMPILER=${C_COMPILER}"
    -D "CMAKE_C_FLAGS=${C_FLAGS}" ${toolchain})
  run(${CMAKE_COMMAND} --build "${WORK_DIR}/consumer")
  expect_talker("${WORK_DIR}/consumer/locate")
elseif(STEP STREQUAL "pkg_config")
  set(ENV{PKG_CONFIG_PATH} "${prefix}/${LIBDIR}/pkgconfig")
  run(pkg-config --cflags --libs voxloc)
  separate_arguments(flags UNIX_COMMAND "${output}")
  separate_arguments(cflags UNIX_COMMAND "${C_FLAGS}")
  run(${C_COMPILER} ${cflags} -std=c11 "${SOURCE_DIR}/locate.c" ${flags} -o "${WORK_DIR}/locate")
  expect_talker("${WORK_DIR}/locate")
else()
  message(FATAL_ERROR "unknown step ${STEP}")
endif()
