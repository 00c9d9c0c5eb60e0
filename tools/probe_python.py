"""Tells the build where the parts of the running interpreter are: the folder of its headers and its shared library.

Prints two lines. Ends with a reason on standard error when something that embedding needs is missing.
"""

import os
import sys
import sysconfig


def shared_library():
    """The file of the shared library, or None. Debian keeps it apart from the rest, in the folder of the machine."""
    names = [sysconfig.get_config_var("INSTSONAME"), "libpython3.13.so.1.0"]
    machine = sysconfig.get_config_var("MULTIARCH") or ""
    folders = [os.path.join(sys.base_prefix, "lib"), sysconfig.get_config_var("LIBDIR")]
    folders += [os.path.join(folder, machine) for folder in folders if folder]
    for folder in filter(None, folders):
        for name in filter(None, names):
            path = os.path.join(folder, name)
            if ".so" in name and os.path.isfile(path):
                return path
    return None


def main():
    if sys.implementation.name != "cpython" or sys.version_info[:2] != (3, 13):
        sys.exit(f"this is {sys.implementation.name} {sys.version_info[0]}.{sys.version_info[1]}, not CPython 3.13")
    if sysconfig.get_config_var("Py_GIL_DISABLED"):
        sys.exit("this is a free-threaded build, which has another binary interface")
    include = sysconfig.get_path("include")
    if not os.path.isfile(os.path.join(include, "Python.h")):
        sys.exit(f"its headers are missing: there is no Python.h in {include}")
    library = shared_library()
    if library is None:
        sys.exit("its shared library libpython3.13.so.1.0 is missing: it was built without --enable-shared")
    print(include)
    print(os.path.realpath(library))


main()
