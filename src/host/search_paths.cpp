#include "host/search_paths.h"

#include "bridge/convert.h"
#include "host/entry.h"
#include "host/names.h"
#include "host/platform.h"
#include "host/py_ref.h"

#include <dlfcn.h>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace ling::python {

namespace {

constexpr std::string_view kSitePackages = "/site-packages";

bool isArchive(const std::filesystem::directory_entry& entry) {
    return entry.is_regular_file() && entry.path().extension() == ".zip";
}

void addPath(const std::string& path) { (void)addSysPathOnce(ling::String(path)); }

/// Appends unless an equal item is there. What fails in between leaves the list as it is and is forgotten.
void appendOnce(PyObject* list, const ling::String& path) {
    PyRef text = PyRef::steal(toPython(path));
    if (!text || PySequence_Contains(list, text.get()) != 0 || PyList_Append(list, text.get()) != 0)
        forgetError();
}

}  // namespace

const ling::List_Generic& pendingSysPaths() {
    static const ling::List_Generic& paths = *new ling::List_Generic(ling::List_Generic::empty());
    return paths;
}

std::string ownDirectory() {
    Dl_info info;
    if (dladdr(reinterpret_cast<const void*>(&ownDirectory), &info) == 0)
        return {};
    char resolved[PATH_MAX] = "";
    static_assert(sizeof(resolved) == 4096);
    (void)realpath(info.dli_fname, resolved);  // A failure shows as a path that holds nothing.
    const std::string file(resolved);
    return file.substr(0, file.rfind('/'));
}

std::string standardLibrary() { return ownDirectory() + "/python3/lib/python313.zip"; }

void addOwnSearchPaths() {
    const std::string directory = ownDirectory();
    if (!platform::isText(directory))  // Paths are texts, here and for the start.
        throw std::runtime_error("The path of the library is not UTF-8: " + directory);
    const std::string packages = directory + std::string(kSitePackages);
    for (const auto& entry : std::filesystem::directory_iterator(packages)) {
        if (isArchive(entry))
            addPath(entry.path().string());
    }
    addPath(packages);
    addPath(standardLibrary());
}

ling::Any addSysPathOnce(const ling::String& path) {
    if (Py_IsInitialized() == 0) {
        pendingSysPaths().append(path);
        return {};
    }
    PythonEntry entry;
    PyRef sys = PyRef::steal(PyImport_ImportModule(names::sys.text()));
    if (!sys)
        return takePythonError();
    PyRef list = PyRef::steal(attribute(sys.get(), names::path));
    if (list && PyList_Check(list.get()))
        appendOnce(list.get(), path);
    else
        forgetError();
    return {};
}

}  // namespace ling::python
