#include "bridge/convert.h"
#include "ling/ling.h"
#include "support/python_test.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

/// Wrappers on many threads at once.

namespace {

class WrapperThreads : public PythonTest {};

/// A class whose members are declared late. Whoever asks for them gives the interpreter lock up, as an import does, and
/// waits a while for another thread that comes to make the same type.
class Meeting final : public internal::object_value_class {
public:
    Meeting() : object_value_class(u"Meeting") {
        (void)add_parent_unsafe(Any::getClass());
        expect_members_unsafe();
    }
    bool declareMembers() override {
        PyThreadState* const state = PyGILState_Check() != 0 ? PyEval_SaveThread() : nullptr;
        ++arrived;
        for (int turn = 0; turn < 200 && arrived < 2; ++turn)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        if (state != nullptr)
            PyEval_RestoreThread(state);
        return true;
    }

private:
    std::atomic<int> arrived = 0;
};

TEST_F(WrapperThreads, ThatWrapAClassFirstGetOneType) {
    expectValuesToStay();
    const Class_Generic cls = Class_Generic::adopt(new Meeting);
    std::vector<PyTypeObject*> types(2);
    std::vector<std::thread> threads;
    for (PyTypeObject*& type : types)
        threads.emplace_back([&] {
            const Any value = cls.allocateInstance();
            const GilGuard gil;
            PyRef wrapper = PyRef::steal(toPython(value));
            type = Py_TYPE(wrapper.get());
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(types[0], types[1]);
}

TEST_F(WrapperThreads, ThatDropWrappersReleaseEachValueOnce) {
    constexpr int kWrappers = 200;
    std::atomic<int> ended = 0;
    struct Counted {
        std::shared_ptr<void> end;
    };
    std::vector<PyObject*> wrappers;
    {
        const GilGuard gil;
        for (int i = 0; i < kWrappers; ++i) {
            const std::shared_ptr<void> end(nullptr, [&ended](void*) { ++ended; });
            wrappers.push_back(toPython(List_Generic{Boxed<Counted>(Counted{end})}));
        }
    }
    std::vector<std::thread> threads;
    for (int k = 0; k < 8; ++k)
        threads.emplace_back([&wrappers, k] {
            for (int i = k; i < kWrappers; i += 8) {
                const GilGuard gil;
                Py_DECREF(wrappers[static_cast<std::size_t>(i)]);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(ended, kWrappers);
}

/// The last reference to a `ling` object is dropped by `ling` code, without the interpreter lock, and its end lets go
/// of Python objects and wrappers.
TEST_F(WrapperThreads, ThatNeverSawPythonMayEndWhatHoldsWrappers) {
    const std::size_t before = internal::live_object_count();
    List_Generic holder;
    {
        const GilGuard gil;
        PyRef inner = PyRef::steal(toPython(List_Generic{1}));
        PyRef list = PyRef::steal(PyList_New(0));
        ASSERT_EQ(PyList_Append(list.get(), inner.get()), 0);
        holder.append(toLing(list.get()));
    }
    std::thread([&holder] { holder = List_Generic::empty(); }).join();
    EXPECT_EQ(internal::live_object_count(), before + 1);
}

}  // namespace
