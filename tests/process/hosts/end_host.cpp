/// A host that prints through Python and ends, or writes where nobody reads:
///
///     end_host MODE EXTENSIONS

#include "host_program.h"
#include "ling/interfaces.h"
#include "ling/native_function.h"

#include <unistd.h>
#include <atomic>
#include <csignal>
#include <thread>

namespace {

using namespace host_program;

ling::I_Language python() {
    const auto language = ling::find_language("Python");
    if (!language)
        fail("no Python");
    return *language;
}

void runPython(const char* statements) {
    const ling::Any result = python().evaluate(statements);
    if (ling::internal::is_error_result(result))
        showValue(result);
}

void forget() { runPython("import sys\nprint('printed')\nprint('told', end='', file=sys.stderr)"); }

/// Somebody else keeps the lock for as long as it can.
void forgetWhilePythonRuns() {
    forget();
    std::thread([] { runPython("while True: pass"); }).detach();
}

/// And here for good: nothing can be written, but the process ends.
void forgetWithoutTheLock() {
    static std::atomic<bool> isHeld = false;
    forget();
    std::thread([] {
        const ling::Map_Generic names{{"hold", ling::make_function("hold", "", [] {
                                           isHeld = true;
                                           for (;;)
                                               pause();
                                       })}};
        (void)python().evaluateExpression("hold()", names);
    }).detach();
    while (!isHeld)
        std::this_thread::yield();
}

void forgetBelowPython() {
    const ling::Map_Generic names{{"leave", ling::make_function("leave", "", [] { std::exit(0); })}};
    (void)python().evaluateExpression("[print('printed'), leave()]", names);
}

void finish() {
    runPython(R"(
import atexit, threading, time
def work():
    time.sleep(0.1)
    print('thread')
threading.Thread(target=work).start()
atexit.register(print, 'exit function')
print('printed'))");
    showValue(python().finish());
    showValue(python().finish());
}

/// Python's own writes, and those of native code that it calls, fail; a child has the default again.
void breakPipes() {
    runPython(R"(
import os, signal, socket, subprocess, sys
def attempt(write, *arguments):
    try:
        write(*arguments)
        print('written')
    except OSError as error:
        print(type(error).__name__)
r, w = os.pipe()
os.close(r)
attempt(os.write, w, b'x')
a, b = socket.socketpair()
b.close()
attempt(a.send, b'x')
print(subprocess.run(['/bin/sh', '-c', 'kill -PIPE $$'], restore_signals=False).returncode)
sys.stdout.flush())");
}

void breakOwnPipe() {
    int ends[2];
    if (pipe(ends) != 0 || close(ends[0]) != 0)
        fail("no pipe");
    (void)!write(ends[1], "x", 1);
    show("still there");
    std::fflush(stdout);
}

volatile std::sig_atomic_t hostSignals = 0;

/// A disposition of every kind, before the start and used after it.
void keepDispositions() {
    breakOwnPipe();
    breakPipes();
    (void)python().evaluateWithin(0.01, "while True: pass");
    show(hostSignals == 3 ? "host's handler" : "somebody else's handler");
    for (const int number : {SIGINT, SIGTERM, SIGUSR2, SIGUSR1, SIGRTMIN, SIGRTMAX - 1}) {
        struct sigaction now {};
        (void)sigaction(number, nullptr, &now);
        show(now.sa_handler == SIG_IGN ? "ignored" : "changed");
    }
}

struct Mode {
    const char* name;
    void (*run)();
};
constexpr Mode kModes[] = {
    {"Forget", forget},
    {"ForgetBusy", forgetWhilePythonRuns},
    {"ForgetHeld", forgetWithoutTheLock},
    {"ForgetBelowPython", forgetBelowPython},
    {"Finish", finish},
    {"Pipes", breakPipes},
    {"OwnPipe", breakOwnPipe},
    {"Dispositions", keepDispositions},
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3)
        fail("usage: end_host MODE EXTENSIONS");
    (void)std::signal(SIGPIPE, SIG_DFL);  // Whatever the test was started with.
    if (std::string_view(argv[1]) == "Dispositions") {
        (void)std::signal(SIGPIPE, [](int) { hostSignals = hostSignals + 1; });
        for (const int number : {SIGINT, SIGTERM, SIGUSR2, SIGUSR1, SIGRTMIN, SIGRTMAX - 1})
            (void)std::signal(number, SIG_IGN);
    }
    loadExtensions(argv[2]);
    for (const Mode& mode : kModes) {
        if (std::string_view(argv[1]) == mode.name) {
            mode.run();
            return 0;
        }
    }
    fail("no such mode");
}
