# `cmake --install`: the tree of the stage, and what is needed to build against the runtime. In components, which are
# the packages of LingPackages.cmake:
#
#   runtime       the shared library that a host links
#   python        the plug-in with its Python tree: it can be unpacked over any product that has a runtime of its own
#   shell         lingsh
#   development   headers, CMake package, pkg-config file, documents, API reference, examples
#   debug         debug information, where LING_DEBUG_FILES keeps it, and the printers of gdb

include(CMakePackageConfigHelpers)

install(TARGETS ling EXPORT lingTargets
    LIBRARY DESTINATION lib COMPONENT runtime
    FILE_SET HEADERS DESTINATION share/ling/include COMPONENT development)
install(TARGETS ling_python LIBRARY DESTINATION "${LING_EXTENSIONS_DIR}" COMPONENT python)
if(TARGET lingsh)
    install(TARGETS lingsh RUNTIME DESTINATION . COMPONENT shell)
endif()
install(DIRECTORY "${LING_STAGED_EXTENSIONS}/python3" "${LING_STAGED_EXTENSIONS}/site-packages"
    DESTINATION "${LING_EXTENSIONS_DIR}" COMPONENT python
    PATTERN ".debug" EXCLUDE PATTERN "*-gdb.py" EXCLUDE)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/examples" "${PROJECT_SOURCE_DIR}/docs"
    DESTINATION share/ling COMPONENT development PATTERN "__pycache__" EXCLUDE)
install(DIRECTORY "${LING_REFERENCE}/html/" DESTINATION share/ling/reference COMPONENT development OPTIONAL)

foreach(folder IN ITEMS
        "." lib "${LING_EXTENSIONS_DIR}" "${LING_EXTENSIONS_DIR}/python3/lib" "${LING_EXTENSIONS_DIR}/site-packages")
    install(DIRECTORY "${LING_STAGE}/${folder}/.debug" DESTINATION "${folder}" COMPONENT debug OPTIONAL)
endforeach()
foreach(library IN ITEMS
        "lib/libqshared_x86_64.so.${PROJECT_VERSION}" "${LING_EXTENSIONS_DIR}/python3/lib/libpython3.13.so.1.0")
    get_filename_component(folder "${library}" DIRECTORY)
    install(FILES "${LING_STAGE}/${library}-gdb.py" DESTINATION "${folder}" COMPONENT debug OPTIONAL)
endforeach()

install(EXPORT lingTargets NAMESPACE ling:: DESTINATION share/ling/cmake COMPONENT development)
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/lingConfig.cmake.in"
    "${PROJECT_BINARY_DIR}/lingConfig.cmake"
    INSTALL_DESTINATION share/ling/cmake PATH_VARS LING_EXTENSIONS_DIR NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/lingConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/lingConfig.cmake" "${PROJECT_BINARY_DIR}/lingConfigVersion.cmake"
    DESTINATION share/ling/cmake COMPONENT development)
configure_file("${PROJECT_SOURCE_DIR}/cmake/ling.pc.in" "${PROJECT_BINARY_DIR}/ling.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/ling.pc" DESTINATION lib/pkgconfig COMPONENT development)

# Last: it lists what was installed before it.
install(SCRIPT "${PROJECT_SOURCE_DIR}/cmake/write_manifest.cmake" ALL_COMPONENTS)
