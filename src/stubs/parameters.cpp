#include "stubs/parameters.h"

#include "bridge/convert.h"
#include "bridge/text.h"
#include "host/interruption.h"
#include "host/py_ref.h"
#include "modules/host_module.h"

#include <algorithm>
#include <optional>
#include <set>
#include <vector>

namespace ling::python {

namespace {

/// Values that are written as they are. A longer or another one is told apart from none at all, no more.
std::string textOfDefault(const ling::Any& value) {
    PyRef object = PyRef::steal(toPythonLocked(value));
    const bool isPlain = object && (object.get() == Py_None || PyBool_Check(object.get()) ||
                                    PyLong_CheckExact(object.get()) || PyFloat_CheckExact(object.get()) ||
                                    PyUnicode_CheckExact(object.get()) || PyBytes_CheckExact(object.get()));
    PyRef shown = PyRef::steal(isPlain ? PyObject_Repr(object.get()) : nullptr);
    const char* text = shown ? PyUnicode_AsUTF8(shown.get()) : nullptr;
    if (text == nullptr)
        forgetError();
    return text != nullptr ? text : "...";
}

class ParameterList {
public:
    ParameterList(std::string_view receiver, Annotations& annotations) : annotations_(annotations) {
        if (!receiver.empty())
            add(std::string(receiver));
    }

    void addAll(std::span<const ling::Parameter> parameters) {
        addPositional(parameters);
        addVariadic(parameters, ling::ParameterMode::VariadicPositional, "*");
        addNamed(parameters);
        if (takesOtherNames_)
            add("**" + freeName(u"named") + ": " + annotations_.any());
        else
            addVariadic(parameters, ling::ParameterMode::VariadicNamed, "**");
    }
    void addAnything() {
        add("*arguments: " + annotations_.any());
        add("**named: " + annotations_.any());
    }
    std::string text() const { return "(" + text_ + ")"; }

private:
    static bool isPositional(const ling::Parameter& parameter) {
        return parameter.mode() == ling::ParameterMode::Ordinary ||
               parameter.mode() == ling::ParameterMode::PositionalOnly;
    }
    bool isNamed(const ling::Parameter& parameter) const {
        return parameter.mode() == ling::ParameterMode::Ordinary && isSpellable(parameter.name()) &&
               !used_.contains(parameter.name().toStdString());
    }

    /// Up to the last one that has no name to be called by, all go by position alone.
    void addPositional(std::span<const ling::Parameter> parameters) {
        std::vector<ling::Parameter> positional;
        std::ranges::copy_if(parameters, std::back_inserter(positional), &ParameterList::isPositional);
        const auto last = std::find_if(positional.rbegin(), positional.rend(),
                                       [&](const ling::Parameter& parameter) { return !isNamed(parameter); });
        const auto end = static_cast<std::size_t>(positional.rend() - last);
        bool isOptional = false;
        for (std::size_t i = 0; i < positional.size(); ++i) {
            isOptional = isOptional || positional[i].hasDefault();
            add(declaration(positional[i], isOptional));
            if (i + 1 == end)
                add("/");
        }
    }

    void addVariadic(std::span<const ling::Parameter> parameters, ling::ParameterMode mode, const char* stars) {
        for (const ling::Parameter& parameter : parameters)
            if (parameter.mode() == mode)
                add(stars + freeName(parameter.name()) + ": " + annotations_.of(parameter.type(), Way::Taken));
        hasStar_ = hasStar_ || std::ranges::any_of(parameters, [mode](const ling::Parameter& parameter) {
                       return parameter.mode() == mode;
                   });
    }

    void addNamed(std::span<const ling::Parameter> parameters) {
        for (const ling::Parameter& parameter : parameters) {
            if (parameter.mode() != ling::ParameterMode::NameOnly)
                continue;
            if (!isSpellable(parameter.name())) {
                takesOtherNames_ = true;
                continue;
            }
            if (!std::exchange(hasStar_, true))
                add("*");
            add(declaration(parameter, parameter.hasDefault()));
        }
    }

    /// Behind one with a default every other has one too, in Python: which value it is stays open.
    std::string declaration(const ling::Parameter& parameter, bool isOptional) {
        std::string type = annotations_.of(parameter.type(), Way::Taken);
        if (!isOptional)
            return freeName(parameter.name()) + ": " + type;
        const std::string value = parameter.hasDefault() ? textOfDefault(parameter.defaultValue()) : "...";
        if (value == "None" && type != annotations_.any() && !type.ends_with("None"))
            type += " | None";
        return freeName(parameter.name()) + ": " + type + " = " + value;
    }

    /// The name itself, or one of the same meaning that can be spelt and that no other parameter has.
    std::string freeName(const ling::String& name) {
        std::string text = isSpellable(name) ? name.toStdString() : "argument";
        while (!used_.insert(text).second)
            text += '_';
        return text;
    }

    void add(const std::string& part) {
        if (text_.empty())
            used_.insert(part);  // The receiver.
        text_ += (text_.empty() ? "" : ", ") + part;
    }

    Annotations& annotations_;
    std::set<std::string> used_;
    std::string text_;
    bool hasStar_ = false;
    bool takesOtherNames_ = false;
};

std::optional<ling::Signature> signatureIn(const ling::I_Invokable_Generic& function) {
    const ling::Result<ling::Signature> signature = function.signature();
    return signature ? std::optional(*signature) : std::nullopt;
}

}  // namespace

bool isSpellable(const ling::String& name) {
    PyRef text = PyRef::steal(textToPython(name));
    const bool spellable = text && isBindableName(text.get()) > 0;
    forgetError();
    return spellable;
}

std::string parametersOf(const ling::I_Invokable_Generic& function, std::string_view receiver, bool isBound,
                         Annotations& annotations) {
    ParameterList list(receiver, annotations);
    if (const auto signature = signatureIn(function)) {
        const std::span<const ling::Parameter> all = signature->parameters();
        list.addAll(all.subspan(isBound && !all.empty() ? 1 : 0));
    } else {
        list.addAnything();
    }
    return list.text();
}

std::string parametersAndResult(const ling::I_Invokable_Generic& function, std::string_view receiver, bool isBound,
                                Annotations& annotations) {
    const auto signature = signatureIn(function);
    return parametersOf(function, receiver, isBound, annotations) + " -> " +
           (signature ? annotations.of(signature->resultType(), Way::Given) : annotations.any());
}

}  // namespace ling::python
