#include "bridge/errors.h"

#include "bridge/convert.h"
#include "bridge/small_integer.h"
#include "bridge/text.h"
#include "bridge/travel.h"
#include "host/cached_import.h"
#include "host/error_scope.h"
#include "host/gil_guard.h"
#include "host/names.h"
#include "host/platform.h"
#include "host/py_ref.h"
#include "ling/comparison.h"
#include "ling/failure_beside.h"
#include "lingobject/wrapper.h"
#include "proxies/python_exception.h"
#include "proxies/python_proxy.h"
#include "proxies/python_type.h"

#include <typeinfo>
#include <unordered_map>

namespace ling::python {

namespace {

constinit CachedImport formatException{"traceback", "format_exception"};
constinit const Name kLing{"ling"};
constinit const Name kNotes{"__notes__"};

// From exceptions to errors.

/// How deep exceptions may stand for each other through their attribute "ling". Nobody nests them, but an exception
/// may refer to itself.
constexpr int kDeepestExceptions = 32;
thread_local int exceptionDepth = 0;

struct ExceptionDepth {
    ExceptionDepth() noexcept { ++exceptionDepth; }
    ~ExceptionDepth() { --exceptionDepth; }
};

/// Whether the failure lies in the state of the program and not in what it was doing.
bool comesOfTheMoment(PyObject* exception) {
    return PyErr_GivenExceptionMatches(exception, PyExc_MemoryError) != 0 ||
           PyErr_GivenExceptionMatches(exception, PyExc_RecursionError) != 0;
}

/// The error that the exception was raised for, or whatever else its attribute holds. Null without one.
PyRef carriedValue(PyObject* exception) {
    PyObject* key = exceptionDepth <= kDeepestExceptions ? kLing.object() : nullptr;
    PyObject* value = nullptr;
    if (key != nullptr)
        (void)PyObject_GetOptionalAttr(exception, key, &value);
    return PyRef::steal(value);
}

ling::String textOrEmpty(PyObject* object) { return ling::String::cast(toLing(object)).valueOr(ling::String()); }

ling::String messageOf(PyObject* exception) {
    ling::String message;
    if (PyObject_TypeCheck(exception, reinterpret_cast<PyTypeObject*>(PyExc_SyntaxError)) != 0)
        message = formattedException(exception);
    if (!message.isEmpty())
        return message;
    PyRef shown = PyRef::steal(PyObject_Str(exception));
    message = textOrEmpty(shown.get());
    forgetError();
    return message;
}

/// What only calls itself an exception, through its `__class__`, can be neither the cause of one nor shown as one.
void rememberException(const ling::Error& error, PyObject* exception) {
    if (PyExceptionInstance_Check(exception))
        platform::rememberOrigin(error, PythonProxy::create(PythonException::getClass(), exception));
}

/// An error that stands for the exception it came from.
class StandingError final : public ling::internal::object_value_error {
public:
    explicit StandingError(const ling::String& message)
        : object_value_error(ling::Error::getClass().record(), message, true) {}
};

ling::Any standFor(PyObject* exception, const ling::String& message) {
    ling::Any error = ling::Any::adopt(new StandingError(message));
    rememberException(ling::unchecked<ling::Error>(error), exception);
    return error;
}

/// The error "The call was interrupted.". The interruption is held as well: whoever passes over the error must not
/// lose it.
ling::Any interruptedCall(PyRef interruption) {
    platform::notePassingFailure();
    holdInterruption(Py_NewRef(interruption.get()));
    return standFor(interruption.get(), u"The call was interrupted.");
}

/// The error that the exception converts to, if that is one.
ling::Result<ling::Error> errorOf(PyObject* exception) {
    const ling::Any value = toLing(exception);
    forgetError();
    return ling::Error::cast(value);
}

/// What is said of an exception that stands for a value which is no error.
ling::String plainMessage(PyObject* exception) {
    const ErrorScope scope;
    const ling::String message = messageOf(exception);
    return message.isEmpty() ? ling::String(Py_TYPE(exception)->tp_name) : message;
}

/// An error that says what the exception says.
ling::Any describingError(PyRef exception) {
    const ling::Result<ling::Error> error = errorOf(exception.get());
    return error ? ling::Any(*error) : platform::failure(plainMessage(exception.get()));
}

/// An error that stands for the exception. One of a class of its own is raised as what it was in any case; but the end
/// of an iteration is not what a conversion means.
ling::Any standingError(PyRef exception) {
    const ling::Result<ling::Error> error = errorOf(exception.get());
    const ling::Class_Generic cls = error ? ling::raw_class_of(*error) : ling::Error::getClass();
    if (cls != ling::Error::getClass() && cls != ling::StopIteration::getClass())
        return *error;
    return standFor(exception.get(), error ? error->message() : plainMessage(exception.get()));
}

/// The pending exception as an error result, or none when nothing is pending.
ling::Any takePending(ling::Any (*toError)(PyRef exception)) {
    PyRef exception = PyRef::steal(PyErr_GetRaisedException());
    if (!exception)
        return {};
    return isInterruption(exception.get()) ? interruptedCall(std::move(exception)) : toError(std::move(exception));
}

// Failures beside values, for the operations of the runtime on many items.

/// The state of this thread if an error is pending there, whether or not the lock is held; else null.
PyThreadState* stateWithError() noexcept {
    PyThreadState* state = PyGILState_GetThisThreadState();
    return state != nullptr && state->current_exception != nullptr ? state : nullptr;
}

/// With Python code below, a slot will raise what is pending. Elsewhere it is left over from another call.
void forgetLeftError() {
    const PyThreadState* state = stateWithError();
    if (state == nullptr || state->current_frame != nullptr)
        return;
    const GilGuard gil;
    PyErr_Clear();
}

ling::Any takeErrorBeside() {
    if (stateWithError() == nullptr)
        return {};
    const GilGuard gil;
    return takeConversionError();
}

bool isInterruptionBeside() {
    const PyThreadState* state = stateWithError();
    return state != nullptr && isInterruption(state->current_exception);
}

/// A class of its own says what was raised by itself.
ling::Any asRaised(const ling::Any& failed) {
    if (ling::raw_class_of(failed) != ling::Error::getClass())
        return failed;
    const ling::Any origin = platform::originOf(ling::unchecked<ling::Error>(failed));
    PyObject* exception = PythonProxy::pythonObject(origin);
    if (exception == nullptr || !PyExceptionInstance_Check(exception))
        return failed;
    const GilGuard gil;
    return standFor(exception, ling::unchecked<ling::Error>(failed).message());
}

constexpr ling::internal::failure_source kFailures{forgetLeftError, takeErrorBeside, isInterruptionBeside, asRaised};
const bool failuresAreTold = (ling::internal::set_failure_source(&kFailures), true);

// From errors to exceptions.

/// The class behind a value that is, or stands for, a class; a none handle for any other.
ling::Class_Generic resolvedClass(const ling::Any& value) {
    return ling::Class_Generic::cast(ling::internal::unwrap(value)).valueOr(ling::Class_Generic());
}

/// Makes the exception that `error` came from the cause of the pending one, so that a traceback begins where it began.
void nameCause(const ling::Error& error) {
    const ling::Any origin = platform::originOf(error);
    PyObject* cause = PythonProxy::pythonObject(origin);
    if (cause == nullptr || !PyExceptionInstance_Check(cause))
        return;
    PyObject* raised = PyErr_GetRaisedException();
    PyException_SetCause(raised, Py_NewRef(cause));
    PyErr_SetRaisedException(raised);
}

PyObject* raiseText(PyObject* exceptionClass, const ling::Error& error) {
    PyRef text = PyRef::steal(textToPython(error.message()));
    if (!text)
        return nullptr;
    PyErr_SetObject(exceptionClass, text.get());
    nameCause(error);
    return nullptr;
}

/// The message stands below the exception in a traceback, as the exception's own text is empty.
void addNote(PyObject* exception, const ling::Error& error) {
    const ling::String message = error.message();
    PyRef text = PyRef::steal(message.isEmpty() ? nullptr : textToPython(message));
    PyRef list = PyRef::steal(text ? PyList_New(0) : nullptr);
    PyObject* key = kNotes.object();
    const bool isAdded = list && key != nullptr && PyList_Append(list.get(), text.get()) == 0 &&
                         PyObject_SetAttr(exception, key, list.get()) == 0;
    if (!isAdded)
        forgetError();
}

void attachError(PyObject* exception, const ling::Error& error) {
    PyRef wrapper = PyRef::steal(wrapValue(error));
    PyObject* key = kLing.object();
    if (!wrapper || key == nullptr || PyObject_SetAttr(exception, key, wrapper.get()) != 0)
        forgetError();
}

using ExceptionClasses = std::unordered_map<ling::internal::object_value_class*, PyObject*>;

/// Read and written with the interpreter lock held, which no operation on it gives up. Keeps its classes alive.
ExceptionClasses& exceptionClasses() {
    static ExceptionClasses& classes = *new ExceptionClasses;
    return classes;
}

PyRef makeExceptionClass(const ling::Class_Generic& cls) {
    const std::string name = ling::qualname(cls).toStdString();
    const std::string dotted = name.find('.') == std::string::npos ? "ling." + name : name;
    PyRef members = PyRef::steal(PyDict_New());
    PyObject* key = kLing.object();
    PyRef reducer = PyRef::steal(members ? makeExceptionReducer() : nullptr);
    if (!reducer || key == nullptr || PyDict_SetItem(members.get(), key, Py_None) != 0 ||
        PyDict_SetItemString(members.get(), "__reduce_ex__", reducer.get()) != 0)
        return {};
    return PyRef::steal(PyErr_NewException(dotted.c_str(), PyExc_RuntimeError, members.get()));
}

}  // namespace

ling::Any errorFromException(PyObject* exception) {
    const ErrorScope scope;
    const ExceptionDepth depth;
    if (PyRef carried = carriedValue(exception))
        return toLing(carried.get());
    forgetError();
    if (comesOfTheMoment(exception))
        platform::notePassingFailure();
    const ling::String message = messageOf(exception);
    if (Py_IS_TYPE(exception, reinterpret_cast<PyTypeObject*>(PyExc_StopIteration)))
        return ling::StopIteration::getClass()(message);
    // For every other type `errorClassOf` gives the class of a Python type, whose errors are plain ones, or the plain
    // class itself. To know that, the class of the type need not be made, which would keep both for ever: a program
    // may define an exception class in each of its calls.
    const ling::Error error(message, true);
    rememberException(error, exception);
    return error;
}

ling::String formattedException(PyObject* exception) {
    PyObject* format = formatException.get();
    PyRef lines = PyRef::steal(format != nullptr ? PyObject_CallOneArg(format, exception) : nullptr);
    PyRef separator = PyRef::steal(lines ? PyUnicode_New(0, 0) : nullptr);
    PyRef joined = PyRef::steal(separator ? PyUnicode_Join(separator.get(), lines.get()) : nullptr);
    ling::String text = textOrEmpty(joined.get());
    forgetError();
    return text;
}

ling::Class_Generic errorClassOf(PyObject* exceptionType) {
    if (exceptionType == PyExc_StopIteration)
        return ling::StopIteration::getClass();
    if (exceptionType == nullptr || !PyType_Check(exceptionType))
        return ling::Error::getClass();
    const ling::Class_Generic cls = resolvedClass(toLing(exceptionType));
    const bool makesErrors = !cls.isNone() && cls.resultType().specializes(ling::Error::getType());
    return makesErrors ? cls : ling::Error::getClass();
}

PyObject* exceptionClassFor(const ling::Class_Generic& cls) {
    ExceptionClasses& classes = exceptionClasses();
    if (const auto known = classes.find(cls.record()); known != classes.end())
        return known->second;
    PyRef made = makeExceptionClass(cls);
    if (!made) {
        forgetError();
        return nullptr;
    }
    // Making it may have given the lock up, and another thread may have been first.
    const auto [entry, isNew] = classes.try_emplace(cls.record(), made.get());
    if (isNew) {
        cls.record()->retain();
        (void)made.release();
    }
    return entry->second;
}

PyObject* exceptionClassRaisedFor(const ling::Class_Generic& cls) {
    if (cls == ling::StopIteration::getClass())
        return PyExc_StopIteration;
    if (PyTypeObject* type = pythonTypeOf(cls))
        return reinterpret_cast<PyObject*>(type);
    return cls == ling::Error::getClass() ? PyExc_RuntimeError : exceptionClassFor(cls);
}

bool raiseCarried(const ling::Any& error) {
    if (mustRaiseInterruption())
        return true;
    const ling::internal::object_value* object = error.object();
    if (object == nullptr || typeid(*object) != typeid(StandingError))
        return false;
    const ling::Any origin = platform::originOf(ling::unchecked<ling::Error>(error));
    PyObject* exception = PythonProxy::pythonObject(origin);
    if (exception == nullptr)
        return false;
    PyErr_SetRaisedException(Py_NewRef(exception));
    return true;
}

PyObject* raiseError(const ling::Error& error) {
    if (raiseCarried(error))
        return nullptr;
    PyErr_Clear();
    if (ling::raw_class_record(error) == ling::Error::getClass().record() && error.exception().isNone())
        return raiseText(PyExc_RuntimeError, error);
    const ling::Class_Generic cls = ling::raw_class_of(error);
    PyObject* exceptionClass = exceptionClassRaisedFor(cls);
    if (exceptionClass == nullptr)
        return raiseText(PyExc_RuntimeError, error);
    PyRef exception = PyRef::steal(PyObject_CallNoArgs(exceptionClass));
    if (!exception) {
        forgetError();
        return raiseText(exceptionClass, error);
    }
    attachError(exception.get(), error);
    if (exceptionClass != PyExc_StopIteration)  // Ends loops; nobody sees one.
        addNote(exception.get(), error);
    PyErr_SetObject(exceptionClass, exception.get());
    nameCause(error);
    return nullptr;
}

std::optional<ling::Error> fetchPythonError() {
    PyRef exception = PyRef::steal(PyErr_GetRaisedException());
    if (!exception)
        return std::nullopt;
    if (isInterruption(exception.get())) {
        holdInterruption(exception.release());
        return std::nullopt;
    }
    ling::Result<ling::Error> error = errorOf(exception.get());
    return error ? std::optional(*std::move(error)) : std::nullopt;
}

ling::Any takePythonError() { return takePending(describingError); }

ling::Any takeConversionError() { return takePending(standingError); }

ling::Any takeResult(PyObject* result) {
    PyRef owned = PyRef::steal(result);
    if (!owned)
        return takePythonError();
    ling::Any value;
    if ((owned.get() == Py_None || readSmallInteger(owned.get(), value)) && !isInterruptionHeld())
        return value;
    value = toLingLocked(owned.get());
    return mustRaiseInterruption() ? takePythonError() : value;
}

}  // namespace ling::python
