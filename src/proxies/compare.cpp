#include "proxies/compare.h"

#include "bridge/compile_helper.h"
#include "bridge/convert.h"
#include "host/entry.h"
#include "host/platform.h"
#include "host/py_ref.h"
#include "host/stack_room.h"
#include "ling/comparison.h"
#include "proxies/comparison_scope.h"
#include "proxies/python_proxy.h"

#include <optional>

namespace ling::python {

namespace {

constexpr const char* kHelperSource =
    "def cmp(a, b):\n    if a > b:\n        return 1\n    else:\n        if a < b:\n            return -1\n    return "
    "0";

struct Attempt {
    int operation;
    int answer;
};
constexpr Attempt kAttempts[] = {{Py_LT, -1}, {Py_GT, 1}, {Py_EQ, 0}};

/// What the left object's own comparison says, or none if none of its operators answers `True`. One that raises is
/// passed over, and its exception with it: the next operator must not start with an error pending.
ling::Any compareByType(PyObject* left, PyObject* right) {
    const richcmpfunc compare = Py_TYPE(left)->tp_richcompare;
    if (compare == nullptr)
        return {};
    for (const Attempt& attempt : kAttempts) {
        PyRef result = PyRef::steal(compare(left, right, attempt.operation));
        if (!result)
            forgetError();
        if (result.get() == Py_True)
            return attempt.answer;
    }
    return {};
}

/// The compiled helper, kept for the process; null, with `error` set, when it cannot be compiled. Two threads that come
/// first at once may both compile it: the lock orders them, and the one that is kept serves for all.
PyObject* helper(ling::Any& error) {
    static constinit PyObject* kept = nullptr;
    if (kept == nullptr) {
        PyObject* compiled = compileHelper(kHelperSource, error);
        if (kept == nullptr)
            kept = compiled;
        else
            Py_XDECREF(compiled);
    }
    return kept;
}

/// What the helper says, none if it raises or says nothing of use, or the error of making it.
ling::Any compareByHelper(PyObject* left, PyObject* right) {
    ling::Any problem;
    PyObject* function = helper(problem);
    if (function == nullptr)
        return platform::failure(u"Unable to call helper function.");
    PyRef result = PyRef::steal(PyObject_CallFunctionObjArgs(function, left, right, nullptr));
    const ling::Any order = result ? ling::internal::result_unwrap_lazy(toLing(result.get())) : ling::Any();
    forgetError();
    return order.is(ling::Kind::Integer) ? order : ling::Any();
}

std::int64_t byIdentity(const ling::Any& self, const ling::Any& other) {
    return ling::object_id(self) - ling::object_id(other);
}

/// Whether the stack has room for the hash of the object. Python hashes tuples in tuples without a look at the stack,
/// so this goes down as far before, in frames that are no smaller than its own.
[[gnu::noinline]] bool hasRoomToHash(PyObject* object) {
    if (!PyTuple_Check(object))
        return true;
    constexpr std::size_t kFrames = 256;  // What a level takes in Python is about half of that.
    volatile char room[kFrames];
    room[0] = 0;
    bool hasRoom = hasStackRoom();
    for (Py_ssize_t i = 0; hasRoom && i < PyTuple_GET_SIZE(object); ++i)
        hasRoom = hasRoomToHash(PyTuple_GET_ITEM(object, i));
    return hasRoom && room[0] == 0;
}

}  // namespace

std::int64_t hashObject(const ling::Any& self) {
    PyObject* object = PythonProxy::pythonObject(self);
    if (object == nullptr)
        return ling::object_id(self);
    PythonEntry entry;
    if (!hasRoomToHash(object)) {
        platform::WalkCheck::noteTooDeep();
        return Py_HashPointer(object);
    }
    const Py_hash_t hash = PyObject_Hash(object);
    if (hash != -1)
        return hash;
    forgetError();
    return Py_HashPointer(object);
}

ling::Any compareObjects(const ling::Any& self, const ling::Any& other) {
    PyObject* left = PythonProxy::pythonObject(self);
    PyObject* right = PythonProxy::pythonObject(other);
    if (left == nullptr || right == nullptr)
        return byIdentity(self, other);
    if (left == right)
        return 0;
    if (!hasStackRoom()) {
        platform::WalkCheck::noteTooDeep();
        return byIdentity(self, other);
    }
    PythonEntry entry;
    if (isInterruptionHeld())
        return byIdentity(self, other);
    ComparisonScope scope;
    if (std::optional<ling::Any> known = scope.findOrOpen(left, right))
        return *std::move(known);
    ling::Any order = compareByType(left, right);
    if (order.isNone())
        order = compareByHelper(left, right);
    if (order.isNone())
        order = byIdentity(self, other);
    scope.close(left, right, order);
    return order;
}

}  // namespace ling::python
