#pragma once

#include <cstdint>

namespace ling {

/// What a value is made of. The numbers are part of the contract with language plug-ins and never change.
/// The none value has no kind: ask `Any::isNone()` first.
enum class Kind : std::uint8_t {
    Boolean = 0,
    ByteArray = 1,
    Float = 2,
    Function = 3,
    Map = 4,
    Set = 5,
    Integer = 6,
    List = 7,
    Object = 8,
    String = 9,
    Tuple = 10,
    Boxed = 11,
    External = 12,
    Lazy = 13,
    Weak = 14,
    Undefined = 15,
};

}  // namespace ling
