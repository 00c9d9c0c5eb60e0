#include "host/text_round.h"

#include "host/platform.h"

namespace ling::python {

namespace {

thread_local constinit int rounds = 0;

}  // namespace

TextRound::TextRound() noexcept { ++rounds; }
TextRound::~TextRound() { --rounds; }

void TextRound::noteRecursion() const noexcept {
    if (rounds > 1)
        platform::WalkCheck::noteTooDeep();
}

}  // namespace ling::python
