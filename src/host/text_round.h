#pragma once

namespace ling::python {

/// Python is asked for the text of an object, for a text of ours that the object is part of.
///
/// What it answers may be made of texts of ours again, round after round. An object that cannot show itself has a fixed
/// outcome; but where round lies in round and the stack ends, it is the whole text that cannot be made.
class TextRound {
public:
    TextRound() noexcept;
    ~TextRound();
    TextRound(const TextRound&) = delete;
    TextRound& operator=(const TextRound&) = delete;

    /// Python answered with a `RecursionError`: ends all walks of this thread when this round lies in another. A single
    /// one may be the fault of the object alone.
    void noteRecursion() const noexcept;
};

}  // namespace ling::python
