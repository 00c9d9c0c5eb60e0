#pragma once

#include "ling/blocking.h"
#include "ling/error.h"
#include "ling/hash_containers.h"
#include "ling/indirect_values.h"
#include "ling/interruption.h"
#include "ling/list.h"
#include "ling/module.h"
#include "ling/native_function.h"
#include "ling/short_ways.h"
#include "ling/shown_values.h"
#include "ling/walk_check.h"

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// What the plug-in needs of the runtime beyond the names that every host's runtime has, in one place.
///
/// A host's own runtime is to take the place of the one this plug-in was built with. The port begins here: each line
/// says in one expression what has to be found again over there. Nothing else of the plug-in knows how these are done.
///
/// Classes that the plug-in derives from, and what inline functions of the runtime's headers leave to the linker, are
/// no expressions: `platform_names.txt` beside this header lists every name, and says of these too what they must do.
namespace ling::python::platform {

/// An error result with a text of ours.
inline ling::Any failure(const ling::String& message) { return ling::Error(message, true); }

/// What an error remembers of where it came from, besides what the common names have: a value, or none. Nothing but
/// this plug-in and those who ask for the reason of an error look at it.
inline void rememberOrigin(const ling::Error& error, const ling::Any& origin) { error.setOrigin(origin); }
inline ling::Any originOf(const ling::Error& error) { return error.origin(); }

/// The exception that is being handled as an error result. For `catch (...)` alone.
inline ling::Any errorOfException() { return ling::internal::error_of_exception(); }
/// What `operation` answers, or the error that stands for what it threw.
template <class Operation>
ling::Any contain(Operation&& operation) {
    return ling::internal::contain(std::forward<Operation>(operation));
}

/// The text in the wide form that `PyConfig` takes.
inline std::wstring wideText(const ling::String& text) { return text.toWide(); }
/// Whether bytes are UTF-8.
inline bool isText(std::string_view bytes) { return ling::String::isWellFormedUTF8(bytes); }
/// Where the last `unit` stands in `text`, or -1.
inline std::int64_t lastIndexOf(const ling::String& text, char16_t unit) { return text.lastIndexOf({&unit, 1}); }

/// The items of a list as they are now.
inline std::vector<ling::Any> itemsOf(const ling::List_Generic& list) { return list.copyItems(); }

/// A new map with `entries` in it, in this order.
inline ling::Map_Generic makeMap(std::initializer_list<std::pair<ling::Any, ling::Any>> entries = {}) {
    return ling::Map_Generic(std::span<const std::pair<ling::Any, ling::Any>>(entries.begin(), entries.size()));
}

/// What a native map and a native set hold now, in order of insertion.
inline std::vector<std::pair<ling::Any, ling::Any>> pairsOf(const ling::Any& map) {
    return static_cast<const ling::internal::object_value_hash_map*>(map.object())->copy_and_load_pairs();
}
inline std::vector<ling::Any> itemsOfSet(const ling::Any& set) {
    return static_cast<const ling::internal::object_value_hash_set*>(set.object())->copy_items();
}

/// A new map with what is in `map` now, in the same order.
inline ling::Map_Generic copyOf(const ling::Map_Generic& map) { return ling::Map_Generic(pairsOf(map)); }

/// A function from native code; `names` lists its parameters, separated by commas.
template <class Code>
ling::FunctionCL_Generic makeFunction(std::string_view name, std::string_view names, Code&& code,
                                      std::string_view doc = {}) {
    return ling::make_function(name, names, std::forward<Code>(code), doc);
}

/// Ways past a call, for speed alone: a runtime that knows none of them calls the functions. What the plug-in offers
/// are the items of sequences (`at`, `length`, a step of an iteration), the values of maps, and the methods that Python
/// alone has.
using ItemWays = ling::internal::sequence_access;
using ValueWays = ling::internal::map_access;
using MethodWays = ling::internal::member_source;
using ling::internal::Step;
inline ling::FunctionCL_Generic offering(ling::FunctionCL_Generic function, const ling::internal::short_way& way) {
    function.record()->offer(way);
    return function;
}

/// The host's modules without a dot in their names, and those that have to be asked whether their members are bound by
/// bare name. Neither takes longer for the modules below.
inline std::vector<ling::Module> topLevelModules() { return ling::top_level_modules(); }
inline std::vector<ling::Module> bindingModules() { return ling::binding_modules(); }
/// A number that changes whenever a module comes to the first of these.
inline std::uint64_t moduleTreeVersion() { return ling::module_tree_version(); }

/// Puts a module that we made into the host's tree, under its own name. None, or an error result.
inline ling::Any registerModule(const ling::Module& module) { return ling::internal::register_module(module); }

/// A value as a message has room for it.
using ling::internal::brief;
/// A name to look a member up by, which leaves nothing behind when nobody declared it.
using LookupName = ling::internal::lookup_name;
/// What is being shown on this thread, in whatever language: it is not shown again inside itself.
using ShownScope = ling::internal::shown_scope;
/// Watches walks through values: comparisons, hashes, texts. All that are under way on this thread end at once when the
/// stack is used up or the program is to stop.
using WalkCheck = ling::internal::walk_check;
/// Whether to stop, asked at each step of a walk or a long loop of native code.
using InterruptionPoll = ling::internal::interruption_poll;
inline ling::Any interruptedError() { return ling::internal::interrupted_error(); }
/// Sets what native code at work asks from time to time, with nothing locked and nothing half done: whether it should
/// end.
inline void setInterruptionCheck(ling::internal::interruption_check check) noexcept {
    ling::internal::set_interruption_check(check);
}

/// Tells that what fails now may succeed later: its error is no value to be kept.
inline void notePassingFailure() noexcept { ling::internal::note_passing_failure(); }

/// Native code may be marked as blocking: around it the runtime calls the two functions of the lock, once for each run
/// of the code, on its thread. A runtime without such marks keeps the lock held throughout.
using GuestLock = ling::internal::guest_lock;
inline void addGuestLock(const GuestLock& lock) { (void)ling::internal::add_guest_lock(lock); }

/// One line for the host's log, about something that went wrong where nobody waits for a result.
inline void report(const ling::String& line) { ling::internal::assertion_log(line); }

}  // namespace ling::python::platform
