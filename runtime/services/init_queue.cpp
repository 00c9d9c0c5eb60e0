#include "services/init_queue.h"

#include "ling/error.h"

#include <algorithm>

namespace ling {

namespace internal {

std::vector<queued_handler>& init_handlers_unsafe() {
    static std::vector<queued_handler>& queue = *new std::vector<queued_handler>;
    return queue;
}

void add_init_handler(InitLevel level, init_handler handler) {
    if (handler != nullptr)
        init_handlers_unsafe().emplace_back(level, handler);
}

String describe_exception() { return unchecked<Error>(error_of_exception()).message(); }

namespace {

/// Takes out the first handler of the lowest level.
init_handler takeNext(std::vector<queued_handler>& queue) {
    auto lowest =
        std::min_element(queue.begin(), queue.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    const init_handler handler = lowest->second;
    queue.erase(lowest);
    return handler;
}

}  // namespace

}  // namespace internal

std::vector<String> run_init_handlers() {
    std::vector<String> problems;
    // The queue may grow meanwhile: a handler may queue others, which have their turn by their level.
    while (!internal::init_handlers_unsafe().empty()) {
        const internal::init_handler handler = internal::takeNext(internal::init_handlers_unsafe());
        try {
            handler();
        } catch (...) {
            problems.push_back(internal::describe_exception());
        }
    }
    return problems;
}

}  // namespace ling
