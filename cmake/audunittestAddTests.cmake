# Run by ctest when it starts: adds each test that `program` lists, see audunittestDiscoverTests.
# In: target, program, emulator (a list, may be empty), cmake and runner (audunittestRun.cmake).
cmake_minimum_required(VERSION 3.25)

# Splits what --list prints, a name a line and then the count, into add_test calls.
function(audunittest_add_listed_tests listing)
  if(NOT listing MATCHES "(^|\n)(Found ([0-9]+) tests?\\.\n)$")
    message(FATAL_ERROR "${target} does not list its tests. --list printed:\n${listing}")
  endif()
  set(announced "${CMAKE_MATCH_3}")
  if(announced EQUAL 0)
    message(FATAL_ERROR "${target} has no tests.")
  endif()
  string(LENGTH "${CMAKE_MATCH_2}" count_length)
  string(LENGTH "${listing}" length)
  math(EXPR length "${length} - ${count_length}")
  string(SUBSTRING "${listing}" 0 ${length} names)

  # Not a CMake list at any time: names may hold semicolons and brackets.
  set(found 0)
  while(NOT names STREQUAL "")
    string(FIND "${names}" "\n" name_length)
    string(SUBSTRING "${names}" 0 ${name_length} name)
    math(EXPR next "${name_length} + 1")
    string(SUBSTRING "${names}" ${next} -1 names)
    if(DEFINED "seen ${name}")
      message(FATAL_ERROR "${target} has two tests named ${name}: only one can run by name.")
    endif()
    set("seen ${name}" TRUE)
    add_test("${name}" "${cmake}" -D "PROGRAM=${program}" -D "EMULATOR=${emulator}"
      -P "${runner}" --run "${name}")
    math(EXPR found "${found} + 1")
  endwhile()
  if(NOT found EQUAL announced)
    message(FATAL_ERROR "${target} announces ${announced} tests and lists ${found}.")
  endif()
endfunction()

if(EXISTS "${program}")
  execute_process(COMMAND ${emulator} "${program}" --list
    RESULT_VARIABLE status
    OUTPUT_QUIET
    ERROR_VARIABLE listing)
  if(NOT status STREQUAL "0")
    message(FATAL_ERROR "${target} --list ended with ${status}:\n${listing}")
  endif()
  audunittest_add_listed_tests("${listing}")
else()
  add_test("${target}_NOT_BUILT" "${target}_NOT_BUILT")
endif()
