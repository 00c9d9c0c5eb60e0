#include "host/module_functions.h"

#include "bridge/convert.h"
#include "host/entry.h"
#include "host/interpreter.h"
#include "host/platform.h"
#include "host/py_ref.h"
#include "host/search_paths.h"

namespace ling::python {

namespace {

constexpr std::string_view kModule = "ling.python";

struct ImportPath {
    ling::String module;
    ling::String object;  // Empty: the module itself is wanted.
};

ImportPath splitPath(const ling::String& path) {
    const std::int64_t dot = platform::lastIndexOf(path, u'.');
    if (dot < 0)
        return {path, ling::String()};
    return {path.sliced(0, dot), path.sliced(dot + 1)};
}

ling::Any notFound(const char16_t* text, const ling::String& name) {
    return platform::failure(ling::String(text).arg(platform::brief(name)));
}

/// A new reference, or null. By a `str` and not by its bytes, which a NUL would cut.
PyRef importModule(const ling::String& name) {
    PyRef text = PyRef::steal(toPython(name));
    return text ? PyRef::steal(PyImport_Import(text.get())) : PyRef();
}

/// The error of an import that gave nothing.
ling::Any importFailure(const ling::String& name) {
    const ling::Any error = takePythonError();
    return error.isNone() ? notFound(u"Unable to find the module: {}.", name) : error;
}

ling::Any entryOf(PyObject* module, const ImportPath& parts, const ling::String& path) {
    PyObject* dictionary = PyModule_Check(module) ? PyModule_GetDict(module) : nullptr;
    if (dictionary == nullptr)
        return notFound(u"Unable to get the module dict: {}.", parts.module);
    PyRef name = PyRef::steal(toPython(parts.object));
    PyObject* object = name ? PyDict_GetItemWithError(dictionary, name.get()) : nullptr;
    if (object == nullptr) {
        forgetError();
        return notFound(u"Unable to find the object: {}.", path);
    }
    return takeResult(Py_NewRef(object));  // Conversion can run code that takes it out of the dictionary.
}

}  // namespace

ling::Any importObject(const ling::String& path) {
    if (path.isEmpty())
        return {};
    if (ling::Any problem = ensureStarted(); !problem.isNone())
        return problem;
    PythonEntry entry;
    const ImportPath parts = splitPath(path);
    PyRef module = importModule(parts.module);
    if (!module)
        return importFailure(parts.module);
    return parts.object.isEmpty() ? toLing(module.get()) : entryOf(module.get(), parts, path);
}

void registerAddSysPath() {
    (void)ling::internal::register_function(
        kModule,
        platform::makeFunction("python_add_sys_path", "path", &addSysPathOnce, "Adds a path to sys.path once."));
}

void registerImport() {
    (void)ling::internal::register_function(
        kModule, platform::makeFunction("python_import", "path", &importObject, "Imports python module or object."));
}

}  // namespace ling::python
