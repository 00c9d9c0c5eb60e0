#include "lingobject/operators.h"

#include "host/py_ref.h"
#include "ling/basic_values.h"
#include "ling/comparison.h"
#include "ling/error.h"
#include "ling/interfaces.h"
#include "ling/list.h"
#include "ling/map_interface.h"
#include "ling/members.h"
#include "ling/sequence.h"
#include "lingobject/guarded_slot.h"
#include "lingobject/instance.h"
#include "lingobject/slot_result.h"
#include "lingobject/wrapper.h"

#include <cstdlib>

namespace ling::python {

namespace {

using ling::I_MutableMap_Generic;
using ling::I_MutableSequence_Generic;
using ling::I_Sequence_Generic;

/// A binary operator: the method that carries it out, the one that does where that is missing, and what is said when
/// the value has neither.
struct BinaryOperator {
    const ling::method_ident_untyped& method;
    const char* fallback;
    const char16_t* missing;
};

const BinaryOperator kSubtract{ling::Any::$__sub__, nullptr, u"[ling_number_subtract] None method '__sub__' in: {}"};
const BinaryOperator kInplaceSubtract{ling::Any::$__isub__, nullptr,
                                      u"[ling_number_inplace_subtract] None method '__isub__' in: {}"};
const BinaryOperator kDivide{ling::Any::$__div__, nullptr, u"[ling_number_divide] None method '__div__' in: {}."};
const BinaryOperator kInplaceDivide{ling::Any::$__idiv__, nullptr,
                                    u"[ling_number_divide] None method '__idiv__' in: {}."};
const BinaryOperator kConcat{ling::Any::$__add__, "concat", u"[ling_sequence_concat] None method 'concat' in: {}"};
const BinaryOperator kInplaceConcat{ling::Any::$__iadd__, "extend",
                                    u"[ling_sequence_extend] None method 'extend' in: {}."};
const BinaryOperator kRepeat{ling::Any::$__mul__, "repeat", u"[ling_sequence_repeat] None method 'repeat' in: {}."};
const BinaryOperator kInplaceRepeat{ling::Any::$__imul__, nullptr,
                                    u"[ling_sequence_inplace_repeat] None method '__imul__' in: {}."};

/// The identifier of the method to call, by the row's name or its fallback's; `found` says whether there is one.
ling::method_ident_untyped chooseMethod(const ling::Any& value, const BinaryOperator& row, bool& found) {
    found = !ling::method_of(value, row.method).isNone();
    if (found || row.fallback == nullptr)
        return row.method;
    const ling::method_ident_untyped fallback(row.fallback);
    found = !ling::method_of(value, fallback).isNone();
    return fallback;
}

PyObject* applyOperator(const BinaryOperator& row, PyObject* self, const ling::Any& operand) {
    const Receiver receiver(self);
    if (raisesItself(*receiver))
        return nullptr;
    bool found = false;
    const ling::method_ident_untyped method = chooseMethod(*receiver, row, found);
    if (!found)
        return raise(PyExc_NotImplementedError, ling::String(row.missing).arg(*receiver));
    return giveResultOrMessage(receiver->callMethod(method, {operand}));
}

template <const BinaryOperator& Row>
PyObject* binarySlot(PyObject* self, PyObject* other) {
    ling::Any operand;
    // Python also calls with the operands the other way round; a wrapper on the right is not supported.
    if (!isLingObject(self) || !takeArgument(other, operand))
        return nullptr;
    // Like the receiver, what stands for another value stands for it as an operand too.
    if (isIndirect(operand) && raisesItself(operand = ling::internal::unwrap(operand)))
        return nullptr;
    return applyOperator(Row, self, operand);
}

template <const BinaryOperator& Row>
PyObject* repeatSlot(PyObject* self, Py_ssize_t count) {
    return isLingObject(self) ? applyOperator(Row, self, ling::Any(count)) : nullptr;
}

/// What `len()` raises for something to iterate that does not know its length. Python asks for a length wherever it
/// takes all items (`list(x)`, `[*x]`), and goes on without one only after a `TypeError`; so this `RuntimeError` is one
/// too. Borrowed; made on first need, under the interpreter lock.
PyObject* noLengthError() {
    static constinit PyObject* kept = nullptr;
    if (kept == nullptr) {
        PyRef bases = PyRef::steal(PyTuple_Pack(2, PyExc_RuntimeError, PyExc_TypeError));
        kept = bases ? PyErr_NewException("ling.NoLength", bases.get(), nullptr) : nullptr;
    }
    return kept != nullptr ? kept : PyExc_RuntimeError;
}

PyObject* raiseNoLength(const ling::Any& value, const ling::Any& error) {
    const bool isUnknown = ling::internal::is_instance<ling::I_Iterable_Generic>(value) &&
                           ling::property_of(value, I_Sequence_Generic::$$length).isNone();
    return isUnknown ? raise(noLengthError(), messageOf(error)) : raiseMessage(error);
}

/// A length for Python, which takes a negative number for a failure. -1 with the Python error set.
Py_ssize_t giveLength(std::int64_t number) {
    if (number >= 0)
        return static_cast<Py_ssize_t>(number);
    PyErr_Format(PyExc_RuntimeError, "The length is negative: %lld.", static_cast<long long>(number));
    return -1;
}

/// The native list in a wrapper, where nothing can stand in for its operations: its class is no derived one, and it has
/// no members of its own. Null for every other value.
const ling::List_Generic* plainList(PyObject* self) noexcept {
    const ling::Any* value = blockOf(self).instance.value;
    const bool isPlain = value != nullptr && value->is(ling::Kind::List) && value->object()->ownClass() == nullptr &&
                         value->object()->findExtras() == nullptr;
    return isPlain ? &ling::unchecked<ling::List_Generic>(*value) : nullptr;
}

Py_ssize_t length(PyObject* self) {
    if (const ling::List_Generic* list = plainList(self))
        return static_cast<Py_ssize_t>(list->size());
    const Receiver receiver(self);
    if (failsLate(receiver))
        return -1;
    const ling::Any value = ling::internal::result_unwrap_lazy(receiver->propertyValue(I_Sequence_Generic::$$length));
    if (mustRaise())
        return -1;
    const ling::Result<ling::Integer> number = ling::Integer::cast(value);
    if (number)
        return giveLength(number->value());
    (void)raiseNoLength(*receiver, ling::internal::is_error_result(value) ? value : number.error());
    return -1;
}

PyObject* item(PyObject* self, Py_ssize_t index) {
    const Receiver receiver(self);
    if (failsLate(receiver))
        return nullptr;
    return giveResultOrMessage(receiver->callMethod(I_Sequence_Generic::$at, {index}));
}

int assignItem(PyObject* self, Py_ssize_t index, PyObject* value) {
    const Receiver receiver(self);
    if (failsLate(receiver))
        return -1;
    if (value == nullptr)
        return giveOutcome(receiver->callMethod(I_MutableSequence_Generic::$removeAt, {index}));
    ling::Any converted;
    if (!takeArgument(value, converted))
        return -1;
    return giveOutcome(receiver->callMethod(I_MutableSequence_Generic::$set, {index, converted}));
}

int contains(PyObject* self, PyObject* searched) {
    ling::Any operand;
    if (!takeArgument(searched, operand))
        return -1;
    const Receiver receiver(self);
    if (failsLate(receiver))
        return -1;
    const ling::Any value =
        ling::internal::result_unwrap_lazy(receiver->callMethod(ling::I_Iterable_Generic::$contains, {operand}));
    if (mustRaise())
        return -1;
    const ling::Result<ling::Boolean> answer = ling::Boolean::cast(value);
    if (answer)
        return answer->value() ? 1 : 0;
    (void)raiseMessage(ling::internal::is_error_result(value) ? value : answer.error());
    return -1;
}

PyObject* raiseKey(const ling::Any& key) { return raise(PyExc_KeyError, ling::display(key)); }

using ling::internal::is_instance;

PyObject* subscriptMap(const ling::I_Map_Generic& map, const ling::Any& key) {
    if (!is_instance<ling::I_Immutable>(key))
        return raiseKey(key);
    const ling::Any value = ling::internal::result_unwrap_lazy(map.get(key));
    return ling::internal::is_error_result(value) ? raiseKey(key) : giveResult(value);
}

PyObject* subscriptSequence(const I_Sequence_Generic& sequence, const ling::Any& index) {
    return index.is(ling::Kind::Integer) ? giveResultOrMessage(sequence.at(index)) : raiseKey(index);
}

PyObject* subscript(PyObject* self, PyObject* key) {
    ling::Any converted;
    if (!takeArgument(key, converted))
        return nullptr;
    if (!isLingObject(self))
        return raiseKey(converted);
    if (const ling::List_Generic* list = plainList(self); list != nullptr && converted.is(ling::Kind::Integer))
        return giveResultOrMessage(list->at(converted.asInteger()));
    const Receiver receiver(self);
    if (raisesItself(*receiver))
        return nullptr;
    if (is_instance<ling::I_Map_Generic>(*receiver))
        return subscriptMap(ling::unchecked<ling::I_Map_Generic>(*receiver), converted);
    if (is_instance<I_Sequence_Generic>(*receiver))
        return subscriptSequence(ling::unchecked<I_Sequence_Generic>(*receiver), converted);
    return raiseKey(converted);
}

/// The methods that store under a key and delete it.
struct StoreMethods {
    const ling::method_ident_untyped& set;
    const ling::method_ident_untyped& remove;
};

/// The methods for a container of this kind and this key, or null when the key does not fit.
const StoreMethods* storeMethods(const ling::Any& container, const ling::Any& key) {
    static const StoreMethods kMap{I_MutableMap_Generic::$set, I_MutableMap_Generic::$remove};
    static const StoreMethods kSequence{I_MutableSequence_Generic::$set, I_MutableSequence_Generic::$removeAt};
    if (is_instance<ling::I_Map_Generic>(container))
        return &kMap;
    const bool fits = is_instance<I_Sequence_Generic>(container) && key.is(ling::Kind::Integer);
    return fits ? &kSequence : nullptr;
}

/// Stores under the key, or deletes it when there is no value.
int storeUnder(const ling::Any& container, const ling::Any& key, const ling::Any* value) {
    const StoreMethods* methods = storeMethods(container, key);
    if (methods == nullptr) {
        (void)raiseKey(key);
        return -1;
    }
    if (value == nullptr)
        return giveOutcome(container.callMethod(methods->remove, {key}));
    return giveOutcome(container.callMethod(methods->set, {key, *value}));
}

int assignSubscript(PyObject* self, PyObject* key, PyObject* value) {
    ling::Any convertedKey;
    ling::Any convertedValue;
    if (!takeArgument(key, convertedKey) || (value != nullptr && !takeArgument(value, convertedValue)))
        return -1;
    if (!isLingObject(self)) {
        (void)raiseKey(convertedKey);
        return -1;
    }
    const Receiver receiver(self);
    if (failsLate(receiver))
        return -1;
    return storeUnder(*receiver, convertedKey, value != nullptr ? &convertedValue : nullptr);
}

/// A zero-filled table, made on first need under the interpreter lock.
template <class Table>
Table* makeTable() {
    return static_cast<Table*>(std::calloc(1, sizeof(Table)));
}

}  // namespace

PyNumberMethods* numberTable() {
    static PyNumberMethods* table = [] {
        auto* slots = makeTable<PyNumberMethods>();
        slots->nb_subtract = guarded<binarySlot<kSubtract>>;
        slots->nb_inplace_subtract = guarded<binarySlot<kInplaceSubtract>>;
        slots->nb_true_divide = guarded<binarySlot<kDivide>>;
        slots->nb_inplace_true_divide = guarded<binarySlot<kInplaceDivide>>;
        return slots;
    }();
    return table;
}

PySequenceMethods* sequenceTable() {
    static PySequenceMethods* table = [] {
        auto* slots = makeTable<PySequenceMethods>();
        slots->sq_length = guarded<length>;
        slots->sq_concat = guarded<binarySlot<kConcat>>;
        slots->sq_repeat = guarded<repeatSlot<kRepeat>>;
        slots->sq_item = guarded<item>;
        slots->sq_ass_item = guarded<assignItem>;
        slots->sq_contains = guarded<contains>;
        slots->sq_inplace_concat = guarded<binarySlot<kInplaceConcat>>;
        slots->sq_inplace_repeat = guarded<repeatSlot<kInplaceRepeat>>;
        return slots;
    }();
    return table;
}

PyMappingMethods* mappingTable() {
    static PyMappingMethods* table = [] {
        auto* slots = makeTable<PyMappingMethods>();
        slots->mp_length = guarded<length>;
        slots->mp_subscript = guarded<subscript>;
        slots->mp_ass_subscript = guarded<assignSubscript>;
        return slots;
    }();
    return table;
}

}  // namespace ling::python
