# Harnesses on both sides of the driver-module interface (included by
# fuzz/CMakeLists.txt).
#
# board_dispatch: the virtual board's request dispatcher, its sources
# compiled into the harness and reached through RynUserDriverEntry(); the
# board signals events through the library's objects, linked in as for every
# harness.
file(GLOB ryn_fuzz_board_sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/drivers/virtual/*.cpp)
ryn_add_fuzzer(board_dispatch SOURCES BoardDispatchFuzzer.cpp ${ryn_fuzz_board_sources}
               INCLUDES ${CMAKE_SOURCE_DIR}/drivers/virtual ${CMAKE_SOURCE_DIR}/wire
                        ${CMAKE_SOURCE_DIR}/data/spm)

# replies: the library's reading of replies, against an in-process driver
# that answers from the fuzz input. The link sends the library's calls of
# OsaThreadSleep_4 to the harness's own, which returns at once, so that the
# pauses of program loads, ringing and DAA set-up do not slow the runs.
ryn_add_fuzzer(replies SOURCES RepliesFuzzer.cpp)
target_link_options(replies_fuzzer PRIVATE -Wl,--wrap=OsaThreadSleep_4)
