#include "ling/conversion.h"

#include "ling/iterable.h"
#include "ling/map_interface.h"

namespace ling {

namespace internal {

Result<std::vector<Any>> items_of_argument(const Any& value) {
    if (is_instance<String>(value) || value.is(Kind::ByteArray))
        return Result<std::vector<Any>>::failure(Any());
    if (value.is(Kind::List))
        return unchecked<List_Generic>(value).copyItems();
    if (!is_instance<I_Iterable_Generic>(value))
        return Result<std::vector<Any>>::failure(Any());
    const Result<List_Generic> items = unchecked<I_Iterable_Generic>(value).collectImpl();
    if (!items)
        return Failure(items.error());
    return items->copyItems();
}

Any item_error(std::size_t position, const Any& item, const Type& expected) {
    return Error(String(u"Item {} must be of type '{}', not '{}'.")
                     .arg(position, expected.toString(), qualname(raw_class_of(item))));
}

Result<JsonObject> conversion<JsonObject>::read(const Any& value) {
    if (value.is(Kind::Map))
        return unchecked<JsonObject>(value);
    const Result<I_Map_Generic> map = I_Map_Generic::cast(value);
    if (!map)
        return Failure(map.error());
    JsonObject copy;
    for (const auto& [key, content] : map->items()) {
        if (is_error_result(content))
            return Failure(content);
        if (!is_instance<String>(key))
            return Failure(item_error(copy.size(), key, String::getType()));
        (void)copy.set(key, content);
    }
    return copy;
}

}  // namespace internal
}  // namespace ling
