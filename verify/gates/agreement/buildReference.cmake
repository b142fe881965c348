# Brings the reference's dump up to date: cmake -D SOURCE_DIR=... -D REFERENCE=... -P ...
if(NOT EXISTS "${REFERENCE}/CMakeCache.txt")
  execute_process(COMMAND ${CMAKE_COMMAND} --preset release -B "${REFERENCE}"
    WORKING_DIRECTORY "${SOURCE_DIR}" COMMAND_ERROR_IS_FATAL ANY)
endif()
execute_process(COMMAND ${CMAKE_COMMAND} --build "${REFERENCE}" --target agreement
  COMMAND_ERROR_IS_FATAL ANY)
