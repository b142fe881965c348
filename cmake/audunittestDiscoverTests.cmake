# audunittest_discover_tests(<target>)
#
# Registers each test of <target>, a program on the audunittest harness, with ctest under its own
# name. The names are asked for when ctest starts, so nothing is run while building; a target with a
# CROSSCOMPILING_EMULATOR is listed and run through it.
#
# A test passes if and only if the program exits with 0 when it runs that test by name. A program
# that cannot list its tests, or lists none, stops ctest with an error; a program that is not built
# is the failing test <target>_NOT_BUILT.
function(audunittest_discover_tests target)
  set(script "${CMAKE_CURRENT_BINARY_DIR}/${target}_tests")
  file(GENERATE OUTPUT "${script}-$<CONFIG>.cmake" CONTENT
"set(target [==[${target}]==])
set(program [==[$<TARGET_FILE:${target}>]==])
set(emulator [==[$<TARGET_PROPERTY:${target},CROSSCOMPILING_EMULATOR>]==])
include([==[${CMAKE_CURRENT_FUNCTION_LIST_DIR}/audunittestAddTests.cmake]==])
")

  # With several configurations, the one that ctest was called for.
  get_property(several GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
  if(several)
    file(WRITE "${script}.cmake" "include([==[${script}-]==]\${CTEST_CONFIGURATION_TYPE}.cmake)\n")
  else()
    set(script "${script}-${CMAKE_BUILD_TYPE}")
  endif()
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${script}.cmake")
endfunction()
