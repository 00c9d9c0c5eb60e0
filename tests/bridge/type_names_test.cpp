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

namespace {

using internal::type_unite;

class TypeNamesTest : public PythonTest {};

struct ClassRow {
    Class_Generic native;
    const char* pythonName;
};

const Class_Generic& otherClass() {
    static const Class_Generic& cls = *new Class_Generic(internal::defclass_impl("Other", "").build());
    return cls;
}

const std::vector<ClassRow>& classRows() {
    static const auto& rows = *new std::vector<ClassRow>{
        {Boolean::getClass(), "python.builtins.bool"},
        {I_Invokable_Generic::getClass(), "python.collections.abc.Callable"},
        {Date::getClass(), "python.datetime.date"},
        {Decimal::getClass(), "python.decimal.Decimal"},
        {I_Iterable_Generic::getClass(), "python.collections.abc.Iterable"},
        {Integer::getClass(), "python.builtins.int"},
        {I_Map_Generic::getClass(), "python.collections.abc.Mapping"},
        {I_Tuple_Generic::getClass(), "python.builtins.tuple"},
        {Tuple_Generic::getClass(), "python.builtins.tuple"},
        {I_MutableSequence_Generic::getClass(), "python.collections.abc.MutableSequence"},
        {I_Set_Generic::getClass(), "python.collections.abc.Set"},
        {Error::getClass(), "python.builtins.Exception"},
        {I_MutableSequence_Generic::genericInstance(String::getType()), "python.collections.abc.MutableSequence"},
        {I_Set_Generic::genericInstance(String::getType()), "python.collections.abc.Set"},
    };
    return rows;
}

TEST_F(TypeNamesTest, EachNativeClassHasItsPythonClass) {
    for (const ClassRow& row : classRows()) {
        SCOPED_TRACE(row.pythonName);
        const Class_Generic found = pythonClassOf(row.native);
        ASSERT_FALSE(found.isNone());
        EXPECT_EQ(found, find_class(row.pythonName));
        EXPECT_EQ(pythonClassOf(row.native), found);
    }
}

TEST_F(TypeNamesTest, OtherClassesHaveNone) {
    for (const Class_Generic& cls :
         {Class_Generic(), List_Generic::getClass(), Any::getClass(), None::getClass(), otherClass()})
        EXPECT_TRUE(pythonClassOf(cls).isNone());
}

/// What hosts ask for, by the members of the language.
Any ask(const char* method, const Any& argument) {
    return find_class("ling.python.LanguagePython").callMethod(method_ident_untyped(method), {argument});
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
        EXPECT_TRUE(python.isSameAs(find_class(row.pythonName)));
        EXPECT_TRUE(ask("toNativeClass", python).isSameAs(python));
        const Class_Generic& first = row.native == Tuple_Generic::getClass() ? I_Tuple_Generic::getClass() : row.native;
        EXPECT_TRUE(ask("fromNativeClass", python).isSameAs(generic.isNone() ? first : generic));
        EXPECT_TRUE(ask("fromNativeClass", row.native).isSameAs(row.native));
    }
}

TEST_F(TypeNamesTest, WhereParametersHaveNoClassTheGenericHasOne) {
    const Type string = String::getType();
    const std::pair<Class_Generic, const char*> rows[] = {
        {I_Iterable_Generic::genericInstance(string), "python.collections.abc.Iterable"},
        {I_Iterator_Generic::genericInstance(string), "python.collections.abc.Iterator"},
        {I_Map_Generic::genericInstance(string, string), "python.collections.abc.Mapping"},
        {I_MutableMap_Generic::genericInstance(string, string), "python.collections.abc.MutableMapping"},
        {I_Tuple_Generic::genericInstance(std::span(&string, 1)), "python.builtins.tuple"},
        {Tuple_Generic::genericInstance(std::span(&string, 1)), "python.builtins.tuple"},
        {I_Iterable_Generic::genericInstance(Type(otherClass())), "python.collections.abc.Iterable"},
    };
    for (const auto& [cls, pythonName] : rows) {
        SCOPED_TRACE(pythonName);
        EXPECT_TRUE(pythonClassOf(cls).isNone());
        EXPECT_TRUE(ask("toNativeClass", cls).isSameAs(find_class(pythonName)));
    }
    EXPECT_TRUE(ask("toNativeClass", List_Generic::genericInstance(string)).isNone());
}

/// The type of what can be called: first the type of the result, then those of the parameters.
Type invokable(std::initializer_list<Type> types) {
    return Type(I_Invokable_Generic::getClass().record()->genericInstance(std::span(types.begin(), types.size())));
}

struct TextRow {
    Type type;
    const char* expected;
};

std::vector<TextRow> textRows() {
    const Type none = None::getType();
    const Type integer = Integer::getType();
    const Type string = String::getType();
    const Type pair[] = {integer, type_unite(string, none)};
    return {
        {Any::getType(), "Any"},
        {Untyped::getType(), "Any"},
        {none, "None"},
        {type_unite(Error::getType(), none), "None"},
        {type_unite(integer, none), "Optional[int]"},
        {type_unite(type_unite(integer, none), string), "int|str|None"},
        {string, "str"},
        {FunctionCL_Generic::getType(), "{function}"},
        {I_Invokable_Generic::getType(), "Callable"},
        {invokable({string}), "Callable[..., str]"},
        {invokable({none}), "Callable[..., None]"},
        {invokable({string, integer}), "Callable[[int], str]"},
        {invokable({invokable({none}), type_unite(integer, none), Any::getType()}),
         "Callable[[Optional[int], Any], Callable[..., None]]"},
        {List_Generic::getType(), "list"},
        {Type(List_Generic::genericInstance(integer)), "List[int]"},
        {Type(List_Generic::genericInstance(Type(List_Generic::genericInstance(string)))), "List[List[str]]"},
        {I_Tuple_Generic::getType(), "tuple"},
        {Type(Tuple_Generic::genericInstance(pair)), "tuple[int, Optional[str]]"},
        {Type(I_Tuple_Generic::genericInstance(std::span<const Type>(pair, 1))), "tuple[int]"},
        {TypeVariable("self"), "Self"},
        {TypeVariable("T"), "T"},
        {Type(I_Map_Generic::genericInstance(string, integer)), "Mapping[str, int]"},
        {Type(I_Sequence_Generic::genericInstance(string)), "Sequence[str]"},
        {Type(I_Iterator_Generic::genericInstance(Untyped::getType())), "Iterator[Any]"},
        {Type(I_MutableSet_Generic::genericInstance(type_unite(integer, string))), "MutableSet[int|str]"},
        {Type(Map_Generic::genericInstance(string, Type(List_Generic::genericInstance(integer)))),
         "dict[str, List[int]]"},
        {Type(Set_Generic::genericInstance(Date::getType())), "set[date]"},
        {type_unite(Type(Set_Generic::genericInstance(string)), none), "Optional[set[str]]"},
        {type_unite(type_unite(Error::getType(), none), integer), "Exception|int|None"},
        {Type(List_Generic::genericInstance(TypeVariable("self"))), "List[Self]"},
        {Undefined::getType(), "Undefined"},
        {Type(find_class("python.builtins.complex")), "complex"},
        {Type(List_Generic::genericInstance(Type(find_class("python.builtins.complex")))), "List[complex]"},
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
