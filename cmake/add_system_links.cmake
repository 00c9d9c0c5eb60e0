# Adds to the trees of the .deb packages, before they are packed, what makes the product known to the system: the program
# on the path, the library where the loader looks, the development files where CMake and pkg-config look, the scripts
# of gdb in the only folder from which it loads them unasked. Takes out the lists of files.

if(NOT CPACK_GENERATOR STREQUAL "DEB")
    return()
endif()

set(ling "/usr/lib/ling")
set(system "/usr/lib/${CPACK_LING_ARCHITECTURE}")

function(link_from component link target)
    set(path "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component}${link}")
    get_filename_component(folder "${path}" DIRECTORY)
    get_filename_component(from "${link}" DIRECTORY)
    file(RELATIVE_PATH relative "${from}" "${target}")
    file(MAKE_DIRECTORY "${folder}")
    file(CREATE_LINK "${relative}" "${path}" SYMBOLIC)
endfunction()

function(write_to component path text)
    file(WRITE "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component}${path}" "${text}")
endfunction()

set(library "libqshared_x86_64.so.${CPACK_PACKAGE_VERSION}")
link_from(runtime "${system}/${library}" "${ling}/lib/${library}")
link_from(shell "/usr/bin/lingsh" "${ling}/lingsh")

# dpkg knows which files it installed.
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    set(share "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component}${ling}/share")
    file(REMOVE_RECURSE "${share}/ling/installed")
    file(GLOB left "${share}/ling/*")
    if(NOT left)
        file(REMOVE_RECURSE "${share}")
    endif()
endforeach()

# Both find their folders from the place of the file itself, which a link would hide.
foreach(file IN ITEMS lingConfig.cmake lingConfigVersion.cmake)
    write_to(development "${system}/cmake/ling/${file}" "include(\"${ling}/share/ling/cmake/${file}\")\n")
endforeach()
file(READ "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/development${ling}/lib/pkgconfig/ling.pc" description)
string(REPLACE "\${pcfiledir}/../.." "${ling}" description "${description}")
write_to(development "${system}/pkgconfig/ling.pc" "${description}")

# Beside the library as well, gdb would find the script there first, and refuse it.
set(debug "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/debug")
file(GLOB_RECURSE scripts RELATIVE "${debug}" "${debug}/*-gdb.py")
foreach(script IN LISTS scripts)
    get_filename_component(folder "${script}" DIRECTORY)
    file(MAKE_DIRECTORY "${debug}/usr/share/gdb/auto-load/${folder}")
    file(RENAME "${debug}/${script}" "${debug}/usr/share/gdb/auto-load/${script}")
endforeach()
