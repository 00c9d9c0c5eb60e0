#include "model/class_tables.h"

#include "ling/function.h"
#include "ling/map_interface.h"
#include "ling/property.h"
#include "ling/sequence.h"

#include <algorithm>

namespace ling::internal {

namespace {

using Ancestry = std::vector<object_value_class*>;

bool standsBehindAnother(const object_value_class* candidate, const std::vector<Ancestry>& lists) {
    return std::any_of(lists.begin(), lists.end(), [candidate](const Ancestry& list) {
        return std::find(list.begin() + (list.empty() ? 0 : 1), list.end(), candidate) != list.end();
    });
}

/// The first class that heads a list and waits for no other. Null when the parents' orders contradict each other.
object_value_class* nextInOrder(const std::vector<Ancestry>& lists) {
    for (const Ancestry& list : lists)
        if (!list.empty() && !standsBehindAnother(list.front(), lists))
            return list.front();
    return nullptr;
}

void takeOut(object_value_class* taken, std::vector<Ancestry>& lists) {
    for (Ancestry& list : lists)
        list.erase(std::remove(list.begin(), list.end(), taken), list.end());
}

/// Each class before its parents, parents in the order of declaration. Where the parents' own orders contradict each
/// other, as foreign class systems may have it, the first list wins instead of refusing the class.
Ancestry linearise(object_value_class* klass, std::vector<Ancestry> lists) {
    Ancestry order{klass};
    takeOut(klass, lists);
    while (true) {
        object_value_class* next = nextInOrder(lists);
        if (next == nullptr) {
            auto open = std::find_if(lists.begin(), lists.end(), [](const Ancestry& list) { return !list.empty(); });
            if (open == lists.end())
                return order;
            next = open->front();
        }
        order.push_back(next);
        takeOut(next, lists);
    }
}

void inherit(class_hooks& hooks, const class_hooks& from) {
    hooks.nativeValues = hooks.nativeValues || from.nativeValues;
    // Whatever else a class derives from, its instances would not be what this ancestor's handles take them for.
    if (from.allocate == &refuse_allocation)
        hooks.allocate = from.allocate;
    if (from.construct == &refuse_construction)
        hooks.construct = from.construct;
    if (hooks.allocate == nullptr)
        hooks.allocate = from.allocate;
    if (hooks.construct == nullptr)
        hooks.construct = from.construct;
    if (hooks.invoke == nullptr)
        hooks.invoke = from.invoke;
    if (hooks.invokeNamed == nullptr)
        hooks.invokeNamed = from.invokeNamed;
    if (hooks.finalize == nullptr)
        hooks.finalize = from.finalize;
}

/// Puts each field in its place, which is a new one at the end for a field that the class did not have before.
void placeFields(std::vector<declared_field>& placed, std::vector<field_ident_untyped>& layout,
                 const std::vector<declared_field>& declared) {
    for (const declared_field& field : declared) {
        const auto place = static_cast<std::size_t>(std::find(layout.begin(), layout.end(), field.id) - layout.begin());
        if (place == layout.size()) {
            layout.push_back(field.id);
            placed.push_back(field);
        } else {
            placed[place].field = field.field;
        }
    }
}

/// Ancestors first, so that a field has the same place in every class that derives from its own alone. A class has no
/// way to lose a field, so each place of the layout is filled.
std::vector<declared_field> arrangeFields(const Ancestry& ancestry, std::vector<field_ident_untyped>& layout) {
    std::vector<declared_field> placed;
    for (const field_ident_untyped& id : layout)
        placed.push_back({id, {}});
    for (auto ancestor = ancestry.rbegin(); ancestor != ancestry.rend(); ++ancestor)
        placeFields(placed, layout, (*ancestor)->declarations().fields);
    return placed;
}

template <class Members>
std::size_t countMembers(const Ancestry& ancestry, Members class_declarations::*list) {
    std::size_t count = 0;
    for (const object_value_class* ancestor : ancestry)
        count += (ancestor->declarations().*list).size();
    return count;
}

template <class Members>
void addMembers(member_table& table, const Ancestry& ancestry, Members class_declarations::*list, bool classLevel) {
    for (object_value_class* ancestor : ancestry)
        for (const auto& declared : ancestor->declarations().*list)
            table.addUnlessPresent(declared.id, {declared.member.object(), declared.definer, classLevel});
}

template <class Way>
const Way* offeredBy(const Any& function) noexcept {
    return function.is(Kind::Function)
               ? dynamic_cast<const Way*>(unchecked<FunctionCL_Generic>(function).record()->offered())
               : nullptr;
}
template <class Way>
const Way* offeredByMethod(const found_member& method) noexcept {
    return method && !method.classLevel ? offeredBy<Way>(Any::share(method.member)) : nullptr;
}
template <class Way>
const Way* offeredByGetter(const found_member& member) noexcept {
    if (!member || member.classLevel)
        return nullptr;
    const Property property = unchecked<Property>(Any::share(member.member));
    return property.isValue() ? nullptr : offeredBy<Way>(property.getter());
}

/// A way that stands for two members is open where both offer it.
template <class Way>
const Way* agreed(const Way* one, const Way* other) noexcept {
    return one == other ? one : nullptr;
}

void findOffers(member_tables& tables) {
    tables.offered = {
        agreed(offeredByMethod<sequence_access>(tables.methods.find(I_Sequence_Generic::$at)),
               offeredByGetter<sequence_access>(tables.properties.find(I_Sequence_Generic::$$length))),
        agreed(offeredByMethod<map_access>(tables.methods.find(I_Map_Generic::$get)),
               offeredByMethod<map_access>(tables.methods.find(I_Map_Generic::$contains))),
        offeredByMethod<member_source>(tables.methodProtocol),
        offeredByMethod<member_source>(tables.propertyProtocol),
    };
}

/// Whether the tables keep something apart that stands under this name.
bool isKeptApart(const identifier& id) {
    const identifier* const names[] = {&Any::$__method__,        &Any::$__property__,
                                       &I_Sequence_Generic::$at, &I_Sequence_Generic::$$length,
                                       &I_Map_Generic::$get,     &I_Map_Generic::$contains};
    return std::ranges::any_of(names, [&id](const identifier* name) { return *name == id; });
}

/// A class that is changed while it is in use is changed again: room for as many names once more keeps the number of
/// tables that were once in use small. `factor` is one or two.
void fillMembers(class_tables& tables, std::size_t factor) {
    const Ancestry& ancestry = tables.ancestry;
    const std::size_t classMethods = countMembers(ancestry, &class_declarations::classMethods);
    const std::size_t classProperties = countMembers(ancestry, &class_declarations::classProperties);
    const std::size_t methods = classMethods + countMembers(ancestry, &class_declarations::methods);
    const std::size_t properties = classProperties + countMembers(ancestry, &class_declarations::properties);
    tables.classMethods = member_table(classMethods * factor);
    tables.classProperties = member_table(classProperties * factor);
    tables.methods = member_table(methods * factor);
    tables.properties = member_table(properties * factor);
    addMembers(tables.classMethods, ancestry, &class_declarations::classMethods, true);
    addMembers(tables.classProperties, ancestry, &class_declarations::classProperties, true);
    addMembers(tables.methods, ancestry, &class_declarations::methods, false);
    addMembers(tables.methods, ancestry, &class_declarations::classMethods, true);
    addMembers(tables.properties, ancestry, &class_declarations::properties, false);
    addMembers(tables.properties, ancestry, &class_declarations::classProperties, true);
    for (member_table* table : {&tables.methods, &tables.properties, &tables.classMethods, &tables.classProperties})
        table->arrange();
    tables.methodProtocol = tables.methods.find(Any::$__method__);
    tables.propertyProtocol = tables.methods.find(Any::$__property__);
    findOffers(tables);
}

/// What the nearest ancestor declares under a name.
template <class Members>
found_member nearest(const Ancestry& ancestry, Members class_declarations::*list, const identifier& id,
                     bool classLevel) {
    for (object_value_class* ancestor : ancestry)
        if (const auto* declared = (ancestor->declarations().*list).find(id))
            return {declared->member.object(), declared->definer, classLevel};
    return {};
}

bool update(member_table& table, const identifier& id, const found_member& member) {
    return !member || table.change(id, member);
}

}  // namespace

bool update_tables(class_tables& tables, const identifier& id) {
    if (isKeptApart(id))
        return false;
    const Ancestry& ancestry = tables.ancestry;
    const found_member classMethod = nearest(ancestry, &class_declarations::classMethods, id, true);
    const found_member classProperty = nearest(ancestry, &class_declarations::classProperties, id, true);
    const found_member method = nearest(ancestry, &class_declarations::methods, id, false);
    const found_member property = nearest(ancestry, &class_declarations::properties, id, false);
    return update(tables.classMethods, id, classMethod) && update(tables.classProperties, id, classProperty) &&
           update(tables.methods, id, method ? method : classMethod) &&
           update(tables.properties, id, property ? property : classProperty);
}

ancestor_set::ancestor_set(std::span<object_value_class* const> classes)
    : mask_(std::bit_ceil(2 * classes.size() + 1) - 1), slots_(mask_ + 1, nullptr) {
    for (const object_value_class* cls : classes) {
        std::size_t at = home(cls);
        while (slots_[at & mask_] != nullptr)
            ++at;
        slots_[at & mask_] = cls;
    }
}

std::unique_ptr<class_tables> build_tables(object_value_class* klass,
                                           const class_tables& (*tablesOf)(const object_value_class*)) {
    auto tables = std::make_unique<class_tables>();
    class_declarations& own = klass->declarations();
    std::vector<Ancestry> lists;
    Ancestry parents;
    for (const Class_Generic& parent : own.parents) {
        lists.push_back(tablesOf(parent.record()).ancestry);
        parents.push_back(parent.record());
    }
    lists.push_back(parents);
    tables->ancestry = linearise(klass, std::move(lists));
    tables->ancestors = ancestor_set(tables->ancestry);
    for (const object_value_class* ancestor : tables->ancestry)
        inherit(tables->hooks, ancestor->declarations().hooks);
    tables->fields = arrangeFields(tables->ancestry, own.layout);
    tables->isInterface = own.isInterface;
    tables->generic = own.generic;
    tables->parameters = own.parameters;
    fillMembers(*tables, own.tables.empty() ? 1 : 2);
    return tables;
}

}  // namespace ling::internal
