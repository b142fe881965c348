# Programs on the audunittest harness as tests of ctest.

# audunittest_discover_tests(<target>)
#
# Registers each test of <target> with ctest under its own name. The names are asked for when ctest
# starts, so nothing is run while building; a target with a CROSSCOMPILING_EMULATOR is listed and
# run through it.
#
# A test passes if and only if the program, running it by name, reports its success and exits with 0;
# a test that ends the program before has failed. A program that cannot list its tests, or lists
# none, stops ctest with an error; a program that is not built is the failing test
# <target>_NOT_BUILT. With a generator of several configurations ctest must be told which (-C),
# otherwise the failing test is <target>_NEEDS_A_CONFIGURATION.
function(audunittest_discover_tests target)
  set(script "${CMAKE_CURRENT_BINARY_DIR}/${target}_tests")
  file(GENERATE OUTPUT "${script}-$<CONFIG>.cmake" CONTENT
"set(target [==[${target}]==])
set(program [==[$<TARGET_FILE:${target}>]==])
set(emulator [==[$<TARGET_PROPERTY:${target},CROSSCOMPILING_EMULATOR>]==])
set(cmake [==[${CMAKE_COMMAND}]==])
set(runner [==[${CMAKE_CURRENT_FUNCTION_LIST_DIR}/audunittestRun.cmake]==])
include([==[${CMAKE_CURRENT_FUNCTION_LIST_DIR}/audunittestAddTests.cmake]==])
")

  # With several configurations, the one that ctest was called for.
  get_property(several GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
  if(several)
    file(WRITE "${script}.cmake"
"set(script [==[${script}]==])
if(EXISTS \"\${script}-\${CTEST_CONFIGURATION_TYPE}.cmake\")
  include(\"\${script}-\${CTEST_CONFIGURATION_TYPE}.cmake\")
else()
  add_test([==[${target}_NEEDS_A_CONFIGURATION]==] [==[${target}_NEEDS_A_CONFIGURATION]==])
endif()
")
  else()
    set(script "${script}-${CMAKE_BUILD_TYPE}")
  endif()
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${script}.cmake")
endfunction()

# audunittest_add_test(<name> <target> [<search>])
#
# Registers one test of ctest that runs, in one process, every test of <target> whose name contains
# <search> in any case, or every test. It passes if and only if the program reports success in its
# summary and exits with 0. Unlike the program's own exit status it demands a match: a run of no test
# fails.
function(audunittest_add_test name target)
  add_test(NAME "${name}"
    COMMAND "${CMAKE_COMMAND}" -D "PROGRAM=$<TARGET_FILE:${target}>"
      -D "EMULATOR=$<TARGET_PROPERTY:${target},CROSSCOMPILING_EMULATOR>"
      -P "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/audunittestRun.cmake" --runall ${ARGN})
endfunction()
