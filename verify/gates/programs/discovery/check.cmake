# One case of how ctest sees a program: configures project/ around PROGRAM, runs ctest, checks.
cmake_minimum_required(VERSION 3.25)

function(configure)
  file(REMOVE_RECURSE "${BUILD}")
  execute_process(
    COMMAND "${CMAKE_COMMAND}" -S "${PROJECT}" -B "${BUILD}" -G "${GENERATOR}"
      "-DCMAKE_MAKE_PROGRAM=${MAKE_PROGRAM}" "-DMODULES=${MODULES}"
      "-DPROGRAM=${PROGRAM}" "-DEMULATOR=${EMULATOR}" ${ARGV}
    OUTPUT_VARIABLE output ERROR_VARIABLE output
    COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# Runs ctest with the arguments given; sets status and output for the caller.
function(ctest)
  execute_process(
    COMMAND "${CMAKE_CTEST_COMMAND}" --test-dir "${BUILD}" --no-tests=error ${configuration} ${ARGV}
    RESULT_VARIABLE result OUTPUT_VARIABLE text ERROR_VARIABLE text)
  set(status "${result}" PARENT_SCOPE)
  set(output "${text}" PARENT_SCOPE)
endfunction()

function(expect_success)
  if(NOT status STREQUAL "0")
    message(SEND_ERROR "ctest ended with ${status}, not with success:\n${output}")
  endif()
endfunction()

function(expect_failure)
  if(status STREQUAL "0")
    message(SEND_ERROR "ctest ended with success:\n${output}")
  endif()
endfunction()

function(expect_text)
  foreach(text IN LISTS ARGV)
    string(FIND "${output}" "${text}" place)
    if(place EQUAL -1)
      message(SEND_ERROR "'${text}' is missing in:\n${output}")
    endif()
  endforeach()
endfunction()

function(expect_no_text text)
  string(FIND "${output}" "${text}" place)
  if(NOT place EQUAL -1)
    message(SEND_ERROR "'${text}' is in:\n${output}")
  endif()
endfunction()

# ctest must see the trouble however it is called, also where the search selects something else.
function(expect_trouble text)
  ctest(-j2)
  expect_failure()
  string(REGEX REPLACE "[ \n]+" " " output "${output}")  # messages are wrapped
  expect_text("${text}")
  ctest(-R passes)
  expect_failure()
  ctest(--output-junit "${BUILD}/report.xml")
  expect_failure()
endfunction()

function(names_each_test)
  ctest(-N)
  expect_success()
  expect_text(
    "Test #1: TEST__sample__upper_case\n"
    "Test #2: test__sample__asserts_nothing\n"
    "Test #3: test__sample__fails_twice\n"
    "Test #4: test__sample__passes\n"
    "Total Tests: 4\n")
endfunction()

function(takes_the_exit_status_as_result)
  ctest(-j2)
  expect_failure()
  expect_text("75% tests passed, 1 tests failed out of 4" "test__sample__fails_twice (Failed)")
  ctest(-E fails -j2)
  expect_success()
  expect_text("100% tests passed, 0 tests failed out of 3")
endfunction()

function(selects_by_name)
  ctest(-R asserts)
  expect_success()
  expect_text("100% tests passed, 0 tests failed out of 1")
  ctest(-R passes --verbose)
  expect_text("Running test__sample__passes... Success")
  expect_no_text("Test success")  # the summary of a search: a test is run by its name
  ctest(-R fails)
  expect_failure()
  expect_text("0% tests passed, 1 tests failed out of 1")
  ctest(-R "no such test")
  expect_failure()
endfunction()

function(writes_junit)
  ctest(--output-junit "${BUILD}/report.xml")
  file(READ "${BUILD}/report.xml" output)
  expect_text(
    "tests=\"4\"" "failures=\"1\""
    "<testcase name=\"test__sample__passes\""
    "Failed: sample/tests:6 in test__sample__fails_twice: 0 != 3")
endfunction()

function(goes_through_the_emulator)
  ctest(-R "emulated|passes" -j2)
  expect_success()
  expect_text("100% tests passed, 0 tests failed out of 2")
endfunction()

function(reports_an_emulator_that_fails)
  expect_trouble("program --list ended with 1")
endfunction()

function(reports_a_program_that_is_not_built)
  ctest(-j2)
  expect_failure()
  expect_text("program_NOT_BUILT (Not Run)")
endfunction()

function(reports_a_program_without_tests)
  expect_trouble("program has no tests.")
endfunction()

function(reports_a_listing_that_does_not_add_up)
  expect_trouble("program announces 2 tests and lists 1.")
endfunction()

function(reports_equal_names)
  expect_trouble("program has two tests named passes")
endfunction()

function(takes_any_characters_in_names)
  ctest(-N)
  expect_text("Total Tests: 7\n")
  ctest(-j2)
  expect_success()
  expect_text("100% tests passed, 0 tests failed out of 7")
endfunction()

# Of three runs - of every test, of one that passes and of none - only the second succeeds.
function(demands_a_match_of_one_run)
  configure(-D ONE_RUN=ON)
  ctest()
  expect_text("Test #1: everything" "Test #2: matching" "Test #3: nothing"
    "33% tests passed, 2 tests failed out of 3")
  ctest(-R matching --verbose)
  expect_success()
  expect_text("Test success: 1 test with 0 assertions")
  ctest(-R nothing --output-on-failure)
  expect_text("the program ended before its tests did, or ran none")
endfunction()

# Six leave, reset or run others; the other two do what a test may do. The same in one run, where
# the first that leaves is the last that runs.
function(fails_tests_that_end_their_run)
  ctest(-j2)
  expect_text("25% tests passed, 6 tests failed out of 8" "bad_exit (Failed)"
    "bad_exit_without_handlers (Failed)" "bad_exit_within (Failed)" "bad_jump (Failed)"
    "bad_reset (Failed)" "bad_run_within (Failed)")
  ctest(-R bad_r --verbose)
  expect_no_text("Running bad_reset... Success")
  expect_text("0% tests passed, 2 tests failed out of 2")
  foreach(search IN ITEMS bad_exit bad_jump bad_reset bad_run_within)
    configure(-D ONE_RUN=ON -D "MATCHING=${search}")
    ctest(-R matching)
    expect_failure()
  endforeach()
  configure(-D ONE_RUN=ON -D MATCHING=s_within)
  ctest(-R matching)
  expect_success()
endfunction()

function(works_with_several_configurations)
  if(NOT MAKE_PROGRAM MATCHES "ninja")
    message("skipped: the build does not use ninja, whose multi-config generator this takes")
    return()
  endif()
  set(GENERATOR "Ninja Multi-Config")
  configure()
  set(configuration -C Release)
  names_each_test()
  takes_the_exit_status_as_result()
  foreach(configuration IN ITEMS "" "-C;NoSuch")
    ctest(-j2)
    expect_failure()
    expect_text("0% tests passed, 1 tests failed out of 1" "program_NEEDS_A_CONFIGURATION")
  endforeach()
endfunction()

function(comes_with_the_package)
  execute_process(COMMAND "${CMAKE_COMMAND}" --install "${TREE}" --prefix "${BUILD}-prefix"
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  configure(-D "PACKAGE=${BUILD}-prefix")
  names_each_test()
  takes_the_exit_status_as_result()
endfunction()

if(CASE STREQUAL "goes_through_the_emulator")
  list(PREPEND EMULATOR "${CMAKE_COMMAND}" -E env SAMPLE_EMULATED=yes)
elseif(CASE STREQUAL "reports_an_emulator_that_fails")
  set(EMULATOR "${CMAKE_COMMAND}" -E false)
elseif(CASE STREQUAL "reports_a_program_that_is_not_built")
  string(APPEND PROGRAM "_that_is_not_there")
endif()
configure()
cmake_language(CALL "${CASE}")
