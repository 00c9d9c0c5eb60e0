#include "host/gil_guard.h"

#include "host/entry.h"
#include "host/py_ref.h"
#include "support/python_test.h"

#include <optional>
#include <thread>

namespace {

class GilGuardTest : public PythonTest {};

std::size_t threadStateCount() {
    GilGuard gil;
    std::size_t count = 0;
    for (PyThreadState* state = PyInterpreterState_ThreadHead(PyInterpreterState_Main()); state != nullptr;
         state = PyThreadState_Next(state))
        ++count;
    return count;
}

template <class Body>
void onNewThread(Body body) {
    std::thread(body).join();
}

TEST_F(GilGuardTest, HoldsTheLockForItsScopeAndNests) {
    const auto body = [] {
        for (int round = 0; round < 3; ++round) {
            {
                const GilGuard outer = GilGuard::ifAlive();
                PyThreadState* const state = PyThreadState_GetUnchecked();
                EXPECT_NE(state, nullptr);
                { GilGuard inner; }
                EXPECT_EQ(PyThreadState_GetUnchecked(), state);
            }
            EXPECT_EQ(PyThreadState_GetUnchecked(), nullptr) << "round " << round;
        }
    };
    body();
    onNewThread(body);  // Which Python does not know.
}

TEST_F(GilGuardTest, ThreadLocalAndContextVariableLastFromCallToCall) {
    runLocked("import threading, contextvars\nlocal = threading.local()\nvariable = contextvars.ContextVar('v')\n");
    onNewThread([this] {
        runLocked("local.x = 5\nvariable.set(7)\n");
        EXPECT_EQ(text("getattr(local, 'x', 'gone'), variable.get('gone')"), "(5, 7)");
    });
}

TEST_F(GilGuardTest, ThousandShortThreadsLeaveNoThreadState) {
    const std::size_t before = threadStateCount();
    for (int index = 0; index < 1000; ++index)
        onNewThread([] { GilGuard gil; });
    EXPECT_EQ(threadStateCount(), before);
}

TEST_F(GilGuardTest, ThreadEndRunsWhatItsStateHolds) {
    runLocked(
        "import threading\nended = []\nlocal = threading.local()\n"
        "class Held:\n    def __del__(self): ended.append(threading.get_ident())\n");
    onNewThread([this] { runLocked("local.held = Held()\n"); });
    EXPECT_EQ(text("len(ended)"), "1");
}

TEST_F(GilGuardTest, GuardInADestructorThatRunsAfterTheStateWasGivenBack) {
    struct Late {
        std::optional<bool> held;
        ~Late() {
            if (held)
                GilGuard gil;
        }
    };
    const std::size_t before = threadStateCount();
    onNewThread([] {
        thread_local Late late;  // Made before the guard's own thread-local object, so it goes after that.
        late.held = true;
        GilGuard gil;
    });
    EXPECT_EQ(threadStateCount(), before);
}

TEST_F(GilGuardTest, OutermostEntryStartsWithACleanIndicator) {
    {
        GilGuard gil;
        PyErr_SetString(PyExc_OverflowError, "left on purpose");
    }
    PythonEntry entry;
    EXPECT_EQ(PyErr_Occurred(), nullptr);
}

PyObject* enterAgain(PyObject*, PyObject*) {
    PyErr_SetString(PyExc_ValueError, "of the slot");
    { PythonEntry entry; }
    return nullptr;
}

TEST_F(GilGuardTest, EntryBelowPythonCodeLeavesThePendingErrorAlone) {
    static PyMethodDef method = {"enter_again", enterAgain, METH_NOARGS, nullptr};
    GilGuard gil;
    run("def call(f):\n"
        "    try: f()\n"
        "    except ValueError as error: return str(error)\n");
    PyRef call = eval("call");
    PyRef function = PyRef::steal(PyCFunction_New(&method, nullptr));
    PyRef result = PyRef::steal(PyObject_CallOneArg(call.get(), function.get()));
    ASSERT_TRUE(result);
    EXPECT_STREQ(PyUnicode_AsUTF8(result.get()), "of the slot");
}

}  // namespace
