#pragma once

#include "ling/list.h"
#include "ling/module.h"

/// How the small extensions of the tests tell what of them ran, and when: each call appends a line to the list that the
/// test has put into the module "extension_log". An extension shares nothing else with the test.
inline void logCall(const char* line) {
    const ling::Any log = ling::find_module(u"extension_log").propertyValue(ling::property_ident_untyped("lines"));
    if (ling::Result<ling::List_Generic> lines = ling::List_Generic::cast(log))
        lines->append(ling::String(line));
}
