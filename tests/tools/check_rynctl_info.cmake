# Runs rynctl info from DIR, beside the old-generation driver module there,
# and checks that the library line and the driver version are shown; and
# rynctl --version, which reports the library's version attribute too.
# EMULATOR runs a program of a cross build (wine for Windows); empty, the
# program runs as it is.
file(COPY ${TOOL} ${LIBRARY} ${SONAME} DESTINATION ${DIR})
get_filename_component(name ${TOOL} NAME)
execute_process(COMMAND ${EMULATOR} ${DIR}/${name} info OUTPUT_VARIABLE out RESULT_VARIABLE rc)
message("${out}")
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "rynctl info exited with ${rc}")
endif()
if(NOT out MATCHES "library +RynHwDll.dll 2.12.1.0\n")
  message(FATAL_ERROR "the library line is missing")
endif()
if(NOT out MATCHES "driver version +1.01.30.0\n")
  message(FATAL_ERROR "the driver version is missing")
endif()
execute_process(COMMAND ${EMULATOR} ${DIR}/${name} --version OUTPUT_VARIABLE out RESULT_VARIABLE rc)
if(NOT rc EQUAL 0 OR NOT out MATCHES "^rynctl 2.12.1.0\nRynHwDll library 2.12.1.0\n$")
  message(FATAL_ERROR "rynctl --version exited with ${rc} and printed: ${out}")
endif()
