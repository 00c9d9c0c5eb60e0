#include "services/class_answer.h"

#include "ling/decimal.h"
#include "ling/error.h"
#include "ling/stack_room.h"
#include "ling/string.h"
#include "ling/walk_check.h"

namespace ling::internal {

namespace {

/// Slices and decimals are objects by their making, but their content is as native as that of any other text or number.
bool hasNativeClass(const object_value* object) {
    const object_value_class* own = object->ownClass();
    return own == nullptr || own == String::getClass().record() || own == Decimal::getClass().record();
}

bool standsForAnother(const Any& value) noexcept {
    if (!value.isHeap())
        return false;
    const Kind kind = value.kind();
    return kind == Kind::Lazy || kind == Kind::External || kind == Kind::Weak;
}

}  // namespace

found_member class_answer(const Any& value, const method_ident_untyped& id) {
    const object_value* object = value.object();
    if (object == nullptr || hasNativeClass(object))
        return {};
    const found_member found = object->ownClass()->findMethod(id);
    return found.classLevel ? found_member{} : found;
}

Any ask_class(const found_member& method, std::initializer_list<Any> arguments) {
    if (!has_stack_room()) {
        walk_check::noteTooDeep();
        return Any();
    }
    return call_class(method, arguments);
}

Any call_class(const found_member& method, std::initializer_list<Any> arguments) {
    const Any kept = Any::share(method.member);  // The class may be changed while its method runs.
    return result_unwrap_lazy(kept.object()->invoke({arguments.begin(), arguments.size()}));
}

resolved_value::resolved_value(const Any& value) : value_(&value) {
    if (!standsForAnother(value))
        return;
    made_ = unwrap(value);
    value_ = &made_;
}

}  // namespace ling::internal
