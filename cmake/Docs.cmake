# The API reference of the public headers (include/*.h), made with Doxygen:
#     cmake --build <build> --target docs
# writes the HTML into <build>/docs/html (start at index.html). Doxygen runs
# with warnings as errors, so an entity left undocumented fails the target.
# Without Doxygen the target only says how to get it.

find_package(Doxygen)

if(DOXYGEN_FOUND)
  set(RYN_DOCS_DIR ${CMAKE_BINARY_DIR}/docs)
  # FAIL_ON_WARNINGS (Doxygen 1.9.3 and later) reports every warning before it
  # fails; older versions stop at the first one.
  if(DOXYGEN_VERSION VERSION_LESS 1.9.3)
    set(RYN_DOXYGEN_WARN_AS_ERROR YES)
  else()
    set(RYN_DOXYGEN_WARN_AS_ERROR FAIL_ON_WARNINGS)
  endif()
  configure_file(${CMAKE_SOURCE_DIR}/docs/Doxyfile.in ${RYN_DOCS_DIR}/Doxyfile @ONLY)
  file(GLOB RYN_PUBLIC_HEADERS CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/include/*.h)

  # The stamp is written only after a run without warnings, so a failed run
  # is repeated by the next build.
  set(RYN_DOCS_STAMP ${RYN_DOCS_DIR}/html.stamp)
  add_custom_command(
    OUTPUT ${RYN_DOCS_STAMP}
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${RYN_DOCS_DIR}/html
    COMMAND Doxygen::doxygen ${RYN_DOCS_DIR}/Doxyfile
    COMMAND ${CMAKE_COMMAND} -E touch ${RYN_DOCS_STAMP}
    COMMAND ${CMAKE_COMMAND} -E echo "API reference: ${RYN_DOCS_DIR}/html/index.html"
    DEPENDS ${RYN_PUBLIC_HEADERS} ${RYN_DOCS_DIR}/Doxyfile ${CMAKE_SOURCE_DIR}/docs/Doxyfile.in
    WORKING_DIRECTORY ${RYN_DOCS_DIR}
    COMMENT "Generating the API reference with Doxygen ${DOXYGEN_VERSION}"
    VERBATIM)
  add_custom_target(docs DEPENDS ${RYN_DOCS_STAMP})
else()
  message(STATUS "Doxygen not found: the docs target will say how to install it")
  add_custom_target(docs
    COMMAND ${CMAKE_COMMAND} -E echo "The API reference needs Doxygen, which was not found."
    COMMAND ${CMAKE_COMMAND} -E echo "Install it with: scripts/setup-deps.sh docs  (as root), then configure again."
    COMMAND ${CMAKE_COMMAND} -E false
    VERBATIM)
endif()
