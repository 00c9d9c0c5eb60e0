#include "library/repetition.h"

#include "interfaces/collect.h"
#include "interfaces/index.h"
#include "ling/error.h"
#include "ling/string.h"

namespace ling::internal {

namespace {

/// Enough for everything that fits in memory, and little enough for positions and sizes in bytes not to overflow.
constexpr std::size_t kLongest = std::size_t{1} << 40;

Result<std::vector<Any>> tooLong(std::size_t length, const Any& count) {
    return Result<std::vector<Any>>::failure(
        failure(String(u"The result would be too long: {} items, {} times.").arg(length, count)));
}

}  // namespace

Result<std::vector<Any>> repeat_items(std::span<const Any> items, const Any& count, std::int64_t present) {
    const Result<std::int64_t> wanted = read_index(count);
    if (!wanted)
        return Result<std::vector<Any>>::failure(wanted.error());
    std::vector<Any> result;
    if (*wanted <= present || items.empty())
        return result;
    const auto times = static_cast<std::size_t>(*wanted - present);
    if (times > kLongest / items.size())
        return tooLong(items.size(), count);
    result.reserve(items.size() * times);
    for (std::size_t i = 0; i < times; ++i)
        result.insert(result.end(), items.begin(), items.end());
    return result;
}

Result<std::vector<Any>> join_items(std::span<const Any> items, const Any& more) {
    Result<std::vector<Any>> added = collect_items(more);
    if (!added)
        return added;
    std::vector<Any> result;
    result.reserve(items.size() + added->size());
    result.assign(items.begin(), items.end());
    result.insert(result.end(), std::make_move_iterator(added->begin()), std::make_move_iterator(added->end()));
    return result;
}

}  // namespace ling::internal
