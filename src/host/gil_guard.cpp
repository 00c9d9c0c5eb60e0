#include "host/gil_guard.h"

#include <unistd.h>

namespace ling::python {

namespace {

thread_local bool threadIsEnding = false;

/// The thread state that this plug-in made for one host thread, given back when the thread ends.
class KeptThreadState {
public:
    void keep() noexcept { state_ = PyGILState_GetThisThreadState(); }
    ~KeptThreadState() {
        threadIsEnding = true;
        if (mayRelease())
            release();
    }

private:
    /// The process's first thread ends with the process (or is what is left of it after a fork), and then nobody may
    /// be there any more to give the lock back: its state stays, as it would at any other exit. The same goes for a
    /// thread that ends the process from within Python code, which still holds the lock.
    bool mayRelease() const noexcept {
        return state_ != nullptr && gettid() != getpid() && Py_IsInitialized() != 0 && Py_IsFinalizing() == 0 &&
               PyGILState_GetThisThreadState() == state_ && PyThreadState_GetUnchecked() != state_;
    }
    /// Takes the lock once more, then gives back both counts. The second release finds the count at zero, clears the
    /// state, which may run Python code, and lets the lock go.
    static void release() noexcept {
        (void)PyGILState_Ensure();
        PyGILState_Release(PyGILState_LOCKED);
        PyGILState_Release(PyGILState_UNLOCKED);
    }

    PyThreadState* state_ = nullptr;
};

thread_local KeptThreadState keptThreadState;

}  // namespace

PyGILState_STATE GilGuard::acquireAsNewcomer() {
    const PyGILState_STATE before = PyGILState_Ensure();
    if (threadIsEnding)  // A destructor that runs after ours: nobody is left to give a kept state back.
        return before;
    keptThreadState.keep();     // The count of the call above is the thread's own from now on.
    (void)PyGILState_Ensure();  // This one counts for the guard, whose end has to give the lock back: what Python
    return before;              // says here, that the lock was held, was our doing alone.
}

}  // namespace ling::python
