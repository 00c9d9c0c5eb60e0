#include "language/variables.h"

#include "bridge/convert.h"
#include "bridge/text.h"
#include "host/platform.h"
#include "host/py_ref.h"
#include "ling/failure_beside.h"
#include "ling/hash_containers.h"

namespace ling::python {

namespace {

ling::Any readInto(Variables& variables, const ling::I_Map_Generic& map, const ling::Any& key) {
    const ling::Result<ling::String> name = ling::String::cast(key);
    if (!name)
        return platform::failure(ling::String(u"Invalid variable name: {}.").arg(key));
    ling::Any value = ling::internal::answer_or_failure([&] { return map.get(key); });
    if (ling::internal::is_error_result(value))
        return value;
    variables.names.push_back(*name);
    variables.values.push_back(std::move(value));
    return {};
}

/// An empty map of the runtime's own needs no list of its keys.
bool isPlainlyEmpty(const ling::Any& map) {
    return map.is(ling::Kind::Map) && map.object()->ownClass() == nullptr && map.object()->findExtras() == nullptr &&
           ling::unchecked<ling::Map_Generic>(map).size() == 0;
}

ling::Any readAll(Variables& variables, const ling::I_Map_Generic& map) {
    if (isPlainlyEmpty(map))
        return {};
    const ling::Any keys = ling::internal::answer_or_failure([&map] { return map.keys(); });
    if (ling::internal::is_error_result(keys))
        return keys;
    const ling::Result<ling::I_Iterable_Generic> iterable = ling::I_Iterable_Generic::cast(keys);
    if (!iterable)
        return iterable.error();
    ling::iteration each = iterable->beginImpl();
    while (each.advance()) {
        if (ling::Any problem = readInto(variables, map, each.item()); !problem.isNone())
            return problem;
    }
    return each.error();
}

}  // namespace

ling::Result<Variables> readVariables(const ling::I_Map_Generic& map) {
    Variables variables;
    if (ling::Any problem = readAll(variables, map); !problem.isNone())
        return ling::Result<Variables>::failure(std::move(problem));
    return variables;
}

ling::Any bindVariable(PyObject* target, const ling::String& name, const ling::Any& value) {
    PyRef object = PyRef::steal(toPython(value));
    PyRef key = PyRef::steal(object ? textToPython(name) : nullptr);
    if (key && PyDict_SetItem(target, key.get(), object.get()) == 0)
        return {};
    const ling::Any error = takePythonError();
    return error.isNone() ? platform::failure(ling::String(u"Unable to convert a value: {}.").arg(value)) : error;
}

ling::Any bindVariables(PyObject* target, const Variables& variables) {
    for (std::size_t i = 0; i < variables.names.size(); ++i) {
        if (ling::Any problem = bindVariable(target, variables.names[i], variables.values[i]); !problem.isNone())
            return problem;
    }
    return {};
}

}  // namespace ling::python
