#include "values/string_value.h"

#include "values/content_hash.h"

#include <utility>

namespace ling::internal {

std::size_t hash_text(std::u16string_view text) noexcept {
    const std::size_t hash = hash_bytes(text.data(), text.size() * sizeof(char16_t));
    return hash == 0 ? 1 : hash;
}

namespace {

/// Two threads may both compute it; they store the same number.
std::size_t cachedHash(std::atomic<std::size_t>& cache, std::u16string_view text) noexcept {
    std::size_t hash = cache.load(std::memory_order_relaxed);
    if (hash == 0) {
        hash = hash_text(text);
        cache.store(hash, std::memory_order_relaxed);
    }
    return hash;
}

}  // namespace

object_value_string* object_value_string::make(std::size_t length, object_value_class* klass) {
    const trailing_units units{(length + 1) * sizeof(char16_t)};
    auto* made = new (units) object_value_string(length, klass);
    made->units()[length] = u'\0';
    return made;
}

object_value_string* object_value_string::empty() {
    static object_value_string* const shared = make(0);
    return shared;
}

std::size_t object_value_string::hash() const noexcept { return cachedHash(hash_, view()); }

object_value_string_slice::object_value_string_slice(String base, std::u16string_view piece)
    : object_value_object(String::getClass().record()), base_(std::move(base)), piece_(piece) {}

std::size_t object_value_string_slice::hash() const noexcept { return cachedHash(hash_, piece_); }

}  // namespace ling::internal
