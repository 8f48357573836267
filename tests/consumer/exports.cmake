# Fails unless every symbol that the library defines for others belongs to the namespace vellum or is one of the
# particle iterators, which live outside it, and unless it carries its soname.

execute_process(COMMAND ${NM} --dynamic --defined-only --demangle --format=posix ${LIBRARY}
  OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE ";" "," symbols "${symbols}")
string(STRIP "${symbols}" symbols)
string(REPLACE "\n" ";" symbols "${symbols}")

set(own "^(typeinfo for |typeinfo name for |vtable for |VTT for |virtual thunk to |non-virtual thunk to )?(vellum::|ParticleContainerIterator)")
set(foreign "${symbols}")
list(FILTER foreign EXCLUDE REGEX "${own}")
list(LENGTH symbols count)
if(count EQUAL 0)
  message(SEND_ERROR "${LIBRARY} exports nothing")
endif()
foreach(symbol IN LISTS foreign)
  message(SEND_ERROR "${LIBRARY} exports a symbol outside its namespace: ${symbol}")
endforeach()

execute_process(COMMAND ${READELF} --dynamic ${LIBRARY} OUTPUT_VARIABLE dynamic COMMAND_ERROR_IS_FATAL ANY)
if(NOT dynamic MATCHES "SONAME[^\n]*\\[([^]]*)\\]")
  message(FATAL_ERROR "${LIBRARY} has no soname")
endif()
if(NOT CMAKE_MATCH_1 STREQUAL SONAME OR NOT SONAME MATCHES "\\.so\\.[0-9]+$")
  message(SEND_ERROR "${LIBRARY} has the soname ${CMAKE_MATCH_1} instead of ${SONAME} with one number")
endif()
message(STATUS "${count} symbols, soname ${CMAKE_MATCH_1}")
