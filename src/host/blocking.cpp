#include "host/blocking.h"

#include "host/platform.h"

#include <Python.h>

namespace ling::python {

namespace {

void* leave() noexcept { return PyThreadState_GetUnchecked() != nullptr ? PyEval_SaveThread() : nullptr; }

void enter(void* left) noexcept { PyEval_RestoreThread(static_cast<PyThreadState*>(left)); }

constexpr platform::GuestLock kInterpreterLock{&leave, &enter};

}  // namespace

void leaveLockToBlockingCode() { platform::addGuestLock(kInterpreterLock); }

}  // namespace ling::python
