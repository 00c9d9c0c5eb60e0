#pragma once

namespace ling::internal {

/// Gives the class `Module` its members, once all native classes exist.
void define_module_members();

/// Puts the native classes into the module "ling". Before that they have no qualified names.
void name_native_classes();
/// Publishes them there, with what is written about them, beside the reflective functions.
void define_ling_module();

}  // namespace ling::internal
