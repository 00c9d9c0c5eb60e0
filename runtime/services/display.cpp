#include "ling/comparison.h"

#include "services/display_run.h"

namespace ling {

String display(const Any& value) {
    if (value.is(Kind::String) && value.object()->ownClass() == nullptr)
        return unchecked<String>(value);
    return internal::display_run().text(value);
}

String internal::brief(const Any& value) {
    if (value.is(Kind::String) && unchecked<String>(value).length() <= kLongestInMessage)
        return unchecked<String>(value);
    return display_run(kLongestInMessage).text(value);
}

}  // namespace ling
