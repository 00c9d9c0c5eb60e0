#pragma once

#include <Python.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace ling::bench {

/// What an expert writes against CPython's C interface, without `ling`: the yardsticks' text, types and functions.

/// A host's text: counted in one block with its units, as a runtime would have it.
struct HandText {
    std::size_t count;
    std::size_t size;
    char16_t units[1];
};
struct FreeText {
    void operator()(HandText* text) const noexcept;
};
using HandTextRef = std::unique_ptr<HandText, FreeText>;

/// Text both ways, each in one pass over the source and one store of the result. Null where there is no such text.
HandTextRef textByHand(PyObject* unicode);
PyObject* textByHand(std::u16string_view units);

/// The texts that rows are measured with.
struct TextSample {
    const char* name;
    const char16_t* word;
    std::size_t size;

    std::u16string make() const;
};
inline constexpr TextSample kTextSamples[] = {{"1 KiB ASCII", u"a word and ", 1 << 10},
                                              {"1 MiB ASCII", u"a word and ", 1 << 20},
                                              {"1 KiB Cyrillic", u"\u0441\u043B\u043E\u0432\u043E ", 1 << 9}};

/// A 16-byte value, for what is collected into a container.
struct HandValue {
    std::uint64_t tag;
    std::int64_t payload;
};

/// Puts the hand-written functions, types and objects into the namespace that loops of Python run in: `hand_call0`,
/// `hand_block0`, `hand_add`, `hand_thing`, `hand_list`, `hand_take`, `hand_Thing`, `hand_fail`, `hand_takeText` and
/// `hand_giveText`.
void addByHand(PyObject* names, std::size_t listLength);
/// What `hand_giveText` gives.
void giveByHand(std::u16string_view units);

}  // namespace ling::bench
