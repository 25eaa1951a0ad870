# Installs the build into a fresh prefix, then builds an example program
# against the installed tree with pkg-config (shared and static) and with
# find_package, and runs each: they find the library and its driver module
# with no configuration.
#   -DBUILD=<build dir> -DWORK=<scratch dir> -DEXAMPLE=<C source> -DCC=<C compiler>
#   [-DCFLAGS=<the build's C flags>] [-DTOOLCHAIN=<the build's toolchain file>]
# The example is built for the build's target: with its flags (-m32 in a
# 32-bit build) and its toolchain file.
file(REMOVE_RECURSE ${WORK})
set(prefix ${WORK}/prefix)
separate_arguments(cflags UNIX_COMMAND "${CFLAGS}")
set(toolchain)
if(TOOLCHAIN)
  set(toolchain -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN})
endif()

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "failed (${status}): ${ARGN}\n${out}\n${err}")
  endif()
  set(output "${out}" PARENT_SCOPE)
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})
file(GLOB libdirs LIST_DIRECTORIES true ${prefix}/lib*)
list(GET libdirs 0 libdir)
foreach(installed include/ryn/RynHwDll.h include/ryn/Osa.h include/ryn/RynUserDriver.h include/ryn/RynVirtualBoard.h
        bin/rynctl share/man/man1/rynctl.1)
  if(NOT EXISTS ${prefix}/${installed})
    message(FATAL_ERROR "not installed: ${installed}")
  endif()
endforeach()
foreach(installed libRynHwDll.so libRynHwDll.so.2 libRynHwDllStatic.a ryn-drivers/ryndrv.so ryn-drivers/rynnet.so
        pkgconfig/ryn-hw.pc pkgconfig/ryn-hw-static.pc cmake/RynHwDll/RynHwDllConfig.cmake)
  if(NOT EXISTS ${libdir}/${installed})
    message(FATAL_ERROR "not installed: ${libdir}/${installed}")
  endif()
endforeach()

# pkg-config
set(ENV{PKG_CONFIG_PATH} ${libdir}/pkgconfig)
run(pkg-config --cflags --libs ryn-hw)
separate_arguments(flags UNIX_COMMAND "${output}")
# The run path comes from the .pc file: nothing else tells the program where the library is.
run(${CC} ${cflags} -std=c99 -Wall -Wextra -Werror -o ${WORK}/with-pkg-config ${EXAMPLE} ${flags})
run(${WORK}/with-pkg-config)
# A program with the library linked in finds driver modules beside itself.
run(pkg-config --cflags --libs ryn-hw-static)
separate_arguments(flags UNIX_COMMAND "${output}")
run(${CC} ${cflags} -std=c99 -Wall -Wextra -Werror -o ${libdir}/with-static-library ${EXAMPLE} ${flags})
run(${libdir}/with-static-library)

# find_package
run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/consumer -B ${WORK}/consumer -DCMAKE_PREFIX_PATH=${prefix}
    -DEXAMPLE=${EXAMPLE} -DCMAKE_C_COMPILER=${CC} ${toolchain})
run(${CMAKE_COMMAND} --build ${WORK}/consumer)
run(${WORK}/consumer/consumer)

# the installed tool sees the installed board
run(${prefix}/bin/rynctl info)
if(NOT output MATCHES "driver version +1\\.01\\.47\\.0")
  message(FATAL_ERROR "rynctl info from the installed tree:\n${output}")
endif()
