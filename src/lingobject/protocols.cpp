#include "lingobject/protocols.h"

#include "bridge/render.h"
#include "host/error_scope.h"
#include "host/gil_guard.h"
#include "host/platform.h"
#include "ling/comparison.h"
#include "ling/error.h"
#include "ling/interfaces.h"
#include "ling/iterable.h"
#include "lingobject/instance.h"
#include "lingobject/slot_result.h"
#include "lingobject/wrapper_memory.h"

#include <memory>
#include <utility>

namespace ling::python {

namespace {

PyObject* takeNext(const ling::Any& iterator) {
    ling::Any item = ling::unchecked<ling::I_Iterator_Generic>(iterator).next();
    if (item.isHeap())
        item = ling::internal::result_unwrap_lazy(std::move(item));
    if (!ling::internal::is_error_result(item))
        return giveResult(std::move(item));
    forgetError();  // Any failure ends the loop quietly, an interruption apart.
    (void)raiseHeldInterruption();
    return nullptr;
}

/// Raises the error that a walk through a value ended with. Always null.
PyObject* raiseUnfinished(const ling::Any& error) {
    return platform::WalkCheck::isTooDeep() ? raise(PyExc_RecursionError, messageOf(error)) : raiseMessage(error);
}

}  // namespace

void deallocate(PyObject* self) {
    const GilGuard gil;
    WrapperBlock& block = blockOf(self);
    if (block.instance.value == nullptr) {
        Py_DECREF(block.bound.receiver);
    } else {
        const ErrorScope scope;  // The value's end may run any code; an error pending around us is not its business.
        std::destroy_at(&block.cell);
    }
    freeWrapper(&block);
}

Py_hash_t hash(PyObject* self) {
    const platform::WalkCheck walks;
    const Receiver receiver(self);  // What compares as its target does hashes as that, too.
    const ling::Result<std::int64_t> number = ling::internal::is_instance<ling::I_Immutable>(*receiver)
                                                  ? ling::try_hash(*receiver)
                                                  : ling::object_id(*receiver);
    if (mustRaise())
        return -1;
    if (!number) {
        (void)raiseUnfinished(number.error());
        return -1;
    }
    return *number == -1 ? -2 : static_cast<Py_hash_t>(*number);
}

PyObject* compare(PyObject* self, PyObject* other, int operation) {
    ling::Any right;
    if (!takeArgument(other, right))
        return nullptr;
    const platform::WalkCheck walks;
    const ling::Result<std::int64_t> order = ling::try_compare(*Receiver(self), right);
    if (mustRaise())
        return nullptr;
    if (!order)
        return raiseUnfinished(order.error());
    Py_RETURN_RICHCOMPARE(*order, 0, operation);
}

PyObject* representation(PyObject* self) {
    const platform::WalkCheck walks;
    const Receiver receiver(self);
    if (failsLate(receiver))
        return nullptr;
    const ling::Any rendered = renderPython(*receiver);
    return platform::WalkCheck::isTooDeep() ? raiseUnfinished(rendered) : giveResult(rendered);
}

PyObject* text(PyObject* self) {
    const platform::WalkCheck walks;
    const ling::Result<ling::String> shown = ling::try_display(*Receiver(self));
    return shown ? giveResult(*shown) : raiseUnfinished(shown.error());
}

PyObject* iterate(PyObject* self) {
    const Receiver receiver(self);
    if (raisesItself(*receiver))
        return nullptr;
    if (receiver.isResolved() && receiver->isNone())  // The target is gone: as none answers.
        return PyObject_GetIter(Py_None);
    if (!ling::internal::is_instance<ling::I_Iterable_Generic>(*receiver))
        return nullptr;
    return giveResult(ling::unchecked<ling::I_Iterable_Generic>(*receiver).iter());
}

PyObject* nextItem(PyObject* self) {
    const Receiver receiver(self);
    const bool isIterator = receiver.isResolved() ? ling::internal::is_instance<ling::I_Iterator_Generic>(*receiver)
                                                  : blockOf(self).facts->isIterator();
    return isIterator ? takeNext(*receiver) : nullptr;
}

}  // namespace ling::python
