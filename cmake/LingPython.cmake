# Finds CPython 3.13 with its shared library and prepares what the plug-in needs of it in the stage.
#
# Looked at in this order: LING_PYTHON (a CMake or environment variable: an interpreter or the prefix it is installed
# under), python-3.13-embed through pkg-config, pyenv's versions, python3.13 on the path, build/python, where the
# commands in tools/ build one. When LING_PYTHON is given, nothing else is looked at.
#
# Gives the target LingPython::Library and the variables LING_PYTHON_EXECUTABLE, LING_PYTHON_LIBRARY and
# LING_PYTHON_INCLUDE; the target ling_python_stage copies library and standard library into the stage.

set(LING_PYTHON "$ENV{LING_PYTHON}" CACHE STRING
    "CPython 3.13 to embed: the interpreter, or the prefix it is installed under.")
# The environment wins over an earlier choice; a build that configures again without it keeps the choice.
if(DEFINED ENV{LING_PYTHON} AND NOT "$ENV{LING_PYTHON}" STREQUAL "")
    set_property(CACHE LING_PYTHON PROPERTY VALUE "$ENV{LING_PYTHON}")
endif()

function(ling_python_candidates variable)
    if(LING_PYTHON)
        set(given "${LING_PYTHON}")
        if(IS_DIRECTORY "${given}")
            string(APPEND given "/bin/python3.13")
        endif()
        set(${variable} "${given}" PARENT_SCOPE)
        return()
    endif()

    set(found "")
    find_package(PkgConfig QUIET)
    if(PKG_CONFIG_FOUND)
        execute_process(COMMAND "${PKG_CONFIG_EXECUTABLE}" --variable=exec_prefix python-3.13-embed
            OUTPUT_VARIABLE prefix OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
        if(prefix)
            list(APPEND found "${prefix}/bin/python3.13")
        endif()
    endif()
    foreach(root IN ITEMS "$ENV{PYENV_ROOT}" "$ENV{HOME}/.pyenv")
        if(root)
            file(GLOB versions "${root}/versions/3.13*/bin/python3.13")
            list(SORT versions COMPARE NATURAL ORDER DESCENDING)
            list(APPEND found ${versions})
        endif()
    endforeach()
    find_program(LING_PYTHON_ON_PATH python3.13 NO_CACHE)
    if(LING_PYTHON_ON_PATH)
        list(APPEND found "${LING_PYTHON_ON_PATH}")
    endif()
    if(EXISTS "${PROJECT_SOURCE_DIR}/build/python/bin/python3.13")
        list(APPEND found "${PROJECT_SOURCE_DIR}/build/python/bin/python3.13")
    endif()
    list(REMOVE_DUPLICATES found)
    set(${variable} "${found}" PARENT_SCOPE)
endfunction()

# Asks one interpreter where its parts are; `reason` is empty when it has all that is needed.
function(ling_python_probe executable reason)
    if(NOT EXISTS "${executable}")
        set(${reason} "there is no such file" PARENT_SCOPE)
        return()
    endif()
    execute_process(COMMAND "${executable}" -I -B "${PROJECT_SOURCE_DIR}/tools/probe_python.py"
        OUTPUT_VARIABLE answer ERROR_VARIABLE problem RESULT_VARIABLE status OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(NOT status EQUAL 0)
        string(STRIP "${problem}" problem)
        set(${reason} "${problem}" PARENT_SCOPE)
        return()
    endif()
    string(REPLACE "\n" ";" answer "${answer}")
    list(GET answer 0 include)
    list(GET answer 1 library)
    set(LING_PYTHON_EXECUTABLE "${executable}" CACHE INTERNAL "The interpreter of the embedded CPython.")
    set(LING_PYTHON_INCLUDE "${include}" CACHE INTERNAL "The headers of the embedded CPython.")
    set(LING_PYTHON_LIBRARY "${library}" CACHE INTERNAL "The shared library of the embedded CPython.")
    set(${reason} "" PARENT_SCOPE)
endfunction()

function(ling_find_python)
    ling_python_candidates(candidates)
    set(report "")
    foreach(candidate IN LISTS candidates)
        ling_python_probe("${candidate}" reason)
        if(reason STREQUAL "")
            message(STATUS "Found CPython: ${candidate}")
            return()
        endif()
        string(APPEND report "  ${candidate}: ${reason}\n")
    endforeach()
    if(NOT report)
        set(report "  nothing: pkg-config knows no python-3.13-embed, there is no pyenv version 3.13, and no python3.13 is on the path\n")
    endif()
    message(FATAL_ERROR
        "CPython 3.13 with its shared library and headers was not found. Looked at:\n${report}"
        "Give it by LING_PYTHON, as a CMake or environment variable: the interpreter (…/bin/python3.13) or the prefix "
        "it is installed under. Ways to get it:\n"
        "  Debian 13:  apt-get install python3.13 libpython3.13-dev\n"
        "  Debian 12:  tools/build_python\n"
        "  pyenv:      PYTHON_CONFIGURE_OPTS=--enable-shared pyenv install 3.13")
endfunction()

# A choice that was made stays, unless another one is asked for or its files are gone.
if(NOT "for ${LING_PYTHON}" STREQUAL "${LING_PYTHON_CHOSEN}" OR NOT EXISTS "${LING_PYTHON_LIBRARY}"
    OR NOT EXISTS "${LING_PYTHON_EXECUTABLE}")
    ling_find_python()
    set(LING_PYTHON_CHOSEN "for ${LING_PYTHON}" CACHE INTERNAL "What was asked for when the choice was made.")
endif()

if(LING_DEBUG_FILES)
    target_compile_options(ling_compile_options INTERFACE "-ffile-prefix-map=${LING_PYTHON_INCLUDE}=.")
endif()

add_library(LingPython::Library SHARED IMPORTED GLOBAL)
set_target_properties(LingPython::Library PROPERTIES
    IMPORTED_LOCATION "${LING_PYTHON_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${LING_PYTHON_INCLUDE}")

# The library, the zipped standard library and the native modules, once: they change with the interpreter alone.
set(staged_python "${LING_STAGED_EXTENSIONS}/python3/lib/*.so.1.0;${LING_STAGED_EXTENSIONS}/site-packages/*.so")
set(staged_stamp "${PROJECT_BINARY_DIR}/python_stage.stamp")
add_custom_command(
    OUTPUT "${staged_stamp}"
    COMMAND "${LING_PYTHON_EXECUTABLE}" -I -B "${PROJECT_SOURCE_DIR}/tools/stage_stdlib.py"
        --library "${LING_PYTHON_LIBRARY}" "${LING_STAGED_EXTENSIONS}"
    COMMAND "${CMAKE_COMMAND}"
        "-DLIBRARIES=${staged_python}"
        -P "${PROJECT_SOURCE_DIR}/cmake/strip_run_paths.cmake"
    COMMAND "${CMAKE_COMMAND}" "-DFILES=${staged_python}" ${LING_SPLIT_DEBUG}
    COMMAND "${CMAKE_COMMAND}" -E touch "${staged_stamp}"
    DEPENDS "${PROJECT_SOURCE_DIR}/tools/stage_stdlib.py" "${PROJECT_SOURCE_DIR}/cmake/strip_run_paths.cmake"
        "${PROJECT_SOURCE_DIR}/cmake/split_debug.cmake" "${LING_PYTHON_LIBRARY}"
    COMMENT "Staging CPython's library and standard library"
    VERBATIM)
add_custom_target(ling_python_stage DEPENDS "${staged_stamp}")
