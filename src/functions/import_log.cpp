#include "functions/import_log.h"

#include "bridge/convert.h"
#include "host/error_scope.h"
#include "host/gil_guard.h"
#include "host/platform.h"

#include <string_view>

namespace ling::python {

namespace {

ling::Map_Generic& problems() {
    static ling::Map_Generic& map = *new ling::Map_Generic;
    return map;
}

std::string_view className(PyObject* exception) {
    const std::string_view name = Py_TYPE(exception)->tp_name;
    return name.substr(name.rfind('.') + 1);
}

ling::String shownText(PyObject* exception) {
    PyRef text = PyRef::steal(PyObject_Str(exception));
    const ling::Any converted = toLing(text.get());
    forgetError();
    return ling::String::cast(converted).valueOr(ling::String());
}

}  // namespace

void ImportLog::failed(const ling::String& pythonName, const ling::String& reason) {
    (void)output_.take();
    (void)problems().set(pythonName, reason);
}

void ImportLog::exported(const ling::String& pythonName) {
    const ling::String written = output_.take();
    if (written.isEmpty())
        (void)problems().remove(pythonName);
    else
        (void)problems().set(pythonName, ling::String(u"Written while it was imported: {}").arg(written));
}

ling::String pendingExceptionText() {
    PyRef exception = PyRef::steal(PyErr_GetRaisedException());
    if (!exception)
        return {};
    const ling::String name(className(exception.get()));
    const ling::String text = shownText(exception.get());
    PyErr_SetRaisedException(exception.release());
    return text.isEmpty() ? name : name + u": " + text;
}

ling::Map_Generic importProblems() {
    const GilGuard gil;
    return platform::copyOf(problems());
}

}  // namespace ling::python
