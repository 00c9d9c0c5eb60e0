#pragma once

/// Makes one allocation fail: of C++ (`operator new`, replaced for the whole process) or of Python (all three domains,
/// once `watchPython` was called).
namespace proof::points {

/// Takes the place of Python's allocators, in front of those that are there. To be called once, with the interpreter
/// lock held.
void watchPython();

/// Lets the `nth` allocation of this thread from now on fail, counted from one, and no other; 0 lets none fail. Those
/// of Python count and fail unless `oursOnly`.
void failAt(long nth, bool oursOnly) noexcept;
/// How many allocations this thread made since then. Ends the counting.
long stop() noexcept;

/// How many blocks are allocated now by those that are watched, in the whole process.
long liveBlocks() noexcept;

}  // namespace proof::points
