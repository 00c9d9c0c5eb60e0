#include "bridge/type_names.h"

#include "ling/basic_values.h"
#include "ling/byte_array.h"
#include "ling/class_builder.h"
#include "ling/date_time.h"
#include "ling/decimal.h"
#include "ling/error.h"
#include "ling/hash_containers.h"
#include "ling/list.h"
#include "ling/module.h"
#include "support/python_test.h"

using ling::Any;
using ling::Class_Generic;
using ling::Type;
using ling::internal::type_unite;
using ling::python::annotationText;
using ling::python::nativeClassOf;
using ling::python::pythonClassOf;

namespace {

class TypeNamesTest : public PythonTest {};

struct ClassRow {
    Class_Generic native;
    const char* pythonName;
};

const Class_Generic& otherClass() {
    static const Class_Generic& cls = *new Class_Generic(ling::internal::defclass_impl("Other", "").build());
    return cls;
}

const std::vector<ClassRow>& classRows() {
    static const auto& rows = *new std::vector<ClassRow>{
        {ling::Boolean::getClass(), "python.builtins.bool"},
        {ling::ByteArray::getClass(), "python.builtins.bytes"},
        {ling::I_Invokable_Generic::getClass(), "python.collections.abc.Callable"},
        {ling::Date::getClass(), "python.datetime.date"},
        {ling::DateTime::getClass(), "python.datetime.datetime"},
        {ling::Decimal::getClass(), "python.decimal.Decimal"},
        {ling::I_Iterable_Generic::getClass(), "python.collections.abc.Iterable"},
        {ling::I_Iterator_Generic::getClass(), "python.collections.abc.Iterator"},
        {ling::Float::getClass(), "python.builtins.float"},
        {ling::Integer::getClass(), "python.builtins.int"},
        {ling::I_MutableMap_Generic::getClass(), "python.collections.abc.MutableMapping"},
        {ling::I_Map_Generic::getClass(), "python.collections.abc.Mapping"},
        {ling::I_Tuple_Generic::getClass(), "python.builtins.tuple"},
        {ling::Tuple_Generic::getClass(), "python.builtins.tuple"},
        {ling::I_MutableSequence_Generic::getClass(), "python.collections.abc.MutableSequence"},
        {ling::I_Sequence_Generic::getClass(), "python.collections.abc.Sequence"},
        {ling::Time::getClass(), "python.datetime.time"},
        {ling::I_MutableSet_Generic::getClass(), "python.collections.abc.MutableSet"},
        {ling::I_Set_Generic::getClass(), "python.collections.abc.Set"},
        {ling::String::getClass(), "python.builtins.str"},
        {ling::Error::getClass(), "python.builtins.Exception"},
        {ling::I_MutableSequence_Generic::genericInstance(ling::String::getType()),
         "python.collections.abc.MutableSequence"},
        {ling::I_Set_Generic::genericInstance(ling::String::getType()), "python.collections.abc.Set"},
    };
    return rows;
}

TEST_F(TypeNamesTest, EachNativeClassHasItsPythonClass) {
    for (const ClassRow& row : classRows()) {
        SCOPED_TRACE(row.pythonName);
        const Class_Generic found = pythonClassOf(row.native);
        ASSERT_FALSE(found.isNone());
        EXPECT_EQ(found, ling::find_class(row.pythonName));
        EXPECT_EQ(pythonClassOf(row.native), found);
    }
}

TEST_F(TypeNamesTest, OtherClassesHaveNone) {
    for (const Class_Generic& cls :
         {Class_Generic(), ling::List_Generic::getClass(), Any::getClass(), ling::None::getClass(), otherClass()})
        EXPECT_TRUE(pythonClassOf(cls).isNone());
}

/// What hosts ask for, by the members of the language.
Any ask(const char* method, const Any& argument) {
    return ling::find_class("ling.python.LanguagePython").callMethod(ling::method_ident_untyped(method), {argument});
}

TEST_F(TypeNamesTest, TheLanguageNamesEachClassAndLeadsToItAndBack) {
    for (const ClassRow& row : classRows()) {
        SCOPED_TRACE(row.pythonName);
        const Class_Generic generic = row.native.parentGeneric();
        const std::string name = row.pythonName;
        const std::string expected = name.substr(name.rfind('.') + 1) + (generic.isNone() ? "" : "[str]");
        EXPECT_EQ(textOf(ask("typeName", row.native)), expected);
        EXPECT_EQ(textOf(ask("typeName", Type(row.native))), expected);
        const Any python = ask("toNativeClass", row.native);
        EXPECT_TRUE(python.isSameAs(ling::find_class(row.pythonName)));
        EXPECT_TRUE(ask("toNativeClass", python).isSameAs(python));
        const Class_Generic& first =
            row.native == ling::Tuple_Generic::getClass() ? ling::I_Tuple_Generic::getClass() : row.native;
        EXPECT_TRUE(ask("fromNativeClass", python).isSameAs(generic.isNone() ? first : generic));
        EXPECT_TRUE(ask("fromNativeClass", row.native).isSameAs(row.native));
    }
}

TEST_F(TypeNamesTest, WhereParametersHaveNoClassTheGenericHasOne) {
    const Type string = ling::String::getType();
    const std::pair<Class_Generic, const char*> rows[] = {
        {ling::I_Iterable_Generic::genericInstance(string), "python.collections.abc.Iterable"},
        {ling::I_Iterator_Generic::genericInstance(string), "python.collections.abc.Iterator"},
        {ling::I_Map_Generic::genericInstance(string, string), "python.collections.abc.Mapping"},
        {ling::I_MutableMap_Generic::genericInstance(string, string), "python.collections.abc.MutableMapping"},
        {ling::I_Tuple_Generic::genericInstance(std::span(&string, 1)), "python.builtins.tuple"},
        {ling::Tuple_Generic::genericInstance(std::span(&string, 1)), "python.builtins.tuple"},
        {ling::I_Iterable_Generic::genericInstance(Type(otherClass())), "python.collections.abc.Iterable"},
    };
    for (const auto& [cls, pythonName] : rows) {
        SCOPED_TRACE(pythonName);
        EXPECT_TRUE(pythonClassOf(cls).isNone());
        EXPECT_TRUE(ask("toNativeClass", cls).isSameAs(ling::find_class(pythonName)));
    }
    EXPECT_TRUE(ask("toNativeClass", ling::List_Generic::genericInstance(string)).isNone());
}

TEST_F(TypeNamesTest, APythonClassLeadsBackToTheFirstNativeClass) {
    EXPECT_EQ(nativeClassOf(ling::find_class("python.builtins.int")), ling::Integer::getClass());
    EXPECT_EQ(nativeClassOf(ling::find_class("python.builtins.tuple")), ling::I_Tuple_Generic::getClass());
    EXPECT_EQ(nativeClassOf(ling::find_class("python.collections.abc.Set")), ling::I_Set_Generic::getClass());
    EXPECT_TRUE(nativeClassOf(ling::find_class("python.builtins.complex")).isNone());
    EXPECT_TRUE(nativeClassOf(Class_Generic()).isNone());
}

/// The type of what can be called: first the type of the result, then those of the parameters.
Type invokable(std::initializer_list<Type> types) {
    return Type(
        ling::I_Invokable_Generic::getClass().record()->genericInstance(std::span(types.begin(), types.size())));
}

struct TextRow {
    Type type;
    const char* expected;
};

std::vector<TextRow> textRows() {
    const Type none = ling::None::getType();
    const Type integer = ling::Integer::getType();
    const Type string = ling::String::getType();
    const Type pair[] = {integer, type_unite(string, none)};
    return {
        {Any::getType(), "Any"},
        {ling::Untyped::getType(), "Any"},
        {none, "None"},
        {type_unite(ling::Error::getType(), none), "None"},
        {type_unite(integer, none), "Optional[int]"},
        {type_unite(integer, string), "int|str"},
        {type_unite(type_unite(integer, none), string), "int|str|None"},
        {ling::Boolean::getType(), "bool"},
        {ling::ByteArray::getType(), "bytes"},
        {ling::Float::getType(), "float"},
        {integer, "int"},
        {string, "str"},
        {ling::JsonObject::getType(), "dict"},
        {ling::FunctionCL_Generic::getType(), "{function}"},
        {ling::I_Invokable_Generic::getType(), "Callable"},
        {invokable({string}), "Callable[..., str]"},
        {invokable({none}), "Callable[..., None]"},
        {invokable({string, integer}), "Callable[[int], str]"},
        {invokable({invokable({none}), type_unite(integer, none), Any::getType()}),
         "Callable[[Optional[int], Any], Callable[..., None]]"},
        {ling::List_Generic::getType(), "list"},
        {Type(ling::List_Generic::genericInstance(integer)), "List[int]"},
        {Type(ling::List_Generic::genericInstance(Type(ling::List_Generic::genericInstance(string)))),
         "List[List[str]]"},
        {ling::Tuple_Generic::getType(), "tuple"},
        {ling::I_Tuple_Generic::getType(), "tuple"},
        {Type(ling::Tuple_Generic::genericInstance(pair)), "tuple[int, Optional[str]]"},
        {Type(ling::I_Tuple_Generic::genericInstance(std::span<const Type>(pair, 1))), "tuple[int]"},
        {ling::TypeVariable("self"), "Self"},
        {ling::TypeVariable("T"), "T"},
        {ling::Date::getType(), "date"},
        {ling::DateTime::getType(), "datetime"},
        {ling::I_Map_Generic::getType(), "Mapping"},
        {Type(ling::I_Map_Generic::genericInstance(string, integer)), "Mapping[str, int]"},
        {Type(ling::I_Sequence_Generic::genericInstance(string)), "Sequence[str]"},
        {Type(ling::I_Iterator_Generic::genericInstance(ling::Untyped::getType())), "Iterator[Any]"},
        {Type(ling::I_MutableSet_Generic::genericInstance(type_unite(integer, string))), "MutableSet[int|str]"},
        {ling::Map_Generic::getType(), "dict"},
        {Type(ling::Map_Generic::genericInstance(string, Type(ling::List_Generic::genericInstance(integer)))),
         "dict[str, List[int]]"},
        {ling::Set_Generic::getType(), "set"},
        {Type(ling::Set_Generic::genericInstance(ling::Date::getType())), "set[date]"},
        {type_unite(Type(ling::Set_Generic::genericInstance(string)), none), "Optional[set[str]]"},
        {type_unite(type_unite(ling::Error::getType(), none), integer), "Exception|int|None"},
        {type_unite(ling::Error::getType(), integer), "Exception|int"},
        {Type(ling::List_Generic::genericInstance(ling::TypeVariable("self"))), "List[Self]"},
        {ling::StopIteration::getType(), "StopIteration"},
        {ling::Undefined::getType(), "Undefined"},
        {Type(ling::find_class("python.builtins.complex")), "complex"},
        {Type(ling::List_Generic::genericInstance(Type(ling::find_class("python.builtins.complex")))), "List[complex]"},
        {Type(otherClass()), "Other"},
    };
}

TEST_F(TypeNamesTest, EachTypeHasItsAnnotation) {
    for (const TextRow& row : textRows()) {
        SCOPED_TRACE(row.expected);
        EXPECT_EQ(annotationText(row.type).toStdString(), row.expected);
    }
}

}  // namespace
