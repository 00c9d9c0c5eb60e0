#include "interfaces/collect.h"
#include "interfaces/define.h"
#include "interfaces/generic_interface.h"
#include "interfaces/index.h"
#include "interfaces/native_containers.h"
#include "interfaces/native_value.h"
#include "interfaces/optional_method.h"
#include "interfaces/results.h"
#include "ling/class_builder.h"
#include "ling/error.h"
#include "ling/sequence.h"

namespace ling {

using internal::is_native;
using internal::read_done;

const method_ident_untyped I_MutableSequence_Generic::$set{"set"};
const method_ident_untyped I_MutableSequence_Generic::$append{"append"};
const method_ident_untyped I_MutableSequence_Generic::$appendAt{"appendAt"};
const method_ident_untyped I_MutableSequence_Generic::$extend{"extend"};
const method_ident_untyped I_MutableSequence_Generic::$pop{"pop"};
const method_ident_untyped I_MutableSequence_Generic::$removeAt{"removeAt"};
const method_ident_untyped I_MutableSequence_Generic::$removeOne{"removeOne"};
const method_ident_untyped I_MutableSequence_Generic::$clear{"clear"};

Any I_MutableSequence_Generic::set(const Any& index, const Any& item) const {
    if (is_native(*this, Kind::List))
        return internal::native_list::set(unchecked<List_Generic>(*this), index, item);
    return read_done(callMethod($set, {index, item}));
}

Any I_MutableSequence_Generic::append(const Any& item) const {
    if (is_native(*this, Kind::List))
        return internal::native_list::append(unchecked<List_Generic>(*this), item);
    return read_done(callMethod($append, {item}));
}

Any I_MutableSequence_Generic::appendAt(const Any& index, const Any& item) const {
    return read_done(callMethod($appendAt, {index, item}));
}

Any I_MutableSequence_Generic::extend(const Any& items) const { return read_done(callMethod($extend, {items})); }

Any I_MutableSequence_Generic::pop(const Any& index) const { return callMethod($pop, {index}); }

Any I_MutableSequence_Generic::removeAt(const Any& index, std::int64_t count) const {
    return read_done(callMethod($removeAt, {index, count}));
}

Any I_MutableSequence_Generic::removeOne(const Any& item) const {
    return internal::read_result<Boolean>(callMethod($removeOne, {item})).toAny();
}

Any I_MutableSequence_Generic::clear() const { return read_done(callMethod($clear)); }

Result<I_MutableSequence_Generic> I_MutableSequence_Generic::cast(const Any& value) {
    if (value.is(Kind::List))
        return unchecked<I_MutableSequence_Generic>(value);
    return internal::cast_handle<I_MutableSequence_Generic>(value);
}

Class_Generic I_MutableSequence_Generic::genericInstance(const Type& item) {
    return internal::generic_instance(getClass(), item);
}

const Class_Generic& I_MutableSequence_Generic::getClass() {
    static const Class_Generic& cls = *new Class_Generic(internal::generic_class(
        "I_MutableSequence", {I_Sequence_Generic::getClass()},
        [](internal::object_value_class* instance, std::span<const Type> parameters) {
            instance->add_parent_unsafe(I_Sequence_Generic::genericInstance(parameters.front()));
        }));
    return cls;
}

Type I_MutableSequence_Generic::getType() { return Type(getClass()); }

namespace internal {

namespace {

using Sequence = I_MutableSequence_Generic;

Any appendAtEnd(const Sequence& self, const Any& item) {
    const Result<Integer> length = self.length();
    return length ? self.appendAt(*length, item) : length.error();
}

/// The items are all fetched before the first is appended: what is appended may be the sequence itself, or another view
/// of what it stands for, and would then never end.
Any extendByAppend(const Sequence& self, const Any& items) {
    const Result<std::vector<Any>> all = collect_items(items);
    if (!all)
        return all.error();
    for (const Any& item : *all)
        if (const Any outcome = self.append(item); is_error_result(outcome))
            return outcome;
    return Any();
}

Any popByRemoveAt(const Sequence& self, const Any& index) {
    const Result<std::int64_t> wanted = read_index(index);
    if (!wanted)
        return wanted.error();
    const Result<Integer> length = self.length();
    if (!length)
        return length.error();
    const auto count = static_cast<std::size_t>(length->value() < 0 ? 0 : length->value());
    const std::optional<std::size_t> position = position_of(*wanted, count);
    if (!position)
        return index_out_of_range(index);
    const Any item = result_unwrap_lazy(self.at(*position));
    if (is_error_result(item))
        return item;
    const Any outcome = self.removeAt(*position);
    return is_error_result(outcome) ? outcome : item;
}

Any removeOneByIndex(const Sequence& self, const Any& item) {
    const Any index = self.indexOf(item);
    if (is_error_result(index))
        return index;
    if (index.asInteger() < 0)
        return false;
    const Any outcome = self.removeAt(index);
    return is_error_result(outcome) ? outcome : Any(true);
}

Any clearByRemoveAt(const Sequence& self) {
    const Result<Integer> length = self.length();
    if (!length)
        return length.error();
    return length->value() > 0 ? self.removeAt(0, length->value()) : Any();
}

}  // namespace

void define_mutable_sequence_members() {
    extend_class(Sequence::getClass())
        .doc(
            "A sequence that can change. An implementation gives 'set', 'appendAt' and 'removeAt', beside 'at' and "
            "'length'.")
        .method(Sequence::$append, "item", &appendAtEnd, "Adds an item at the end.")
        .method(Sequence::$extend, "items", &extendByAppend, "Adds every item of an iterable at the end.")
        .method(Sequence::$pop, optional_method(Sequence::$pop, "index", {-1}, &popByRemoveAt,
                                                "Removes an item, the last unless another is asked for, and answers "
                                                "it."))
        .method(Sequence::$removeOne, "item", &removeOneByIndex,
                "Removes the first equal item. Answers whether there was one.")
        .method(Sequence::$clear, "", &clearByRemoveAt, "Removes all items.")
        .build();
}

}  // namespace internal

}  // namespace ling
