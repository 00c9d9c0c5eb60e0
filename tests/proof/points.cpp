#ifndef LING_FUZZING  // The checker's own allocator stays there.

#include "proof/points.h"

#include <Python.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace proof::points {

namespace {

thread_local bool counting = false;
thread_local bool oursAlone = false;
thread_local long made = 0;
thread_local long failing = 0;
std::atomic<long> live{0};

/// Whether this allocation is the one.
bool isDue() noexcept { return counting && ++made == failing; }
bool isDueInPython() noexcept { return !oursAlone && isDue(); }

template <class Pointer>
Pointer* counted(Pointer* block) noexcept {
    if (block != nullptr)
        live.fetch_add(1, std::memory_order_relaxed);
    return block;
}

PyMemAllocatorEx original[3];

PyMemAllocatorEx& under(void* context) noexcept { return *static_cast<PyMemAllocatorEx*>(context); }

void* allocate(void* context, size_t size) {
    return isDueInPython() ? nullptr : counted(under(context).malloc(under(context).ctx, size));
}

void* allocateZeroed(void* context, size_t count, size_t size) {
    return isDueInPython() ? nullptr : counted(under(context).calloc(under(context).ctx, count, size));
}

void* reallocate(void* context, void* block, size_t size) {
    if (isDueInPython())
        return nullptr;
    void* moved = under(context).realloc(under(context).ctx, block, size);
    return block == nullptr ? counted(moved) : moved;
}

void release(void* context, void* block) {
    if (block != nullptr)
        live.fetch_sub(1, std::memory_order_relaxed);
    under(context).free(under(context).ctx, block);
}

}  // namespace

void watchPython() {
    constexpr PyMemAllocatorDomain domains[] = {PYMEM_DOMAIN_RAW, PYMEM_DOMAIN_MEM, PYMEM_DOMAIN_OBJ};
    for (std::size_t i = 0; i < std::size(domains); ++i) {
        PyMem_GetAllocator(domains[i], &original[i]);
        PyMemAllocatorEx watching = {&original[i], allocate, allocateZeroed, reallocate, release};
        PyMem_SetAllocator(domains[i], &watching);
    }
}

void failAt(long nth, bool oursOnly) noexcept {
    made = 0;
    oursAlone = oursOnly;
    failing = nth;
    counting = true;
}

long stop() noexcept {
    counting = false;
    return made;
}

long liveBlocks() noexcept { return live.load(std::memory_order_relaxed); }

}  // namespace proof::points

using proof::points::counted;
using proof::points::isDue;

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return isDue() ? nullptr : counted(std::malloc(size == 0 ? 1 : size));
}

void* operator new(std::size_t size) {
    if (void* block = operator new(size, std::nothrow))
        return block;
    throw std::bad_alloc();
}

void* operator new(std::size_t size, std::align_val_t alignment) {
    const std::size_t boundary = static_cast<std::size_t>(alignment);
    void* block =
        isDue() ? nullptr : counted(std::aligned_alloc(boundary, (size + boundary - 1) / boundary * boundary));
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}

void operator delete(void* block) noexcept {
    if (block != nullptr)
        proof::points::live.fetch_sub(1, std::memory_order_relaxed);
    std::free(block);
}

// The other forms come back to these: those of arrays by the library's own definitions.
void operator delete(void* block, std::size_t) noexcept { operator delete(block); }
void operator delete(void* block, std::align_val_t) noexcept { operator delete(block); }
void operator delete(void* block, std::size_t, std::align_val_t) noexcept { operator delete(block); }

#endif
