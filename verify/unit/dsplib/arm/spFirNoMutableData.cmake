# Fails when an object of the FIR engine has data that could change, or when there is no such object.
# cmake -DNM=<nm> -DARCHIVE=<library> -P spFirNoMutableData.cmake

execute_process(COMMAND "${NM}" --print-file-name "${ARCHIVE}"
  OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]*sp_fir_[^\n]*\\.o:[^\n]*" symbols "${symbols}")
if(NOT symbols MATCHES " T [^;]*sp_fir_filter")
  message(FATAL_ERROR "no object of the FIR engine in ${ARCHIVE}")
endif()
# b, d, g, s: zeroed and initialised data, small or not; C: common. Upper case: global.
set(mutable ${symbols})
list(FILTER mutable INCLUDE REGEX ":[0-9a-fA-F ]+ [bBdDgGsSC] ")
if(mutable)
  list(JOIN mutable "\n" mutable)
  message(FATAL_ERROR "mutable data in the FIR engine:\n${mutable}")
endif()
