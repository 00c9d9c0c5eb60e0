#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

namespace ling::internal {

/// The storage of a native container, shared with those who iterate it.
///
/// The container and its snapshots each own a reference. Items up to the count that a snapshot saw stay as they are for
/// as long as it lives: the container writes to a shared buffer only behind them, and moves to a buffer of its own for
/// every other change. `T` may be moved by copying its bytes, as values may.
///
/// `count` belongs to the container and is guarded by the container's guard. The last owner destroys the items, which
/// can run any code.
template <class T>
class counted_buffer {
public:
    static counted_buffer* make(std::size_t capacity) {
        void* memory = ::operator new(kHeader + capacity * sizeof(T));
        return new (memory) counted_buffer(capacity);
    }

    T* items() noexcept { return reinterpret_cast<T*>(reinterpret_cast<unsigned char*>(this) + kHeader); }
    std::size_t capacity() const noexcept { return capacity_; }
    /// Sees what other owners did before they let go, once it answers false.
    bool isShared() const noexcept { return references_.load(std::memory_order_acquire) != 1; }

    void retain() noexcept { references_.fetch_add(1, std::memory_order_relaxed); }
    void release() noexcept {
        if (references_.fetch_sub(1, std::memory_order_acq_rel) != 1)
            return;
        std::destroy_n(items(), count);
        this->~counted_buffer();
        ::operator delete(this);
    }

    std::size_t count = 0;

private:
    static constexpr std::size_t kHeader = 32;
    static_assert(alignof(T) <= kHeader);

    explicit counted_buffer(std::size_t capacity) noexcept : capacity_(capacity) {}

    const std::size_t capacity_;
    std::atomic<std::uint32_t> references_{1};
};

/// One owned reference to a buffer, or none.
template <class T>
class buffer_ref {
public:
    buffer_ref() noexcept = default;
    static buffer_ref adopt(counted_buffer<T>* buffer) noexcept {
        buffer_ref result;
        result.buffer_ = buffer;
        return result;
    }
    static buffer_ref make(std::size_t capacity) { return adopt(counted_buffer<T>::make(capacity)); }
    buffer_ref(const buffer_ref& other) noexcept : buffer_(other.buffer_) {
        if (buffer_ != nullptr)
            buffer_->retain();
    }
    buffer_ref(buffer_ref&& other) noexcept : buffer_(std::exchange(other.buffer_, nullptr)) {}
    buffer_ref& operator=(buffer_ref other) noexcept {
        swap(other);
        return *this;
    }
    ~buffer_ref() {
        if (buffer_ != nullptr)
            buffer_->release();
    }
    void swap(buffer_ref& other) noexcept { std::swap(buffer_, other.buffer_); }

    explicit operator bool() const noexcept { return buffer_ != nullptr; }
    counted_buffer<T>* operator->() const noexcept { return buffer_; }
    T* items() const noexcept { return buffer_ == nullptr ? nullptr : buffer_->items(); }
    std::size_t count() const noexcept { return buffer_ == nullptr ? 0 : buffer_->count; }
    std::size_t capacity() const noexcept { return buffer_ == nullptr ? 0 : buffer_->capacity(); }

private:
    counted_buffer<T>* buffer_ = nullptr;
};

constexpr std::size_t kSmallestCapacity = 8;

/// The capacity to get for `count` items when more are expected: not so much that it is wasted, and enough that adding
/// one by one costs the same for each.
inline std::size_t grown_capacity(std::size_t count) noexcept { return std::max(kSmallestCapacity, count + count / 2); }

/// Moves items by their bytes; the places they come from are then raw memory. The two ranges may overlap.
template <class T>
void relocate(T* to, T* from, std::size_t count) noexcept {
    if (count != 0)
        std::memmove(static_cast<void*>(to), static_cast<const void*>(from), count * sizeof(T));
}

}  // namespace ling::internal
