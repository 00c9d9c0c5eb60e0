#pragma once

#include "ling/any.h"
#include "ling/basic_values.h"
#include "ling/class.h"
#include "ling/result.h"

#include <optional>

namespace ling {

/// Something that gives one item after the other. `next` answers a `StopIteration` error result at the end, and any
/// other error result when the iteration failed.
class LING_EXPORT I_Iterator_Generic : public Any {
public:
    Any next() const;

    static Class_Generic genericInstance(const Type& item);
    static Result<I_Iterator_Generic> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();
    static const method_ident_untyped $next;
};

/// Walks an iterable from native code:
///
///     for (iteration it = items.beginImpl(); it.advance();)
///         use(it.item());
///     if (it.failed()) return it.error();
class LING_EXPORT iteration {
public:
    explicit iteration(Any iterator) noexcept : iterator_(std::move(iterator)) {}
    bool advance();  ///< True when there is a next item; lazy items are resolved.
    const Any& item() const noexcept { return item_; }
    bool failed() const noexcept { return !error_.isNone(); }
    const Any& error() const noexcept { return error_; }

private:
    Any iterator_;  // An iterator, or the error result that came in its place.
    Any item_;
    Any error_;
};

/// Something that can be iterated, any number of times or once. The defaults of `$contains` and `collectImpl` walk the
/// iteration.
class LING_EXPORT I_Iterable_Generic : public Any {
public:
    Any iter() const;  ///< A fresh iterator, or an error result.
    iteration beginImpl() const { return iteration(iter()); }
    Any contains(const Any& item) const;       ///< A boolean, or an error result.
    Result<List_Generic> collectImpl() const;  ///< All items in a new native list; lazy items are resolved.

    /// A new, empty native list: what a collection of unknown kind is collected into.
    static List_Generic createInstance();
    static Class_Generic genericInstance(const Type& item);
    static Result<I_Iterable_Generic> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();
    static const method_ident_untyped $iter, $contains, $collect;
};

}  // namespace ling
