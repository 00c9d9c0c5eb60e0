"""Compiles small pieces of an author's code: what is offered must compile, and what cannot be is refused by one sentence.

    check_headers.py COMPILER INCLUDE

A sentence is that of a `static_assert` in the public headers, or of the compiler where the language itself refuses. It
is the only error: nobody has to look for it among the lines of a hundred templates.
"""

import pathlib
import subprocess
import sys
import tempfile

# What an author may write.
OFFERED = r"""
#include "ling/ling.h"
#include <functional>
using namespace ling;

struct Base { int id = 3; virtual ~Base() = default; };
struct Counter : Base {
    explicit Counter(long start) : value(start) {}
    long add(long amount) noexcept { return value += amount; }
    const std::string& name() const { return text; }
    const std::vector<int>& items() const { return all; }
    long value;
    std::string text;
    std::vector<int> all;
};

template <class... Ps> auto taking() { return make_function("f", "", [](Ps...) {}); }
template <class R> auto giving() { return make_function("f", "", []() -> R { throw 1; }); }

void everyHandle() {
    taking<Any, None, Undefined, Boolean, Integer, Float, String, ByteArray, Date, Time, DateTime, Decimal, Error>();
    taking<StopIteration, Type, TypeVariable, Class_Generic, Module, Property, Parameter, Signature, FunctionCL_Generic,
           I_Invokable_Generic, I_Invokable<String>, Lazy_Generic, Weak_Generic, External_Generic, Boxed_Generic,
           Boxed<int>, I_Immutable, I_RuntimeOnly, I_HasDoc, I_HasName, I_HasCode, I_Convertible, I_Language>();
    taking<I_Iterable_Generic, I_Iterator_Generic, I_Sequence_Generic, I_MutableSequence_Generic, I_Tuple_Generic,
           I_Map_Generic, I_MutableMap_Generic, I_Set_Generic, I_MutableSet_Generic, List_Generic, Map_Generic,
           Set_Generic, Tuple_Generic, JsonObject>();
    taking<List<String>, List<Any>, I_Iterable<String>, I_Iterator<String>, I_Sequence<Integer>, I_MutableSequence<Any>,
           Map<String, Integer>, I_Map<String, List<Any>>, I_MutableMap<Any, Any>, Set<String>, I_Set<String>,
           I_MutableSet<String>, Union<String, Integer>, Union<String, None>>();
}

void everyConversion() {
    taking<bool, signed char, unsigned char, short, unsigned, long, unsigned long, long long, float, double>();
    taking<std::string, const std::string&, std::string&&, std::string_view, std::u16string, std::u16string_view>();
    taking<std::optional<int>, const std::vector<std::string>&, std::vector<std::vector<bool>>,
           std::function<int(std::string, long)>, std::span<const double>>();
    taking<Counter, Counter&, const Counter&, Counter*, const Counter*, std::shared_ptr<Counter>,
           std::shared_ptr<const Counter>, std::vector<std::shared_ptr<Counter>>, std::span<const Any>>();
    giving<void>(), giving<bool>(), giving<std::size_t>(), giving<float>(), giving<const char*>();
    giving<std::string_view>(), giving<const std::string&>(), giving<std::optional<std::string>>();
    giving<std::vector<bool>>(), giving<std::span<int>>(), giving<std::function<long(long)>>();
    giving<Result<long>>(), giving<Result<std::string>>(), giving<Failure>(), giving<JsonObject>();
    giving<Counter>(), giving<const Counter&>(), giving<std::shared_ptr<Counter>>(), giving<std::unique_ptr<Counter>>();
    giving<std::vector<std::unique_ptr<Counter>>>();
    (void)make_function("f", {"a", "*", {"b", 1}}, [](int a, int b) noexcept { return a + b; });
    (void)make_method("f", "", &Counter::add), (void)make_method("f", "", &Counter::name);
}

Result<std::string> results(int which) {
    if (which == 0)
        return failure("There is no {}", which);
    return "text";
}

void values(const std::string& text) {
    Map_Generic map{{"a", 1}, {"b", text}};
    map.set("a", 20);
    map.set(text, u"wide");
    List_Generic list{1, "two", text};
    list.append("three");
    (void)Set_Generic{1, "x"}, (void)Tuple_Generic{1, "x"}, (void)List<String>{"a", "b"};
    (void)String("{} {}").arg("x", text), (void)String("nothing").arg();
    (void)method_ident_untyped(text), (void)property_ident_untyped(text), (void)field_ident_untyped(text);
    for (const Any& item : list) (void)item;
    for (const auto& [key, value] : map.items()) (void)(key.isSameAs(value));
    for (const Result<String>& item : List<String>{"a"}) (void)item->length();
    for (const auto& [key, value] : Map<String, Integer>().items()) (void)(key && value);
    (void)list.callMethod("at", {0}), (void)list.propertyValue("length"), (void)Any(text);
    (void)find_function("ling.display")(text, 1, "x"), (void)results(0);
}

void classes() {
    (void)native_class<Base>("Base", "m").property("id", &Base::id).build();
    (void)native_class<Counter>("Counter", "m").inherits<Base>().constructor<long>({{"start", 0}})
        .method("add", &Counter::add, "amount", "Adds.").property("value", &Counter::value)
        .property("text", &Counter::name, [](Counter& self, std::string_view text) { self.text = text; })
        .readonly("id2", &Counter::id).iterable(&Counter::items)
        .method("plus", [](const Counter& a, const Counter& b) { return Counter(a.value + b.value); }, "other")
        .classMethod("make", [](long start) { return std::make_shared<Counter>(start); }, "start").build();
}

LING_EXTENSION { add_init_handler(InitLevel::Classes, classes); }
"""

# What is refused, and how.
REFUSED = {
    "a container that has no conversion":
        ("make_function('f', '', [](std::map<int, int>) {});", "cannot take a parameter of this type"),
    "an enumeration": ("enum class E { A }; make_function('f', '', [](E) {});", "cannot take a parameter of this type"),
    "a character": ("make_function('f', '', [](char) {});", "cannot take a parameter of this type"),
    "a pointer to a number": ("make_function('f', '', [](int*) {});", "cannot take a parameter of this type"),
    "a pointer to text": ("make_function('f', '', [](const char*) {});", "can answer a value of this type, but not"),
    "ownership that is taken":
        ("struct C {}; make_function('f', '', [](std::unique_ptr<C>) {});", "can answer a value of this type, but not"),
    "a reference to change":
        ("make_function('f', '', [](std::string&) {});", "cannot change its caller's value through a reference"),
    "a span that is not last":
        ("make_function('f', '', [](std::span<const Any>, int) {});", "so it is the last parameter"),
    "a span to change": ("make_function('f', '', [](std::span<int>) {});", "as std::span<const T>"),
    "a container of views":
        ("make_function('f', '', [](std::vector<std::string_view>) {});", "would be gone before the function runs"),
    "a generic lambda": ("make_function('f', '', [](auto) {});", "neither auto parameters nor overloads"),
    "no function": ("make_function('f', '', 3);", "neither auto parameters nor overloads"),
    "a result without conversion":
        ("make_function('f', '', [] { return std::map<int, int>(); });", "cannot answer a value of this type"),
    "a result without an owner":
        ("struct C {}; make_function('f', '', [](C& c) -> C& { return c; });", "does not say who owns the object"),
    "a pointer without an owner":
        ("struct C {}; make_function('f', '', [](C& c) { return &c; });", "does not say who owns the object"),
    "a list of C++ types": ("for (auto item : List<int>()) (void)item;", "are values of the runtime"),
    "a constructor that is not there":
        ("struct C {}; (void)native_class<C>('C', 'm').constructor<int>();", "no constructor for these parameters"),
    "a member of another class":
        ("struct B { void f(); }; struct C {}; native_class<C>('C', 'm').method('f', &B::f);",
         "does not derive from"),
    "a base that is none":
        ("struct B {}; struct C {}; native_class<C>('C', 'm').inherits<B>();", "does not derive from"),
    "a value of the runtime as a native class": ("native_class<String> cls('C', 'm');", "native_class binds C++ classes"),
    "none spelled as a pointer": ("Any value = nullptr;", "use of deleted function"),
}

REFUSED_TEMPLATE = '#include "all.h"\nvoid author() {{ {code} }}\n'


def errors_of(compiler, folder, include, text):
    source = folder / "author.cpp"
    source.write_text(text)
    command = [compiler, "-std=c++20", "-fsyntax-only", "-w", "-I", str(folder), "-I", include, str(source)]
    ended = subprocess.run(command, capture_output=True, text=True, env={"LC_ALL": "C", "PATH": "/usr/bin:/bin"})
    return [line for line in ended.stderr.splitlines() if "error:" in line]


def main():
    compiler, include = sys.argv[1:]
    problems = []
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        (folder / "all.h").write_text('#include "ling/ling.h"\n#include <map>\nusing namespace ling;\n')
        # The headers are read once; without that each case takes as long as all of them.
        subprocess.run([compiler, "-std=c++20", "-w", "-x", "c++-header", "-I", include, str(folder / "all.h"), "-o",
                        str(folder / "all.h.gch")], check=False)
        problems += [f"offered: {line}" for line in errors_of(compiler, folder, include, OFFERED)]
        for case, (code, sentence) in REFUSED.items():
            text = REFUSED_TEMPLATE.format(code=code.replace("'", '"'))
            errors = errors_of(compiler, folder, include, text)
            if len(errors) != 1 or sentence not in errors[0]:
                problems.append(f"{case}: expected one error with '{sentence}', found {len(errors)}")
                problems += errors[:4]
    for line in problems:
        print(line)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
