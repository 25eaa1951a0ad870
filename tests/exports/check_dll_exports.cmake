# Reads the export directory of the 32-bit Windows library with objdump and
# compares it with the export table: exactly the 255 decorated names _Name@N
# and the 231 undecorated ones, nothing more.
#   -DOBJDUMP=<objdump> -DLIBRARY=<RynHwDll.dll> -DTABLE=<ExportTable.inc>
include(${CMAKE_CURRENT_LIST_DIR}/../../cmake/ExportNames.cmake)
execute_process(COMMAND ${OBJDUMP} -p ${LIBRARY} OUTPUT_VARIABLE dump RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "${OBJDUMP} -p failed on ${LIBRARY}")
endif()
string(FIND "${dump}" "[Ordinal/Name Pointer] Table" start)
if(start EQUAL -1)
  message(FATAL_ERROR "no export name table in ${LIBRARY}")
endif()
string(SUBSTRING "${dump}" ${start} -1 dump)
# The table ends at the first empty line.
string(FIND "${dump}" "\n\n" end)
if(NOT end EQUAL -1)
  string(SUBSTRING "${dump}" 0 ${end} dump)
endif()
string(REGEX MATCHALL "\\[ *[0-9]+\\] [^\r\n]+" rows "${dump}")
set(exported "")
foreach(row IN LISTS rows)
  string(REGEX REPLACE "^\\[ *[0-9]+\\] " "" name "${row}")
  list(APPEND exported "${name}")
endforeach()

ryn_export_names(${TABLE} decorated undecorated)
list(LENGTH decorated decorated_count)
list(LENGTH undecorated undecorated_count)
if(NOT decorated_count EQUAL 255 OR NOT undecorated_count EQUAL 231)
  message(FATAL_ERROR "the table lists ${decorated_count} decorated and ${undecorated_count} undecorated names")
endif()
ryn_expect_same_names("the DLL's exports" "${exported}" "${decorated};${undecorated}")
