#include "interfaces/native_iterator.h"

#include "ling/error.h"
#include "ling/interfaces.h"

namespace ling::internal {

namespace {

/// An instance is always one that the runtime made: the class makes none when it is called.
Class_Generic makeIteratorClass() {
    Class_Generic cls = native_class("Iterator", {I_Iterator_Generic::getClass(), I_RuntimeOnly::getClass()});
    cls.record()->set_interface_unsafe();
    return cls;
}

}  // namespace

const Class_Generic& native_iterator_class() {
    static const Class_Generic& cls = *new Class_Generic(makeIteratorClass());
    return cls;
}

Any native_iterator::next() {
    Any item;
    if (!step(item))
        return StopIteration();
    return item;
}

}  // namespace ling::internal
