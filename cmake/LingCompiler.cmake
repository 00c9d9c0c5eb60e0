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
