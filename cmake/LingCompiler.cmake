# How every target of ours is compiled: the language, the warnings, the sanitizers.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_LINK_DEPENDS_NO_SHARED ON)

find_program(LING_CCACHE ccache)
mark_as_advanced(LING_CCACHE)
if(LING_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${LING_CCACHE}")
endif()

find_package(Threads REQUIRED)

add_library(ling_compile_options INTERFACE)
target_compile_options(ling_compile_options INTERFACE -Wall -Wextra -Wshadow $<$<BOOL:${LING_WERROR}>:-Werror>)
# A library is recorded as needed only by those who use it, and the search for it can be changed from outside.
target_link_options(ling_compile_options INTERFACE -Wl,--as-needed -Wl,--enable-new-dtags)

if(LING_SANITIZE)
    target_compile_options(ling_compile_options INTERFACE
        -fsanitize=${LING_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(ling_compile_options INTERFACE -fsanitize=${LING_SANITIZE})
else()
    target_link_options(ling_compile_options INTERFACE -Wl,-z,defs)
endif()

# The debug information of what ships, in files of its own: .debug/<name>.debug beside each, as Python's always is.
option(LING_DEBUG_FILES "Keep debug information in files of its own." OFF)
set(LING_SPLIT_DEBUG "-DOBJCOPY=${CMAKE_OBJCOPY}" "-DREADELF=${CMAKE_READELF}"
    -P "${PROJECT_SOURCE_DIR}/cmake/split_debug.cmake")
if(LING_DEBUG_FILES)
    # What is compiled names its sources by their places in the project, not in this folder.
    target_compile_options(ling_compile_options INTERFACE -g "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.")
endif()

function(ling_split_debug target)
    if(LING_DEBUG_FILES)
        add_custom_command(TARGET ${target} POST_BUILD
            COMMAND "${CMAKE_COMMAND}" "-DFILES=$<TARGET_FILE:${target}>" ${LING_SPLIT_DEBUG} VERBATIM)
    endif()
endfunction()

# Reads the standard headers that nearly all sources include once for a target, and with them what else is named: half
# of what compiling costs. A source still includes what it uses: CMAKE_DISABLE_PRECOMPILE_HEADERS, which CI builds
# with, shows one that does not.
function(ling_precompile target)
    target_precompile_headers(${target} PRIVATE
        <algorithm> <array> <atomic> <cstdint> <functional> <initializer_list> <memory> <mutex> <optional> <span>
        <string> <string_view> <tuple> <type_traits> <unordered_map> <utility> <variant> <vector> ${ARGN})
    # GCC 12 forgets with them that <string> is a system header, and warns of what it makes of it.
    if(NOT CMAKE_DISABLE_PRECOMPILE_HEADERS)
        target_compile_options(${target} PRIVATE -Wno-array-bounds)
    endif()
endfunction()
