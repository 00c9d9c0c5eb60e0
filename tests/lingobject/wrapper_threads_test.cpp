#include "bridge/convert.h"
#include "ling/ling.h"
#include "support/python_test.h"

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

/// Wrappers on many threads at once.

namespace {

using ling::python::GilGuard;
using ling::python::PyRef;

class WrapperThreads : public PythonTest {};

/// A class of its own for each turn, and threads that wrap their first instances at once.
TEST_F(WrapperThreads, ThatWrapAClassFirstGetOneType) {
    expectValuesToStay();
    static int turn = 0;
    for (int round = 0; round < 50; ++round) {
        const ling::Class_Generic cls = ling::internal::defclass_impl("Fresh" + std::to_string(turn++), "")
                                            .method("act", "", [](const ling::Any&) { return 1; })
                                            .build();
        std::atomic<int> ready = 0;
        std::vector<PyTypeObject*> types(8);
        std::vector<std::thread> threads;
        for (PyTypeObject*& type : types)
            threads.emplace_back([&] {
                const ling::Any value = cls.allocateInstance();
                for (++ready; ready < 8;)
                    std::this_thread::yield();
                const GilGuard gil;
                PyRef wrapper = PyRef::steal(ling::python::toPython(value));
                type = Py_TYPE(wrapper.get());
            });
        for (std::thread& thread : threads)
            thread.join();
        for (PyTypeObject* type : types)
            EXPECT_EQ(type, types[0]);
    }
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
            wrappers.push_back(ling::python::toPython(ling::List_Generic{ling::Boxed<Counted>(Counted{end})}));
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
    const std::size_t before = ling::internal::live_object_count();
    ling::List_Generic holder;
    {
        const GilGuard gil;
        PyRef inner = PyRef::steal(ling::python::toPython(ling::List_Generic{1}));
        PyRef list = PyRef::steal(PyList_New(0));
        ASSERT_EQ(PyList_Append(list.get(), inner.get()), 0);
        holder.append(ling::python::toLing(list.get()));
    }
    std::thread([&holder] { holder = ling::List_Generic::empty(); }).join();
    EXPECT_EQ(ling::internal::live_object_count(), before + 1);
}

}  // namespace
