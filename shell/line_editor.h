#pragma once

#include "history.h"
#include "signal_pipe.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include <wchar.h>

namespace ling::shell {

/// What a word may be: the number of characters that are there already, and the whole words.
struct Completions {
    std::size_t typed = 0;
    std::vector<std::wstring> words;
};

/// Reads lines from the terminal, with editing, history and completion.
class LineEditor {
public:
    enum class Outcome { Line, Interrupted, End };

    /// `handleSignals` is asked after every signal that is not the terminal's own: true gives the line up.
    /// `complete` is asked with the text before the cursor.
    LineEditor(std::function<bool()> handleSignals, std::function<Completions(const std::wstring&)> complete);
    ~LineEditor();
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;

    /// Reads a line, without the end of line. In the prompt, "\1" and "\2" enclose what does not move the cursor.
    Outcome read(const std::wstring& prompt, std::wstring& line);
    /// Puts a line into the history.
    void remember(const std::wstring& line) { history_.add(line); }
    /// The file that signal handlers write to in order to end the waiting for a key.
    int wakeup() const noexcept { return signals_.writeEnd(); }

private:
    static int readCharacter(EditLine* editor, wchar_t* character);
    static wchar_t* promptOf(EditLine* editor);
    static unsigned char completeAtCursor(EditLine* editor, wint_t key);
    void configure();
    void prepareTerminal();
    int waitForCharacter(wchar_t& character);
    bool goOnAfterSignals();
    int readByte(wchar_t& character, bool& whole);
    unsigned char complete();
    void list(const std::vector<std::wstring>& words) const;

    std::function<bool()> handleSignals_;
    std::function<Completions(const std::wstring&)> complete_;
    SignalPipe signals_;
    LineHistory history_;
    EditLine* editor_;
    std::wstring prompt_;
    std::mbstate_t decoding_ = {};
    bool interrupted_ = false;
};

}  // namespace ling::shell
