#include "lingobject/class_tables.h"

#include "ling/error.h"
#include "ling/members.h"
#include "lingobject/guarded_slot.h"
#include "lingobject/instance.h"
#include "lingobject/slot_result.h"

#include <cstring>
#include <vector>

namespace ling::python {

namespace {

/// What the texts of a method's entry show: types and the result.
constexpr unsigned kDocFlags = 17;

template <class Members>
Members publicOnly(const Members& all) {
    Members shown;
    for (const auto& member : all)
        if (!member.id.isPrivate())
            shown.push_back(member);
    return shown;
}

auto publicMethods(const ling::Class_Generic& cls, ling::Inherited inherited) {
    auto all = cls.methods(inherited);
    for (const auto& method : cls.classMethods(inherited))
        all.push_back(method);
    return publicOnly(all);
}

auto publicProperties(const ling::Class_Generic& cls, ling::Inherited inherited) {
    auto all = cls.properties(inherited);
    for (const auto& property : cls.classProperties(inherited))
        all.push_back(property);
    return publicOnly(all);
}

const char* keepName(const ling::identifier& id) { return keepText(std::string(id.utf8())); }

ling::property_ident_untyped identifierIn(void* closure) {
    return ling::property_ident_untyped(static_cast<const char*>(closure));
}

PyObject* getProperty(PyObject* self, void* closure) {
    return giveResult(Receiver(self)->propertyValue(identifierIn(closure)));
}

int setProperty(PyObject* self, PyObject* value, void* closure) {
    ling::Any converted;
    if (value != nullptr && !takeArgument(value, converted))
        return -1;
    return giveOutcome(Receiver(self)->setPropertyValue(identifierIn(closure), converted));
}

/// The entries of the method table are for show. Called through the type, they give nothing.
PyObject* showOnly(PyObject*, PyObject*) { return nullptr; }

const char* methodDoc(const ling::I_Invokable_Generic& method) {
    const ling::Result<ling::Signature> signature = method.signature();
    return keepText((signature ? signature->toString(kDocFlags).toStdString() : std::string()) + "\n\n-");
}

}  // namespace

const char* keepText(const std::string& text) {
    auto* copy = static_cast<char*>(std::malloc(text.size() + 1));
    std::memcpy(copy, text.c_str(), text.size() + 1);
    return copy;
}

bool declaresPublicMembers(const ling::Class_Generic& cls) {
    return !publicMethods(cls, ling::Inherited::No).empty() || !publicProperties(cls, ling::Inherited::No).empty();
}

PyMethodDef* makeMethodTable(const ling::Class_Generic& cls) {
    const auto methods = publicMethods(cls, ling::Inherited::Yes);
    auto* table = new PyMethodDef[methods.size() + 1]();
    for (std::size_t i = 0; i < methods.size(); ++i)
        table[i] = {keepName(methods[i].id), showOnly, METH_VARARGS, methodDoc(methods[i].member)};
    return table;
}

PyGetSetDef* makePropertyTable(const ling::Class_Generic& cls) {
    const auto properties = publicProperties(cls, ling::Inherited::Yes);
    auto* table = new PyGetSetDef[properties.size() + 1]();
    for (std::size_t i = 0; i < properties.size(); ++i) {
        const char* name = keepName(properties[i].id);
        const ling::Property& property = properties[i].member;
        table[i] = {name, guarded<getProperty>, property.setter().isNone() ? nullptr : guarded<setProperty>,
                    keepText(property.doc().toStdString()), const_cast<char*>(name)};
    }
    return table;
}

}  // namespace ling::python
