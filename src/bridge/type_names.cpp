#include "bridge/type_names.h"

#include "ling/basic_values.h"
#include "ling/byte_array.h"
#include "ling/date_time.h"
#include "ling/decimal.h"
#include "ling/error.h"
#include "ling/hash_containers.h"
#include "ling/list.h"
#include "ling/module.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <string_view>

namespace ling::python {

namespace {

/// Which classes a row stands for: the native class alone, or the instances of that generic as well.
enum class Covers : bool { ClassOnly, Instances };

struct Row {
    const ling::Class_Generic& (*native)();
    const char* pythonName;
    Covers covers = Covers::ClassOnly;
};

/// In this order, so that a mutable interface comes before the one it derives from. Instances of the generics whose
/// rows cover the class alone are applied to their parameters instead.
constexpr Row kRows[] = {
    {&ling::Boolean::getClass, "python.builtins.bool"},
    {&ling::ByteArray::getClass, "python.builtins.bytes"},
    {&ling::I_Invokable_Generic::getClass, "python.collections.abc.Callable", Covers::Instances},
    {&ling::Date::getClass, "python.datetime.date"},
    {&ling::DateTime::getClass, "python.datetime.datetime"},
    {&ling::Decimal::getClass, "python.decimal.Decimal"},
    {&ling::I_Iterable_Generic::getClass, "python.collections.abc.Iterable"},
    {&ling::I_Iterator_Generic::getClass, "python.collections.abc.Iterator"},
    {&ling::Float::getClass, "python.builtins.float"},
    {&ling::Integer::getClass, "python.builtins.int"},
    {&ling::I_MutableMap_Generic::getClass, "python.collections.abc.MutableMapping"},
    {&ling::I_Map_Generic::getClass, "python.collections.abc.Mapping"},
    {&ling::I_Tuple_Generic::getClass, "python.builtins.tuple"},
    {&ling::Tuple_Generic::getClass, "python.builtins.tuple"},
    {&ling::I_MutableSequence_Generic::getClass, "python.collections.abc.MutableSequence", Covers::Instances},
    {&ling::I_Sequence_Generic::getClass, "python.collections.abc.Sequence", Covers::Instances},
    {&ling::Time::getClass, "python.datetime.time"},
    {&ling::I_MutableSet_Generic::getClass, "python.collections.abc.MutableSet", Covers::Instances},
    {&ling::I_Set_Generic::getClass, "python.collections.abc.Set", Covers::Instances},
    {&ling::String::getClass, "python.builtins.str"},
    {&ling::Error::getClass, "python.builtins.Exception"},
};
constexpr std::size_t kRowCount = std::size(kRows);

/// The generics whose instances are applied to their parameters.
constexpr const ling::Class_Generic& (*kApplied[])() = {
    &ling::I_Iterable_Generic::getClass,   &ling::I_Iterator_Generic::getClass, &ling::I_Map_Generic::getClass,
    &ling::I_MutableMap_Generic::getClass, &ling::I_Tuple_Generic::getClass,    &ling::Tuple_Generic::getClass,
};

/// The classes found so far, by row, each with a reference for the process. A class that is not there yet may come.
constinit std::atomic<ling::internal::object_value_class*> foundClasses[kRowCount];

ling::Class_Generic pythonClassAt(std::size_t row) {
    std::atomic<ling::internal::object_value_class*>& place = foundClasses[row];
    if (ling::internal::object_value_class* known = place.load(std::memory_order_acquire))
        return ling::Class_Generic::share(known);
    ling::Class_Generic found = ling::find_class(kRows[row].pythonName);
    ling::internal::object_value_class* expected = nullptr;
    if (!found.isNone() && place.compare_exchange_strong(expected, found.record(), std::memory_order_acq_rel))
        found.record()->retain();
    return found;
}

bool isApplied(const ling::Class_Generic& generic) {
    return !generic.isNone() &&
           std::ranges::any_of(kApplied, [&](const auto& applied) { return generic == applied(); });
}

/// The number of the row that stands for the class, `kRowCount` when there is none.
std::size_t rowOf(const ling::Class_Generic& native) {
    const ling::Class_Generic generic = native.parentGeneric();
    const auto stands = [&](const Row& row) {
        return row.native() == native || (row.covers == Covers::Instances && row.native() == generic);
    };
    return static_cast<std::size_t>(std::ranges::find_if(kRows, stands) - std::begin(kRows));
}

/// A none handle where one of the parameters has no Python class.
ling::Class_Generic withParameters(const ling::Class_Generic& generic, const std::vector<ling::Type>& parameters) {
    const ling::Class_Generic target = pythonClassOf(generic);
    const ling::List_Generic arguments = ling::List_Generic::empty();
    for (const ling::Type& parameter : parameters) {
        const ling::Class_Generic cls = pythonClassOf(parameter.toClass());
        if (target.isNone() || cls.isNone())
            return {};
        arguments.append(cls);
    }
    return ling::Class_Generic::cast(target.invokeWith(arguments)).valueOr(ling::Class_Generic());
}

// Annotations.

const ling::Type& errorOrNone() {
    static const ling::Type& type =
        *new ling::Type(ling::internal::type_unite(ling::Error::getType(), ling::None::getType()));
    return type;
}

ling::String joined(std::span<const ling::Type> types, const char* separator) {
    ling::string_builder text;
    for (std::size_t i = 0; i < types.size(); ++i)
        text.append(i > 0 ? separator : "").append(annotationText(types[i]));
    return text.build();
}

/// The name of a generic, with the texts of the types it was made for.
ling::String applied(const ling::String& name, const std::vector<ling::Type>& parameters) {
    return parameters.empty() ? name : ling::String(u"{}[{}]").arg(name, joined(parameters, ", "));
}

/// The names of native classes as a Python programmer writes them. A function of `ling` has none: Python sees neither a
/// class of its own for it nor its parameters. Maps and sets are "dict" and "set" as lists are "list": by what the
/// reader knows, not by the interface.
struct FixedText {
    const ling::Class_Generic& (*native)();
    const char16_t* text;
};
constexpr FixedText kFixedTexts[] = {
    {&ling::Boolean::getClass, u"bool"},
    {&ling::ByteArray::getClass, u"bytes"},
    {&ling::FunctionCL_Generic::getClass, u"{function}"},
    {&ling::Float::getClass, u"float"},
    {&ling::Integer::getClass, u"int"},
    {&ling::JsonObject::getClass, u"dict"},
    {&ling::List_Generic::getClass, u"list"},
    {&ling::Map_Generic::getClass, u"dict"},
    {&ling::Set_Generic::getClass, u"set"},
    {&ling::String::getClass, u"str"},
};
constexpr FixedText kGenericTexts[] = {
    {&ling::List_Generic::getClass, u"List"},   {&ling::Map_Generic::getClass, u"dict"},
    {&ling::Set_Generic::getClass, u"set"},     {&ling::I_Tuple_Generic::getClass, u"tuple"},
    {&ling::Tuple_Generic::getClass, u"tuple"},
};

ling::String textOf(std::span<const FixedText> table, const ling::Class_Generic& cls) {
    const auto row = std::ranges::find_if(table, [&](const FixedText& each) { return each.native() == cls; });
    return row != table.end() ? ling::String(row->text) : ling::String();
}

/// The name that Python has for the class, else its own. The name is known without the tree of Python modules, which
/// is not there beside an interpreter of the host's own.
ling::String pythonName(const ling::Class_Generic& cls) {
    const std::size_t row = rowOf(cls);
    if (row == kRowCount)
        return cls.name();
    const std::string_view dotted = kRows[row].pythonName;
    return ling::String(dotted.substr(dotted.rfind('.') + 1));
}

/// `I_Invokable` is made for the type of its result, as `I_Invokable<R>` says; types of parameters follow it where they
/// are known. With the result alone nothing is said of the parameters, for which Python writes three dots.
ling::String callableText(const ling::String& name, std::span<const ling::Type> types) {
    if (types.empty())
        return name;
    const ling::String parameters = joined(types.subspan(1), ", ");
    const ling::String list = types.size() == 1 ? ling::String(u"...") : ling::String(u"[{}]").arg(parameters);
    return ling::String(u"{}[{}, {}]").arg(name, list, annotationText(types.front()));
}

ling::String genericText(const ling::Class_Generic& generic, const std::vector<ling::Type>& parameters) {
    if (generic == ling::I_Invokable_Generic::getClass())
        return callableText(pythonName(generic), parameters);
    const ling::String name = textOf(kGenericTexts, generic);
    return applied(name.isEmpty() ? pythonName(generic) : name, parameters);
}

ling::String classText(const ling::Class_Generic& cls) {
    if (const ling::String text = textOf(kFixedTexts, cls); !text.isEmpty())
        return text;
    const ling::Class_Generic generic = cls.parentGeneric();
    return generic.isNone() ? pythonName(cls) : genericText(generic, cls.parameters());
}

ling::String variableText(const ling::Type& type) {
    const ling::String name = ling::unchecked<ling::TypeVariable>(type).name();
    return name == ling::String(u"self") ? ling::String(u"Self") : name;
}

}  // namespace

ling::Class_Generic pythonClassOf(const ling::Class_Generic& native) {
    if (native.isNone())
        return {};
    const ling::Class_Generic generic = native.parentGeneric();
    if (isApplied(generic))
        return withParameters(generic, native.parameters());
    const std::size_t row = rowOf(native);
    return row != kRowCount ? pythonClassAt(row) : ling::Class_Generic();
}

ling::Class_Generic nativeClassOf(const ling::Class_Generic& pythonClass) {
    for (std::size_t row = 0; !pythonClass.isNone() && row < kRowCount; ++row) {
        if (pythonClassAt(row) == pythonClass)
            return kRows[row].native();
    }
    return {};
}

ling::String annotationText(const ling::Type& type) {
    if (type.isAny() || type.isUntyped())
        return u"Any";
    if (type == ling::None::getType() || type == errorOrNone())
        return u"None";
    if (type.isOption())
        return ling::String(u"Optional[{}]").arg(annotationText(type.parts().front()));
    if (type.isUnion())
        return joined(type.parts(), "|");
    return type.isVariable() ? variableText(type) : classText(type.toClass());
}

}  // namespace ling::python
