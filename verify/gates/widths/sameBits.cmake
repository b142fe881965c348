# Compares the scenario's results at narrower vectors with those at the widest, byte by byte.
# cmake -D DUMP=<program> -D REFERENCE=<its dump at the widest> -D MACHINE=<name in it> -P ...

foreach(lanes IN ITEMS 4 8)
  set(narrower "${REFERENCE}.${lanes}")
  execute_process(
    COMMAND "${CMAKE_COMMAND}" -E env SP_SIMD_LANES=${lanes} "${DUMP}" "${narrower}" ${MACHINE}
    OUTPUT_QUIET ERROR_QUIET COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND "${CMAKE_COMMAND}" -E compare_files "${REFERENCE}" "${narrower}"
    RESULT_VARIABLE differ)
  if(differ)
    message(FATAL_ERROR "results at ${lanes} lanes differ from those at the widest vectors")
  endif()
  file(REMOVE "${narrower}")
endforeach()
