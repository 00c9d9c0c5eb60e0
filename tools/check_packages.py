"""Packs the product, unpacks it where it was never built, and uses it as those who get it do.

    check_packages.py CMAKE CPACK COMPILER BUILD SOURCES

The packages are unpacked into a folder with a space and a letter beyond ASCII; what runs there has an empty environment,
cannot write to the folder and is, where the check runs as root, another user.
"""

import os
import pathlib
import shutil
import subprocess
import sys
import sysconfig
import tarfile
import tempfile

COMPONENTS = {"runtime", "python", "shell", "development", "debug"}
LIBRARY = "libqshared_x86_64.so.16.0.1"
EXTENSIONS = "qcomponents/qextensions"
NOBODY = 65534

HOST = """#include <ling/ling.h>
int main(int, char** arguments) {
    ling::load_extensions(arguments[1]);
    const auto python = ling::find_language("Python");
    const ling::Any text = python ? python->evaluateExpression("'ada'.title()") : ling::Any();
    return ling::display(text) == ling::String("Ada") ? 0 : 1;
}
"""
# Uses native modules and what they need of the system; the path of the modules lies within the package.
PROGRAM = """import sys, ssl, sqlite3, ctypes, decimal, lzma, json, ling
print(ling.display(ling.List([1, "two"])), sqlite3.connect(":memory:").execute("select 3").fetchone()[0])
print(all(path.startswith(sys.argv[1]) for path in sys.path), {sys.flags.isolated})
"""
PRINTED = "[1, 'two'] 3\nTrue {1}\n"

REQUESTS = {"": True, "16": True, "16.0": True, "16.0.1;EXACT": True, "15": False, "16.1": False, "17": False,
            "16;COMPONENTS;runtime;python;shell": True, "COMPONENTS;nonsense": False}
PROJECT = """cmake_minimum_required(VERSION 3.25)
project(requests CXX)
foreach(request IN ITEMS {requests})
    string(REPLACE "," ";" words "${{request}}")
    set(ling_FOUND FALSE)
    unset(ling_DIR CACHE)
    find_package(ling ${{words}} QUIET)
    file(APPEND answers "${{request}}=${{ling_FOUND}}\\n")
endforeach()
find_package(ling REQUIRED)
file(APPEND answers "${{ling_EXTENSIONS_DIR}}\\n")
"""


class Problem(Exception):
    pass


def run(command, **options):
    ended = subprocess.run([str(part) for part in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                           timeout=250, **options)
    if ended.returncode != 0:
        raise Problem(f"{' '.join(map(str, command))}\nends with {ended.returncode}:\n{ended.stdout}")
    return ended.stdout


def run_as_stranger(command):
    stranger = {"user": NOBODY, "group": NOBODY, "extra_groups": []} if os.geteuid() == 0 else {}
    return run(command, cwd="/", env={}, **stranger)


def packages_of(cpack, build, folder):
    """The archives, by component."""
    run([cpack, "-G", "TGZ", "--config", build / "CPackConfig.cmake", "-B", folder])
    found = {path.name.removesuffix(".tar.gz").rpartition("-")[2]: path for path in folder.glob("*.tar.gz")}
    if set(found) != COMPONENTS:
        raise Problem(f"the packages are {sorted(found)}, not {sorted(COMPONENTS)}")
    return found


def unpack(archives, folder):
    for archive in archives:
        with tarfile.open(archive) as content:
            content.extractall(folder, filter="fully_trusted")
    return folder


def files_below(folder):
    return [path for path in sorted(folder.rglob("*")) if not path.is_dir() or path.is_symlink()]


def check_traces(place, build, sources):
    """No file names a folder of the machine it was built on. What says where Python's sources were is debug information."""
    made = sysconfig.get_config_vars("prefix", "abs_builddir")
    traces = [os.fsencode(folder) for folder in {str(build), str(sources), sys.base_prefix, *made} - {"/usr", "."}]
    for path in files_below(place):
        if path.suffix != ".debug":
            content = path.read_bytes()
            for trace in traces:
                if trace in content:
                    raise Problem(f"{path.relative_to(place)} names {os.fsdecode(trace)}")


def check_shell(place):
    script = place / "program.py"
    script.write_text(PROGRAM, encoding="utf-8")
    printed = run_as_stranger([place / "lingsh", script, place])
    if printed != PRINTED:
        raise Problem(f"lingsh prints\n{printed}\nand not\n{PRINTED}")


def check_host(archives, place, compiler):
    """Another product, with a host of its own, gets the plug-in by unpacking it."""
    product = place.parent / "another prodüct"
    (product / "lib").mkdir(parents=True)
    shutil.copy(place / "lib" / LIBRARY, product / "lib")
    unpack([archives["python"]], product)
    source = product / "host.cpp"
    source.write_text(HOST, encoding="utf-8")
    settings = {"PATH": os.defpath, "PKG_CONFIG_PATH": str(place / "lib/pkgconfig")}
    if shutil.which("pkg-config"):
        # It escapes what a shell would take apart.
        run(["sh", "-c", 'eval "set -- $(pkg-config --cflags --libs "ling >= 16")" && '
             '"$COMPILER" -std=c++20 host.cpp -o host "$@" -Wl,-rpath,"\\$ORIGIN/lib"'],
            env={**settings, "COMPILER": compiler}, cwd=product)
        extensions = run(["pkg-config", "--variable=extensionsdir", "ling"], env=settings).strip().replace("\\ ", " ")
        if not os.path.samefile(extensions, place / EXTENSIONS):
            raise Problem(f"pkg-config names {extensions}")
        run_as_stranger([product / "host", product / EXTENSIONS])
    else:
        print("not tried, there is no pkg-config: a host built by it")


def check_requests(cmake, place):
    source = place.parent / "requests"
    source.mkdir()
    listed = " ".join(f'"{request.replace(";", ",")}"' for request in REQUESTS)
    (source / "CMakeLists.txt").write_text(PROJECT.format(requests=listed), encoding="utf-8")
    run([cmake, "-S", source, "-B", source / "build", f"-DCMAKE_PREFIX_PATH={place}"])
    *answers, extensions = (source / "answers").read_text(encoding="utf-8").splitlines()
    expected = [f"{request.replace(';', ',')}={'1' if accepted else '0'}" for request, accepted in REQUESTS.items()]
    if [answer.replace("TRUE", "1").replace("FALSE", "0") for answer in answers] != expected:
        raise Problem(f"find_package answers {answers}")
    if not os.path.samefile(extensions, place / EXTENSIONS):
        raise Problem(f"ling_EXTENSIONS_DIR is {extensions}")


def check_removal(place):
    """What the lists name is all there is."""
    for manifest in sorted((place / "share/ling/installed").glob("*.txt")):
        for name in manifest.read_text(encoding="utf-8").splitlines():
            (place / name).unlink()
    left = files_below(place)
    if left:
        raise Problem(f"no list names {[str(path.relative_to(place)) for path in left]}")


def main():
    cmake, cpack, compiler = sys.argv[1:4]
    build, sources = (pathlib.Path(argument) for argument in sys.argv[4:6])
    folder = pathlib.Path(tempfile.mkdtemp(prefix="ling packages "))
    folder.chmod(0o755)
    try:
        archives = packages_of(cpack, build, folder / "packages")
        place = unpack(archives.values(), folder / "an ünpacked tree")
        check_traces(place, build, sources)
        check_requests(cmake, place)
        check_host(archives, place, compiler)
        check_shell(place)
        (place / "program.py").unlink()
        check_removal(place)
    except Problem as problem:
        print(problem)
        return 1
    finally:
        shutil.rmtree(folder, ignore_errors=True)
    print(f"{len(archives)} packages hold what they promise.")
    return 0


if __name__ == "__main__":
    sys.exit(main())
