/// A host that ends in one of several ways while Python still holds something of it, or it something of Python:
///
///     lock_host MODE EXTENSIONS
///
/// Prints "end" last of all and exits with 0, in the time that the test gives it.

#include "host_program.h"
#include "ling/basic_values.h"
#include "ling/native_function.h"

#include <sys/wait.h>
#include <unistd.h>
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace {

using namespace host_program;

/// Destroyed at the process's exit, when the interpreter is still there and its threads are not.
ling::List_Generic& heldAtExit() {
    static ling::List_Generic held;
    return held;
}

void holdValues() {
    for (const char* expression : {"[1, 2]", "{'a': object()}", "len", "type('T', (), {})", "ValueError('x')"})
        heldAtExit().append(evaluate(expression));
}

void runPython(const char* statements) {
    const ling::Any result =
        call("evaluate", ling::String(statements), ling::Map_Generic(), ling::Map_Generic(), ling::Map_Generic());
    if (ling::internal::is_error_result(result))
        showValue(result);
}

/// Runs Python on another thread until the process ends. Whoever does not wait for the lock finds it taken.
void keepPythonBusy() {
    static std::atomic<bool> started = false;
    std::thread([] {
        started = true;
        runPython("while True: pass");
    }).detach();
    while (!started)
        std::this_thread::yield();
}

void heldByStatics() { holdValues(); }

void heldByStaticsWhilePythonRuns() {
    holdValues();
    keepPythonBusy();
}

/// Each thread still has its kept thread state when the process ends.
void waitingThreads() {
    static std::atomic<int> ready = 0;
    for (int index = 0; index < 4; ++index)
        std::thread([] {
            runPython("import threading");
            ++ready;
            for (;;)
                std::this_thread::sleep_for(std::chrono::seconds(1));
        }).detach();
    while (ready < 4)
        std::this_thread::yield();
}

/// `exit` on a thread that Python came to know through us.
void exitOnThread() {
    std::thread([] {
        runPython("import threading\nthreading.local().x = 1");
        std::exit(0);
    }).join();
}

/// `exit` from a function that Python code calls: the thread still holds the lock.
void exitBelowPython() {
    holdValues();
    std::thread([] {
        ling::Map_Generic globals;
        globals.set(ling::String("leave"), ling::make_function("leave", "", [] { std::exit(0); }));
        (void)call("evaluate", ling::String("leave()"), ling::Map_Generic(), globals, ling::Map_Generic());
        fail("still there");
    }).join();
}

/// A value held by a thread-local object that is older than the thread's first call.
void heldByThreadLocal() {
    std::thread([] {
        thread_local ling::Any held;
        held = ling::Any(1);
        held = evaluate("[object()]");
    }).join();
}

void expectCleanEnd(pid_t child) {
    int status = -1;
    waitpid(child, &status, 0);
    if (status != 0)
        fail("the child ended with status " + std::to_string(status));
}

/// The end comes while another thread fetches the first resource, which imports what that takes: early and late in it.
void duringTheFirstFetch() {
    for (const int milliseconds : {0, 2, 5, 10, 20, 40, 80, 160}) {
        const pid_t child = fork();
        if (child != 0) {
            expectCleanEnd(child);
            continue;
        }
        std::thread([] {
            (void)ling::load_resource("data:,x");
            for (;;)
                (void)ling::load_resource("http://127.0.0.1:9/");
        }).detach();
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
        std::exit(0);
    }
}

pid_t forkByPython() {
    const ling::Any child =
        call("evaluate", ling::String("import os, warnings\nwarnings.simplefilter('ignore')\nreturn os.fork()"),
             ling::Map_Generic(), ling::Map_Generic(), ling::Map_Generic());
    const auto number = ling::Integer::cast(child);
    if (!number)
        fail("no fork");
    return static_cast<pid_t>(number->value());
}

/// The child of a plain fork has one thread, and the lock may be held by one that it does not have.
void forkedThread() {
    keepPythonBusy();
    std::thread([] {
        runPython("import threading");
        std::this_thread::sleep_for(std::chrono::milliseconds(20));  // The busy thread has the lock again.
        const pid_t child = fork();
        if (child == 0)
            std::exit(0);
        expectCleanEnd(child);
    }).join();
}

/// The same from within Python: the child is as Python left it, and its thread ends by returning.
void forkedByPython() {
    std::thread([] {
        const pid_t child = forkByPython();
        if (child != 0)
            expectCleanEnd(child);
    }).join();
}

struct Mode {
    const char* name;
    void (*run)();
};
constexpr Mode kModes[] = {
    {"statics", heldByStatics},
    {"statics-busy", heldByStaticsWhilePythonRuns},
    {"waiting-threads", waitingThreads},
    {"exit-on-thread", exitOnThread},
    {"exit-below-python", exitBelowPython},
    {"thread-local", heldByThreadLocal},
    {"forked-thread", forkedThread},
    {"first-fetch", duringTheFirstFetch},
    {"forked-by-python", forkedByPython},
};

/// The process that `main` runs in. Its forked children end in silence.
pid_t firstProcess = 0;

void sayEnd() {
    if (getpid() != firstProcess)
        return;
    std::puts("end");
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3)
        fail("usage: lock_host MODE EXTENSIONS");
    firstProcess = getpid();
    std::atexit(sayEnd);
    (void)heldAtExit();  // Made after the handler was registered, so destroyed before it runs.
    loadExtensions(argv[2]);
    for (const Mode& mode : kModes) {
        if (std::string_view(argv[1]) == mode.name) {
            mode.run();
            return 0;
        }
    }
    fail("no such mode");
}
