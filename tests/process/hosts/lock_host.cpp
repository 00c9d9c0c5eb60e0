/// A host that ends in one of several ways while Python still holds something of it, or it something of Python:
///
///     lock_host MODE EXTENSIONS
///
/// Prints "end" last of all and exits with 0, in the time that the test gives it.

#include "host_program.h"

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

/// Runs Python on another thread until the process ends.
void keepPythonBusy() {
    static std::atomic<bool> started = false;
    std::thread([] {
        started = true;
        runPython("import time\nwhile True: time.sleep(0.001)");
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

/// A value held by a thread-local object that is older than the thread's first call.
void heldByThreadLocal() {
    std::thread([] {
        thread_local ling::Any held;
        held = ling::Any(1);
        held = evaluate("[object()]");
    }).join();
}

/// The child of a plain fork has one thread, and the lock may be held by one that it does not have.
void forkedThread() {
    keepPythonBusy();
    std::thread([] {
        runPython("import threading");
        const pid_t child = fork();
        if (child == 0)
            std::exit(0);
        int status = -1;
        waitpid(child, &status, 0);
        if (status != 0)
            fail("the child ended with status " + std::to_string(status));
    }).join();
}

/// The same from within Python: the child is as Python left it, and its thread ends by returning.
void forkedByPython() {
    std::thread([] {
        const ling::Any child = call("evaluate",
                                     ling::String("import os, warnings\n"
                                                  "warnings.simplefilter('ignore')\n"
                                                  "return os.fork()"),
                                     ling::Map_Generic(), ling::Map_Generic(), ling::Map_Generic());
        if (!child.is(ling::Kind::Integer))
            fail("no fork");
        if (child.asInteger() == 0)
            return;
        int status = -1;
        waitpid(static_cast<pid_t>(child.asInteger()), &status, 0);
        if (status != 0)
            fail("the child ended with status " + std::to_string(status));
    }).join();
}

struct Mode {
    const char* name;
    void (*run)();
};
constexpr Mode kModes[] = {
    {"statics", heldByStatics},           {"statics-busy", heldByStaticsWhilePythonRuns},
    {"waiting-threads", waitingThreads},  {"exit-on-thread", exitOnThread},
    {"thread-local", heldByThreadLocal},  {"forked-thread", forkedThread},
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
