#pragma once

namespace ling::internal {

/// Give the interfaces their documentation and their default members, once all native classes exist.
void define_iterable_members();
void define_sequence_members();
void define_mutable_sequence_members();
void define_map_interface_members();
void define_set_interface_members();
void define_small_interface_members();

}  // namespace ling::internal
