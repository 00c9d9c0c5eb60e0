#include "support/things.h"

#include "ling/ling.h"
#include "support/puppets.h"

#include <cmath>
#include <mutex>

namespace {

using ling::Any;
using ling::internal::defclass_impl;
using ling::internal::property_builder;
using ling::internal::register_function;

const ling::field_ident_untyped $name("_name");
const ling::field_ident_untyped $stock("_stock");
const ling::field_ident_untyped $mark("mark");

ling::Class_Generic refusal() {
    static const ling::Class_Generic& cls = *new ling::Class_Generic(
        defclass_impl("Refusal", "things").parent(ling::Error::getClass()).doc("A polite no.").build());
    return cls;
}

Any setStock(const Any& self, std::int64_t stock) {
    return stock < 0 ? ling::Error(u"Stock cannot be negative", true) : self.setFieldValue($stock, stock);
}

void defineThing() {
    ling::FunctionCL_Generic greet = ling::make_method(
        "greet", "whom",
        [](const Any& self, const ling::String& whom) {
            return ling::String(u"{} greets {}").arg(self.fieldValue($name), whom);
        },
        "Greets somebody.");
    (void)greet.setParameterDefaults({ling::String(u"you")});
    defclass_impl("Thing", "things")
        .doc("A thing with a name.")
        .field($name)
        .field($stock)
        .field($mark, ling::internal::type_unite(ling::Integer::getType(), ling::None::getType()), "A number.")
        .method(Any::$__init__, "name",
                [](const Any& self, const Any& name) { return self.setFieldValue($name, name); })
        .method(ling::method_ident_untyped("greet"), greet)
        .method(
            "fail", "", [](const Any&) { return Any(ling::Error(u"It failed.", true)); }, "Fails.")
        .method(
            "lazy", "", [](const Any&) { return ling::Lazy_Generic([] { return Any(42); }); }, "Answers later.")
        .method(
            "_hidden", "", [](const Any&) { return 1; }, "Not for Python.")
        .method(Any::$__sub__, "other", [](const Any&, const Any& other) -> Any { return ling::display(other); })
        .method("concat", "other", [](const Any&, const Any& other) -> Any { return ling::Tuple_Generic({other}); })
        .property("name", property_builder()
                              .getter([](const Any& self) { return self.fieldValue($name); })
                              .setter([](const Any& self, const Any& name) { return self.setFieldValue($name, name); })
                              .doc("What it is called."))
        .property("stock", property_builder()
                               .getter([](const Any& self) { return self.fieldValue($stock); })
                               .setter(&setStock)
                               .doc("How many there are."))
        .property("size", property_builder().getter([](const Any&) { return 3; }).doc("Always three."))
        .property("broken", property_builder()
                                .getter([](const Any&) { return Any(ling::Error(u"Cannot be read.", true)); })
                                .doc("Never works."))
        .build();
}

/// Gives `count` numbers and then an error.
Any failing(std::int64_t count) {
    static const ling::Class_Generic& cls =
        *new ling::Class_Generic(defclass_impl("Failing", "things")
                                     .parent(ling::I_Iterator_Generic::getClass())
                                     .field($stock)
                                     .method(ling::I_Iterator_Generic::$next, "",
                                             [](const Any& self) -> Any {
                                                 const std::int64_t left = self.fieldValue($stock).asInteger();
                                                 if (left == 0)
                                                     return ling::Error(u"No more.", true);
                                                 (void)self.setFieldValue($stock, left - 1);
                                                 return left;
                                             })
                                     .build());
    const Any iterator = cls.allocateInstance();
    (void)iterator.setFieldValue($stock, count);
    return iterator;
}

/// Opts in to copies and pickles: its state is what it holds.
void defineKeeper() {
    const auto read = [](const Any& self) { return self.fieldValue($name); };
    const auto write = [](const Any& self, const Any& held) { return self.setFieldValue($name, held); };
    defclass_impl("Keeper", "things")
        .doc("Keeps something.")
        .field($name)
        .method(Any::$__init__, "held", write)
        .method("__state__", "", read)
        .method("__restore__", "state", write)
        .property("held", property_builder().getter(read).setter(write).doc("What it keeps."))
        .build();
}

/// Native values that change on their way through Python.
ling::List_Generic rarities() {
    const ling::Time zoned(1, 2, 3, 4, 3600, u"CET", 1);
    const ling::Tuple_Generic tuple({1, 2.0});
    return {2.0,   HUGE_VAL, ling::Time(1, 2, 3, 999), zoned, ling::DateTime(ling::Date(2024, 2, 29), zoned),
            tuple, tuple,    ling::Undefined()};
}

/// A sequence that answers the position that it is asked for.
void defineRow() {
    defclass_impl("Row", "things")
        .parent(ling::I_Sequence_Generic::getClass())
        .method(ling::I_Sequence_Generic::$at, "index", [](const Any&, std::int64_t index) { return index; })
        .method(Any::$__div__, "other",
                [](const Any&, const Any& other) {
                    return ling::Tuple_Generic({3, other});
                })
        .classMethod("make", "", [] { return 5; })
        .property(ling::I_Sequence_Generic::$$length, property_builder().getter([](const Any&) { return 3; }))
        .build();
}

/// An immutable value with code, that can be converted, and whose hash Python would take for a failure.
void defineOdd() {
    defclass_impl("Odd", "things")
        .parent(ling::I_Immutable::getClass())
        .parent(ling::I_Convertible::getClass())
        .parent(ling::I_HasCode::getClass())
        .method(Any::$__hash__, "", [](const Any&) { return -1; })
        .property(ling::I_HasCode::$$code, property_builder().getter([](const Any&) { return "the code"; }))
        .method(ling::I_Convertible::$tryInto, "target",
                [](const Any&, const ling::Class_Generic& target) -> Any {
                    if (target == ling::ByteArray::getClass())
                        return ling::ByteArray("odd");
                    return target == ling::Boolean::getClass() ? Any(true) : ling::failure("No.");
                })
        .build();
}

/// Something is wrong in the middle of it.
ling::List_Generic flawed() { return {1, ling::Error(u"No.", true), 3}; }

void defineFunctions() {
    (void)register_function(
        "things", ling::make_function(
                      "add", "a, b", [](std::int64_t a, std::int64_t b) { return a + b; }, "Adds two numbers."));
    (void)register_function("things", ling::make_function("refuse", "text", [](const ling::String& text) {
                                return Any(ling::Error(refusal(), text));
                            }));
    (void)register_function("things", ling::make_function("later", "value", [](const Any& value) {
                                return ling::Lazy_Generic([value] { return value; });
                            }));
    (void)register_function("things", ling::make_function("weak", "value", [](const Any& value) -> Any {
                                return ling::Weak_Generic(value);
                            }));
    (void)register_function("things", ling::make_function("failing", "count", &failing));
    (void)register_function("things", ling::make_function("rarities", "", &rarities));
    (void)register_function("things", ling::make_function("flawed", "", &flawed));
    (void)register_function("things", ling::make_function("same", "value", [](const Any& value) { return value; }));
}

}  // namespace

void defineThings() {
    static std::once_flag once;
    std::call_once(once, [] {
        defineThing();
        defineKeeper();
        defineRow();
        defineOdd();
        (void)refusal();
        defclass_impl("Bare", "things").doc("Nothing of its own.").build();
        defineFunctions();
    });
}

ThingsTest::ThingsTest() {
    defineThings();
    definePuppets();
}
