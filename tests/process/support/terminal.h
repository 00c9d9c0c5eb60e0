#pragma once

#include "process/support/process.h"

#include <chrono>
#include <string>
#include <string_view>

#include <sys/types.h>

namespace process {

/// A program at a terminal of its own, with somebody who types.
class Terminal {
public:
    explicit Terminal(const Command& command);
    ~Terminal();  ///< Ends the program if it still runs.
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    void type(std::string_view keys) const;
    void signal(int number) const;
    /// Waits until `text` appears after all that was waited for before, and answers what came up to its end, without
    /// the sequences that move the cursor or choose colours. When it never comes, all that came since, with a note.
    std::string expect(const std::string& text);
    /// What comes up to the end of the program, and its status.
    Ended finish();

private:
    bool receive();

    int file_ = -1;
    pid_t child_ = -1;
    std::string unread_;
    std::chrono::steady_clock::time_point end_;
};

/// Text without the sequences that move the cursor or choose colours, and without carriage returns.
std::string plain(std::string_view text);

}  // namespace process
