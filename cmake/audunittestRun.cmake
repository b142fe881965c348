# Runs a program on the audunittest harness for ctest: it passes when the program ends with 0 and has
# reported its success before. The program's arguments stand behind this script's name: --run and a
# test's name, or --runall with or without what names contain.
# In: PROGRAM, EMULATOR (a list, may be empty).
cmake_minimum_required(VERSION 3.25)

# cmake -D PROGRAM=... -D EMULATOR=... -P script option [text]; a text may hold any characters, so it
# is never part of a list.
set(option "${CMAKE_ARGV7}")
if(option STREQUAL "--run")
  set(success " Success \\[[0-9.,]+ ms\\]\n")
else()
  set(success "Test success: [1-9][0-9]* tests? with")
endif()
set(capture RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output
  ECHO_OUTPUT_VARIABLE ECHO_ERROR_VARIABLE)
if(CMAKE_ARGC GREATER 8)
  execute_process(COMMAND ${EMULATOR} "${PROGRAM}" ${option} "${CMAKE_ARGV8}" ${capture})
else()
  execute_process(COMMAND ${EMULATOR} "${PROGRAM}" ${option} ${capture})
endif()
if(NOT status STREQUAL "0")
  message(FATAL_ERROR "the program ended with ${status}")
elseif(NOT output MATCHES "${success}")
  message(FATAL_ERROR "the program ended before its tests did, or ran none")
endif()
