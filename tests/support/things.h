#pragma once

/// Defines the `ling` module "things" for tests, once per process: native classes and functions as an extension would
/// have them, seen by scripts under the name `things`.
///
///     Thing(name)     properties name (read and write), size (read-only), stock (refuses negative numbers);
///                     field mark (integers); methods greet(whom="you"), fail(), lazy(); operators `-` and `/`
///     Bare            a class without public members
///     Keeper(held)    property held; can be copied and pickled
///     Row             a sequence of three, which answers the position that it is asked for
///     Refusal         an error class
///     add(a, b), refuse(text), later(value), weak(value), failing(count), same(value), rarities(), flawed()
void defineThings();
