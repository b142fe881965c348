# Turns stages.txt into C++ and into options for the linker:
#
#   cmake -D NM=... -D LIST=... -D "ARCHIVES=..." -D OUTPUT=... -D OPTIONS=... -P stageList.cmake
#
# OUTPUT has a line STAGE(name) for each stage and a line TIMED(stage, function, symbol) for each of
# its functions, stages counted from 1 on. The symbols are those of the archives.

set(symbols)
foreach(archive IN LISTS ARCHIVES)
  execute_process(COMMAND "${NM}" --defined-only --extern-only --format=posix "${archive}"
    OUTPUT_VARIABLE listing COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "[A-Za-z0-9_.]+ T " found "${listing}")
  list(TRANSFORM found REPLACE " T $" "")
  list(APPEND symbols ${found})
endforeach()

file(STRINGS "${LIST}" lines REGEX "^[^#]")
set(output)
set(options)
set(stage 0)
foreach(line IN LISTS lines)
  if(NOT line MATCHES "^([^:]+): (.+)$")
    message(FATAL_ERROR "${LIST}: not a name, a colon and functions: ${line}")
  endif()
  math(EXPR stage "${stage} + 1")
  string(APPEND output "STAGE(\"${CMAKE_MATCH_1}\")\n")
  separate_arguments(functions UNIX_COMMAND "${CMAKE_MATCH_2}")
  foreach(function IN LISTS functions)
    # A C function has its own name as symbol; a C++ one stands in the module's namespace.
    string(LENGTH "${function}" length)
    set(symbol "${symbols}")
    list(FILTER symbol INCLUDE REGEX "^(_ZN6voxloc${length}${function}E.*|${function})$")
    list(LENGTH symbol matches)
    if(NOT matches EQUAL 1)
      message(FATAL_ERROR "${LIST}: ${matches} functions ${function} in the libraries, not one")
    endif()
    string(APPEND output "TIMED(${stage}, ${function}, \"${symbol}\")\n")
    string(APPEND options "--wrap=${symbol}\n")
  endforeach()
endforeach()
file(WRITE "${OUTPUT}" "${output}")
file(WRITE "${OPTIONS}" "${options}")
