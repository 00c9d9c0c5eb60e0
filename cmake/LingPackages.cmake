# `cpack --preset package`: one .tar.gz and one .deb for each component of LingInstall.cmake.
#
# The archives hold the tree as it is, without a folder around it: unpacked over another product, the component python
# lands in that product's qcomponents/qextensions. The .deb packages put the same tree into /usr/lib/ling, with links
# where programs, compilers and gdb look.
#
# The plug-in carries the CPython that it was built with, in the .deb as well. It then runs the very interpreter, standard
# library and native modules that its tests ran, isolated from what the machine has, and one package serves each
# distribution that has the libraries which these need; of those the package depends. A mend of Debian's libpython
# reaches it when it is built again.

set(CPACK_PACKAGE_NAME ling)
set(CPACK_PACKAGE_VENDOR "The ling project")
set(CPACK_PACKAGE_CONTACT "The ling project <packages@ling.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_CHECKSUM SHA256)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_GENERATOR TGZ DEB)
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_COMPONENTS_ALL runtime python shell development debug)
set(CPACK_COMPONENT_PYTHON_DEPENDS runtime)
set(CPACK_COMPONENT_SHELL_DEPENDS runtime)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_COMPONENT_DEBUG_DEPENDS runtime)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "The shared library that hosts and extensions link.")
set(CPACK_COMPONENT_PYTHON_DESCRIPTION "The plug-in that embeds CPython in a host, with the interpreter's own library.")
set(CPACK_COMPONENT_SHELL_DESCRIPTION "lingsh: scripts and a prompt for Python with the runtime's objects.")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Headers, files for CMake and pkg-config, documents and examples.")
set(CPACK_COMPONENT_DEBUG_DESCRIPTION "Debug information, and printers for gdb.")

string(TOLOWER "${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR}" system)
set(CPACK_PACKAGE_FILE_NAME "ling-${PROJECT_VERSION}-${system}")
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_INCLUDE_TOPLEVEL_DIRECTORY OFF)
set(CPACK_COMPONENT_INCLUDE_TOPLEVEL_DIRECTORY OFF)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${LING_STAGE}/lib" "${LING_STAGED_EXTENSIONS}/python3/lib")
set(CPACK_DEBIAN_DEBUG_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ling-runtime)
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME ling-python)
set(CPACK_DEBIAN_SHELL_PACKAGE_NAME lingsh)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ling-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_RECOMMENDS ling-python)
set(CPACK_DEBIAN_SHELL_PACKAGE_RECOMMENDS ling-python)
set(CPACK_DEBIAN_DEBUG_PACKAGE_NAME ling-dbg)
set(CPACK_DEBIAN_DEBUG_PACKAGE_SECTION debug)

set(CPACK_PROJECT_CONFIG_FILE "${PROJECT_SOURCE_DIR}/cmake/package_options.cmake")
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/add_system_links.cmake")
set(CPACK_LING_ARCHITECTURE "${CMAKE_LIBRARY_ARCHITECTURE}")
# The build is a step of its own.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)
include(CPack)
