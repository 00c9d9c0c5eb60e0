#include "ling/ling.h"
#include "stubs/module_stub.h"
#include "stubs/write_stubs.h"
#include "support/python_test.h"
#include "support/table.h"

#include <filesystem>

#include <unistd.h>

/// What the host declares, as `.pyi` files. What they are good for shows in the tests of processes, by mypy.

namespace {

namespace fs = std::filesystem;

/// A function of a module of its own, and its line in the stub.
struct Row {
    const char* name;
    ling::FunctionCL_Generic (*make)(const char* name);
    const char* declared;

    friend void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }
};

/// Modules stay for the process.
class StubsTest : public PythonTest {
protected:
    StubsTest() { expectValuesToStay(); }
};

Any two(const Any&, const Any&) { return {}; }

const Row kRows[] = {
    {"keyword",
     [](const char* name) {
         return make_function(name, {"from", "b"}, &two);
     },
     "(argument: typing.Any, /, b: typing.Any) -> typing.Any: ..."},
    {"byPosition",
     [](const char* name) {
         return make_function(name, {"a", "/", "b"}, &two);
     },
     "(a: typing.Any, /, b: typing.Any) -> typing.Any: ..."},
    {"byName",
     [](const char* name) {
         return make_function(name, {"a", "*", {"b", 1}}, &two);
     },
     "(a: typing.Any, *, b: typing.Any = 1) -> typing.Any: ..."},
    {"keywordByName",
     [](const char* name) {
         return make_function(name, {"a", "*", "if"}, &two);
     },
     "(a: typing.Any, **named: typing.Any) -> typing.Any: ..."},
    {"noLiteral",
     [](const char* name) {
         return make_function(name, {"a", {"b", ling::List_Generic()}}, &two);
     },
     "(a: typing.Any, b: typing.Any = ...) -> typing.Any: ..."},
    {"rest", [](const char* name) { return make_function(name, "all", [](std::span<const double>) {}); },
     "(*all: float) -> None: ..."},
    {"text",
     [](const char* name) {
         return make_function(name, {{"a", "it's"}}, [](const std::string& a) { return a; });
     },
     "(a: str = \"it's\") -> str: ..."},
    {"option",
     [](const char* name) {
         return make_function(name, {{"a", Any()}}, [](std::optional<long> a) { return a; });
     },
     "(a: int | None = None) -> int | None: ..."},
    {"containers",
     [](const char* name) {
         return make_function(name, "a, b, c",
                              [](const ling::I_Sequence<ling::Integer>&, const ling::List<ling::String>&,
                                 const ling::JsonObject&) { return std::vector<std::string>(); });
     },
     "(a: collections.abc.Sequence[int] | ling.I_Sequence, b: ling.List, "
     "c: collections.abc.Mapping[typing.Any, typing.Any] | ling.I_Map) -> ling.List: ..."},
    {"anyIterable", [](const char* name) { return make_function(name, "a", [](const std::vector<std::string>&) {}); },
     "(a: collections.abc.Iterable[str]) -> None: ..."},
    {"callback",
     [](const char* name) { return make_function(name, "a", [](const std::function<int(std::string)>&) {}); },
     "(a: collections.abc.Callable[..., typing.Any]) -> None: ..."},
    {"classes",
     [](const char* name) {
         return make_function(name, "a, b", [](const ling::Class_Generic& a, const ling::Error&) { return a; });
     },
     "(a: ling.Class | type[typing.Any], b: ling.Error | BaseException) -> ling.Class: ..."},
    {"documented",
     [](const char* name) {
         return make_function(
             name, "", [] { return true; }, "Says \"\"\"no\"\"\".\nC:\\new");
     },
     "() -> bool:\n    \"\"\"Says \\\"\\\"\\\"no\\\"\\\"\\\".\n    C:\\\\new\"\"\""},
};

LING_TABLE(Stubs, StubsTest, kRows);

TEST_P(Stubs, DeclareFunctions) {
    const std::string module = std::string("stub_of_") + GetParam().name;
    (void)ling::register_function(module, GetParam().make("f"));
    (void)ling::register_function(module, GetParam().make("class"));  // No name for Python.
    const ling::python::GilGuard gil;
    const std::string text = ling::python::stubOf(ling::find_module(ling::String(module)));
    EXPECT_TRUE(text.ends_with("\n__all__ = [\n    \"f\",\n]\n\ndef f" + std::string(GetParam().declared) + "\n"))
        << text;
}

/// What is declared hides what has the same name elsewhere.
TEST_F(StubsTest, ReachHiddenNamesThroughModules) {
    (void)ling::class_builder("Hiding", "stub_of_hiding")
        .property("int", ling::internal::property_builder().getter([](const Any&) { return 1L; }))
        .property("typing", ling::internal::property_builder().getter([](const Any& self) { return self; }))
        .build();
    const ling::python::GilGuard gil;
    const std::string text = ling::python::stubOf(ling::find_module("stub_of_hiding"));
    EXPECT_NE(text.find("import builtins\nimport ling\nimport typing as _typing\n"), std::string::npos) << text;
    EXPECT_NE(text.find("def int(self) -> builtins.int: ...\n"), std::string::npos) << text;
    EXPECT_NE(text.find("def typing(self) -> _typing.Any: ...\n"), std::string::npos) << text;
}

TEST_F(StubsTest, AreWrittenForWhatCanBeImported) {
    const auto nothing = [] {};
    for (const char* name : {"stub_top.inner", "stub_top.class", "stub_top.no identifier", "antigravity"})
        (void)ling::register_function(name, make_function("f", "", nothing));
    const fs::path folder = fs::temp_directory_path() / ("ling-stubs-" + std::to_string(getpid()));
    const Any written = ling::python::writeStubs(ling::String((folder / "new").string()));
    EXPECT_FALSE(ling::is_error_result(written));
    for (const char* name :
         {"ling/__init__.pyi", "ling/python.pyi", "python/builtins.pyi", "stub_top/__init__.pyi", "stub_top/inner.pyi"})
        EXPECT_TRUE(fs::exists(folder / "new" / name)) << name;
    for (const char* name : {"stub_top/class.pyi", "stub_top/no identifier.pyi", "antigravity.pyi"})
        EXPECT_FALSE(fs::exists(folder / "new" / name)) << name;
    fs::remove_all(folder);
}

}  // namespace
