#include "functions/module_tree.h"

#include "bridge/convert.h"
#include "functions/import_log.h"
#include "functions/module_class.h"
#include "functions/module_python.h"
#include "host/entry.h"
#include "host/import_state.h"
#include "host/names.h"
#include "host/platform.h"
#include "host/py_ref.h"
#include "language/evaluate.h"
#include "ling/error.h"
#include "ling/iterable.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

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

/// Test suites that are installed with the packages they test: they want test frameworks, and act on import.
constexpr std::u16string_view kTestSuite = u"tests";

/// The folders and archives in which a package and those above it look for their modules. A package whose path leads
/// back to one of them, by a link or by intention, would hold itself without end.
struct PackagePath {
    std::vector<std::string> places;
    const PackagePath* above = nullptr;

    bool leadsBackTo(const PackagePath* package) const {
        for (; package != nullptr; package = package->above) {
            if (std::find_first_of(places.begin(), places.end(), package->places.begin(), package->places.end()) !=
                places.end())
                return true;
        }
        return false;
    }
};

/// The entries of a Python path, links resolved.
std::vector<std::string> placesIn(PyObject* path) {
    std::vector<std::string> places;
    PyRef iterator = PyRef::steal(path != nullptr ? PyObject_GetIter(path) : nullptr);
    while (PyRef entry = iterator ? PyRef::steal(PyIter_Next(iterator.get())) : PyRef()) {
        const char* text = PyUnicode_Check(entry.get()) ? PyUnicode_AsUTF8(entry.get()) : nullptr;
        std::error_code unresolved;  // Inside an archive: the name has to do.
        const std::filesystem::path resolved =
            text == nullptr ? std::filesystem::path() : std::filesystem::canonical(text, unresolved);
        if (text != nullptr)
            places.push_back(unresolved ? text : resolved.string());
        forgetError();
    }
    forgetError();
    return places;
}

/// The module that is in the tree under this name already and exports this very Python module, or none.
ling::Any exportedBefore(const ling::String& name, PyObject* module) {
    const ling::Module known = ling::find_module(name);
    return ModulePython::pythonModule(known) == module ? ling::Any(known) : ling::Any();
}

/// The exporting object, in the tree with its members. Whoever is second, on another thread, gets that of the first.
ling::Any putIntoTree(const ling::String& name, PyObject* module) {
    const ModulePython exported = ModulePython::make(name, module);
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
    forgetError();
    return ling::String::cast(text).valueOr(ling::String());
}

std::vector<ling::String> submodulesOf(PyObject* module) {
    const ling::Map_Generic locals = platform::makeMap({{ling::String("pp"), toLing(module)}});
    const ling::Any listing =
        evaluateMethod(ling::Any(), kSubmodules, locals, platform::makeMap(), platform::makeMap());
    std::vector<ling::String> names = publicNamesIn(listing);
    forgetError();
    return names;
}

constexpr const char16_t* kStillImported = u"The module is still being imported.";

/// One export with all that it brings.
class Export {
public:
    explicit Export(int flag) : log_(flag == kOneOfAllModules ? ImportLog::current() : nullptr), flag_(flag) {}

    ling::Any run(const ling::String& lingName, const ling::String& pythonName, const PackagePath& above);

private:
    bool leavesAlone(const ling::String& pythonName);
    ling::Any importFailure(const ling::String& pythonName);
    ling::Any putIntoTree(const ling::String& lingName, const ling::String& pythonName, PyObject* module);
    void exportSubmodules(const ling::String& lingName, const ling::String& pythonName, PyObject* module,
                          const PackagePath& above);

    ImportLog* const log_;
    const int flag_;
};

ling::Any Export::importFailure(const ling::String& pythonName) {
    if (log_ == nullptr)
        return takePythonError();
    log_->failed(pythonName, pendingExceptionText());
    PyErr_Clear();  // An interruption too: the module raises it at every import, and ends its own alone.
    return platform::failure(ling::String(u"Unable to find the module: {}.").arg(platform::brief(pythonName)));
}

ling::Any Export::putIntoTree(const ling::String& lingName, const ling::String& pythonName, PyObject* module) {
    ling::Any exported = ling::python::putIntoTree(lingName, module);
    if (log_ == nullptr)
        return exported;
    if (const ling::Result<ling::Error> error = ling::Error::cast(exported))
        log_->failed(pythonName, error->message());
    else
        log_->exported(pythonName);
    return exported;
}

/// Whether a walk is not to wait for the import of a module that is going on: nobody knows what that is waiting for.
bool Export::leavesAlone(const ling::String& pythonName) {
    if (log_ == nullptr || !isBeingImported(pythonName.toStdString().c_str()))
        return false;
    log_->failed(pythonName, kStillImported);
    return true;
}

ling::Any Export::run(const ling::String& lingName, const ling::String& pythonName, const PackagePath& above) {
    if (leavesAlone(pythonName))
        return platform::failure(kStillImported);
    PyRef name = PyRef::steal(toPython(pythonName));
    PyRef module = name ? PyRef::steal(PyImport_Import(name.get())) : PyRef();
    if (!module)
        return importFailure(pythonName);
    if (ling::Any before = exportedBefore(lingName, module.get()); !before.isNone())
        return before;
    ling::Any exported = putIntoTree(lingName, pythonName, module.get());
    if (!ling::internal::is_error_result(exported))
        exportSubmodules(lingName, pythonName, module.get(), above);
    return exported;
}

/// One submodule that cannot be exported does not keep the others away.
void Export::exportSubmodules(const ling::String& lingName, const ling::String& pythonName, PyObject* module,
                              const PackagePath& above) {
    PyRef path = PyRef::steal(attribute(module, names::modulePath));
    forgetError();
    if (!path)
        return;
    const PackagePath own{placesIn(path.get()), &above};
    if (own.leadsBackTo(&above))
        return;
    for (const ling::String& child : submodulesOf(module)) {
        if (child == kTestSuite)
            continue;
        const ling::String childName = joinedName(pythonName, child);
        const ling::Any exported = run(joinedName(lingName, child), childName, own);
        if (flag_ != kOneOfAllModules && ling::internal::is_error_result(exported))
            reportNotExported(childName, exported);
    }
}

}  // namespace

std::vector<ling::String> publicNamesIn(const ling::Any& listing) {
    std::vector<ling::String> names;
    const ling::Result<ling::I_Iterable_Generic> entries = ling::I_Iterable_Generic::cast(listing);
    if (!entries)
        return names;
    for (ling::iteration entry = entries->beginImpl(); entry.advance();) {
        const ling::String name = nameIn(entry.item());
        if (isPublicName(name))
            names.push_back(name);
    }
    return names;
}

ling::String joinedName(const ling::String& parent, const ling::String& name) { return parent + u"." + name; }

ling::Any exportModule(const ling::String& lingName, const ling::String& pythonName, int flag) {
    PythonEntry entry;
    const PackagePath everything{placesIn(PySys_GetObject("path"))};
    return Export(flag).run(lingName, pythonName, everything);
}

ling::Any exportModuleLater(const ling::String& lingName, const ling::String& pythonName) {
    const ModulePython exported = ModulePython::makeLate(lingName, pythonName);
    const ling::Any problem = platform::registerModule(exported);
    return ling::internal::is_error_result(problem) ? problem : ling::Any(exported);
}

}  // namespace ling::python
