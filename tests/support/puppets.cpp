#include "support/puppets.h"

#include "ling/ling.h"

#include <map>
#include <mutex>
#include <sstream>

namespace {

using ling::Any;
using ling::String;
using ling::internal::class_builder;
using ling::internal::defclass_impl;
using ling::internal::property_builder;

const ling::field_ident_untyped $answer("_answer");

Any call(const Any& function, std::vector<Any> arguments) {
    return ling::unchecked<ling::I_Invokable_Generic>(function).invoke(arguments);
}

void addProperty(class_builder& builder, const char* name, const ling::property_ident_untyped& id) {
    builder.property(id, property_builder()
                             .getter([name](const Any& self) { return call(self.fieldValue($answer), {String(name)}); })
                             .setter([name](const Any& self, const Any& value) {
                                 return call(self.fieldValue($answer), {String(name), value});
                             }));
}

void addMethod0(class_builder& builder, const char* name, const ling::method_ident_untyped& id) {
    builder.method(id, "", [name](const Any& self) { return call(self.fieldValue($answer), {String(name)}); });
}
void addMethod1(class_builder& builder, const char* name, const ling::method_ident_untyped& id) {
    builder.method(id, "a", [name](const Any& self, const Any& a) {
        return call(self.fieldValue($answer), {String(name), a});
    });
}
void addMethod2(class_builder& builder, const char* name, const ling::method_ident_untyped& id) {
    builder.method(id, "a, b", [name](const Any& self, const Any& a, const Any& b) {
        return call(self.fieldValue($answer), {String(name), a, b});
    });
}

class_builder puppet(const char* name, const ling::Class_Generic& parent) {
    class_builder builder = *name == 0 ? defclass_impl("Bare", "") : defclass_impl(name, "puppets");
    if (!parent.isNone())
        builder.parent(parent);
    builder.field($answer).method(Any::$__init__, "answer", [](const Any& self, const Any& answer) {
        return self.setFieldValue($answer, answer);
    });
    return builder;
}

void definePuppet(const char* name, const ling::Class_Generic& parent) {
    class_builder builder = puppet(name, parent);
    const bool iterates = !parent.isNone() && parent.isAncestor(ling::I_Iterator_Generic::getClass());
    if (!iterates) {
        addProperty(builder, "length", ling::I_Sequence_Generic::$$length);
        addMethod0(builder, "iter", ling::I_Iterable_Generic::$iter);
    }
    addProperty(builder, "value", ling::property_ident_untyped("value"));
    for (const char* method : {"next", "act", "__hash__", "__display__"})
        addMethod0(builder, method, ling::method_ident_untyped(method));
    for (const char* method : {"at", "removeAt", "remove", "contains", "__compare__", "__sub__", "__iadd__"})
        addMethod1(builder, method, ling::method_ident_untyped(method));
    for (const char* method : {"get", "set"})
        addMethod2(builder, method, ling::method_ident_untyped(method));
    builder.build();
}

/// An object of an interface that has the given members and no others. One class for each pair of texts.
Any bare(const String& interface, const String& members, const Any& answer) {
    static std::map<std::string, ling::Class_Generic>& made = *new std::map<std::string, ling::Class_Generic>;
    ling::Class_Generic& cls = made[interface.toStdString() + " " + members.toStdString()];
    if (cls.isNone()) {
        class_builder builder = puppet("", ling::find_class(String(u"ling.") + interface));
        std::istringstream words(members.toStdString());
        for (std::string word; words >> word;) {
            const auto& name = *new std::string(word.substr(0, word.find('/')));
            const ling::method_ident_untyped id{String(name)};
            if (word.ends_with("/0"))
                addMethod0(builder, name.c_str(), id);
            else if (word.ends_with("/1"))
                addMethod1(builder, name.c_str(), id);
            else if (word.ends_with("/2"))
                addMethod2(builder, name.c_str(), id);
            else
                addProperty(builder, name.c_str(), ling::property_ident_untyped(String(name)));
        }
        cls = builder.build();
    }
    return cls(answer);
}

}  // namespace

void definePuppets() {
    static std::once_flag once;
    std::call_once(once, [] {
        definePuppet("Puppet", ling::Class_Generic());
        definePuppet("Sequence", ling::I_MutableSequence_Generic::getClass());
        definePuppet("Map", ling::I_MutableMap_Generic::getClass());
        definePuppet("Iterable", ling::I_Iterable_Generic::getClass());
        definePuppet("Iterator", ling::I_Iterator_Generic::getClass());
        (void)ling::internal::register_function("puppets",
                                                ling::make_function("bare", "interface, members, answer", &bare));
        (void)ling::internal::register_function(
            "puppets", ling::make_function("late", "action", [](const Any& action) {
                return ling::Tuple_Generic({ling::Lazy_Generic([action] { return call(action, {}); })});
            }));
        (void)ling::internal::register_function("puppets",
                                                ling::make_function("thrice", "action", [](const Any& action) {
                                                    (void)call(action, {});
                                                    (void)call(action, {});
                                                    return call(action, {});
                                                }));
    });
}
