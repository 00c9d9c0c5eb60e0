#pragma once

#include "ling/any.h"

#include <atomic>
#include <cstdint>
#include <span>

/// Ways past a call, for what is done often.
///
/// A function may offer one (`object_value_function::offer`). Whoever looks a member up and finds that very function
/// may go the way instead of calling it: the outcome is the same, and what a call needs is saved. A class that
/// overrides the member, an object that carries one of its own, a class that is changed: each has another function
/// there, which offers nothing.
///
/// No lock of the runtime is held on the way. `self` is the caller's, who may lose it while foreign code runs: a way
/// that runs any holds a reference of its own.
namespace ling::internal {

/// What functions offer. Lives for ever.
class LING_EXPORT short_way {
protected:
    short_way() = default;
    short_way(const short_way&) = default;
    short_way& operator=(const short_way&) = default;
    virtual ~short_way();
};

/// What came of a step of an iteration.
enum class Step : std::uint8_t {
    Item,  ///< There is one, and no failure beside it.
    End,   ///< There are no more.
    Ask,   ///< Nothing was done: somebody else has to be asked.
};

/// Offered by both the method `$at` and the getter of `$$length` of a class of sequences.
class LING_EXPORT sequence_access : public short_way {
public:
    /// What `$at` answers.
    virtual Any at(const Any& self, const Any& index) const = 0;
    /// What `$$length` answers.
    virtual Any length(const Any& self) const = 0;
    /// The next step of an iteration by position. `next` is the position; it is counted under a lock of the language's,
    /// so that several threads may step one iteration.
    virtual Step step(const Any& self, std::atomic<std::int64_t>& next, Any& item) const = 0;
    /// Takes the next position for whoever asks for its item himself.
    virtual std::int64_t claim(std::atomic<std::int64_t>& next) const = 0;
};

/// Offered by both the methods `$get` and `$contains` of a class of maps.
class LING_EXPORT map_access : public short_way {
public:
    /// What `$get` answers.
    virtual Any get(const Any& self, const Any& key, const Any& fallback) const = 0;
};

/// Offered by a method `$__method__` or `$__property__` that answers what is registered in the runtime before anything
/// else: what is found there needs no question to it.
class LING_EXPORT member_source : public short_way {
public:
    /// Calls a method that only the language has, with the receiver that is its own business. False, with nothing done
    /// that anybody could see, where the method has to be asked for.
    virtual bool callMethod(const Any& self, const method_ident_untyped& id, std::span<const Any> arguments,
                            Any& result) const = 0;
};

/// What the functions of a class offer, as its tables have it.
struct offered_ways {
    const sequence_access* sequence = nullptr;
    const map_access* map = nullptr;
    const member_source* methods = nullptr;
    const member_source* properties = nullptr;
};

}  // namespace ling::internal
