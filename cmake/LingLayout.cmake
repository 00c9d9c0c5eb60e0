# Where the built files go. Everything that ships is built into the stage, laid out as it ships, so that what is run
# and tested here is what is installed.

include(GNUInstallDirs)

set(LING_STAGE "${PROJECT_BINARY_DIR}/stage")
set(LING_EXTENSIONS_DIR "qcomponents/qextensions")
set(LING_STAGED_EXTENSIONS "${LING_STAGE}/${LING_EXTENSIONS_DIR}")

# Run paths are what the shipped tree needs, in the build tree too: nothing of the build machine gets into a file.
set(CMAKE_BUILD_WITH_INSTALL_RPATH ON)
set(CMAKE_INSTALL_RPATH_USE_LINK_PATH OFF)

# Looks for the sources of one folder again whenever it is built, so that a new file needs no edit here.
#   ling_sources(<variable> <pattern>...)
function(ling_sources variable)
    list(TRANSFORM ARGN PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/")
    file(GLOB found CONFIGURE_DEPENDS ${ARGN})
    set(${variable} "${found}" PARENT_SCOPE)
endfunction()
