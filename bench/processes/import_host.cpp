/// A host of the plug-in that imports all modules and does nothing else.
///
///     import_host EXTENSIONS [FILE]     writes the names of all exported Python modules to the file, one a line

#include "ling/class.h"
#include "ling/error.h"
#include "ling/extension.h"
#include "ling/list.h"
#include "ling/map_interface.h"
#include "ling/module.h"

#include <fstream>
#include <string>

namespace {

bool importAll(const ling::Class_Generic& language) {
    return !language.isNone() && !ling::internal::is_error_result(language.callMethod(
                                     ling::method_ident_untyped("importAllModules"), std::span<const ling::Any>()));
}

void writeNames(const char* file) {
    constexpr std::size_t kPrefix = sizeof("python.") - 1;
    std::ofstream out(file);
    for (const ling::Any& item : ling::modules().copyItems()) {
        const std::string name = ling::qualname(item).toStdString();
        if (name.starts_with("python."))
            out << name.substr(kPrefix) << '\n';
    }
}

}  // namespace

int main(int count, char** texts) {
    if (count < 2)
        return 1;
    (void)ling::load_extensions(texts[1]);
    (void)ling::run_init_handlers();
    if (!importAll(ling::find_class("ling.python.LanguagePython")))
        return 1;
    if (count > 2)
        writeNames(texts[2]);
    return 0;
}
