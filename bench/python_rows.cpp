#include "rows.h"

#include "by_hand.h"

#include "bridge/convert.h"
#include "host/gil_guard.h"
#include "host/py_ref.h"
#include "ling/ling.h"

namespace ling::bench {

namespace {

using python::GilGuard;
using python::PyRef;

constexpr std::size_t kMillion = 1'000'000;
constexpr std::size_t kTurns = 1'000;

String& givenText() {
    static String& text = *new String;
    return text;
}

List_Generic nativeList() {
    list_builder items(kMillion);
    for (std::size_t i = 0; i < kMillion; ++i)
        items.add(i);
    return items.take();
}

Class_Generic thingClass() {
    static const field_ident_untyped kValue("value");
    return internal::defclass_impl("Thing", "")
        .field(kValue, Integer::getType())
        .method(Any::$__init__, "value",
                [](const Any& self, std::int64_t value) { return self.setFieldValue(kValue, value); })
        .method("plus", "number",
                [](const Any& self, std::int64_t number) { return self.fieldValue(kValue).asInteger() + number; })
        .property("size",
                  internal::property_builder()
                      .getter([](const Any& self) { return self.fieldValue(kValue); })
                      .setter([](const Any& self, const Any& value) { return self.setFieldValue(kValue, value); }))
        .build();
}

void addByLing(PyObject* names) {
    auto put = [names](const char* name, const Any& value) {
        PyRef converted = PyRef::steal(python::toPython(value));
        (void)PyDict_SetItemString(names, name, converted.get());
    };
    const Class_Generic cls = thingClass();
    put("ling_call0", make_function("call0", "", [] {}));
    put("ling_block0", make_function("block0", "", blocking([] {})));
    put("ling_add", make_function("add", "a, b", [](std::int64_t a, std::int64_t b) { return a + b; }));
    put("ling_take", make_function("take", "object", [](const Any&) {}));
    put("ling_fail", make_function("fail", "", []() -> Any { return Error(u"No such thing.", true); }));
    put("ling_takeText", make_function("takeText", "text", [](const String& text) { return text.view().size(); }));
    put("ling_giveText", make_function("giveText", "", []() -> Any { return givenText(); }));
    put("ling_Thing", cls);
    put("ling_thing", cls.construct(std::initializer_list<Any>{3}));
    put("ling_list", nativeList());
}

/// The names that the loops use: each twice, by way of `ling` and by hand.
PyObject* names() {
    static PyObject* const made = [] {
        PyObject* dict = PyDict_New();
        PyDict_SetItemString(dict, "__builtins__", PyEval_GetBuiltins());
        addByLing(dict);
        addByHand(dict, kMillion);
        return dict;
    }();
    return made;
}

/// A function of Python that runs a statement in a loop; `%` stands for "ling" or "hand".
Loop pythonLoop(std::string code, const char* way) {
    for (std::size_t at; (at = code.find('%')) != std::string::npos;)
        code.replace(at, 1, way);
    PyRef compiled = PyRef::steal(Py_CompileString(("def loop(turns):\n " + code).c_str(), "loop", Py_file_input));
    PyRef defined = PyRef::steal(PyEval_EvalCode(compiled.get(), names(), names()));
    PyRef turns = PyRef::steal(PyLong_FromSize_t(kTurns));
    PyObject* loop = PyDict_GetItemString(names(), "loop");
    return repeat([loop = PyRef::borrow(loop), turns] {
        if (!PyRef::steal(PyObject_CallOneArg(loop.get(), turns.get())))
            PyErr_Print();
    });
}

/// A statement that is repeated, `setup` before the loop. What the empty loop takes is taken off.
Figures compareStatements(const std::string& setup, const std::string& statement) {
    const GilGuard gil;
    const std::string code = setup + "\n for i in range(turns): ";
    return compare({pythonLoop(code + statement, "ling"), pythonLoop(code + statement, "hand"),
                    pythonLoop(code + "pass", "hand"), kTurns});
}

Figures iterate() {
    const GilGuard gil;
    const std::string code = "for i in %_list: pass";
    return compare({pythonLoop(code, "ling"), pythonLoop(code, "hand"), nullptr, kMillion});
}

Figures passText(const TextSample& text, const std::string& setup, const std::string& statement) {
    const std::u16string units = text.make();
    const GilGuard gil;
    PyRef given = PyRef::steal(textByHand(units));
    PyDict_SetItemString(names(), "text", given.get());
    givenText() = String(units);
    giveByHand(units);
    const std::string code = setup + "; t = text\n for i in range(" + (units.size() > 10'000 ? "10" : "500") + "): ";
    return compare({pythonLoop(code + statement, "ling"), pythonLoop(code + statement, "hand"), nullptr,
                    units.size() > 10'000 ? std::size_t(10) : 500});
}

}  // namespace

std::vector<Row> pythonRows() {
    constexpr const char* kCaught = "\n  try: f()\n  except RuntimeError: pass";
    const struct {
        const char* name;
        double target;
        const char* setup;
        const char* statement;
    } statements[] = {
        {"p call, no argument", 1.7, "f = %_call0", "f()"},
        {"p call, blocking, no argument", 1.7, "f = %_block0", "f()"},
        {"p call, two integers", 1.9, "f = %_add", "f(i, 2)"},
        {"p method of an object, one integer", 3.5, "t = %_thing", "t.plus(i)"},
        {"p property read", 1.3, "t = %_thing", "t.size"},
        {"p property write", 1.65, "t = %_thing", "t.size = i"},
        {"p len", 1.5, "l = %_list", "len(l)"},
        {"p index", 1.9, "l = %_list", "l[i]"},
        {"p function passed and dropped", 2.3, "f = %_take\n def g(): pass", "f(g)"},
        {"p create and drop an object", 3, "T = %_Thing", "T(i)"},
        {"p host error caught", 1.7, "f = %_fail", kCaught},
    };
    std::vector<Row> rows;
    for (const auto& it : statements)
        rows.push_back({it.name, it.target, [it] { return compareStatements(it.setup, it.statement); }});
    rows.push_back({"p iterate, each item", 2, iterate});
    for (const TextSample& text : kTextSamples)
        rows.push_back({std::string("p text argument, ") + text.name, 1.5,
                        [&] { return passText(text, "f = %_takeText", "f(t)"); }});
    for (const TextSample& text : kTextSamples)
        rows.push_back(
            {std::string("p text result, ") + text.name, 1.5, [&] { return passText(text, "f = %_giveText", "f()"); }});
    return rows;
}

}  // namespace ling::bench
