#pragma once

#include <vector>

namespace ling::shell {

/// Turns signals into bytes that can be waited for together with input, so that none is missed in the moment between
/// looking for signals and waiting for input.
///
/// There is one at a time. Signals of the terminal (its size, being continued after a stop) arrive while a
/// `Listening` is alive; Python's handlers write to `writeEnd()` when they are told to.
class SignalPipe {
public:
    SignalPipe();
    ~SignalPipe();
    SignalPipe(const SignalPipe&) = delete;
    SignalPipe& operator=(const SignalPipe&) = delete;

    int readEnd() const noexcept { return ends_[0]; }
    int writeEnd() const noexcept { return ends_[1]; }
    /// The numbers of the signals that have arrived, and that are thereby taken out. Never waits.
    std::vector<int> take() const;

private:
    int ends_[2] = {-1, -1};
};

/// Catches the signals of the terminal as long as it lives, and puts the handlers of before back.
class Listening {
public:
    explicit Listening(const SignalPipe& pipe);
    ~Listening();
    Listening(const Listening&) = delete;
    Listening& operator=(const Listening&) = delete;
};

}  // namespace ling::shell
