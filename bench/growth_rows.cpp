#include "rows.h"

#include "bridge/convert.h"
#include "host/gil_guard.h"
#include "host/py_ref.h"
#include "ling/ling.h"

namespace ling::bench {

namespace {

using python::GilGuard;
using python::PyRef;

constexpr double kLinear = 1.15;

/// Names that no row before has used.
std::string freshName(const char* stem) {
    static std::size_t count = 0;
    return stem + std::to_string(++count);
}

Class_Generic plainClass() { return internal::defclass_impl(freshName("Class"), "").build(); }

/// Puts properties on one object and takes them off again, in the same order.
void ownProperties(std::size_t count) {
    static const Class_Generic& cls = *new Class_Generic(plainClass());
    const Any object = cls.allocateInstance();
    std::vector<property_ident_untyped> names;
    for (std::size_t i = 0; i < count; ++i)
        names.emplace_back(std::string_view("own" + std::to_string(i)));
    for (const property_ident_untyped& name : names)
        (void)insert_property_value(object, name, 1);
    for (const property_ident_untyped& name : names)
        (void)remove_property(object, name);
}

/// Makes instances of one generic and finds each again.
void genericInstances(std::size_t count) {
    const Class_Generic generic = plainClass();
    static std::vector<Type>& types = *new std::vector<Type>;
    while (types.size() < count)
        types.emplace_back(plainClass());
    for (int round = 0; round < 2; ++round)
        for (std::size_t i = 0; i < count; ++i)
            keep(generic.record()->genericInstance({&types[i], 1}));
}

void registerFunctions(std::size_t count) {
    const std::string module = freshName("bench.functions");
    for (std::size_t i = 0; i < count; ++i)
        (void)internal::register_function(module, make_function("function" + std::to_string(i), "", [] {}));
}

void registerClasses(std::size_t count) {
    const std::string module = freshName("bench.classes");
    for (std::size_t i = 0; i < count; ++i)
        (void)internal::defclass_impl("Class" + std::to_string(i), module).build();
}

Figures evaluationByModules() {
    const Class_Generic language = find_class(u"ling.python.LanguagePython");
    const String text(u"1+2");
    std::size_t made = 0;
    return growth(64, 1024, [&](std::size_t modules) {
        for (; made < modules; ++made)
            (void)find_or_create_module(String("bench.modules.m" + std::to_string(made)));
        // The time of as many evaluations as would do if each took as long as its modules: growth is linear by right.
        for (std::size_t i = 0; i < 512; ++i)
            keep(language.callMethod(I_Language::$evaluateExpression, {text}));
    });
}

/// Lists in lists, every second one of Python.
Any nested(std::size_t depth, bool alternating) {
    Any value = List_Generic();
    for (std::size_t i = 0; i < depth; ++i) {
        if (alternating && i % 2 == 1) {
            PyRef list = PyRef::steal(PyList_New(1));
            PyList_SET_ITEM(list.get(), 0, python::toPython(value));
            value = python::toLing(list.get());
        } else {
            value = List_Generic{value};
        }
    }
    return value;
}

Figures textOfNested(PyObject* (*text)(PyObject*), bool alternating, std::size_t large) {
    const GilGuard gil;
    std::size_t depth = 0;
    PyRef object;
    return growth(large / 10, large, [&](std::size_t size) {
        if (std::exchange(depth, size) != size)
            object = PyRef::steal(python::toPython(nested(size, alternating)));
        if (!PyRef::steal(text(object.get())))
            PyErr_Print();
    });
}

}  // namespace

std::vector<Row> growthRows() {
    auto row = [](const char* name, std::size_t small, std::size_t large, void (*work)(std::size_t)) {
        return Row{name, kLinear, [=] { return growth(small, large, work); }};
    };
    return {
        row("growth: own properties, put and taken off", 1000, 8000, &ownProperties),
        row("growth: instances of a generic", 500, 4000, &genericInstances),
        row("growth: functions in one module", 1000, 8000, &registerFunctions),
        row("growth: classes in one module", 500, 4000, &registerClasses),
        {"growth: repr by depth", kLinear, [] { return textOfNested(PyObject_Repr, false, 10'000); }},
        {"growth: str by depth, both worlds", kLinear, [] { return textOfNested(PyObject_Str, true, 1'000); }},
        {"growth: evaluation by modules", 0.1, evaluationByModules},
    };
}

}  // namespace ling::bench
