#include "stubs/class_stub.h"

#include "bridge/errors.h"
#include "ling/error.h"
#include "ling/hash_containers.h"
#include "ling/interfaces.h"
#include "ling/list.h"
#include "ling/set_interface.h"
#include "stubs/parameters.h"

#include <algorithm>
#include <iterator>

namespace ling::python {

namespace {

constexpr const char* kIndent = "    ";

/// What the operators of Python do for an interface. "Any" stands for the type of anything.
struct Protocol {
    const ling::Class_Generic& (*interface)();
    const char* method;
    const char* types;
};
constexpr Protocol kProtocols[] = {
    {&ling::Any::getClass, "__eq__", "(self, other: object, /) -> bool"},
    {&ling::Any::getClass, "__hash__", "(self) -> int"},
    {&ling::Any::getClass, "__lt__", "(self, other: Any, /) -> bool"},
    {&ling::Any::getClass, "__le__", "(self, other: Any, /) -> bool"},
    {&ling::Any::getClass, "__gt__", "(self, other: Any, /) -> bool"},
    {&ling::Any::getClass, "__ge__", "(self, other: Any, /) -> bool"},
    {&ling::I_Invokable_Generic::getClass, "__call__", "(self, *arguments: Any, **named: Any) -> Any"},
    {&ling::I_Iterable_Generic::getClass, "__iter__", "(self) -> Iterator[Any]"},
    {&ling::I_Iterable_Generic::getClass, "__contains__", "(self, item: object, /) -> bool"},
    {&ling::I_Iterator_Generic::getClass, "__next__", "(self) -> Any"},
    {&ling::I_Sequence_Generic::getClass, "__getitem__", "(self, index: int, /) -> Any"},
    {&ling::I_MutableSequence_Generic::getClass, "__setitem__", "(self, index: int, item: Any, /) -> None"},
    {&ling::I_MutableSequence_Generic::getClass, "__delitem__", "(self, index: int, /) -> None"},
    {&ling::I_Map_Generic::getClass, "__getitem__", "(self, key: Any, /) -> Any"},
    {&ling::I_MutableMap_Generic::getClass, "__setitem__", "(self, key: Any, value: Any, /) -> None"},
    {&ling::I_MutableMap_Generic::getClass, "__delitem__", "(self, key: Any, /) -> None"},
};

/// The operators that call a method of the class: the first one that it declares.
struct Operator {
    const char* method;
    const char* python;
    bool isInPlace = false;
};
constexpr Operator kOperators[] = {
    {"__add__", "__add__"},
    {"concat", "__add__"},
    {"__iadd__", "__iadd__", true},
    {"extend", "__iadd__", true},
    {"__sub__", "__sub__"},
    {"__isub__", "__isub__", true},
    {"__mul__", "__mul__"},
    {"repeat", "__mul__"},
    {"__imul__", "__imul__", true},
    {"__div__", "__truediv__"},
    {"__idiv__", "__itruediv__", true},
};

void replaceAll(std::string& text, std::string_view word, const std::string& with) {
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + with.size()))
        text.replace(at, word.size(), with);
}

/// A text within three quotes.
std::string quoted(std::string text) {
    std::string safe;
    for (const char character : text) {
        const auto code = static_cast<unsigned char>(character);
        if (character == '\\' || character == '"')
            safe += '\\';
        if (code < 0x20 && character != '\n' && character != '\t')
            safe += "\\x" + std::string(1, "01"[code >> 4]) + "0123456789abcdef"[code & 15];
        else
            safe += character;
    }
    return "\"\"\"" + safe + "\"\"\"";
}

/// Errors that are raised as instances of a class of their own, which carry the error.
bool hasOwnException(const ling::Class_Generic& cls) {
    return cls.isAncestor(ling::Error::getClass()) && cls != ling::Error::getClass() &&
           cls != ling::StopIteration::getClass();
}

class ClassStub {
public:
    ClassStub(const ling::Class_Generic& cls, Annotations& annotations) : cls_(cls), annotations_(annotations) {}

    /// The class as an object that can be called: an instance of the class `Class`, which is all that Python sees of
    /// it.
    std::string textOfMaker() {
        const std::string name = cls_.name().toStdString();
        define("__call__" + parametersOf(cls_, "self", false, annotations_) + " -> " +
                   annotations_.of(ling::Type(cls_), Way::Given),
               {});
        addClassProperties(cls_.classProperties(ling::Inherited::No));
        addMethods(cls_.classMethods(ling::Inherited::No), "self");
        return "class _" + name + "Class(" + annotations_.nameOf(ling::Class_Generic::getClass()) + "):\n" +
               documentation(kIndent, cls_.doc()) + body_ + name + ": " + annotations_.name("typing", "Final") + "[_" +
               name + "Class]\n\n";
    }

    std::string text() {
        addException();
        addConstructor();
        addProperties(cls_.properties(ling::Inherited::No));
        addClassProperties(cls_.classProperties(ling::Inherited::No));
        addMethods(cls_.methods(ling::Inherited::No), "self");
        addMethods(cls_.classMethods(ling::Inherited::No), "cls");
        addProtocols();
        addOperators();
        const std::string doc = documentation(kIndent, cls_.doc());
        return "@" + annotations_.name("typing", "final") + "\nclass " + cls_.name().toStdString() + parents() + ":" +
               (doc.empty() && body_.empty() ? " ...\n\n" : "\n" + doc + body_ + "\n");
    }

private:
    std::string parents() {
        std::string text;
        for (const ling::Class_Generic& parent : cls_.parents())
            if (const std::string name = annotations_.nameOf(parent); name != annotations_.any())
                text += (text.empty() ? "" : ", ") + name;
        return text.empty() ? text : "(" + text + ")";
    }

    /// What `except` names. It hides the property of the instances, which have the error's own exception.
    void addException() {
        if (!hasOwnException(cls_))
            return;
        names_.insert("exception");
        addLine("class exception(" + annotations_.name("builtins", "RuntimeError") + "):");
        addLine("    ling: " + annotations_.nameOf(cls_));
    }

    void addLine(const std::string& line) {
        body_ += kIndent;
        body_ += line + "\n";
    }

    void addClassVariable(const std::string& name, const std::string& type) {
        body_ += kIndent + name + ": " + annotations_.name("typing", "ClassVar") + "[" + type + "]\n";
    }

    void addConstructor() { define("__init__" + parametersOf(cls_, "self", false, annotations_) + " -> None", {}); }

    /// Whether the name can be declared and has not been.
    template <class Identifier>
    bool takes(const Identifier& id) {
        return !id.isPrivate() && isSpellable(id.name()) && names_.insert(id.name().toStdString()).second;
    }

    template <class Properties>
    void addProperties(const Properties& properties) {
        for (const auto& [id, property] : properties) {
            const std::string name(id.utf8());
            if (takes(id))
                addProperty(name, property);
            if (name == "length")
                define("__len__(self) -> " + annotations_.name("builtins", "int"), {});
        }
    }

    void addProperty(const std::string& name, const ling::Property& property) {
        addLine("@" + annotations_.name("builtins", "property"));
        define(name + "(self) -> " + annotations_.of(property.type(), Way::Given), property.doc());
        if (property.setter().isNone())
            return;
        body_ += kIndent + ("@" + name) + ".setter\n";
        define(name + "(self, value: " + annotations_.of(property.type(), Way::Taken) + ") -> None", {});
    }

    template <class Properties>
    void addClassProperties(const Properties& properties) {
        for (const auto& [id, property] : properties)
            if (takes(id))
                addClassVariable(std::string(id.utf8()), annotations_.of(property.type(), Way::Given));
    }

    template <class Methods>
    void addMethods(const Methods& methods, const char* receiver) {
        for (const auto& [id, method] : methods) {
            if (!takes(id))
                continue;
            const bool isIndependent = method.isIndependent();
            if (isIndependent)
                addLine("@" + annotations_.name("builtins", "staticmethod"));
            else if (receiver == std::string_view("cls"))
                addLine("@" + annotations_.name("builtins", "classmethod"));
            define(std::string(id.utf8()) +
                       parametersAndResult(method, isIndependent ? "" : receiver, !isIndependent, annotations_),
                   docOf(method));
        }
    }

    void addProtocols() {
        for (const Protocol& row : kProtocols) {
            if (cls_ != row.interface())
                continue;
            std::string types = row.types;
            replaceAll(types, "Any", annotations_.any());
            if (types.find("Iterator") != std::string::npos)
                replaceAll(types, "Iterator", annotations_.name("collections.abc", "Iterator"));
            define(row.method + types, {});
        }
    }

    void addOperators() {
        std::set<std::string_view> done;
        for (const Operator& row : kOperators) {
            for (const auto& [id, method] : cls_.methods(ling::Inherited::No)) {
                if (id.utf8() != row.method || !done.insert(row.python).second)
                    continue;
                define(row.python + (row.isInPlace ? parametersOf(method, "self", true, annotations_) + " -> " +
                                                         annotations_.nameOf(cls_)
                                                   : parametersAndResult(method, "self", true, annotations_)),
                       {});
            }
        }
    }

    void define(const std::string& head, const ling::String& doc) { body_ += definition(kIndent, "def " + head, doc); }

    const ling::Class_Generic& cls_;
    Annotations& annotations_;
    std::set<std::string> names_;
    std::string body_;
};

template <class Members>
void addNames(std::set<std::string>& names, const Members& members) {
    for (const auto& member : members)
        names.emplace(member.id.utf8());
}

}  // namespace

std::string documentation(const std::string& indent, const ling::String& doc) {
    if (doc.isEmpty())
        return {};
    std::string text = quoted(doc.toStdString());
    replaceAll(text, "\n", "\n" + indent);
    return indent + text + "\n";
}

ling::String docOf(const ling::I_Invokable_Generic& function) {
    const auto doc = ling::String::cast(function.propertyValue(ling::I_HasDoc::$$doc));
    return doc ? *doc : ling::String();
}

std::string definition(const std::string& indent, const std::string& head, const ling::String& doc) {
    const std::string text = documentation(indent + kIndent, doc);
    return indent + head + (text.empty() ? ": ...\n" : ":\n" + text);
}

std::string stubOfClass(const ling::Class_Generic& cls, Annotations& annotations) {
    ClassStub stub(cls, annotations);
    return isSeenAsPythonType(cls) ? stub.textOfMaker() : stub.text();
}

std::set<std::string> namesInStubOf(const ling::Class_Generic& cls) {
    std::set<std::string> names;
    addNames(names, cls.methods(ling::Inherited::No));
    addNames(names, cls.classMethods(ling::Inherited::No));
    addNames(names, cls.properties(ling::Inherited::No));
    addNames(names, cls.classProperties(ling::Inherited::No));
    if (hasOwnException(cls))
        names.emplace("exception");
    return names;
}

}  // namespace ling::python
