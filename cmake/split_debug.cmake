# Moves the debug information of libraries and programs into .debug/<name>.debug beside them, where gdb looks for it of
# its own accord. Run as a script with
#   FILES     a list of patterns
#   OBJCOPY, READELF   programs of the binutils

file(GLOB files ${FILES})
foreach(file IN LISTS files)
    get_filename_component(folder "${file}" DIRECTORY)
    get_filename_component(name "${file}" NAME)
    # Debian's own libraries have theirs in packages, and say so already.
    execute_process(COMMAND "${READELF}" --sections --wide "${file}" OUTPUT_VARIABLE sections COMMAND_ERROR_IS_FATAL ANY)
    if(NOT sections MATCHES "\\.debug_info")
        continue()
    endif()
    file(MAKE_DIRECTORY "${folder}/.debug")
    execute_process(COMMAND "${OBJCOPY}" --only-keep-debug --compress-debug-sections
        "${file}" "${folder}/.debug/${name}.debug" COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND "${OBJCOPY}" --strip-debug "--add-gnu-debuglink=${folder}/.debug/${name}.debug" "${file}"
        COMMAND_ERROR_IS_FATAL ANY)
endforeach()
