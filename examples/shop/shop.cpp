// A native extension that knows nothing of Python: it defines the `ling` module "shop", and every language that the
// host speaks can use it. Built with the public headers alone.
//
//     Item(name, price, stock)     name, price (a decimal), stock (never negative), total (read-only), take(count)
//     Inventory()                  add(item), find(name), remove(name), items, length; iterates its items; `+` joins
//     OutOfStock                   the error of taking more than there is
//     discounted(price, percent)   a price with a discount, ten percent unless told otherwise
//
// Items and inventories can be copied and sent to other processes: their classes say what an object is made of. The
// objects have no locks of their own: whoever calls them from threads without a common lock keeps them apart.

#include <ling/ling.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace {

using ling::Any;
using ling::Decimal;
using ling::Result;

constexpr const char* kModule = "shop";

const ling::Class_Generic& outOfStock() {
    static const ling::Class_Generic& cls = *new ling::Class_Generic(ling::class_builder("OutOfStock", kModule)
                                                                         .parent(ling::Error::getClass())
                                                                         .doc("More was asked for than there is.")
                                                                         .build());
    return cls;
}

class Item {
public:
    static Result<std::shared_ptr<Item>> make(std::string name, const Decimal& price, long stock) {
        auto item = std::make_shared<Item>();
        item->name_ = std::move(name);
        item->price = price;
        const Any outcome = item->setStock(stock);
        if (ling::is_error_result(outcome))
            return ling::Failure(outcome);
        return item;
    }

    const std::string& name() const { return name_; }
    long stock() const { return stock_; }
    Any setStock(long stock) {
        if (stock < 0)
            return ling::failure("Stock cannot be negative: {}", stock);
        stock_ = stock;
        return Any();
    }
    Any take(long count) {
        if (count > stock_)
            return ling::failure(outOfStock(), "{}: {} wanted, {} left", name_, count, stock_);
        return setStock(stock_ - count);
    }
    Any total() const { return price.times(Decimal(stock_)); }
    /// What an item is made of.
    ling::Tuple_Generic state() const { return {name_, price, stock_}; }
    static Result<std::shared_ptr<Item>> restored(const ling::Tuple_Generic& state) {
        const auto parts = state.items();
        if (parts.size() != 3)
            return ling::failure("This is no state of an item.");
        const auto name = ling::String::cast(parts[0]);
        const auto price = Decimal::cast(parts[1]);
        const auto stock = ling::Integer::cast(parts[2]);
        if (!name || !price || !stock)
            return ling::failure("This is no state of an item.");
        return make(name->toStdString(), *price, stock->value());
    }
    ling::String text() const { return ling::String("{} x {}").arg(stock_, name_); }

    Decimal price;

private:
    std::string name_;
    long stock_ = 0;
};

class Inventory {
public:
    using Items = std::vector<std::shared_ptr<Item>>;

    Inventory() = default;
    explicit Inventory(Items items) : items_(std::move(items)) {}
    const Items& items() const { return items_; }

    Any add(std::shared_ptr<Item> item) {
        if (item == nullptr)
            return ling::failure("There is no item to add");
        if (find(item->name()) != nullptr)
            return ling::failure("There is an item of that name already: {}", item->name());
        items_.push_back(std::move(item));
        return Any();
    }
    std::shared_ptr<Item> find(std::string_view name) const {
        const auto found = std::ranges::find(items_, name, &Item::name);
        return found == items_.end() ? nullptr : *found;
    }
    bool remove(std::string_view name) {
        return std::erase_if(items_, [&](const auto& item) { return item->name() == name; }) != 0;
    }
    Result<Inventory> joined(const Inventory& other) const {
        Inventory both = *this;
        for (const auto& item : other.items_)
            if (const Any outcome = both.add(item); ling::is_error_result(outcome))
                return ling::Failure(outcome);
        return both;
    }

private:
    Items items_;
};

Any discounted(const Decimal& price, long percent) {
    const Any part = price.times(Decimal(100 - percent));
    const Result<Decimal> scaled = Decimal::cast(part);
    return scaled ? scaled->dividedBy(Decimal(100)) : part;
}

void defineClasses() {
    (void)outOfStock();

    (void)ling::native_class<Item>("Item", kModule)
        .doc("Something for sale.")
        .factory(&Item::make, {"name", "price", {"stock", 0}})
        .readonly("name", &Item::name, "What it is called.")
        .property("price", &Item::price, "What one of it costs.")
        .property("stock", &Item::stock, &Item::setStock, "How many there are; never negative.")
        .readonly("total", &Item::total, "What the whole stock is worth.")
        .method("take", &Item::take, "count", "Takes some off the stock.")
        .method(Any::$__display__, &Item::text)
        .state(&Item::state, &Item::restored)
        .build();

    (void)ling::native_class<Inventory>("Inventory", kModule)
        .doc("All that a shop has.")
        .constructor<>()
        .method("add", &Inventory::add, "item", "Adds an item, unless there is one of the same name.")
        .method("find", &Inventory::find, "name", "The item of a name, or none.")
        .method("remove", &Inventory::remove, "name", "Removes the item of a name; answers whether there was one.")
        .method(Any::$__add__, &Inventory::joined, "other", "A new inventory with the items of both.")
        .readonly("items", &Inventory::items, "The items, in the order they came.")
        .iterable(&Inventory::items)
        .state(&Inventory::items, [](Inventory::Items items) { return Inventory(std::move(items)); })
        .build();
}

void defineFunctions() {
    (void)ling::register_function(kModule, ling::make_function("discounted", {"price", {"percent", 10}}, &discounted,
                                                               "A price with a discount in percent."));
    ling::find_module(kModule).setDoc("A small shop.");
}

}  // namespace

/// What a host calls after loading an extension.
LING_EXTENSION {
    ling::add_init_handler(ling::InitLevel::Classes, defineClasses);
    ling::add_init_handler(ling::InitLevel::Functions, defineFunctions);
}
