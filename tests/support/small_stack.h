#pragma once

#include <pthread.h>

#include <cstddef>
#include <functional>

#ifdef __SANITIZE_THREAD__
constexpr std::size_t kSmallStack = 2048 * 1024;  // The checker has data of its own there.
#else
constexpr std::size_t kSmallStack = 512 * 1024;
#endif

/// Runs `work` on a thread with a small stack, as hosts give their helper threads.
inline void onSmallStack(std::function<void()> work) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, kSmallStack);
    pthread_t thread;
    pthread_create(
        &thread, &attributes,
        [](void* given) -> void* {
            (*static_cast<std::function<void()>*>(given))();
            return nullptr;
        },
        &work);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}
