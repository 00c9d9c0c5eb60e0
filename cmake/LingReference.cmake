# The public headers as an API reference: `cmake --build BUILD --target reference`, where doxygen is installed. A warning
# fails the build. What was built is installed with the documents.

option(LING_BUILD_REFERENCE "Build the API reference with everything else." OFF)
set(LING_REFERENCE "${PROJECT_BINARY_DIR}/reference")
find_program(LING_DOXYGEN doxygen)
mark_as_advanced(LING_DOXYGEN)
if(LING_DOXYGEN)
    configure_file("${PROJECT_SOURCE_DIR}/cmake/Doxyfile.in" "${PROJECT_BINARY_DIR}/Doxyfile" @ONLY)
    file(GLOB documents CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/docs/*.md")
    add_custom_command(OUTPUT "${LING_REFERENCE}/html/index.html"
        COMMAND "${LING_DOXYGEN}" -q "${PROJECT_BINARY_DIR}/Doxyfile"
        DEPENDS ${documents} $<TARGET_PROPERTY:ling,HEADER_SET> "${PROJECT_SOURCE_DIR}/cmake/Doxyfile.in"
        COMMENT "Writing the reference of the public headers" VERBATIM)
    set(with_all "")
    if(LING_BUILD_REFERENCE)
        set(with_all ALL)
    endif()
    add_custom_target(reference ${with_all} DEPENDS "${LING_REFERENCE}/html/index.html")
    if(LING_TESTS)
        add_test(NAME reference COMMAND "${LING_DOXYGEN}" -q "${PROJECT_BINARY_DIR}/Doxyfile")
    endif()
elseif(LING_BUILD_REFERENCE)
    message(STATUS "There is no doxygen: the packages are made without the API reference.")
endif()
