#include "travel/rebuild.h"

#include "bridge/contained.h"
#include "bridge/text.h"
#include "host/names.h"
#include "host/platform.h"
#include "host/py_ref.h"
#include "ling/class.h"
#include "ling/date_time.h"
#include "lingobject/slot_result.h"
#include "travel/dotted_name.h"
#include "travel/exceptions.h"
#include "travel/traveller.h"

#include <cstring>

namespace ling::python {

namespace {

constinit const Name kModule{"ling.python"};

/// A value, or an error result, or anything with the Python error pending.
using Maker = ling::Any (*)(PyObject* argument);

ling::Any wrongArgument() { return platform::failure(u"This is no pickle of a value of the host."); }

ling::Any makeNamed(PyObject* argument) {
    if (!PyUnicode_Check(argument))
        return wrongArgument();
    ling::Any found = findByDottedName(textFromPython(argument));
    if (found.isNone())
        PyErr_Format(PyExc_AttributeError, "the host has nothing called '%U'", argument);
    return found;
}

/// A pickle may name any class; only what could have been pickled is made.
ling::Any makeNew(PyObject* argument) {
    const ling::Any named = makeNamed(argument);
    const ling::Result<ling::Class_Generic> cls = ling::Class_Generic::cast(named);
    const ling::Any made = cls ? cls->allocateInstance() : ling::Any();
    const Form form = formOf(made);
    return form == Form::Container || form == Form::Object ? made : wrongArgument();
}

ling::Any makeFloat(PyObject* argument) {
    return PyFloat_Check(argument) ? ling::Any(PyFloat_AS_DOUBLE(argument)) : wrongArgument();
}

/// No value with the Python error set.
std::optional<ling::Time> timeFrom(PyObject* argument) {
    unsigned char hour = 0;
    unsigned char minute = 0;
    unsigned char second = 0;
    unsigned int nanoSeconds = 0;
    long long offset = 0;
    PyObject* zone = nullptr;
    unsigned char fold = 0;
    if (PyArg_ParseTuple(argument, "bbbI|LUb:time", &hour, &minute, &second, &nanoSeconds, &offset, &zone, &fold) == 0)
        return std::nullopt;
    if (zone == nullptr)
        return ling::Time(hour, minute, second, nanoSeconds);
    return ling::Time(hour, minute, second, nanoSeconds, offset, textFromPython(zone), fold);
}

ling::Any makeTime(PyObject* argument) {
    if (!PyTuple_Check(argument))
        return wrongArgument();
    const std::optional<ling::Time> time = timeFrom(argument);
    return time ? ling::Any(*time) : ling::Any();
}

ling::Any makeDateTime(PyObject* argument) {
    int year = 0;
    unsigned char month = 0;
    unsigned char day = 0;
    PyObject* rest = nullptr;
    if (!PyTuple_Check(argument) ||
        PyArg_ParseTuple(argument, "(ibb)O!:datetime", &year, &month, &day, &PyTuple_Type, &rest) == 0)
        return wrongArgument();
    const std::optional<ling::Time> time = timeFrom(rest);
    return time ? ling::Any(ling::DateTime(ling::Date(year, month, day), *time)) : ling::Any();
}

ling::Any makeTuple(PyObject* argument) {
    if (!PyTuple_Check(argument))
        return wrongArgument();
    std::vector<ling::Any> items(static_cast<std::size_t>(PyTuple_GET_SIZE(argument)));
    for (std::size_t i = 0; i < items.size(); ++i)
        if (!valueOfTraveller(PyTuple_GET_ITEM(argument, static_cast<Py_ssize_t>(i)), items[i]))
            return {};
    return ling::Tuple_Generic(std::move(items));
}

ling::Any makeMethod(PyObject* argument) {
    PyObject* receiver = nullptr;
    PyObject* name = nullptr;
    if (!PyTuple_Check(argument) || PyArg_ParseTuple(argument, "OU:method", &receiver, &name) == 0)
        return wrongArgument();
    ling::Any value;
    const ling::String text = textFromPython(name);
    return valueOfTraveller(receiver, value) ? value.boundMethod(platform::LookupName(text).method()) : ling::Any();
}

/// Native containers are many: they are made without a search for their class.
template <class Container>
ling::Any makeNative(PyObject*) {
    return Container();
}

struct NativeKind {
    ling::Kind kind;
    const char* name;
    Maker make;
};

struct Kind {
    Form form;
    const char* name;
    Maker make;
};

/// The names are in pickles that others keep: they never change.
constexpr Kind kKinds[] = {
    {Form::Float, "float", makeFloat}, {Form::Time, "time", makeTime},       {Form::DateTime, "datetime", makeDateTime},
    {Form::Tuple, "tuple", makeTuple}, {Form::Name, "name", makeNamed},      {Form::Container, "new", makeNew},
    {Form::Object, "new", makeNew},    {Form::Method, "method", makeMethod},
};

constexpr NativeKind kNativeKinds[] = {
    {ling::Kind::List, "list", makeNative<ling::List_Generic>},
    {ling::Kind::Map, "map", makeNative<ling::Map_Generic>},
    {ling::Kind::Set, "set", makeNative<ling::Set_Generic>},
};

ling::Any make(const char* kind, PyObject* argument) {
    for (const NativeKind& row : kNativeKinds)
        if (std::strcmp(row.name, kind) == 0)
            return row.make(argument);
    for (const Kind& row : kKinds)
        if (std::strcmp(row.name, kind) == 0)
            return row.make(argument);
    return wrongArgument();
}

PyObject* rebuild(PyObject*, PyObject* arguments) {
    const char* kind = nullptr;
    PyObject* argument = nullptr;
    if (PyArg_ParseTuple(arguments, "sO:_rebuild", &kind, &argument) == 0)
        return nullptr;
    const ling::Any made = make(kind, argument);
    if (PyErr_Occurred() != nullptr)
        return nullptr;
    return ling::internal::is_error_result(made) ? giveResult(made) : travellerFor(made).release();
}

PyObject* open(PyObject*, PyObject* traveller) {
    if (!isTraveller(traveller))
        return Py_NewRef(traveller);
    ling::Any value;
    return valueOfTraveller(traveller, value) ? giveResult(value) : nullptr;
}

PyObject* exception(PyObject*, PyObject* arguments) {
    PyObject* name = nullptr;
    PyObject* message = nullptr;
    if (PyArg_ParseTuple(arguments, "UO:_exception", &name, &message) == 0)
        return nullptr;
    return makeException(name, message);
}

PyMethodDef kRebuild = {"_rebuild", contained<rebuild>, METH_VARARGS, "Makes a copied or pickled value again."};
PyMethodDef kOpen = {"_open", contained<open>, METH_O, "The value that was copied or pickled."};
PyMethodDef kException = {"_exception", contained<exception>, METH_VARARGS,
                          "Makes a copied or pickled exception again."};

/// Made once; under the interpreter lock.
PyObject* functionFor(PyMethodDef& definition, PyObject*& made) {
    PyObject* module = made == nullptr ? kModule.object() : nullptr;
    if (module != nullptr)
        made = PyCFunction_NewEx(&definition, nullptr, module);
    return made;
}

}  // namespace

PyObject* rebuildFunction() {
    static constinit PyObject* function = nullptr;
    return functionFor(kRebuild, function);
}

PyObject* openFunction() {
    static constinit PyObject* function = nullptr;
    return functionFor(kOpen, function);
}

PyObject* exceptionFunction() {
    static constinit PyObject* function = nullptr;
    return functionFor(kException, function);
}

const char* kindNameOf(const ling::Any& value, Form form) noexcept {
    if (form == Form::Container && isOfNativeClass(value))
        for (const NativeKind& row : kNativeKinds)
            if (value.is(row.kind))
                return row.name;
    for (const Kind& row : kKinds)
        if (row.form == form)
            return row.name;
    return nullptr;
}

bool addRebuilding(PyObject* dictionary) {
    PyObject* const functions[] = {rebuildFunction(), openFunction(), exceptionFunction()};
    const char* const names[] = {kRebuild.ml_name, kOpen.ml_name, kException.ml_name};
    for (std::size_t i = 0; i < std::size(functions); ++i)
        if (functions[i] == nullptr || PyDict_SetItemString(dictionary, names[i], functions[i]) != 0)
            return false;
    return true;
}

}  // namespace ling::python
