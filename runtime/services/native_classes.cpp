#include "services/native_classes.h"

#include "ling/ling.h"

namespace ling::internal {

std::vector<Class_Generic> native_classes() {
    return {
        // Values.
        Any::getClass(),
        None::getClass(),
        Undefined::getClass(),
        Boolean::getClass(),
        Integer::getClass(),
        Float::getClass(),
        Decimal::getClass(),
        String::getClass(),
        ByteArray::getClass(),
        Date::getClass(),
        Time::getClass(),
        DateTime::getClass(),
        // Containers.
        List_Generic::getClass(),
        Tuple_Generic::getClass(),
        Map_Generic::getClass(),
        JsonObject::getClass(),
        Set_Generic::getClass(),
        // Errors, and values that stand for others.
        Error::getClass(),
        StopIteration::getClass(),
        Lazy_Generic::getClass(),
        External_Generic::getClass(),
        Weak_Generic::getClass(),
        Boxed_Generic::getClass(),
        // What describes the rest.
        Class_Generic::getClass(),
        FunctionCL_Generic::getClass(),
        Signature::getClass(),
        Parameter::getClass(),
        Property::getClass(),
        Type::getClass(),
        TypeVariable::getClass(),
        Module::getClass(),
        // Interfaces.
        I_Invokable_Generic::getClass(),
        I_Iterable_Generic::getClass(),
        I_Iterator_Generic::getClass(),
        I_Sequence_Generic::getClass(),
        I_MutableSequence_Generic::getClass(),
        I_Tuple_Generic::getClass(),
        I_Map_Generic::getClass(),
        I_MutableMap_Generic::getClass(),
        I_Set_Generic::getClass(),
        I_MutableSet_Generic::getClass(),
        I_Immutable::getClass(),
        I_RuntimeOnly::getClass(),
        I_HasDoc::getClass(),
        I_HasName::getClass(),
        I_HasCode::getClass(),
        I_Convertible::getClass(),
        I_Language::getClass(),
    };
}

}  // namespace ling::internal
