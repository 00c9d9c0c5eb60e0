#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "process/support/process.h"
#include "support/table.h"

/// Programs run as they would run under the real `python3`, which is asked each time: the same output, the same
/// complaints, the same exit status.

namespace {

namespace fs = std::filesystem;
using process::Command;
using process::Ended;
using process::Folder;
using process::run;
using process::shell;

const struct Program {
    const char* name;
    std::string code;
    std::vector<std::string> arguments = {};

    friend void PrintTo(const Program& program, std::ostream* out) { *out << program.name; }
} kPrograms[] = {
    {"Empty", ""},
    {"Namespace",
     "for name in ('__name__', '__file__', '__cached__', '__spec__', '__package__', '__doc__', '__builtins__',\n"
     "             '__annotations__'):\n"
     "    print(name, repr(globals().get(name, 'absent')))\n"
     "import __main__, sys\n"
     "print(type(__loader__), __main__.__dict__ is globals(), sys.argv[1:], sys.path[0])\n",
     {"a b", "", "--help", "-c", "\xC3\xA9"}},
    {"ByteOrderMark", "\xEF\xBB\xBFprint('text')\n"},
    {"UndeclaredEncoding", "x = 1\ny = '\xE9'\n"},
    {"NullByte", std::string("x = 1\ny\0\n", 9)},
    {"ReturnAtTheTop", "return 3\n"},
    {"Traceback", "def f(x):\n    return [1 / y for y in x]\n\n\nf([1, 0])\n"},
    {"ChainedErrors",
     "def f():\n    try:\n        {}['a']\n    except KeyError as error:\n        raise ValueError('b') from error\n"
     "try:\n    f()\nexcept ValueError:\n    undefined_name\n"},
    {"Hook",
     "import sys\ndef hook(kind, error, trace):\n    print(kind, error, trace.tb_lineno, "
     "trace.tb_frame.f_code.co_name)\n"
     "sys.excepthook = hook\n1 / 0\n"},
    {"BrokenHook", "import sys\ndef hook(*details):\n    [][1]\nsys.excepthook = hook\n1 / 0\n"},
    {"NoHook", "import sys\ndel sys.excepthook\n1 / 0\n"},
    {"LastError", "import atexit, sys\natexit.register(lambda: print(repr(sys.last_exc), sys.last_type))\nint('x')\n"},
    {"ExitWithNumber", "import sys\nsys.exit(3)\n"},
    {"ExitWithLargeNumber", "import sys\nsys.exit(256 * 3 + 7)\n"},
    {"ExitWithText", "import sys\nprint('out')\nsys.exit('sorry: \xC3\xBC')\n"},
    {"ExitWithNone", "raise SystemExit\n"},
    {"ExitOfSite", "print(exit)\nquit(7)\n"},
    {"ExitWithoutErrorStream", "import sys\nsys.stderr = None\nsys.exit('bye')\n"},
    {"Threads",
     "import atexit, sys, threading, time\n"
     "atexit.register(print, 'end')\n"
     "def work():\n    time.sleep(0.2)\n    print('worked')\n    sys.exit(5)\n"
     "def endless():\n    while True:\n        time.sleep(0.01)\n"
     "threading.Thread(target=work).start()\n"
     "threading.Thread(target=endless, daemon=True).start()\n"
     "sys.exit(3)\n"},
    {"ExitFunctions",
     "import atexit\n"
     "def nested():\n    print('nested', globals().get('__file__'))\n"
     "def first():\n    print('first')\n    atexit.register(nested)\n"
     "def broken():\n    raise ValueError('x')\n"
     "def leaves():\n    raise SystemExit(8)\n"
     "for function in (nested, first, broken, leaves):\n    atexit.register(function)\n"},
    {"Finalisers",
     "class Noisy:\n    def __init__(self, name):\n        self.name = name\n"
     "    def __del__(self):\n        print('gone', self.name)\n"
     "one = Noisy('one')\ncircle = [Noisy('two')]\ncircle.append(circle)\ndef f():\n    return one\n"
     "import weakref\nweakref.finalize(one, print, 'finalised')\n"},
    {"ClosedOutput", "import sys\nprint('a')\nsys.stdout.close()\n"},
    {"Input", "import sys\nprint(input('who? '))\nprint(sys.stdin.read())\n"},
    {"Sibling", "import sibling\nprint(sibling.__name__, sibling.value)\n"},
    {"Pickle",
     "import pickle\nclass C:\n    def __eq__(self, other):\n        return type(self) is type(other)\n"
     "print(C() == pickle.loads(pickle.dumps(C())), C.__module__, C.__qualname__)\n"},
    {"Processes",
     "import multiprocessing\ndef square(x):\n    return x * x\n"
     "if __name__ == '__main__':\n"
     "    for method in ('fork', 'spawn'):\n"
     "        with multiprocessing.get_context(method).Pool(2) as pool:\n"
     "            print(method, pool.map(square, [1, 2, 3]))\n"},
    {"ForkedChild",
     "import os, sys\nprint('before', flush=True)\nchild = os.fork()\nif child == 0:\n    print('child')\n    "
     "sys.exit(4)\n"
     "print(os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]))\n"},
    {"InterruptAsRaised", "import atexit\natexit.register(print, 'end')\nraise KeyboardInterrupt\n"},
    {"Signals",
     "import signal\nprint([signal.getsignal(number) for number in (signal.SIGINT, signal.SIGPIPE, "
     "signal.SIGTERM)])\n"},
    {"Warning", "import warnings\nwarnings.warn('careful', DeprecationWarning)\n"},
};

/// What differs for good reasons: where the executable and the library lie, and addresses.
std::string comparable(std::string text, const fs::path& program) {
    for (std::size_t at = text.find(program.string()); at != std::string::npos; at = text.find(program.string(), at))
        text.replace(at, program.string().size(), "<program>");
    for (const std::string_view library : {"python313.zip/", "lib/python3.13/"})
        for (std::size_t at = text.find(library); at != std::string::npos; at = text.find(library, at)) {
            const std::size_t quote = text.rfind('"', at);
            text.replace(quote + 1, at + library.size() - quote - 1, "<library>/");
            at = quote;
        }
    for (std::size_t at = text.find("0x"); at != std::string::npos; at = text.find("0x", at + 2))
        text.erase(at + 2, std::min(text.find_first_not_of("0123456789abcdef", at + 2), text.size()) - at - 2);
    return text;
}

Ended comparableEnd(const Command& command) {
    Ended ended = run(command);
    ended.out = comparable(ended.out, command.program);
    ended.err = comparable(ended.err, command.program);
    return ended;
}

void expectAsPython(Command command) {
    const Ended here = comparableEnd(command);
    command.program = process::python();
    const Ended there = comparableEnd(command);
    EXPECT_EQ(here.out, there.out);
    EXPECT_EQ(here.err, there.err);
    EXPECT_EQ(here.status, there.status);
}

LING_TABLE(ShellPrograms, ::testing::Test, kPrograms);

TEST_P(ShellPrograms, RunAsUnderPython) {
    const Program& program = GetParam();
    const Folder folder;
    (void)folder.write("sub/program.py", program.code);
    (void)folder.write("sub/sibling.py", "value = 5\n");
    Command command = shell({"sub/program.py"});
    command.arguments.insert(command.arguments.end(), program.arguments.begin(), program.arguments.end());
    command.directory = folder.path();
    command.input = "somebody\nand\nmore";
    expectAsPython(command);
}

const struct Call {
    const char* name;
    std::vector<std::string> arguments;
    const char* input = "";

    friend void PrintTo(const Call& call, std::ostream* out) { *out << call.name; }
} kCalls[] = {
    {"ScriptHelp", {"script.py", "--help"}},
    {"ScriptWrongUsage", {"script.py", "--width", "wide"}},
    {"ModuleOfTheLibrary", {"-m", "json.tool", "--indent", "1"}, "{\"a\": [1, 2]}"},
    {"ModuleHelp", {"-m", "json.tool", "--help"}},
    {"ModuleInTheFolder", {"-m", "package.module", "-m", "--version"}},
    {"ModuleOfAPackage", {"-m", "package"}},
    {"ModuleThatIsAbsent", {"-m", "no_such_module"}},
    {"Folder", {"application", "--version"}},
    {"FolderWithoutMain", {"package/empty"}},
    {"Archive", {"application.zip", "a"}},
    {"CompiledFile", {"compiled/module.pyc", "a"}},
    {"LinkToAScript", {"link.py"}},
    {"StandardInput", {"-", "a", "-"}, "import sys\nprint(sys.argv, sys.path[0], __file__)\n1 / 0\n"},
    {"Code", {"-c", "import sys\nprint(sys.argv, sys.path[0])\ndef f():\n    1 / 0\nf()", "--help", "-x"}},
    {"CodeStar", {"-c", "from math import *\nclass C:\n    x = floor(2.5)\nprint(C.x, C.__module__)"}},
    {"CodeSyntaxError", {"-c", "print(1"}},
};

LING_TABLE(ShellCalls, ::testing::Test, kCalls);

TEST_P(ShellCalls, WorkAsUnderPython) {
    const Folder folder;
    constexpr const char* kModule =
        "import sys\nprint(__name__, __package__, __spec__.name, __file__, sys.argv, sys.path[0])\n";
    (void)folder.write("package/__init__.py", "");
    (void)folder.write("package/__main__.py", kModule);
    (void)folder.write("package/module.py", kModule);
    (void)folder.write("package/failing.py", "def f():\n    1 / 0\nf()\n");
    (void)folder.write("package/empty/nothing.py", "");
    (void)folder.write("script.py",
                       "import argparse\nparser = argparse.ArgumentParser()\n"
                       "parser.add_argument('--width', type=int)\nparser.parse_args()\n");
    (void)folder.write("application/__main__.py", kModule);
    (void)folder.write("compiled/module.py", "import sys\nprint(sys.argv, __file__, type(__loader__))\n");
    fs::create_symlink("compiled/module.py", folder.path() / "link.py");
    Command prepare = shell({"-c",
                             "import py_compile, sys, zipfile\n"
                             "py_compile.compile('compiled/module.py', 'compiled/module.pyc')\n"
                             "with zipfile.ZipFile('application.zip', 'w') as file:\n"
                             "    file.write('package/module.py', '__main__.py')\n"});
    prepare.directory = folder.path();
    ASSERT_EQ(run(prepare).err, "");

    Command command = shell(GetParam().arguments);
    command.directory = folder.path();
    command.input = GetParam().input;
    command.environment.emplace_back("PYTHONDONTWRITEBYTECODE", "1");
    expectAsPython(command);
}

// The checkers map more than any limit leaves.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST(ShellMemory, AProgramOutlivesTheEndOfItsMemory) {
    const Ended ended = run(shell({"-c", R"(
import resource
numbers, texts = ling.List([1, 2]), ling.List(["a"])
long = "x" * (240 << 20)
def repeat_in_place():
    same = numbers
    same *= 10 ** 8
actions = [
    lambda: numbers * 10 ** 8,
    repeat_in_place,
    lambda: texts.append(long),
    lambda: texts.extend([long]),
    lambda: texts.indexOf(long),
    lambda: long in texts,
    lambda: ling.display(long),
    lambda: texts[long],
    lambda: setattr(texts, "own", long),
    lambda: ling.Error(long),
    lambda: ling.List(iter([long])),
    lambda: texts == long,
]
resource.setrlimit(resource.RLIMIT_AS, (600 << 20, resource.RLIM_INFINITY))
for action in actions:
    try:
        print(action())
    except RuntimeError as error:
        print(error)
print(len(numbers), len(texts), list(numbers))
)"}));
    EXPECT_EQ(ended.err, "");
    std::string expected;
    for (int i = 0; i < 12; ++i)
        expected += "Out of memory.\n";
    EXPECT_EQ(ended.out, expected + "2 1 [1, 2]\n");
    EXPECT_EQ(ended.status, 0);
}
#endif

}  // namespace
