#pragma once

#include "ling/export.h"

#include <utility>

namespace ling::internal {

class object_value;

/// Notes that an object is being shown on this thread, for as long as it lives. One that is being shown already is met
/// inside itself, and shows as "..." there.
///
/// All that write values as text note it here, whatever they write and in whatever language: a container that holds
/// itself may come round again through objects of a guest, whose own text asks for the container's.
class LING_EXPORT shown_scope {
public:
    explicit shown_scope(const object_value* object);
    shown_scope(shown_scope&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    shown_scope& operator=(shown_scope&&) = delete;
    ~shown_scope();
    bool isNew() const noexcept { return object_ != nullptr; }

private:
    const object_value* object_;  // Null when somebody further out shows it.
};

}  // namespace ling::internal
