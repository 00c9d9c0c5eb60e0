#include "ling/shown_values.h"

#include <memory>
#include <unordered_set>
#include <utility>

namespace ling::internal {

namespace {

/// Made for the outermost value and gone after it, so that nothing is left to be taken down when the thread ends.
thread_local constinit std::unordered_set<const object_value*>* shown = nullptr;

}  // namespace

shown_scope::shown_scope(const object_value* object) : object_(object) {
    auto first = shown == nullptr ? std::make_unique<std::unordered_set<const object_value*>>() : nullptr;
    if (!(first ? *first : *shown).insert(object).second)
        object_ = nullptr;
    if (first)
        shown = first.release();
}

shown_scope::~shown_scope() {
    if (object_ == nullptr)
        return;
    shown->erase(object_);
    if (shown->empty())
        delete std::exchange(shown, nullptr);
}

}  // namespace ling::internal
