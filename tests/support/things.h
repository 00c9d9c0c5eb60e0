#pragma once

#include "support/python_test.h"

/// Defines the `ling` module "things" for tests, once per process: native classes and functions as an extension would
/// have them, seen by scripts under the name `things`.
///
///     Thing(name)     properties name (read and write), size (read-only), stock (refuses negative numbers);
///                     field mark (integers); methods greet(whom="you"), fail(), lazy(); operator `-`
///     Bare            a class without public members
///     Keeper(held)    property held; can be copied and pickled
///     Row             a sequence of three, which answers the position that it is asked for; operator `/`,
///                     class method make()
///     Odd             an immutable value with code and conversions, whose hash is -1
///     Refusal         an error class
///     add(a, b), refuse(text), later(value), weak(value), failing(count), same(value), rarities(), flawed()
void defineThings();

/// A test with that module, and with the module "puppets".
class ThingsTest : public PythonTest {
protected:
    ThingsTest();
};
