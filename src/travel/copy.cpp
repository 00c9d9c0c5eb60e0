#include "bridge/travel.h"
#include "host/platform.h"
#include "lingobject/instance.h"
#include "lingobject/slot_result.h"
#include "travel/contents.h"
#include "travel/form.h"

namespace ling::python {

namespace {

/// Puts into `copy` what `original` holds. None, or an error result.
ling::Any copyItems(const ling::Any& original, const ling::Any& copy) {
    ling::Any problem;
    if (original.is(ling::Kind::Map)) {
        for (const auto& [key, value] : platform::pairsOf(original))
            if (problem = setItem(copy, key, value); ling::internal::is_error_result(problem))
                return problem;
        return {};
    }
    for (const ling::Any& item : itemsIn(original))
        if (problem = addItem(copy, item); ling::internal::is_error_result(problem))
            return problem;
    return {};
}

ling::Any copyState(const ling::Any& original, const ling::Any& copy) {
    ling::Any state = stateOf(original);
    return ling::internal::is_error_result(state) ? state : restoreState(copy, state);
}

ling::Any copyOwnProperties(const ling::Any& original, const ling::Any& copy) {
    std::vector<std::pair<ling::String, ling::Any>> properties;
    ling::Any problem = readOwnProperties(original, properties);
    for (const auto& [name, value] : properties) {
        if (ling::internal::is_error_result(problem))
            return problem;
        problem = writeOwnProperty(copy, name, value);
    }
    return problem;
}

/// The copy, or an error result.
ling::Any makeCopy(const ling::Any& original, Form form) {
    ling::Any copy = makeEmptyLike(original);
    if (ling::internal::is_error_result(copy))
        return copy;
    ling::Any problem = form == Form::Container ? copyItems(original, copy) : copyState(original, copy);
    if (!ling::internal::is_error_result(problem))
        problem = copyOwnProperties(original, copy);
    return ling::internal::is_error_result(problem) ? problem : copy;
}

bool isUnchanging(const ling::Any& value) {
    return value.is(ling::Kind::Function) || ling::internal::is_instance<ling::Class_Generic>(value) ||
           ling::internal::is_instance<ling::Module>(value);
}

}  // namespace

PyObject* copyWrapper(PyObject* wrapper) {
    const Receiver receiver(wrapper);
    if (isUnchanging(*receiver))
        return Py_NewRef(wrapper);
    switch (const Form form = formOf(*receiver)) {
        case Form::Container:
        case Form::Object:
            return giveResult(makeCopy(*receiver, form));
        case Form::None:
            return raise(PyExc_TypeError, refusalOf(*receiver));
        default:
            return giveResult(*receiver);  // What a lazy value stands for.
    }
}

}  // namespace ling::python
