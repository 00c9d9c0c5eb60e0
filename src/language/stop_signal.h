#pragma once

namespace ling::python {

/// A signal by which Python code on the thread that Python calls its main one is ended also while it waits, or matches
/// a pattern: Python looks for signals there, and nowhere else.
///
/// It is a real-time signal that had no handler when it was first needed, so that no disposition of the host's is
/// touched; until then there is none.

/// Has the signal raise `KeyboardInterrupt` on this thread wherever `isMeant` says so, from then on. Answers whether it
/// does: not on other threads, and not when all signals are taken. Needs the interpreter lock; no error may be pending.
bool prepareStopSignal(bool (*isMeant)());
/// Whether it does so on this thread already.
bool hasStopSignal() noexcept;
/// Sends it. From any thread, with or without the interpreter lock. False where somebody has given it back to the
/// system since, which would end the process.
bool sendStopSignal() noexcept;

}  // namespace ling::python
