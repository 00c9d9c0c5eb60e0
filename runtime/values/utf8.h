#pragma once

#include <cstddef>
#include <string_view>

/// Text between UTF-8 and UTF-16. What is ill-formed is replaced: each maximal ill-formed subsequence of UTF-8 and each
/// lone surrogate of UTF-16 becomes one U+FFFD. Runs of ASCII go sixteen characters at a time.

namespace ling::internal {

/// Writes the text as UTF-16 and answers how many units that are: never more than the bytes of the text.
std::size_t utf8_to_utf16(std::string_view utf8, char16_t* to) noexcept;

/// Writes one unit for each byte.
void widen_latin1(std::string_view latin1, char16_t* to) noexcept;

/// Copies the ASCII characters at the beginning, up to the first other one, and answers how many there were.
std::size_t narrow_ascii(std::u16string_view units, char* to) noexcept;
/// How many bytes the text takes in UTF-8, and writing them.
std::size_t utf8_length(std::u16string_view units) noexcept;
void utf16_to_utf8(std::u16string_view units, char* to) noexcept;

/// What reading a character answers where there is none.
inline constexpr char32_t kIllFormed = 0xFFFFFFFF;
inline constexpr char32_t kReplacement = 0xFFFD;

/// Reads one character of a text that is not at its end, and steps over it. A lone surrogate is ill-formed.
char32_t read_utf16(const char16_t*& at, const char16_t* end) noexcept;

bool is_well_formed_utf8(std::string_view utf8) noexcept;
bool is_well_formed_utf16(std::u16string_view units) noexcept;

}  // namespace ling::internal
