#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "process/support/process.h"

/// All modules imported at once, among them such as nobody would want to meet.

namespace {

namespace fs = std::filesystem;
using process::Ended;

struct ModuleFile {
    const char* path;
    const char* code;
};

/// Each misbehaves in one way, but for the good ones.
constexpr ModuleFile kModules[] = {
    {"raises.py", "1 / 0\n"},
    {"leaves.py", "import sys\nprint('leaving')\nsys.exit(3)\n"},
    {"interrupts.py", "raise KeyboardInterrupt\n"},
    {"ends.py", "raise BaseException('all')\n"},
    {"no_display.py", "raise RuntimeError('no display')\n"},
    {"reads.py", "input('Your name? ')\n"},
    {"no_syntax.py", "def def\n"},
    {"prints.py",
     "import ctypes, os, sys\nprint('by print')\nprint('without an end', end='', file=sys.stderr)\n"
     "sys.__stdout__.write('by the first stream\\n')\nos.write(1, b'by the descriptor\\n')\nos.system('echo by a "
     "child')\n"
     "ctypes.CDLL(None).puts(b'by the C library')\ndef answer(): return 1\n"},
    {"warns.py", "import warnings\nwarnings.warn('be warned')\ndef answer(): return 2\n"},
    {"threads.py",
     "import threading, time\n"
     "threading.Thread(target=time.sleep, args=(60,), name='from a module', daemon=True).start()\n"},
    {"replaces.py", "import sys\nsys.stdout = None\nsys.stderr = 5\ndel sys.stdin\n"},
    {"shuts.py", "import sys\nsys.stdout.close()\nsys.stderr.detach()\n"},
    {"tells.py", "import sys\nkept = sys.stdout\ndef say(): kept.write('kept\\n')\n"},
    {"walks.py", "import __main__\n__main__.ling.python.LanguagePython.importAllModules()\n"},
    {"asks.py",
     "import threading, __main__\n"
     "walk = threading.Thread(target=__main__.ling.python.LanguagePython.importAllModules)\n"
     "walk.start()\nwalk.join()\ndef answer(): return 3\n"},
    {"counts.py", "import sys\nsys.counted = getattr(sys, 'counted', 0) + 1\n"},
    {"circle_a.py", "import circle_b\ndef from_b(): return circle_b.name\nname = 'a'\n"},
    {"circle_b.py", "import circle_a\ndef from_a(): return circle_a.name\nname = 'b'\n"},
    {"good.py", "def answer(): return 42\n"},
    {"package/__init__.py", ""},
    {"package/inner.py", "def answer(): return 43\n"},
    {"package/broken.py", "import no_such_module\n"},
    {"package/tests/__init__.py", "print('tests')\n"},
    {"tests/__init__.py", "print('tests')\n"},
    {"sitecustomize.py", "print('set up')\n"},
};

void writeModules(const fs::path& folder) {
    for (const ModuleFile& module : kModules) {
        fs::create_directories((folder / module.path).parent_path());
        std::ofstream(folder / module.path) << module.code;
    }
    fs::create_directory_symlink(folder / "package", folder / "package/itself");
}

constexpr const char* kExpected =
    "before\n"
    "waited for: asks: The module is still being imported.\n"
    "ends: BaseException: all\n"
    "interrupts: KeyboardInterrupt\n"
    "leaves: SystemExit: 3\n"
    "no_display: RuntimeError: no display\n"
    "no_syntax: SyntaxError: invalid syntax (no_syntax.py, line 1)\n"
    "package.broken: ModuleNotFoundError: No module named 'no_such_module'\n"
    "prints: Written while it was imported: by print\n"
    "by the descriptor\n"
    "by a child\n"
    "without an endby the first stream\n"
    "by the C library\n"
    "raises: ZeroDivisionError: division by zero\n"
    "reads: EOFError: EOF when reading a line\n"
    "warns: Written while it was imported: warns.py:2: UserWarning: be warned\n"
    "  warnings.warn('be warned')\n"
    "streams: True\n"
    "good: 42 43 b a\n"
    "asking: 3\n"
    "writing: 1 2\n"
    "thread: ['from a module']\n"
    "left alone: []\n"
    "of the program: False 44\n"
    "itself: True False\n"
    "kept\n"
    "again: cheap True new []\n"
    "counted: 1\n";

TEST(ImportAll, ModulesThatMisbehaveAreToldOfAndNothingElseIsSeenOfThem) {
    const process::ScratchTree tree;
    writeModules(tree.extensions() / "site-packages");
    const process::Folder current;  // It is on the path, for the program.
    current.write("beside.py", "import sys\nsys.ran = True\n");
    current.write("colorsys.py", "import sys\nsys.ran = True\n");
    current.write("added/by_program.py", "def answer(): return 44\n");
    process::Command command = process::shell(
        {"--extensions", tree.extensions().string(), "-c", process::contentOf(LING_TEST_SCRIPTS "/import_all.py")});
    command.directory = current.path();
    const Ended ended = process::run(command);
    EXPECT_EQ(ended.out, kExpected);
    EXPECT_EQ(ended.err, "");
    EXPECT_EQ(ended.status, 0);
}

/// Of two walks at once one does the work, and the other goes on at once: a module may be waiting for it.
TEST(ImportAll, OneOfTwoWalksGoesOn) {
    const Ended ended = process::run(process::shell({"-c",
                                                     "import sys, threading\nknown = []\n"
                                                     "def walk():\n    ling.python.LanguagePython.importAllModules()\n"
                                                     "    known.append(len(sys.modules))\n"
                                                     "walks = [threading.Thread(target=walk) for _ in range(2)]\n"
                                                     "for each in walks: each.start()\nfor each in walks: each.join()\n"
                                                     "print(known[0] + 100 < known[1])\n"}));
    EXPECT_EQ(ended.out, "True\n") << ended.err;
}

}  // namespace
