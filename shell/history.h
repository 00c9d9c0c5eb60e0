#pragma once

#include <filesystem>
#include <string>

#include <histedit.h>

namespace ling::shell {

/// The lines that were typed, kept over sessions in a file that only the user can read. Where the file cannot be used,
/// the history lasts as long as the session.
class LineHistory {
public:
    explicit LineHistory(std::filesystem::path file);
    ~LineHistory();
    LineHistory(const LineHistory&) = delete;
    LineHistory& operator=(const LineHistory&) = delete;

    /// Adds a line, here and at the end of the file. A blank one, and one that repeats the last, are left out.
    void add(const std::wstring& line);
    HistoryW* record() const noexcept { return record_; }

    /// "lingsh/history" in the directory for state that `XDG_STATE_HOME` names, else ".lingsh_history" in the user's
    /// home. Empty without either.
    static std::filesystem::path defaultFile();

private:
    void load();

    std::filesystem::path file_;
    HistoryW* record_;
    std::wstring last_;
};

}  // namespace ling::shell
