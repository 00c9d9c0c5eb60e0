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

namespace ling::python {

namespace {

using ling::internal::identifier_data;

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
    return id != nullptr && takeArgument(value, converted) ? assignMember(*receiver, name, *id, converted) : -1;
}

}  // namespace ling::python
