#include "interfaces/define.h"
#include "library/define.h"
#include "ling/any.h"
#include "ling/module.h"
#include "model/define.h"
#include "services/define.h"

#include <cstdio>
#include <cstdlib>

/// The start of the runtime: an initialiser of its library, which runs when the library is loaded and so before any
/// code of a user. It gives the native classes their members. The classes themselves make themselves on first use.
///
/// The identifiers of the members are initialised by the sources that own them, in the order in which the library is
/// linked. This source is the last one there.

namespace ling::internal {

namespace {

/// Nothing would work in a library that was linked in another order.
void requireLastPlace() {
    const identifier* const samples[] = {&Any::$__compare__, &Module::$$bindMembers};
    for (const identifier* sample : samples)
        if (sample->data() == nullptr) {
            std::fputs("ling: the runtime's start is not the last source of its library\n", stderr);
            std::abort();
        }
}

void defineMembers() {
    define_class_members();
    define_function_members();
    define_property_members();

    define_iterable_members();
    define_sequence_members();
    define_mutable_sequence_members();
    define_map_interface_members();
    define_set_interface_members();
    define_small_interface_members();

    define_string_members();
    define_byte_array_members();
    define_number_members();
    define_decimal_members();
    define_date_time_members();
    define_list_members();
    define_tuple_members();
    define_map_members();
    define_set_members();
    define_error_members();
    define_indirect_value_members();
    define_boxed_members();

    define_module_members();
}

const bool isStarted = [] {
    requireLastPlace();
    name_native_classes();
    defineMembers();
    define_ling_module();
    return true;
}();

}  // namespace

}  // namespace ling::internal
