#include "stubs/annotations.h"

#include "bridge/convert.h"
#include "bridge/text.h"
#include "bridge/type_names.h"
#include "host/interruption.h"
#include "host/names.h"
#include "host/py_ref.h"
#include "ling/basic_values.h"
#include "ling/error.h"
#include "ling/hash_containers.h"
#include "ling/members.h"
#include "ling/module.h"

#include <algorithm>

namespace ling::python {

namespace {

constinit const Name kModule{"__module__"};
constinit const Name kName{"__name__"};
constexpr std::string_view kAbstractModule = "collections.abc.";

ling::Class_Generic genericOf(const ling::Class_Generic& cls) {
    const ling::Class_Generic generic = cls.parentGeneric();
    return generic.isNone() ? cls : generic;
}

/// The dotted name of the Python type that matches a native class, or empty.
std::string pythonNameOf(const ling::Class_Generic& cls) {
    const ling::Class_Generic found = pythonClassOf(genericOf(cls));
    PyRef type = PyRef::steal(found.isNone() ? nullptr : toPythonLocked(found));
    PyRef module = PyRef::steal(type ? attribute(type.get(), kModule) : nullptr);
    PyRef name = PyRef::steal(module ? attribute(type.get(), kName) : nullptr);
    PyRef text = PyRef::steal(name ? PyUnicode_FromFormat("%S.%S", module.get(), name.get()) : nullptr);
    const std::string dotted = text ? textFromPython(text.get()).toStdString() : std::string();
    forgetError();
    return dotted;
}

bool isUndefined(const ling::Class_Generic& cls) { return cls == ling::Undefined::getClass(); }

/// Whether the module has the class under the class's own name.
bool isReachable(const ling::Module& module, const ling::Class_Generic& cls) {
    const ling::Property property = ling::raw_property_of(module, ling::property_ident_untyped(cls.name()));
    return !property.isNone() && property.isValue() && property.value().isSameAs(cls);
}

/// "a.b" as a name of its own: "_a_b".
std::string aliasOf(std::string module) {
    std::ranges::replace(module, '.', '_');
    return "_" + module;
}

std::pair<std::string, std::string> splitName(const std::string& dotted) {
    const std::size_t dot = dotted.rfind('.');
    return {dotted.substr(0, dot), dotted.substr(dot + 1)};
}

/// How many parameters the abstract class of Python takes.
std::size_t arityOf(const std::string& abstract) { return abstract.ends_with("Mapping") ? 2 : 1; }

}  // namespace

bool isSeenAsPythonType(const ling::Class_Generic& cls) {
    const std::string name = pythonNameOf(cls);
    const bool isError = cls == ling::Error::getClass();
    return (!name.empty() && !name.starts_with(kAbstractModule) && !isError) || isUndefined(cls) ||
           cls == ling::None::getClass();
}

std::string Annotations::of(const ling::Type& type, Way way) {
    if (type.isAny() || type.isUntyped() || type.isVariable())
        return any();
    std::set<std::string> seen;
    std::string text;
    for (const ling::Type& part : type.parts()) {
        const std::string one = type.isUnion() ? of(part, way) : ofClass(type.toClass(), way);
        if (one.empty())
            return any();
        if (seen.insert(one).second)
            text += (text.empty() ? "" : " | ") + one;
    }
    return text.empty() ? any() : text;
}

std::string Annotations::ofClass(const ling::Class_Generic& cls, Way way) {
    if (cls.isNone() || isUndefined(cls))
        return {};
    if (cls == ling::None::getClass())
        return "None";
    const std::string python = pythonNameOf(cls);
    if (isSeenAsPythonType(cls)) {
        const auto [module, type] = splitName(python);
        return name(module, type) + (type == "tuple" ? "[" + any() + ", ...]" : "");
    }
    if (way == Way::Given)
        return nameOf(genericOf(cls));
    if (python.starts_with(kAbstractModule))
        return ofInterface(python.substr(kAbstractModule.size()), cls);
    // What Python has in the place of these becomes one of them on the way.
    if (cls == ling::Error::getClass())
        return nameOf(cls) + " | " + name("builtins", "BaseException");
    if (cls == ling::Class_Generic::getClass())
        return nameOf(cls) + " | " + name("builtins", "type") + "[" + any() + "]";
    if (cls == ling::JsonObject::getClass())
        return ofInterface("Mapping", ling::I_Map_Generic::getClass());
    return nameOf(genericOf(cls));
}

/// Python's own values and those of the host alike.
std::string Annotations::ofInterface(const std::string& abstract, const ling::Class_Generic& cls) {
    const std::string python = name("collections.abc", abstract) + parametersOf(abstract, cls);
    const bool isStructural = abstract == "Callable" || abstract == "Iterable" || abstract == "Iterator";
    return isStructural ? python : python + " | " + nameOf(genericOf(cls));
}

std::string Annotations::parametersOf(const std::string& abstract, const ling::Class_Generic& cls) {
    if (abstract == "Callable")
        return "[..., " + any() + "]";
    const std::vector<ling::Type> given = cls.parameters();
    std::string text;
    for (std::size_t i = 0; i < arityOf(abstract); ++i)
        text += (i == 0 ? "[" : ", ") + (i < given.size() ? of(given[i], Way::Taken) : any());
    return text + "]";
}

std::string Annotations::nameOf(const ling::Class_Generic& cls) {
    const ling::Module module = cls.parentModule();
    if (module.isNone() || !isReachable(module, cls))
        return any();
    return name(module.name().toStdString(), cls.name().toStdString());
}

std::string Annotations::name(const std::string& module, const std::string& name) {
    const bool isNear = module == module_ ? !members_.contains(name) : module == "builtins" && !isTaken(name);
    return isNear ? name : imported(module) + "." + name;
}

std::string Annotations::imported(const std::string& module) {
    const bool isFree = module != module_ && !isTaken(module.substr(0, module.find('.')));
    return imports_.try_emplace(module, isFree ? module : aliasOf(module)).first->second;
}

std::string Annotations::imports() const {
    std::string text;
    for (const auto& [module, here] : imports_)
        text += "import " + module + (here == module ? "" : " as " + here) + "\n";
    return text;
}

}  // namespace ling::python
