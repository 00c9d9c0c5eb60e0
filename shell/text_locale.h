#pragma once

namespace ling::shell {

/// Takes the user's locale for text, which decides how the terminal and the files of programs are read. Where it is
/// the plain "C" locale, a locale of the same kind that knows all text takes its place, here and, unless `LC_ALL`
/// rules it out, in the processes that programs start.
void useTextLocale();

}  // namespace ling::shell
