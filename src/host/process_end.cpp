#include "host/process_end.h"

#include "host/cached_import.h"
#include "host/error_scope.h"
#include "host/gil_guard.h"
#include "host/names.h"
#include "host/py_ref.h"

#include <pthread.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <future>
#include <memory>
#include <thread>

namespace ling::python {

namespace {

constexpr std::chrono::seconds kLongestWait{1};
constexpr std::chrono::seconds kLongestFlush{10};

constinit CachedImport textStream{"_io", "TextIOWrapper"};
constinit const Name kFlush{"flush"};

pid_t startedIn = 0;

/// Streams of other kinds may run anybody's code, for which it is too late.
void flush() {
    const ErrorScope scope;
    for (const char* name : {"__stdout__", "__stderr__"}) {
        PyRef stream = PyRef::borrow(PySys_GetObject(name));
        if (stream && reinterpret_cast<PyObject*>(Py_TYPE(stream.get())) == textStream.get())
            (void)PyRef::steal(PyObject_CallMethodNoArgs(stream.get(), kFlush.object()));
        forgetError();
    }
}

struct Progress {
    std::promise<void> locked;
    std::promise<void> flushed;
};

/// The lock may be held by somebody who never gives it back, so another thread waits for it. It has no signals: a pipe
/// without a reader is an error there.
void flushOnAnotherThread() {
    const auto progress = std::make_shared<Progress>();
    sigset_t every;
    sigset_t before;
    sigfillset(&every);
    pthread_sigmask(SIG_SETMASK, &every, &before);
    std::thread flusher([progress] {
        const GilGuard gil = GilGuard::ifAlive();
        progress->locked.set_value();
        if (gil)
            flush();
        progress->flushed.set_value();
    });
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    const bool isDone = progress->locked.get_future().wait_for(kLongestWait) == std::future_status::ready &&
                        progress->flushed.get_future().wait_for(kLongestFlush) == std::future_status::ready;
    if (isDone)
        flusher.join();
    else
        flusher.detach();
}

void flushAtEnd() {
    if (getpid() != startedIn || Py_IsInitialized() == 0 || Py_IsFinalizing() != 0)
        return;
    if (PyThreadState_GetUnchecked() != nullptr)
        flush();
    else
        flushOnAnotherThread();
}

}  // namespace

void flushAtProcessEnd() {
    startedIn = getpid();
    (void)std::atexit(flushAtEnd);
}

}  // namespace ling::python
