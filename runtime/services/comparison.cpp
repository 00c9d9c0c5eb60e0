#include "ling/comparison.h"

#include "ling/error.h"
#include "ling/walk_check.h"
#include "services/comparison_run.h"

namespace ling {

namespace {

bool isPlainText(const Any& value) noexcept { return value.is(Kind::String) && value.object()->ownClass() == nullptr; }

}  // namespace

std::int64_t compare_objects(const Any& a, const Any& b) {
    if (a.isSameAs(b))
        return 0;
    if (a.is(Kind::Integer) && b.is(Kind::Integer))
        return a.asInteger() < b.asInteger() ? -1 : 1;
    if (isPlainText(a) && isPlainText(b))
        return unchecked<String>(a).view().compare(unchecked<String>(b).view());
    const internal::walk_check check;
    return internal::comparison_run().compare(a, b);
}

Result<std::int64_t> try_compare(const Any& a, const Any& b) {
    const internal::walk_check check;
    const std::int64_t order = compare_objects(a, b);
    Any problem = check.problem();
    return problem.isNone() ? Result<std::int64_t>(order) : Result<std::int64_t>::failure(std::move(problem));
}

}  // namespace ling
