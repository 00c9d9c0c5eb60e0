#include "interfaces/index.h"

#include "ling/class.h"
#include "ling/error.h"
#include "ling/string.h"

namespace ling::internal {

Result<std::int64_t> read_index(const Any& index) {
    if (index.is(Kind::Integer))
        return index.asInteger();
    const Any resolved = result_unwrap_lazy(index);
    if (is_error_result(resolved))
        return Result<std::int64_t>::failure(resolved);
    if (resolved.is(Kind::Integer))
        return resolved.asInteger();
    return Result<std::int64_t>::failure(failure(
        String(u"An index must be an integer, not a value of class '{}'.").arg(qualname(raw_class_of(resolved)))));
}

Any index_out_of_range(const Any& index) { return failure(String(u"Index out of range: {}.").arg(index)); }

}  // namespace ling::internal
