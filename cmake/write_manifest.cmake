# Leaves beside an installation the list of its files, so that it can be taken away again without the build tree:
#   cd PREFIX && xargs -d '\n' rm -f < share/ling/installed/all.txt
# Runs within an installation; one of a single component has a list of its own.

set(name "${CMAKE_INSTALL_COMPONENT}")
if(name STREQUAL "")
    set(name all)
endif()
set(manifest "share/ling/installed/${name}.txt")
set(files "")
foreach(file IN LISTS CMAKE_INSTALL_MANIFEST_FILES)
    file(RELATIVE_PATH relative "${CMAKE_INSTALL_PREFIX}" "${file}")
    string(APPEND files "${relative}\n")
endforeach()
file(WRITE "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/${manifest}" "${files}${manifest}\n")
list(APPEND CMAKE_INSTALL_MANIFEST_FILES "${CMAKE_INSTALL_PREFIX}/${manifest}")
