#include "host/scheme_loader.h"

#include "host/platform.h"
#include "language/evaluate.h"
#include "ling/extension.h"

namespace ling::python {

namespace {

constexpr const char* kSchemes[] = {"data", "file", "ftp", "http", "https"};

constexpr const char* kScript =
    "\n        import urllib.request\n\n        with urllib.request.urlopen(in_uri) as response:\n"
    "            return response.read()\n    ";

ling::FunctionCL_Generic makeLoader() {
    const ling::FunctionCL_Generic loader = platform::makeFunction("load", "in_path, in_uri", &loadResource,
                                                                   "Fetches the resource behind a URI through Python.");
    (void)loader.setParameterDefaults({ling::String(), ling::String()});
    return loader;
}

}  // namespace

ling::Any loadResource(const ling::Any& path, const ling::Any& uri) {
    // As globals: the wrapping declares each of the locals in front of the body, indented by one tab, and the script,
    // which is indented further, could not follow such a line. The code reads them from the same place either way.
    const ling::Map_Generic variables =
        platform::makeMap({{ling::String("in_path"), path}, {ling::String("in_uri"), uri}});
    return evaluateMethod(ling::Any(), kScript, platform::makeMap(), variables, platform::makeMap());
}

void registerSchemeProviders() {
    const ling::FunctionCL_Generic loader = makeLoader();
    for (const char* scheme : kSchemes)
        ling::register_scheme_provider(scheme, loader);
}

}  // namespace ling::python
