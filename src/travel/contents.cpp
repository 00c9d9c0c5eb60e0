#include "travel/contents.h"

#include "host/platform.h"
#include "ling/members.h"

namespace ling::python {

namespace {

ling::Any holdsNothing(const ling::Any& value) {
    return platform::failure(ling::String(u"Nothing can be put into this value: {}.").arg(value));
}

}  // namespace

std::vector<ling::Any> itemsIn(const ling::Any& container) {
    return container.is(ling::Kind::Set) ? platform::itemsOfSet(container)
                                         : platform::itemsOf(ling::unchecked<ling::List_Generic>(container));
}

ling::Any addItem(const ling::Any& container, const ling::Any& item) {
    if (container.is(ling::Kind::Set)) {
        const ling::Any outcome = ling::unchecked<ling::Set_Generic>(container).insert(item);
        return ling::internal::is_error_result(outcome) ? outcome : ling::Any();
    }
    if (!container.is(ling::Kind::List))
        return holdsNothing(container);
    ling::unchecked<ling::List_Generic>(container).append(item);
    return {};
}

ling::Any setItem(const ling::Any& container, const ling::Any& key, const ling::Any& value) {
    return container.is(ling::Kind::Map) ? ling::unchecked<ling::Map_Generic>(container).set(key, value)
                                         : holdsNothing(container);
}

ling::Any readOwnProperties(const ling::Any& object, std::vector<std::pair<ling::String, ling::Any>>& properties) {
    if (object.object()->ownClass() == nullptr && object.object()->findExtras() == nullptr)
        return {};  // As nearly every container.
    if (!platform::itemsOf(ling::own_methods_of(object)).empty())
        return platform::failure(ling::String(u"The object carries methods of its own: {}.").arg(object));
    for (const ling::Any& item : platform::itemsOf(ling::own_properties_of(object))) {
        const auto& name = ling::unchecked<ling::String>(item);
        ling::Any value = ling::internal::result_unwrap_lazy(object.propertyValue(ling::property_ident_untyped(name)));
        if (ling::internal::is_error_result(value))
            return value;
        properties.emplace_back(name, std::move(value));
    }
    return {};
}

ling::Any writeOwnProperty(const ling::Any& object, const ling::String& name, const ling::Any& value) {
    return ling::insert_property_value(object, ling::property_ident_untyped(name), value);
}

}  // namespace ling::python
