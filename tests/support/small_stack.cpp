#include "support/small_stack.h"

#include <gtest/gtest.h>

#include <pthread.h>

void onSmallStack(const std::function<void()>& action) {
    constexpr std::size_t kSize = 512 * 1024;
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, kSize);
    const auto body = [](void* context) -> void* {
        (*static_cast<const std::function<void()>*>(context))();
        return nullptr;
    };
    pthread_t thread;
    const int problem = pthread_create(&thread, &attributes, body, const_cast<std::function<void()>*>(&action));
    pthread_attr_destroy(&attributes);
    ASSERT_EQ(problem, 0);
    pthread_join(thread, nullptr);
}
