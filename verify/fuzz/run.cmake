# Runs a fuzz target on its corpus, then on new inputs made of it. Twice, so that a corpus that
# breaks it fails at once and by itself.
file(MAKE_DIRECTORY "${WORK}/found")
file(GLOB corpus "${CORPUS}/*")
if(NOT corpus)
  message(FATAL_ERROR "no corpus in ${CORPUS}")
endif()
set(options -max_len=${LONGEST} -timeout=10 -rss_limit_mb=1024 "-artifact_prefix=${WORK}/"
  -print_final_stats=1)
execute_process(COMMAND "${PROGRAM}" ${options} ${corpus} RESULT_VARIABLE status
  OUTPUT_VARIABLE text ERROR_VARIABLE text)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "the corpus: status ${status}\n${text}")
endif()
execute_process(
  COMMAND "${PROGRAM}" ${options} -max_total_time=${SECONDS} -seed=1 "${WORK}/found" "${CORPUS}"
  RESULT_VARIABLE status OUTPUT_VARIABLE text ERROR_VARIABLE text)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "new inputs: status ${status}\n${text}")
endif()
string(REGEX MATCH "stat::number_of_executed_units: *([0-9]+)" executed "${text}")
if(NOT CMAKE_MATCH_1 GREATER 1000)
  message(FATAL_ERROR "hardly anything was tried:\n${text}")
endif()
message("${CMAKE_MATCH_1} inputs in ${SECONDS} s")
