# Writes the module-definition file of the 32-bit Windows library from the
# export table: every decorated name, then every undecorated one.
#   -DTABLE=<ExportTable.inc> -DOUT=<RynHwDll.def>
include(${CMAKE_CURRENT_LIST_DIR}/../../cmake/ExportNames.cmake)
ryn_export_names(${TABLE} decorated undecorated)
set(text "LIBRARY RynHwDll.dll\nEXPORTS\n")
foreach(name IN LISTS decorated undecorated)
  string(APPEND text "  ${name}\n")
endforeach()
file(WRITE ${OUT}.tmp "${text}")
file(COPY_FILE ${OUT}.tmp ${OUT} ONLY_IF_DIFFERENT)
