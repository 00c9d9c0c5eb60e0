#pragma once

#include "ling/identifier.h"
#include "ling/native_function.h"

#include <initializer_list>
#include <string_view>
#include <utility>

namespace ling::internal {

/// A method whose last parameters may be left out: `defaults` are their values, in order.
template <class F>
FunctionCL_Generic optional_method(const method_ident_untyped& id, std::string_view names,
                                   std::initializer_list<Any> defaults, F&& code, std::string_view doc) {
    FunctionCL_Generic method = make_method(id.utf8(), names, std::forward<F>(code), doc);
    method.setParameterDefaults(defaults);
    return method;
}

}  // namespace ling::internal
