#include "host/boxed_object.h"

#include "ling/basic_values.h"

namespace ling::python {

// The initialisers here and in Boxed run no Python, so a plain static is safe with the interpreter lock held.
const ling::Type& boxedObjectOption() {
    static const ling::Type& type =
        *new ling::Type(ling::internal::type_unite(BoxedObject::getType(), ling::None::getType()));
    return type;
}

ling::Any assignBoxedObject(const BoxedObject& target, const ling::Any& source) {
    return static_cast<ling::internal::object_value_boxed*>(target.object())->assign(source);
}

PyObject* boxedObject(const ling::Any& value) {
    if (ling::internal::cast_object(value, BoxedObject::getClass()) == nullptr)
        return nullptr;
    return ling::unchecked<BoxedObject>(value).value();
}

}  // namespace ling::python
