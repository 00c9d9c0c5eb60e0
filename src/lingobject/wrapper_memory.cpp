#include "lingobject/wrapper_memory.h"

#include <new>

namespace ling::python {

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kMostSpare = 0;
#else
constexpr int kMostSpare = 64;
#endif

/// A block that nobody uses.
struct SpareBlock {
    SpareBlock* next;
};

constinit SpareBlock* firstSpare = nullptr;
constinit int spareCount = 0;

}  // namespace

WrapperBlock* newWrapper(const ClassFacts& facts) {
    void* memory = firstSpare;
    if (memory != nullptr) {
        firstSpare = firstSpare->next;
        --spareCount;
    } else if ((memory = PyObject_Malloc(sizeof(WrapperBlock))) == nullptr) {
        (void)PyErr_NoMemory();
        return nullptr;
    }
    auto* block = static_cast<WrapperBlock*>(memory);
    (void)PyObject_Init(&block->instance.ob_base, facts.type());
    block->facts = &facts;
    return block;
}

void freeWrapper(WrapperBlock* block) noexcept {
    if (spareCount >= kMostSpare) {
        PyObject_Free(block);
        return;
    }
    firstSpare = new (block) SpareBlock{firstSpare};
    ++spareCount;
}

}  // namespace ling::python
