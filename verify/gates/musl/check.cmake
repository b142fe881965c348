# Builds project/ and the first example on musl and runs both; CMakeLists.txt here has the settings.

find_program(MUSL_GCC musl-gcc)
if(NOT MUSL_GCC)
  message("skipped: musl-gcc is missing (Debian: package musl-tools)")
  return()
endif()

include("${TREE}/verify/gates/package/examples.cmake")

function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE result OUTPUT_VARIABLE text ERROR_VARIABLE text)
  set(status "${result}" PARENT_SCOPE)
  set(output "${text}" PARENT_SCOPE)
endfunction()

# expect(<status> <regular expression> <command>...): fails unless the command ends so and prints so.
function(expect wanted pattern)
  run(${ARGN})
  if(NOT "${status}" STREQUAL "${wanted}" OR NOT "${output}" MATCHES "${pattern}")
    message(FATAL_ERROR "${ARGN}\nended with ${status}, wanted ${wanted}; printed:\n${output}")
  endif()
endfunction()

expect(0 "" "${CMAKE_COMMAND}" -S "${SOURCE}" -B "${BUILD}" -G "${GENERATOR}" -D "TREE=${TREE}"
  -D "CMAKE_TOOLCHAIN_FILE=${SOURCE}/toolchain.cmake" -D CMAKE_BUILD_TYPE=Release)
expect(0 "" "${CMAKE_COMMAND}" --build "${BUILD}" --target on_musl locate)
read_examples("${TREE}/examples")
string(REGEX REPLACE "\\$$" "\n$" located "${locate_output}")
expect(0 "${located}" "${BUILD}/locate")
expect(0 "Test success: 1 test with 1 assertion" "${BUILD}/on_musl" --runall)
# musl's own words for a failed assertion.
expect("Subprocess aborted"
  "^Assertion failed: context \\(platform/audio/audtest/audunittest: audunittest_set_context: [0-9]+\\)\n$"
  "${BUILD}/on_musl" --break)
