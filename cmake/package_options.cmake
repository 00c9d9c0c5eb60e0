# What differs between the kinds of packages. Read by cpack for each of them.

if(CPACK_GENERATOR STREQUAL "DEB")
    set(CPACK_PACKAGING_INSTALL_PREFIX "/usr/lib/ling")
endif()
