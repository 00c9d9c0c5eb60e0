#include "ling/comparison.h"

#include "ling/error.h"
#include "ling/walk_check.h"
#include "services/display_run.h"

namespace ling {

namespace {

String shown(const Any& value) {
    if (value.is(Kind::String) && value.object()->ownClass() == nullptr)
        return unchecked<String>(value);
    return internal::display_run().text(value);
}

}  // namespace

String display(const Any& value) {
    const internal::walk_check check;
    return shown(value);
}

Result<String> try_display(const Any& value) {
    const internal::walk_check check;
    String text = shown(value);
    Any problem = check.problem();
    return problem.isNone() ? Result<String>(std::move(text)) : Result<String>::failure(std::move(problem));
}

String internal::brief(const Any& value) {
    if (value.is(Kind::String) && unchecked<String>(value).length() <= kLongestInMessage)
        return unchecked<String>(value);
    const walk_check check;
    return display_run(kLongestInMessage).text(value);
}

}  // namespace ling
