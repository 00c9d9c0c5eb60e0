#include "stubs/write_stubs.h"

#include "host/entry.h"
#include "host/names.h"
#include "host/platform.h"
#include "host/py_ref.h"
#include "modules/module_members.h"
#include "stubs/module_stub.h"
#include "stubs/parameters.h"

#include <filesystem>
#include <fstream>
#include <system_error>

namespace ling::python {

namespace {

namespace fs = std::filesystem;

/// Python finds its own modules first.
bool isPythons(const std::string& name) {
    PyObject* names = PySys_GetObject("stdlib_module_names");
    PyRef text = PyRef::steal(PyUnicode_FromString(name.c_str()));
    const bool is = names != nullptr && text && PySequence_Contains(names, text.get()) > 0;
    forgetError();
    return is;
}

/// Where the stub of a module stands below the folder, or nothing when no program can import the module.
fs::path placeOf(const ling::Module& module) {
    fs::path place;
    const std::string name = module.name().toStdString();
    for (std::size_t begin = 0; begin <= name.size();) {
        const std::size_t end = std::min(name.find('.', begin), name.size());
        const std::string part = name.substr(begin, end - begin);
        if (!isSpellable(ling::String(part)) || (begin == 0 && isPythons(part)))
            return {};
        place /= part;
        begin = end + 1;
    }
    return hasChildren(module) ? place / "__init__.pyi" : fs::path(place.string() + ".pyi");
}

bool write(const fs::path& path, const std::string& text) {
    std::error_code problem;
    fs::create_directories(path.parent_path(), problem);
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text;
    file.close();
    return !problem && !file.fail();
}

}  // namespace

ling::Any writeStubs(const ling::String& folder) {
    const PythonEntry entry;
    const fs::path top = folder.toStdString();
    const ling::List_Generic written = ling::List_Generic::empty();
    for (const ling::Any& item : platform::itemsOf(ling::modules())) {
        const auto& module = ling::unchecked<ling::Module>(item);
        const fs::path place = placeOf(module);
        if (place.empty())
            continue;
        const ling::String path((top / place).string());
        if (!write(top / place, stubOf(module)))
            return platform::failure(ling::String(u"Unable to write '{}'.").arg(path));
        written.append(path);
    }
    return written;
}

void registerStubFunctions() {
    (void)ling::internal::register_function(
        "ling.python",
        platform::makeFunction("write_stubs", "folder", &writeStubs,
                               "Writes `.pyi` files for all modules of the host into a folder; answers their paths."));
}

}  // namespace ling::python
