#pragma once

#include "runtime/support/values.h"

namespace ling::testing {

/// Containers as another language would bring them: classes that give no more than the abstract members of an
/// interface, and so show what its defaults do. Each instance keeps its content in a native container in its one field.
inline const field_ident_untyped kContent{"content"};

inline List_Generic contentList(const Any& self) { return *List_Generic::cast(self.fieldValue(kContent)); }
inline Map_Generic contentMap(const Any& self) { return *Map_Generic::cast(self.fieldValue(kContent)); }
inline Set_Generic contentSet(const Any& self) { return *Set_Generic::cast(self.fieldValue(kContent)); }

inline Any wrap(const Class_Generic& cls, const Any& content) {
    Any made = cls.allocateInstance();
    made.setFieldValue(kContent, content);
    return made;
}

/// Only `iter`.
inline Class_Generic foreignIterable() {
    return defclass_impl("ForeignIterable", "")
        .parent(I_Iterable_Generic::getClass())
        .field(kContent)
        .method(I_Iterable_Generic::$iter, "", [](const Any& self) { return contentList(self).iter(); })
        .build();
}

/// Only `at` and `length`, and for a mutable sequence `set`, `appendAt` and `removeAt`.
inline Class_Generic foreignSequence() {
    using Mutable = I_MutableSequence_Generic;
    return defclass_impl("ForeignSequence", "")
        .parent(Mutable::getClass())
        .field(kContent)
        .method(I_Sequence_Generic::$at, "index",
                [](const Any& self, const Any& index) -> Any { return contentList(self).at(index); })
        .property(I_Sequence_Generic::$$length, property_builder().getter([](const Any& self) {
            return static_cast<std::int64_t>(contentList(self).size());
        }))
        .method(Mutable::$set, "index, item",
                [](const Any& self, const Any& index, const Any& item) -> Any {
                    return contentList(self).set(index, item);
                })
        .method(Mutable::$appendAt, "index, item",
                [](const Any& self, const Any& index, const Any& item) -> Any {
                    return contentList(self).appendAt(index, item);
                })
        .method(Mutable::$removeAt, "index, count",
                [](const Any& self, const Any& index, std::int64_t count) -> Any {
                    return contentList(self).removeAt(index, count);
                })
        .build();
}

/// Only `get`, `contains`, `keys` and `length`, and for a mutable map `set`, `remove` and `clear`.
inline Class_Generic foreignMap(const Class_Generic& parent = I_MutableMap_Generic::getClass()) {
    using Mutable = I_MutableMap_Generic;
    return defclass_impl("ForeignMap", "")
        .parent(parent)
        .field(kContent)
        .method(I_Map_Generic::$get, "key, default",
                [](const Any& self, const Any& key, const Any& fallback) -> Any {
                    return contentMap(self).get(key, fallback);
                })
        .method(I_Map_Generic::$contains, "key",
                [](const Any& self, const Any& key) -> Any { return contentMap(self).contains(key); })
        .property(I_Map_Generic::$$keys,
                  property_builder().getter([](const Any& self) -> Any { return contentMap(self).keys(); }))
        .property(I_Map_Generic::$$length, property_builder().getter([](const Any& self) {
            return static_cast<std::int64_t>(contentMap(self).size());
        }))
        .method(
            Mutable::$set, "key, value",
            [](const Any& self, const Any& key, const Any& value) -> Any { return contentMap(self).set(key, value); })
        .method(Mutable::$remove, "key",
                [](const Any& self, const Any& key) -> Any { return contentMap(self).remove(key); })
        .method(Mutable::$clear, "", [](const Any& self) -> Any { return contentMap(self).clear(); })
        .build();
}

/// Only `iter` and `length`, and for a mutable set `insert`, `remove` and `clear`.
inline Class_Generic foreignSet() {
    using Mutable = I_MutableSet_Generic;
    return defclass_impl("ForeignSet", "")
        .parent(Mutable::getClass())
        .field(kContent)
        .method(I_Iterable_Generic::$iter, "", [](const Any& self) { return contentSet(self).iter(); })
        .property(I_Set_Generic::$$length, property_builder().getter([](const Any& self) {
            return static_cast<std::int64_t>(contentSet(self).size());
        }))
        .method(Mutable::$insert, "item",
                [](const Any& self, const Any& item) -> Any { return contentSet(self).insert(item); })
        .method(Mutable::$remove, "item",
                [](const Any& self, const Any& item) -> Any { return contentSet(self).remove(item); })
        .method(Mutable::$clear, "", [](const Any& self) -> Any { return contentSet(self).clear(); })
        .build();
}

}  // namespace ling::testing
