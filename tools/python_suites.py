"""Runs CPython's own tests with the shell as their interpreter.

    python3 tools/python_suites.py STAGE [SUITE...]

STAGE is a built tree. The tests are those of the CPython 3.13 that runs this file (on Debian: libpython3.13-testsuite).
Without suites, all of `SUITES` run, which takes some ten minutes. Cases that the shell does not promise are left out;
each has its reason below. Ends with 77 where the tests are not installed.
"""

import pathlib
import shutil
import subprocess
import sys
import sysconfig
import tempfile

SUITES = """
    test_list test_dict test_tuple test_set test_collections test_copy test_pickle
    test_threading test_asyncio test_subprocess test_concurrent_futures test_importlib test_pyrepl
""".split()
NOT_INSTALLED = 77

EXCLUDED = {
    "The interpreter is never finalised: until the process ends, threads and processes can be started.": [
        "*.POSIXProcessTestCase.test_preexec_at_exit",
        "*.ThreadTests.test_start_new_thread_at_finalization",
    ],
    "The interpreter is isolated: variables such as PYTHONASYNCIODEBUG and PYTHON_HISTORY do not reach it.": [
        "*.test_env_var_debug",
        "*.TestMain.test_not_wiping_history_file",
    ],
    "`-X warn_default_encoding` is for the start alone, which is over when the shell reads its options.": [
        "*.RunFuncTestCase.test_encoding_warning",
    ],
    "The library is an archive: its modules have no files, and its code names them from where the archive lies, so that "
    "`importlib.resources.files()` has to be told the package.": [
        "*_ReloadTests.test_reload_missing_loader",
        "*.test_implicit_files_package",
        "*.test_implicit_files_submodule",
    ],
    "Looks for the library where the tests lie, which are beside the plug-in here.": [
        "*.frozen.test_finder.*_FindSpecTests.test_module",
        "*.frozen.test_finder.*_FindSpecTests.test_package",
    ],
    "The console belongs to the shell: it binds the host's modules, is started by no module, greets in its own words, and "
    "takes a dumb terminal as it is.": [
        "*.TestDumbTerminal.test_dumb_terminal_exits_cleanly",
        "*.TestMain.test_exposed_globals_in_repl",
        "*.TestMain.test_python_basic_repl",
    ],
    "Another user cannot read the tree of this one.": [
        "*.POSIXProcessTestCase.test_user",
    ],
    "CPython's own, in 3.13.0: a pool that shuts down while a task fails to be pickled may wait for ever.": [
        "*.test_shutdown_deadlock_pickle",
    ],
}


def make_tree(stage, place, tests):
    """A copy of the built tree, beside whose plug-in the tests are and the native modules that they use."""
    tree = place / "tree"
    shutil.copytree(stage, tree, symlinks=True)
    packages = tree / "qcomponents" / "qextensions" / "site-packages"
    native = pathlib.Path(sysconfig.get_path("platstdlib"), "lib-dynload")
    for file in [tests, *native.glob("*.so")]:
        if not (packages / file.name).exists():
            (packages / file.name).symlink_to(file)
    return tree / "lingsh"


def main():
    stage, *suites = sys.argv[1:]
    tests = pathlib.Path(sysconfig.get_path("stdlib"), "test")
    if not (tests / "list_tests.py").exists():
        print(f"CPython's own tests are not installed: {tests} (on Debian: libpython3.13-testsuite).")
        return NOT_INSTALLED
    ignored = [part for patterns in EXCLUDED.values() for pattern in patterns for part in ("-i", pattern)]
    with tempfile.TemporaryDirectory() as folder:
        shell = make_tree(pathlib.Path(stage), pathlib.Path(folder), tests)
        command = [shell, "-m", "test", "-u", "curses", "--timeout", "600", *ignored, *(suites or SUITES)]
        return subprocess.run(command, cwd=folder).returncode


sys.exit(main())
