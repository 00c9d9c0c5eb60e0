#include "lingobject/attributes.h"

#include "bridge/errors.h"
#include "ling/class.h"
#include "ling/error.h"
#include "ling/function.h"
#include "ling/members.h"
#include "lingobject/instance.h"
#include "lingobject/member_name.h"
#include "lingobject/slot_result.h"
#include "lingobject/special_names.h"

#include <optional>

namespace ling::python {

namespace {

using ling::internal::identifier_data;

/// Where a look-up needs to see the tables of the class alone, since nothing else could answer: those of an object or
/// native value without members of its own whose class leaves look-ups to the runtime. The wrapper keeps the value, and
/// that its class with all that is found there. Null for every other value.
const ling::internal::object_value_class* decidingClass(PyObject* self) {
    const WrapperBlock& block = blockOf(self);
    const ling::Any* value = block.instance.value;
    if (value == nullptr || !value->isHeap() || value->object()->findExtras() != nullptr)
        return nullptr;
    const ClassFacts& facts = *block.facts;
    return facts.isPlain() && !facts.isError() ? facts.record() : nullptr;
}

/// What the class has under a name. Nothing where the look-up has to go the long way.
std::optional<PyObject*> lookUpDirectly(PyObject* self, PyObject* name) {
    const identifier_data* id = knownPublicName(name);
    const ling::internal::object_value_class* cls = id != nullptr ? decidingClass(self) : nullptr;
    if (cls == nullptr)
        return std::nullopt;
    if (const auto& property = cls->findProperty(ling::property_ident_untyped(*id))) {
        if (mustRaise())
            return nullptr;
        return giveResult(ling::internal::get_property(*property.member, *blockOf(self).instance.value));
    }
    const auto& method = cls->findMethod(ling::method_ident_untyped(*id));
    if (!method || method.classLevel || mustRaise())
        return std::nullopt;
    return bindLocked(self, method.member);
}

/// A new reference, or null: with the Python error set, or with nothing pending when there is no such member.
PyObject* lookUpMember(const ling::Any& value, const identifier_data& name) {
    if (raisesItself(value))
        return nullptr;
    const ling::Property property = ling::property_of(value, ling::property_ident_untyped(name));
    if (mustRaise())
        return nullptr;
    if (!property.isNone())
        return giveResult(property.get(value));
    const ling::method_ident_untyped id(name);
    if (ling::method_of(value, id).isNone())
        return nullptr;
    return giveResult(value.boundMethod(id));
}

/// The Python class that stands for an error class, as the attribute `exception` of the class: what Python code names
/// behind `except`. A new reference, or null with nothing pending for every other value and name.
PyObject* lookUpException(const ling::Any& value, const identifier_data& name) {
    static const ling::property_ident_untyped kException("exception");
    if (&name != kException.data())
        return nullptr;
    const ling::Result<ling::Class_Generic> cls = ling::Class_Generic::cast(value);
    if (!cls || !cls->isAncestor(ling::Error::getClass()))
        return nullptr;
    return Py_XNewRef(exceptionClassRaisedFor(*cls));
}

/// As Python says it. For a wrapper that stands for another value, whose own type lists the members of the reference:
/// Python's look-up would find those entries, which are for show.
PyObject* raiseMissing(PyObject* self, PyObject* name) {
    PyErr_Format(PyExc_AttributeError, "'%.100s' object has no attribute '%U'", Py_TYPE(self)->tp_name, name);
    return nullptr;
}

enum class MessageEnd : bool { Bare, FullStop };

/// "name: message", with or without a full stop: the texts differ by the kind of store that failed. A message that has
/// one gets no other.
int refuse(PyObject* name, const ling::Any& error, MessageEnd end) {
    if (mustRaiseInterruption())
        return -1;
    const std::string message = messageOf(error).toStdString();
    const bool isComplete = end == MessageEnd::Bare || message.ends_with('.');
    PyErr_Format(PyExc_RuntimeError, isComplete ? "%U: %s" : "%U: %s.", name, message.c_str());
    return -1;
}

int finish(PyObject* name, const ling::Any& outcome, MessageEnd end) {
    if (!outcome.isHeap())
        return mustRaise() ? -1 : 0;
    const ling::Any value = ling::internal::result_unwrap_lazy(outcome);
    if (ling::internal::is_error_result(value))
        return refuse(name, value, end);
    return mustRaise() ? -1 : 0;
}

int assignMember(const ling::Any& self, PyObject* name, const identifier_data& id, const ling::Any& value) {
    const ling::property_ident_untyped propertyId(id);
    const ling::Class_Generic cls = ling::class_of(self);
    const ling::Property property = ling::property_of(self, propertyId);
    if (mustRaise())
        return -1;
    if (!property.isNone()) {
        if (!property.setter().isNone())
            return finish(name, property.set(self, value), MessageEnd::FullStop);
        if (!cls.definedProperty(propertyId).isNone()) {
            PyErr_Format(PyExc_RuntimeError, "Read-only attribute: %U.", name);
            return -1;
        }
    }
    const ling::field_ident_untyped fieldId(id);
    if (cls.definedField(fieldId) != nullptr)
        return finish(name, self.setFieldValue(fieldId, value), MessageEnd::Bare);
    return finish(name, ling::insert_property_value(self, propertyId, value), MessageEnd::Bare);
}

/// Writes a property of the class that has a setter. Nothing where the assignment has to go the long way.
std::optional<int> assignDirectly(PyObject* self, PyObject* name, const identifier_data& id, const ling::Any& value) {
    const ling::internal::object_value_class* cls = decidingClass(self);
    if (cls == nullptr)
        return std::nullopt;
    const auto& property = cls->findProperty(ling::property_ident_untyped(id));
    if (!property || !ling::internal::has_setter(*property.member) || mustRaise())
        return std::nullopt;
    return finish(name, ling::internal::set_property(*property.member, *blockOf(self).instance.value, value),
                  MessageEnd::FullStop);
}

/// Takes a property off the object itself; what the class declares stays.
int deleteMember(const ling::Any& self, PyObject* name, const identifier_data& id) {
    const bool removed = ling::remove_property(self, ling::property_ident_untyped(id));
    if (mustRaise())
        return -1;
    if (removed)
        return 0;
    PyErr_SetObject(PyExc_AttributeError, name);
    return -1;
}

}  // namespace

PyObject* lookUpAttribute(PyObject* self, PyObject* name) {
    if (const std::optional<PyObject*> found = lookUpDirectly(self, name))
        return *found;
    const Receiver receiver(self);
    if (isPrivateName(name)) {
        PyObject* special = nullptr;
        const bool isAnswered = answerSpecialName(*receiver, name, special);
        if (mustRaise()) {
            Py_XDECREF(special);
            return nullptr;
        }
        return isAnswered ? special : PyObject_GenericGetAttr(self, name);
    }
    const LookupName id(name);
    if (id.get() == nullptr)
        return nullptr;
    PyObject* found = lookUpMember(*receiver, *id.get());
    if (found == nullptr && !mustRaise())
        found = lookUpException(*receiver, *id.get());
    if (found != nullptr || PyErr_Occurred() != nullptr)
        return found;
    return receiver.isResolved() ? raiseMissing(self, name) : PyObject_GenericGetAttr(self, name);
}

int assignAttribute(PyObject* self, PyObject* name, PyObject* value) {
    const Receiver receiver(self);
    if (failsLate(receiver))
        return -1;
    if (value == nullptr) {
        const LookupName id(name);
        return id.get() == nullptr ? -1 : deleteMember(*receiver, name, *id.get());
    }
    const identifier_data* id = memberName(name);
    ling::Any converted;
    if (id == nullptr || !takeArgument(value, converted))
        return -1;
    // Only now: the conversion may have run code that changed anything.
    if (const std::optional<int> outcome = assignDirectly(self, name, *id, converted))
        return *outcome;
    return assignMember(*receiver, name, *id, converted);
}

}  // namespace ling::python
