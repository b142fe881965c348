# Runs a fuzz target on its corpus, then on new inputs made of it. Twice, so that a corpus that
# breaks it fails at once and by itself. What is learnt on the way stays in WORK/found.
file(MAKE_DIRECTORY "${WORK}/found")
file(GLOB corpus "${CORPUS}/*")
if(NOT corpus)
  message(FATAL_ERROR "no corpus in ${CORPUS}")
endif()
set(options -max_len=${LONGEST} -timeout=10 -rss_limit_mb=1024 "-artifact_prefix=${WORK}/"
  -print_final_stats=1)

# Edges of the program that the run's progress lines matching a pattern have last told of.
function(read_edges variable text pattern)
  set(edges 0)
  string(REGEX MATCHALL "#[0-9]+\t${pattern} +cov: [0-9]+" lines "${text}")
  if(lines)
    list(POP_BACK lines line)
    string(REGEX MATCH "[0-9]+$" edges "${line}")
  endif()
  set(${variable} ${edges} PARENT_SCOPE)
endfunction()

execute_process(COMMAND "${PROGRAM}" ${options} ${corpus} RESULT_VARIABLE status
  OUTPUT_VARIABLE text ERROR_VARIABLE text)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "the corpus: status ${status}\n${text}")
endif()
execute_process(
  COMMAND "${PROGRAM}" ${options} -max_total_time=${SECONDS} -seed=${SEED} "${WORK}/found"
    "${CORPUS}"
  RESULT_VARIABLE status OUTPUT_VARIABLE text ERROR_VARIABLE text)
string(REGEX MATCH "stat::number_of_executed_units: *([0-9]+)" executed "${text}")
set(inputs "${CMAKE_MATCH_1}")
read_edges(begin "${text}" INITED)
read_edges(end "${text}" "[A-Za-z]+")
math(EXPR new "${end} - ${begin}")
message("note: fuzz.${NAME}: ${inputs} inputs in ${SECONDS} s, ${new} edges beyond ${begin}")
if(NOT status EQUAL 0)
  message(FATAL_ERROR "new inputs: status ${status}\n${text}")
endif()
if(NOT inputs GREATER FEWEST)
  message(FATAL_ERROR "hardly anything was tried:\n${text}")
endif()
