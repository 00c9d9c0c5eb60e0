# Takes the run paths out of the libraries that were copied from the interpreter's installation: they name folders of the
# build machine. Run as a script with LIBRARIES, a list of patterns.

file(GLOB libraries ${LIBRARIES})
foreach(library IN LISTS libraries)
    file(RPATH_REMOVE FILE "${library}")
endforeach()
