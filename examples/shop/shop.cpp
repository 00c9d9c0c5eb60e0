// A native extension that knows nothing of Python: it defines the `ling` module "shop", and every language that the
// host speaks can use it. Built with the public headers alone.
//
//     Item(name, price, stock)     name, price (a decimal), stock (never negative), total (read-only), take(count)
//     Inventory()                  add(item), find(name), remove(name), items, length; iterates its items; `+` joins
//     OutOfStock                   the error of taking more than there is
//     discounted(price, percent)   a price with a discount, ten percent unless told otherwise
//
// Items and inventories can be copied and sent to other processes: they have the methods `__state__` and `__restore__`.

#include <ling/ling.h>

namespace {

using ling::Any;
using ling::Decimal;
using ling::Integer;
using ling::String;
using ling::internal::class_builder;
using ling::internal::property_builder;

constexpr const char* kModule = "shop";

// Names of fields begin with "_": other languages reach what is in them through the properties.
const ling::field_ident_untyped $name("_name");
const ling::field_ident_untyped $price("_price");
const ling::field_ident_untyped $stock("_stock");
const ling::field_ident_untyped $items("_items");

Any failure(const String& message) { return ling::Error(message, true); }

const ling::Class_Generic& outOfStock() {
    static const ling::Class_Generic& cls = *new ling::Class_Generic(class_builder("OutOfStock", kModule)
                                                                         .parent(ling::Error::getClass())
                                                                         .doc("More was asked for than there is.")
                                                                         .build());
    return cls;
}

// Items.

Any setStock(const Any& self, std::int64_t stock) {
    if (stock < 0)
        return failure(String(u"Stock cannot be negative: {}").arg(stock));
    return self.setFieldValue($stock, stock);
}

Any initialiseItem(const Any& self, const String& name, const Decimal& price, std::int64_t stock) {
    (void)self.setFieldValue($name, name);
    (void)self.setFieldValue($price, price);
    return setStock(self, stock);
}

Any totalOf(const Any& self) {
    const Any price = self.fieldValue($price);
    return ling::unchecked<Decimal>(price).times(Decimal(self.fieldValue($stock).asInteger()));
}

Any take(const Any& self, std::int64_t count) {
    const std::int64_t stock = self.fieldValue($stock).asInteger();
    if (count > stock)
        return ling::Error(outOfStock(), String(u"{}: {} wanted, {} left").arg(self.fieldValue($name), count, stock));
    return setStock(self, stock - count);
}

/// What an item is made of, for copies and other processes.
Any stateOfItem(const Any& self) {
    return ling::Tuple_Generic({self.fieldValue($name), self.fieldValue($price), self.fieldValue($stock)});
}

/// Makes a new item what another has told of itself.
Any restoreItem(const Any& self, const ling::Tuple_Generic& state) {
    if (state.items().size() != 3)
        return failure(u"This is no state of an item.");
    return self.callMethod(Any::$__init__, state.items());
}

const ling::Class_Generic& itemClass() {
    static const ling::Class_Generic& cls = *new ling::Class_Generic([] {
        ling::FunctionCL_Generic initialise = ling::make_method("__init__", "name, price, stock", &initialiseItem);
        (void)initialise.setParameterDefaults({0});
        return class_builder("Item", kModule)
            .doc("Something for sale.")
            .field($name)
            .field($price)
            .field($stock)
            .method(Any::$__init__, initialise)
            .method("take", "count", &take, "Takes some off the stock.")
            .method("__state__", "", &stateOfItem)
            .method("__restore__", "state", &restoreItem)
            .property("name", property_builder()
                                  .getter([](const Any& self) { return self.fieldValue($name); })
                                  .doc("What it is called."))
            .property("price", property_builder()
                                   .getter([](const Any& self) { return self.fieldValue($price); })
                                   .setter([](const Any& self, const Decimal& price) {
                                       return self.setFieldValue($price, price);
                                   })
                                   .doc("What one of it costs."))
            .property("stock", property_builder()
                                   .getter([](const Any& self) { return self.fieldValue($stock); })
                                   .setter(&setStock)
                                   .doc("How many there are; never negative."))
            .property("total", property_builder().getter(&totalOf).doc("What the whole stock is worth."))
            .method(
                Any::$__display__, "",
                [](const Any& self) { return String(u"{} x {}").arg(self.fieldValue($stock), self.fieldValue($name)); })
            .build();
    }());
    return cls;
}

// Inventories.

ling::List_Generic itemsOf(const Any& inventory) {
    const Any items = inventory.fieldValue($items);
    return ling::List_Generic::cast(items).valueOr(ling::List_Generic::empty());
}

Any findItem(const Any& self, const String& name) {
    for (const Any& item : itemsOf(self).copyItems())
        if (ling::compare_objects(item.fieldValue($name), name) == 0)
            return item;
    return Any();
}

Any addItem(const Any& self, const Any& item) {
    if (ling::internal::cast_object(item, itemClass()) == nullptr)
        return ling::internal::cast_error(item, itemClass());
    if (!findItem(self, ling::unchecked<String>(item.fieldValue($name))).isNone())
        return failure(String(u"There is an item of that name already: {}").arg(item.fieldValue($name)));
    itemsOf(self).append(item);
    return Any();
}

Any removeItem(const Any& self, const String& name) {
    const Any item = findItem(self, name);
    return item.isNone() ? Any(false) : itemsOf(self).removeOne(item);
}

Any joined(const Any& self, const Any& other);

const ling::Class_Generic& inventoryClass() {
    static const ling::Class_Generic& cls = *new ling::Class_Generic(
        class_builder("Inventory", kModule)
            .parent(ling::I_Iterable_Generic::getClass())
            .doc("All that a shop has.")
            .field($items)
            .method(Any::$__init__, "",
                    [](const Any& self) { return self.setFieldValue($items, ling::List_Generic::empty()); })
            .method("add", "item", &addItem, "Adds an item, unless there is one of the same name.")
            .method("find", "name", &findItem, "The item of a name, or none.")
            .method("remove", "name", &removeItem, "Removes the item of a name; answers whether there was one.")
            .method(ling::I_Iterable_Generic::$iter, "", [](const Any& self) { return itemsOf(self).iter(); })
            .method(Any::$__add__, "other", &joined, "A new inventory with the items of both.")
            .method("__state__", "", [](const Any& self) { return ling::List_Generic(itemsOf(self).copyItems()); })
            .method("__restore__", "state",
                    [](const Any& self, const ling::List_Generic& items) { return self.setFieldValue($items, items); })
            .property("items", property_builder().getter(&itemsOf).doc("The items, in the order they came."))
            .property(ling::I_Sequence_Generic::$$length,
                      property_builder().getter([](const Any& self) { return itemsOf(self).size(); }).doc("How many."))
            .build());
    return cls;
}

Any joined(const Any& self, const Any& other) {
    if (ling::internal::cast_object(other, inventoryClass()) == nullptr)
        return ling::internal::cast_error(other, inventoryClass());
    Any both = inventoryClass()();
    for (const Any& part : {self, other})
        for (const Any& item : itemsOf(part).copyItems()) {
            const Any outcome = addItem(both, item);
            if (ling::internal::is_error_result(outcome))
                return outcome;
        }
    return both;
}

Any discounted(const Decimal& price, std::int64_t percent) {
    const Any part = price.times(Decimal(100 - percent));
    const ling::Result<Decimal> scaled = Decimal::cast(part);
    return scaled ? scaled->dividedBy(Decimal(100)) : part;
}

void defineClasses() {
    (void)outOfStock();
    (void)itemClass();
    (void)inventoryClass();
}

void defineFunctions() {
    ling::FunctionCL_Generic function =
        ling::make_function("discounted", "price, percent", &discounted, "A price with a discount in percent.");
    (void)function.setParameterDefaults({10});
    (void)ling::internal::register_function(kModule, function);
    ling::Module module = ling::find_module(kModule);
    module.setDoc("A small shop.");
}

const bool handlersAreQueued = [] {
    ling::internal::add_init_handler(ling::InitLevel::Classes, defineClasses);
    ling::internal::add_init_handler(ling::InitLevel::Functions, defineFunctions);
    return true;
}();

}  // namespace

/// What a host calls after loading an extension. Everything here is done by the handlers that are queued above.
extern "C" __attribute__((visibility("default"))) void quorvanta_extension_init() {}
