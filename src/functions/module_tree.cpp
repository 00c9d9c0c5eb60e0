#include "functions/module_tree.h"

#include "bridge/convert.h"
#include "functions/module_python.h"
#include "host/entry.h"
#include "host/names.h"
#include "host/platform.h"
#include "host/py_ref.h"
#include "language/evaluate.h"
#include "ling/class_builder.h"
#include "ling/error.h"
#include "ling/iterable.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace ling::python {

namespace names {

inline constinit const Name entryName{"name"};
inline constinit const Name modulePath{"__path__"};

}  // namespace names

namespace {

constexpr const char* kSubmodules =
    "import pkgutil\npath = getattr( pp, '__path__', None )\nif path:\n    return list( pkgutil.iter_modules( path ) "
    ")\n"
    "return list()";
constexpr const char* kAllModules = "import pkgutil\nreturn list(pkgutil.iter_modules())";

/// There already, or of no use to anybody: one prints a poem, one opens a browser.
constexpr std::u16string_view kNeverImported[] = {u"builtins", u"this", u"antigravity", u"sys"};

constexpr int kOneOfAll = 1;

bool isPublic(const ling::String& name) { return !name.isEmpty() && !name.startsWith(u"_"); }

/// What a member of a module is in the host: a class or something to call. None for all others and for what does not
/// convert.
ling::Any exportedMember(PyObject* value) {
    if (!PyType_Check(value) && PyCallable_Check(value) == 0)
        return {};
    ling::Any member = toLing(value);
    PyErr_Clear();
    return ling::internal::is_error_result(member) ? ling::Any() : member;
}

void addMember(ling::internal::class_builder& builder, PyObject* key, PyObject* value) {
    if (!PyUnicode_Check(key))
        return;
    const ling::Result<ling::String> name = ling::String::cast(toLing(key));
    PyErr_Clear();
    if (!name || !isPublic(*name))
        return;
    const ling::Any member = exportedMember(value);
    if (!member.isNone())
        builder.classProperty(ling::property_ident_untyped(*name), ling::internal::property_builder().value(member));
}

/// Walks a copy: converting a member can run code that changes the module.
void addMembers(ling::internal::class_builder& builder, PyObject* module) {
    PyRef members = PyRef::steal(PyModule_Check(module) ? PyDict_Copy(PyModule_GetDict(module)) : nullptr);
    PyObject* key = nullptr;
    PyObject* value = nullptr;
    Py_ssize_t position = 0;
    while (members && PyDict_Next(members.get(), &position, &key, &value) != 0)
        addMember(builder, key, value);
}

std::string docOf(PyObject* module) {
    PyRef doc = PyRef::steal(attribute(module, names::doc));
    const ling::Any text = toLing(doc.get());
    PyErr_Clear();
    return ling::String::cast(text).valueOr(ling::String()).toStdString();
}

ling::Class_Generic makeModuleClass(const ling::String& name, const std::string& doc, PyObject* module) {
    const ling::String shortName = name.sliced(platform::lastIndexOf(name, u'.') + 1);
    ling::internal::class_builder builder(shortName.toStdString(), "");
    builder.parent(ModulePython::getClass()).doc(doc);
    addMembers(builder, module);
    return builder.build();
}

/// The module that is in the tree under this name already and exports this very Python module, or none.
ling::Any exportedBefore(const ling::String& name, PyObject* module) {
    const ling::Module known = ling::find_module(name);
    return ModulePython::pythonModule(known) == module ? ling::Any(known) : ling::Any();
}

/// The exporting object, in the tree with its members. Whoever is second, on another thread, gets that of the first.
ling::Any putIntoTree(const ling::String& name, PyObject* module) {
    const std::string doc = docOf(module);
    const ModulePython exported = ModulePython::make(makeModuleClass(name, doc, module), name, module);
    exported.setDoc(ling::String(doc));
    const ling::Any problem = platform::registerModule(exported);
    if (!ling::internal::is_error_result(problem))
        return exported;
    const ling::Any before = exportedBefore(name, module);
    return before.isNone() ? problem : before;
}

/// What `pkgutil` tells about one module is a named tuple, whose "name" is no Python `property` and so none that the
/// proxy would show: it is read as the attribute that it is.
ling::String nameIn(const ling::Any& entry) {
    PyRef object = PyRef::steal(toPython(entry));
    PyRef name = PyRef::steal(object ? attribute(object.get(), names::entryName) : nullptr);
    const ling::Any text = toLing(name.get());
    PyErr_Clear();
    return ling::String::cast(text).valueOr(ling::String());
}

/// The names in a list of what `pkgutil` tells about modules; those that nobody is to see left out.
std::vector<ling::String> namesIn(const ling::Any& listing) {
    std::vector<ling::String> names;
    const ling::Result<ling::I_Iterable_Generic> entries = ling::I_Iterable_Generic::cast(listing);
    if (!entries)
        return names;
    for (ling::iteration entry = entries->beginImpl(); entry.advance();) {
        const ling::String name = nameIn(entry.item());
        if (isPublic(name))
            names.push_back(name);
    }
    return names;
}

std::vector<ling::String> submodulesOf(PyObject* module) {
    PyRef path = PyRef::steal(attribute(module, names::modulePath));
    PyErr_Clear();
    if (!path)
        return {};
    const ling::Map_Generic locals = platform::makeMap({{ling::String("pp"), toLing(module)}});
    const ling::Any listing =
        evaluateMethod(ling::Any(), kSubmodules, locals, platform::makeMap(), platform::makeMap());
    std::vector<ling::String> names = namesIn(listing);
    PyErr_Clear();
    return names;
}

ling::Any importFailure(const ling::String& name) {
    const ling::Any error = takePythonError();
    return error.isNone() ? platform::failure(ling::String(u"Unable to find the module: {}.").arg(name)) : error;
}

/// One submodule that cannot be exported does not keep the others away. Among all modules there are always some.
void exportSubmodule(const ling::String& lingName, const ling::String& pythonName, int flag) {
    const ling::Any exported = exportModule(lingName, pythonName, flag);
    if (flag != kOneOfAll && ling::internal::is_error_result(exported))
        reportNotExported(pythonName, exported);
}

ling::String joined(const ling::String& parent, const ling::String& name) { return parent + u"." + name; }

}  // namespace

ling::Any exportModule(const ling::String& lingName, const ling::String& pythonName, int flag) {
    PythonEntry entry;
    PyRef name = PyRef::steal(toPython(pythonName));
    PyRef module = name ? PyRef::steal(PyImport_Import(name.get())) : PyRef();
    if (!module)
        return importFailure(pythonName);
    if (ling::Any before = exportedBefore(lingName, module.get()); !before.isNone())
        return before;
    ling::Any exported = putIntoTree(lingName, module.get());
    if (ling::internal::is_error_result(exported))
        return exported;
    for (const ling::String& child : submodulesOf(module.get()))
        exportSubmodule(joined(lingName, child), joined(pythonName, child), flag);
    return exported;
}

void reportNotExported(const ling::String& pythonName, const ling::Any& error) {
    const ling::Result<ling::Error> known = ling::Error::cast(error);
    platform::report(ling::String(u"Unable to export the Python module {}: {}")
                         .arg(pythonName, known ? known->message() : ling::String()));
}

ling::Any importAllModules() {
    PythonEntry entry;
    const ling::Any root = ling::find_or_create_module("python");
    if (ling::internal::is_error_result(root))
        return root;
    const ling::Any listing =
        evaluateMethod(ling::Any(), kAllModules, platform::makeMap(), platform::makeMap(), platform::makeMap());
    if (ling::internal::is_error_result(listing))
        return listing;
    for (const ling::String& name : namesIn(listing)) {
        if (std::find(std::begin(kNeverImported), std::end(kNeverImported), name.view()) == std::end(kNeverImported))
            (void)exportModule(joined("python", name), name, kOneOfAll);
    }
    return {};
}

}  // namespace ling::python
