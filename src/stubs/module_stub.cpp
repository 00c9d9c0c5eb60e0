#include "stubs/module_stub.h"

#include "bridge/text.h"
#include "functions/module_python.h"
#include "host/interruption.h"
#include "host/names.h"
#include "host/py_ref.h"
#include "modules/module_members.h"
#include "stubs/class_stub.h"
#include "stubs/parameters.h"

#include <vector>

namespace ling::python {

namespace {

constinit const Name kName{"__name__"};

/// A class may narrow what its parents declare, and operators follow from methods: neither is a mistake in the stub. No
/// Python class can derive from one of the host's, which derive from each other nevertheless.
constexpr const char* kHead =
    "# What the host declares, written by `ling.python.write_stubs`.\n"
    "# mypy: disable-error-code=\"override, misc\"\n\n";

/// The Python module that a module of the host stands for.
std::string pythonNameOf(const ling::Module& module) {
    PyObject* python = ModulePython::pythonModule(module);
    PyRef name = PyRef::steal(python != nullptr ? attribute(python, kName) : nullptr);
    const std::string text = name && PyUnicode_Check(name.get()) ? textFromPython(name.get()).toStdString() : "";
    forgetError();
    return text;
}

class ModuleStub {
public:
    explicit ModuleStub(const ling::Module& module)
        : module_(module),
          names_(spellableNames(module)),
          annotations_(module.name().toStdString(), {names_.begin(), names_.end()}, namesInClasses(module)) {}

    std::string text() {
        for (const std::string& name : names_)
            add(name);
        const std::string imports = annotations_.imports() + children_;
        return kHead + documentation("", module_.doc()) + (imports.empty() ? "" : imports + "\n") + exported() + body_;
    }

private:
    static std::vector<std::string> spellableNames(const ling::Module& module) {
        std::vector<std::string> names;
        std::set<std::string> known;
        for (const ling::String& name : memberNamesOf(module))
            if (!name.startsWith(u"_") && isSpellable(name) && known.insert(name.toStdString()).second)
                names.push_back(name.toStdString());
        return names;
    }

    static std::set<std::string> namesInClasses(const ling::Module& module) {
        std::set<std::string> names;
        for (const ling::Class_Generic& cls : module.classes())
            names.merge(namesInStubOf(cls));
        return names;
    }

    /// What `import *` binds.
    std::string exported() const {
        std::string text = "__all__ = [\n";
        for (const std::string& name : names_)
            text += "    \"" + name + "\",\n";
        return text + "]\n\n";
    }

    void add(const std::string& name) {
        const ling::Property property = ling::raw_property_of(module_, ling::property_ident_untyped(name));
        if (property.isNone())
            addFunction(name, ling::raw_method_of(module_, ling::method_ident_untyped(name)));
        else if (property.isValue())
            addValue(name, property);
        else
            addVariable(name, annotations_.of(property.type(), Way::Given), property.doc());
    }

    void addValue(const std::string& name, const ling::Property& property) {
        const ling::Any value = property.value();
        if (isChild(module_, ling::String(name), value))
            children_ += "from . import " + name + " as " + name + "\n";
        else if (ling::internal::is_instance<ling::Class_Generic>(value))
            addClass(name, ling::unchecked<ling::Class_Generic>(value));
        else if (value.is(ling::Kind::Function))
            addFunction(name, ling::unchecked<ling::I_Invokable_Generic>(value));
        else
            addVariable(name, annotations_.of(property.type(), Way::Given), property.doc());
    }

    void addClass(const std::string& name, const ling::Class_Generic& cls) {
        const bool isOwn = cls.parentModule().isSameAs(module_) && cls.name().toStdString() == name;
        body_ += isOwn ? stubOfClass(cls, annotations_) : name + " = " + annotations_.nameOf(cls) + "\n";
    }

    void addFunction(const std::string& name, const ling::I_Invokable_Generic& function) {
        if (!function.isNone())
            body_ +=
                definition("", "def " + name + parametersAndResult(function, "", false, annotations_), docOf(function));
    }

    void addVariable(const std::string& name, const std::string& type, const ling::String& doc) {
        body_ += name + ": " + type + "\n" + documentation("", doc);
    }

    const ling::Module& module_;
    const std::vector<std::string> names_;
    Annotations annotations_;
    std::string children_;
    std::string body_;
};

}  // namespace

std::string stubOf(const ling::Module& module) {
    if (!ModulePython::isInstance(module))
        return ModuleStub(module).text();
    const std::string python = pythonNameOf(module);
    return kHead + (python.empty() ? std::string() : "from " + python + " import *\n");
}

}  // namespace ling::python
