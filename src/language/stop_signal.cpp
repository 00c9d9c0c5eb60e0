#include "language/stop_signal.h"

#include "host/cached_import.h"
#include "host/interruption.h"
#include "host/py_ref.h"

#include <pthread.h>

#include <atomic>
#include <csignal>

namespace ling::python {

namespace {

constinit CachedImport setHandler{"_signal", "signal"};

/// Zero until it is prepared. What follows is written before.
constinit std::atomic<int> signalNumber{0};
pthread_t signalThread;
bool (*signalIsMeant)();

constinit thread_local bool isTried = false;
constinit thread_local bool isPrepared = false;

PyObject* handle(PyObject*, PyObject*) {
    if (signalIsMeant()) {
        PyErr_SetNone(PyExc_KeyboardInterrupt);
        return nullptr;
    }
    Py_RETURN_NONE;
}

PyMethodDef kHandler{"stop", handle, METH_VARARGS, "Ends code that is to be ended."};

bool isFree(int number) {
    struct sigaction now {};
    return sigaction(number, nullptr, &now) == 0 && (now.sa_flags & SA_SIGINFO) == 0 && now.sa_handler == SIG_DFL;
}

int findFreeSignal() {
    for (int number = SIGRTMAX - 1; number > SIGRTMIN; --number)
        if (isFree(number))
            return number;
    return 0;
}

/// Python refuses, with an exception, on any thread but its main one.
bool prepare(bool (*isMeant)()) {
    const int number = signalNumber.load() == 0 ? findFreeSignal() : 0;
    if (number == 0)
        return false;
    signalIsMeant = isMeant;
    PyRef handler = PyRef::steal(PyCFunction_New(&kHandler, nullptr));
    PyRef set = PyRef::steal(handler && setHandler.get() != nullptr
                                 ? PyObject_CallFunction(setHandler.get(), "iO", number, handler.get())
                                 : nullptr);
    if (!set) {
        forgetError();
        return false;
    }
    signalThread = pthread_self();
    signalNumber.store(number);
    return true;
}

}  // namespace

bool prepareStopSignal(bool (*isMeant)()) {
    if (!isTried) {
        isTried = true;
        isPrepared = prepare(isMeant);
    }
    return isPrepared;
}

bool hasStopSignal() noexcept { return isPrepared; }

bool sendStopSignal() noexcept {
    const int number = signalNumber.load();
    if (number == 0 || isFree(number))
        return false;
    (void)PyErr_SetInterruptEx(number);        // Also where the host blocks the signal.
    (void)pthread_kill(signalThread, number);  // What waits for the system is woken.
    return true;
}

}  // namespace ling::python
