// Holds one value of each kind where a debugger stops it, and calls Python with one of them.

#include "host_program.h"

#include "ling/ling.h"

#include <string>

namespace {

[[gnu::noinline]] void stop(const ling::Any& value) { asm volatile("" : : "r"(&value) : "memory"); }

}  // namespace

int main(int, char** arguments) {
    using namespace ling;
    const Any none, yes = true, number = -7, real = 2.5;
    const Any text = u"h\u00e4\U0001F600";
    const String handle = "plain";
    const List_Generic list{1, "two", List_Generic{3.5, Any()}};
    std::u16string longText;
    for (int i = 0; i < 50; ++i)
        longText += u"ab";
    const Any slice = String(longText + u"end").sliced(39);
    const Tuple_Generic tuple(std::vector<Any>{1, "two"});
    const Map_Generic map{{"a", 1}, {2, list}};
    Set_Generic set;
    (void)set.insert(5);
    const Error error("It went wrong.");
    error.setCause(Error("The reason."));
    const Any cls = Error::getClass();
    const field_ident_untyped stock("stock");
    const Any object = internal::defclass_impl("Tea", "").field(stock).build().allocateInstance();
    (void)object.setFieldValue(stock, 3);
    const Any bytes = ByteArray(std::string_view("ab\0c", 4));
    const Any decimal = find_class("ling.Decimal")("-12.50");
    const Any date = Date(2024, 2, 29);
    const Any function = find_function("ling.display");
    const Any module = find_module("ling");
    const Any weak = Weak_Generic(list);
    host_program::loadExtensions(arguments[1]);
    const auto python = find_language("Python");
    const Any proxy = python->evaluateExpression("[1, 2]");
    const Any item = python->evaluate("class Item:\n    pass\nreturn Item()");
    stop(list);
    (void)python->evaluate("def called(value):\n    value()\ncalled(held)", Map_Generic{{"held", list}});
    return 0;
}
