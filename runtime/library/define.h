#pragma once

namespace ling::internal {

/// Give the native classes of this room, and those of the values, their members, once all native classes exist.
void define_string_members();
void define_byte_array_members();
void define_number_members();
void define_decimal_members();
void define_date_time_members();
void define_list_members();
void define_tuple_members();
void define_map_members();
void define_set_members();
void define_error_members();
void define_indirect_value_members();
void define_boxed_members();

}  // namespace ling::internal
