"""Lays out beside the plug-in what the embedded interpreter needs of CPython.

Run by the interpreter whose library is embedded, with the folder of the plug-in:

    python3/lib/libpython3.13.so.1.0    the library
    python3/lib/python313.zip           the standard library, stored: sources with compiled files beside them
    site-packages/                      the native modules, which cannot be loaded from an archive
    python3/lib/libpython3.13.so.1.0-gdb.py    for gdb: Python's frames and objects, where the interpreter brings it

The compiled files are what makes a start quick; the sources are there for tracebacks and `inspect`. Folders of the
machine that CPython was built on, which it writes into the library and into what `sysconfig` answers, are taken out.
"""

import argparse
import concurrent.futures
import importlib
import os
import pathlib
import py_compile
import shutil
import subprocess
import sys
import sysconfig
import tempfile
import zipfile

ARCHIVE = "python313.zip"
LIBRARY = "libpython3.13.so.1.0"

# Tests, a drawing toolkit and what needs it, the installer of installers, other people's packages.
LEFT_OUT_FOLDERS = {"__pycache__", "dist-packages", "ensurepip", "idlelib", "lib-dynload", "lib2to3", "site-packages",
                    "test", "tests", "tkinter", "turtledemo"}
# Files of one machine's set-up, and the compiler's.
LEFT_OUT_FILES = {"EXTERNALLY-MANAGED", "sitecustomize.py", "usercustomize.py"}
LEFT_OUT_SUFFIXES = {".a", ".exe", ".o", ".pyc", ".so"}
LEFT_OUT_MODULES = ("_ctypes_test", "_test", "_tkinter", "_xxtestfuzz", "xxlimited", "xxsubtype")

# What stands for the folder that CPython was installed in: as long as that, for a library.
NEUTRAL_PREFIX = "/usr"

# The same bytes for the same interpreter: no time of day in the archive.
TIMESTAMP = (1980, 1, 1, 0, 0, 0)


def library_files(root):
    """The files of the standard library that are packed, as sorted paths relative to `root`."""
    found = []
    for folder, folders, files in os.walk(root):
        folders[:] = [name for name in folders if name not in LEFT_OUT_FOLDERS and not name.startswith("config-")]
        for name in files:
            path = pathlib.Path(folder, name)
            if name not in LEFT_OUT_FILES and path.suffix not in LEFT_OUT_SUFFIXES and path.is_file():
                found.append(path.relative_to(root))
    return sorted(found)


def build_folders():
    """Where the interpreter was installed when it was built, where it is, and where it was built."""
    made = importlib.import_module(sysconfig._get_sysconfigdata_name()).build_time_vars
    installed = {made["prefix"], sys.base_prefix} - {NEUTRAL_PREFIX}
    return installed, {made["abs_builddir"], made["abs_srcdir"]}


def shipped_source(path):
    """The bytes of a file of the standard library; what `sysconfig` tells names no folder of the build machine."""
    content = path.read_bytes()
    if path.name.startswith("_sysconfigdata_"):
        installed, built = build_folders()
        for folders, neutral in ((built, "."), (installed, NEUTRAL_PREFIX)):
            for folder in sorted(folders, key=len, reverse=True):
                content = content.replace(os.fsencode(folder), neutral.encode())
    return content


def copy_library(source, target):
    """Copies a library, without the folder that it was installed in. No text changes its length, and the last name of
    the folder stays: a linker lets shorter texts, a version say, be the ends of longer ones."""
    content = source.read_bytes()
    for folder in build_folders()[0]:
        head, _, name = folder.rpartition("/")
        if len(head) >= len(NEUTRAL_PREFIX):
            neutral = NEUTRAL_PREFIX.ljust(len(head) + 1, "/") + name
            content = content.replace(os.fsencode(folder), os.fsencode(neutral))
    target.write_bytes(content)


def compiled(source, relative):
    """The bytes of the compiled file of one source. Tracebacks show the path inside the archive."""
    with tempfile.TemporaryDirectory() as folder:
        shipped, target = pathlib.Path(folder, "module.py"), os.path.join(folder, "module.pyc")
        shipped.write_bytes(shipped_source(source))
        py_compile.compile(str(shipped), cfile=target, dfile=f"{ARCHIVE}/{relative.as_posix()}", doraise=True,
                           invalidation_mode=py_compile.PycInvalidationMode.UNCHECKED_HASH)
        return pathlib.Path(target).read_bytes()


def store(archive, name, content):
    entry = zipfile.ZipInfo(name, TIMESTAMP)
    entry.external_attr = 0o644 << 16
    archive.writestr(entry, content, zipfile.ZIP_STORED)


def write_archive(root, target):
    """Packs the standard library below `root` into `target`."""
    files = library_files(root)
    sources = [path for path in files if path.suffix == ".py"]
    with concurrent.futures.ProcessPoolExecutor() as pool:
        results = pool.map(compiled, (root / path for path in sources), sources, chunksize=16)
        code = dict(zip(sources, results))
    with zipfile.ZipFile(target, "w", zipfile.ZIP_STORED) as archive:
        for path in files:
            store(archive, path.as_posix(), shipped_source(root / path))
            if path in code:
                store(archive, path.with_suffix(".pyc").as_posix(), code[path])


def missing_libraries(module):
    """The libraries that a native module needs and the loader does not find."""
    listing = subprocess.run(["ldd", module], capture_output=True, text=True, check=False).stdout
    return [line.split()[0] for line in listing.splitlines() if "not found" in line]


def copy_native_modules(target):
    """Copies the native modules of the standard library, without those that only its own tests want."""
    for module in sorted(pathlib.Path(sysconfig.get_path("platstdlib"), "lib-dynload").glob("*.so")):
        if module.name.startswith(LEFT_OUT_MODULES):
            continue
        missing = missing_libraries(module)
        if missing:
            print(f"{module.name} is left out: {', '.join(missing)} not found", file=sys.stderr)
            continue
        copy_library(module, target / module.name)


def copy_debugger_support(libraries):
    """Copies the interpreter's own script for gdb to where gdb looks for one that belongs to the library."""
    script = os.path.realpath(sys.executable) + "-gdb.py"
    for path in (script, "/usr/share/gdb/auto-load" + script):
        if os.path.isfile(path):
            shutil.copyfile(path, libraries / (LIBRARY + "-gdb.py"))
            return


def fresh_folder(path):
    shutil.rmtree(path, ignore_errors=True)
    path.mkdir(parents=True)
    return path


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--library", required=True, type=pathlib.Path, help="the shared library to copy")
    parser.add_argument("target", type=pathlib.Path, help="the folder of the plug-in")
    options = parser.parse_args()

    libraries = fresh_folder(options.target / "python3" / "lib")
    copy_library(options.library, libraries / LIBRARY)
    write_archive(pathlib.Path(sysconfig.get_path("stdlib")), libraries / ARCHIVE)
    copy_debugger_support(libraries)
    copy_native_modules(fresh_folder(options.target / "site-packages"))


if __name__ == "__main__":
    main()
