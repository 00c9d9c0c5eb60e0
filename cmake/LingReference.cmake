# The public headers as an API reference: `cmake --build BUILD --target reference`, where doxygen is installed. A warning
# fails the build.

find_program(LING_DOXYGEN doxygen)
mark_as_advanced(LING_DOXYGEN)
if(LING_DOXYGEN)
    set(LING_REFERENCE "${PROJECT_BINARY_DIR}/reference")
    configure_file("${PROJECT_SOURCE_DIR}/cmake/Doxyfile.in" "${PROJECT_BINARY_DIR}/Doxyfile" @ONLY)
    file(GLOB documents CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/docs/*.md")
    add_custom_command(OUTPUT "${LING_REFERENCE}/html/index.html"
        COMMAND "${LING_DOXYGEN}" -q "${PROJECT_BINARY_DIR}/Doxyfile"
        DEPENDS ${documents} $<TARGET_PROPERTY:ling,HEADER_SET> "${PROJECT_SOURCE_DIR}/cmake/Doxyfile.in"
        COMMENT "Writing the reference of the public headers" VERBATIM)
    add_custom_target(reference DEPENDS "${LING_REFERENCE}/html/index.html")
    if(LING_TESTS)
        add_test(NAME reference COMMAND "${LING_DOXYGEN}" -q "${PROJECT_BINARY_DIR}/Doxyfile")
    endif()
endif()
