# `cmake --install`: the tree of the stage, and what is needed to build against the runtime.

include(CMakePackageConfigHelpers)

install(TARGETS ling EXPORT lingTargets
    LIBRARY DESTINATION lib
    FILE_SET HEADERS DESTINATION share/ling/include)
install(TARGETS ling_python LIBRARY DESTINATION "${LING_EXTENSIONS_DIR}")
if(TARGET lingsh)
    install(TARGETS lingsh RUNTIME DESTINATION .)
endif()
install(DIRECTORY "${LING_STAGED_EXTENSIONS}/python3" "${LING_STAGED_EXTENSIONS}/site-packages"
    DESTINATION "${LING_EXTENSIONS_DIR}")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/examples" "${PROJECT_SOURCE_DIR}/docs" DESTINATION share/ling)

install(EXPORT lingTargets NAMESPACE ling:: DESTINATION share/ling/cmake)
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/lingConfig.cmake.in"
    "${PROJECT_BINARY_DIR}/lingConfig.cmake" INSTALL_DESTINATION share/ling/cmake)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/lingConfigVersion.cmake" COMPATIBILITY ExactVersion)
install(FILES "${PROJECT_BINARY_DIR}/lingConfig.cmake" "${PROJECT_BINARY_DIR}/lingConfigVersion.cmake"
    DESTINATION share/ling/cmake)
