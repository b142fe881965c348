# Turns stages.txt into C++ and into options for the linker:
#
#   cmake -D NM=... -D LIST=... -D "ARCHIVES=..." -D OUTPUT=... -D OPTIONS=... -P stageList.cmake
#
# OUTPUT has a line STAGE(name) for each stage and a line TIMED(stage, function, identifier, symbol)
# for each of its functions, stages counted from 1 on. The symbols are those of the archives.

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
    # A C function has its own name as symbol; a C++ one stands in the module's namespace, and a
    # kernel in a namespace of each width there.
    string(LENGTH "${function}" length)
    set(matching "${symbols}")
    list(FILTER matching INCLUDE REGEX
      "^(_ZN6voxloc(3at4|3at8|4at16|4here)?${length}${function}E.*|${function})$")
    if(NOT matching)
      message(FATAL_ERROR "${LIST}: no function ${function} in the libraries")
    endif()
    foreach(symbol IN LISTS matching)
      set(name ${function})
      if(symbol MATCHES "^_ZN6voxloc[34](at4|at8|at16|here)")
        set(name ${CMAKE_MATCH_1}::${function})
      endif()
      string(MAKE_C_IDENTIFIER "${name}" identifier)
      string(APPEND output "TIMED(${stage}, ${name}, ${identifier}, \"${symbol}\")\n")
      string(APPEND options "--wrap=${symbol}\n")
    endforeach()
  endforeach()
endforeach()
file(WRITE "${OUTPUT}" "${output}")
file(WRITE "${OPTIONS}" "${options}")
