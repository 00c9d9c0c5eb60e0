#include <gtest/gtest.h>

#include <csignal>
#include <string>

#include "process/support/process.h"

/// The end of the shell's process: nothing that was written is lost, and the parent learns how it ended.

namespace {

namespace fs = std::filesystem;
using process::Command;
using process::contentOf;
using process::Ended;
using process::Folder;
using process::run;
using process::runAndSignal;
using process::shell;

TEST(ShellEnd, NothingPrintedToAPipeIsLost) {
    const Ended ended = run(shell({"-c",
                                   "import sys\nfor number in range(100000):\n    print(number)\n"
                                   "sys.stderr.write('e' * 100000)"}));
    std::string expected;
    for (int number = 0; number < 100000; ++number)
        expected += std::to_string(number) + "\n";
    EXPECT_EQ(ended.out, expected);
    EXPECT_EQ(ended.err, std::string(100000, 'e'));
    EXPECT_EQ(ended.status, 0);
}

// python3 closes what a program left open when it takes the program's modules apart.
TEST(ShellEnd, FilesLeftOpenAreWritten) {
    const Folder folder;
    (void)folder.write(
        "logs.py",
        "class Keeper:\n    pass\nkeeper = Keeper()\nkeeper.file = open('module.txt', 'w')\n"
        "keeper.file.write('by a module')\ncircle = [open('circle.txt', 'wb')]\ncircle[0].write(b'by a circle')\n"
        "circle.append(circle)\n");
    (void)folder.write(
        "program.py",
        "import logs, sys, threading, time\nout = open('program.txt', 'w')\nout.write('by the program')\n"
        "def use():\n    return out\n"
        "def endless():\n    kept = open('thread.txt', 'w')\n    kept.write('by a thread')\n"
        "    while True:\n        time.sleep(0.01)\n"
        "threading.Thread(target=endless, daemon=True).start()\ntime.sleep(0.1)\n"
        "sys.held = open('held.txt', 'w')\nsys.held.write('by another')\n1 / 0\n");
    Command command = shell({"program.py"});
    command.directory = folder.path();
    EXPECT_EQ(run(command).status, 1);
    EXPECT_EQ(contentOf(folder.path() / "program.txt"), "by the program");
    EXPECT_EQ(contentOf(folder.path() / "module.txt"), "by a module");
    EXPECT_EQ(contentOf(folder.path() / "circle.txt"), "by a circle");
    EXPECT_EQ(contentOf(folder.path() / "thread.txt"), "by a thread");
    EXPECT_EQ(contentOf(folder.path() / "held.txt"), "by another");
}

TEST(ShellEnd, OutputThatCannotBeWrittenIsReported) {
    for (const char* code : {"print(1)", "print(1); raise SystemExit(3)"}) {
        Command command = shell({"-c", code});
        command.output = "/dev/full";
        const Ended ended = run(command);
        EXPECT_EQ(ended.err,
                  "Exception ignored on flushing sys.stdout:\nOSError: [Errno 28] No space left on device\n");
        EXPECT_EQ(ended.status, 120);
    }
}

TEST(ShellEnd, AReaderThatGoesAwayIsAnErrorOfPython) {
    Command command;
    command.program = "/bin/sh";
    command.arguments = {"-c", "\"$0\" -c 'while True: print(1)' | head -1; wait", shell({}).program.string()};
    command.environment = shell({}).environment;
    const Ended ended = run(command);
    EXPECT_EQ(ended.out, "1\n");
    EXPECT_NE(ended.err.find("BrokenPipeError: [Errno 32] Broken pipe"), std::string::npos) << ended.err;
}

TEST(ShellEnd, ControlCInterruptsARunningProgram) {
    const Ended ended = runAndSignal(shell({"-c",
                                            "import atexit\natexit.register(print, 'end')\nprint('ready', flush=True)\n"
                                            "while True:\n    pass"}),
                                     "ready", SIGINT);
    EXPECT_EQ(ended.out, "ready\nend\n");
    EXPECT_NE(ended.err.find("File \"<string>\", line "), std::string::npos) << ended.err;
    EXPECT_EQ(ended.err.substr(ended.err.size() - 18), "KeyboardInterrupt\n");
    EXPECT_EQ(ended.status, -SIGINT);
}

TEST(ShellEnd, ControlCEndsTheWaitForThreads) {
    Command command = shell({"-c",
                             "import atexit, threading, time\natexit.register(print, 'end')\n"
                             "def work():\n    time.sleep(0.3)\n    print('ready', flush=True)\n    time.sleep(50)\n"
                             "threading.Thread(target=work).start()\n"});
    command.limit = std::chrono::seconds(20);
    const Ended ended = runAndSignal(command, "ready", SIGINT);
    EXPECT_EQ(ended.out, "ready\nend\n");
    EXPECT_NE(ended.err.find(", in _shutdown\n"), std::string::npos) << ended.err;
    EXPECT_EQ(ended.status, 0);
}

/// Again and again, while `ling` calls back into Python for each of many objects, and in walks through native values
/// alone that would take for ever.
constexpr const char* kInterrupted = R"(import os, signal, sys, threading

class Item:
    def __eq__(self, other): return False
    def __hash__(self): return 1
    def __repr__(self): return 'item'
    def __int__(self): return 1

items, numbers = ling.List([[Item()] for _ in range(300)]), [Item() for _ in range(300)]
work = [lambda: [Item()] in items, lambda: repr(items), lambda: str(items), lambda: ling.List(numbers)]
caught = 0
for turn in range(24):
    try:
        timer = threading.Timer(0.003 + turn * 0.0007, os.kill, (os.getpid(), signal.SIGINT))
        timer.start()
        while timer.is_alive(): work[turn % 4]()
        for _ in range(1000): pass
    except KeyboardInterrupt:
        caught += 1
print(caught)

def doubled(kind):
    x = kind([1])
    for _ in range(60): x = kind([x, x])
    return x

class Stop(Exception): pass
def stop(*_): raise Stop

a, b = doubled(ling.List), doubled(ling.List)
walks = [lambda: repr(a), lambda: str(a), lambda: ling.display(a), lambda: repr([[a]]), lambda: a == b,
         lambda: a in ling.List([b]), lambda: ling.compare_objects(a, b), lambda: ling.Map({1: a}) == ling.Map({1: b}),
         lambda: ling.bound_method(ling.List([b]), 'indexOf')(a), lambda: ling.python.LanguagePython.toCode(a)]
for handler, expected in (signal.default_int_handler, KeyboardInterrupt), (stop, Stop):
    signal.signal(signal.SIGALRM, handler)
    for walk in walks:
        try:
            signal.setitimer(signal.ITIMER_REAL, 0.02)
            walk()
        except expected: pass
ling.bound_method(lambda: sys.exit(7), 'invoke')([])
)";

TEST(ShellEnd, ControlCReachesTheProgramOutOfAnyCallback) {
    const Folder folder;
    const Ended ended = run(shell({folder.write("program.py", kInterrupted).string()}));
    EXPECT_EQ(ended.out, "24\n") << ended.err;
    EXPECT_EQ(ended.status, 7);
}

/// Modules of the standard library that files beside the program spoil.
constexpr const char* kSpoilt = R"(
for make in [lambda: ling.Decimal('1.5'), lambda: ling.Date(2024, 1, 2)] * 2:
    try: print(make())
    except ImportError as error: print(error, repr(error.__cause__))
)";

TEST(ShellEnd, AValueWhoseModuleIsSpoiltIsAnErrorEachTime) {
    const Folder folder;
    (void)folder.write("numbers.py", "");
    (void)folder.write("datetime.py", "raise OSError('no clock')\n");
    const Ended ended = run(shell({folder.write("program.py", kSpoilt).string()}));
    const std::string once =
        "cannot import name 'Decimal' from 'decimal' AttributeError(\"module 'numbers' has no attribute 'Number'\")\n"
        "cannot import name 'date' from 'datetime' OSError('no clock')\n";
    EXPECT_EQ(ended.out, once + once);
    EXPECT_EQ(ended.status, 0) << ended.err;
}

}  // namespace
