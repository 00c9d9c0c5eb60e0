#pragma once

#include "ling/any.h"
#include "ling/basic_values.h"
#include "ling/class.h"
#include "ling/result.h"
#include "ling/type.h"

#include <concepts>
#include <iterator>
#include <optional>

namespace ling {

namespace internal {
class native_iterator;
}

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
    explicit iteration(Any iterator) noexcept;
    bool advance();  ///< True when there is a next item; lazy items are resolved.
    const Any& item() const noexcept { return item_; }
    bool failed() const noexcept { return !error_.isNone(); }
    const Any& error() const noexcept { return error_; }

private:
    bool finish(bool hasItem);

    Any iterator_;                       // An iterator, or the error result that came in its place.
    internal::native_iterator* native_;  // The same, if it is one of the runtime's.
    Any item_;
    Any error_;
};

namespace internal {

/// An item of a typed handle. An error result stays the error that it is.
template <class T>
Result<T> cast_item(const Any& item) {
    static_assert(std::derived_from<T, Any>,
                  "The items of a typed handle are values of the runtime, such as String or "
                  "Integer. A std::vector holds items of other types.");
    if (is_error_result(item))
        return Failure(item);
    if constexpr (std::same_as<T, Any>)
        return item;
    else if constexpr (std::derived_from<T, Any>)
        return T::cast(item);
    else
        return T();
}

/// What `for` walks with. An iteration that fails gives its error result as the last item.
template <class T = Any>
class item_walk {
public:
    explicit item_walk(iteration walk) : walk_(std::move(walk)) { ++*this; }
    decltype(auto) operator*() const {
        const Any& item = failed_ ? walk_.error() : walk_.item();
        if constexpr (std::same_as<T, Any>)
            return static_cast<const Any&>(item);
        else
            return cast_item<T>(item);
    }
    item_walk& operator++() {
        ended_ = failed_ || !walk_.advance();
        if (ended_ && !failed_ && walk_.failed()) {
            failed_ = true;
            ended_ = false;
        }
        return *this;
    }
    friend bool operator==(const item_walk& walk, std::default_sentinel_t) noexcept { return walk.ended_; }

private:
    iteration walk_;
    bool failed_ = false;
    bool ended_ = false;
};

/// The handle `Handle` on what `Base` accepts.
template <class Handle, class Base>
Result<Handle> narrow(const Any& value) {
    const Result<Base> found = Base::cast(value);
    if (!found)
        return Failure(found.error());
    return unchecked<Handle>(*found);
}

}  // namespace internal

/// Something that can be iterated, any number of times or once. The defaults of `$contains` and `collectImpl` walk the
/// iteration.
///
///     for (const Any& item : items)
///
/// An iteration that fails gives its error result as the last item; `iteration` keeps the two apart.
class LING_EXPORT I_Iterable_Generic : public Any {
public:
    Any iter() const;  ///< A fresh iterator, or an error result.
    iteration beginImpl() const { return iteration(iter()); }
    internal::item_walk<> begin() const { return internal::item_walk<>(beginImpl()); }
    std::default_sentinel_t end() const noexcept { return {}; }
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

namespace internal {
/// What a typed handle adds to the untyped one: the type of the items. Nothing is known of them until one is read, so
/// an item comes as a `Result<T>`.
template <class T, class Base>
class typed_iterable : public Base {
public:
    using Base::Base;
    item_walk<T> begin() const { return item_walk<T>(this->beginImpl()); }
};
}  // namespace internal

template <class T>
class I_Iterable : public internal::typed_iterable<T, I_Iterable_Generic> {
public:
    static Result<I_Iterable> cast(const Any& value) { return internal::narrow<I_Iterable, I_Iterable_Generic>(value); }
    static Type getType() { return Type(I_Iterable_Generic::genericInstance(T::getType())); }
};
template <class T>
class I_Iterator : public I_Iterator_Generic {
public:
    Result<T> next() const { return internal::cast_item<T>(I_Iterator_Generic::next()); }
    static Result<I_Iterator> cast(const Any& value) { return internal::narrow<I_Iterator, I_Iterator_Generic>(value); }
    static Type getType() { return Type(I_Iterator_Generic::genericInstance(T::getType())); }
};

}  // namespace ling
