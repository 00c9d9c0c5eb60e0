#include "support/script.h"

#include "language/evaluate.h"
#include "ling/comparison.h"
#include "ling/error.h"
#include "ling/hash_containers.h"

namespace {

constexpr const char* kPrelude = R"(
def probe(function, *arguments):
    try:
        return repr(function(*arguments))
    except BaseException as error:
        return f"{type(error).__name__}: {error}"
def call(value, method, *arguments):
    return ling.bound_method(value, method)(*arguments)
def read(value, name):
    return ling.property_value(value, name)
)";

}  // namespace

std::string script(const std::string& code) {
    const ling::Map_Generic none;
    const ling::Any result = ling::python::evaluate(ling::String(kPrelude + code), none, none, ling::Map_Generic());
    if (const ling::Result<ling::Error> error = ling::Error::cast(result))
        return "error: " + error->message().toStdString();
    return ling::display(result).toStdString();
}

std::string outcome(const std::string& before, const ScriptRow& row) {
    const std::string code = row.code;
    const bool isBody = code.find("return") != std::string::npos;
    return script(before + (isBody ? code : "return probe(lambda: " + code + ")"));
}
