# Fails when a file built for a newer instruction set holds an inline function that the linker could pick for others.
# cmake -D NM=... -D LIBRARY=... -P NoSharedInlines.cmake
execute_process(COMMAND ${NM} -A -C ${LIBRARY} OUTPUT_VARIABLE symbols RESULT_VARIABLE result)
if(NOT result EQUAL 0 OR NOT symbols MATCHES "Avx2Kernels")
  message(FATAL_ERROR "cannot list ${LIBRARY}")
endif()
string(REGEX MATCHALL "[^\n]*(Sse41|Avx2|Avx512)Kernels[^\n]* [WVu] (mft_kernels|std|__gnu)[^\n]*" shared "${symbols}")
if(shared)
  message(FATAL_ERROR "${shared}")
endif()
