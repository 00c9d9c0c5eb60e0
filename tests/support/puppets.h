#pragma once

/// Defines the `ling` module "puppets" for tests, once per process: native objects whose every answer is that of a
/// Python function, so that a script can make them as hostile as it likes. An exception that the function raises is the
/// error result of the member.
///
///     Puppet(answer), Sequence(answer), Map(answer), Iterable(answer), Iterator(answer)
///
/// Each asks `answer(name, *arguments)` for its properties `length` and `value`, for its methods `at`, `set`,
/// `removeAt`, `get`, `remove`, `contains`, `iter`, `next`, `act`, and for `__compare__`, `__hash__`, `__display__`,
/// `__sub__` and `__iadd__`. An `Iterator` has `next` alone of what makes it one.
///
///     bare(interface, members, answer)   an object of that interface with nothing but these members: names of
///                      properties, and of methods with a slash and the number of their parameters ("length at/1")
///     late(action)     a tuple with a lazy value in it that calls `action` when it is needed
///     thrice(action)   calls `action` three times and answers what it answered last
void definePuppets();
