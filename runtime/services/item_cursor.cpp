#include "services/item_cursor.h"

#include "interfaces/native_containers.h"

namespace ling::internal {

item_cursor::item_cursor(const Any& container) {
    if (container.is(Kind::Tuple)) {
        walked_ = container;
        rest_ = unchecked<Tuple_Generic>(walked_).items();
        return;
    }
    walked_ = native_list::iter(unchecked<List_Generic>(container));
    iterator_ = native_iterator_of(walked_);
}

bool item_cursor::next(Any& item) {
    if (iterator_ != nullptr)
        return iterator_->step(item);
    if (rest_.empty())
        return false;
    item = rest_.front();
    rest_ = rest_.subspan(1);
    return true;
}

}  // namespace ling::internal
