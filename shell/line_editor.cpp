#include "line_editor.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <string_view>
#include <utility>

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace ling::shell {

namespace {

constexpr wchar_t kUnprinted = L'\1';  // Encloses what the terminal does not print.
constexpr const wchar_t* kIndentation = L"    ";
constexpr wchar_t kReplacement = L'\uFFFD';

LineEditor& ownerOf(EditLine* editor) {
    void* owner = nullptr;
    (void)el_wget(editor, EL_CLIENTDATA, &owner);
    return *static_cast<LineEditor*>(owner);
}

std::size_t terminalWidth() {
    winsize size = {};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

std::wstring commonStart(const std::vector<std::wstring>& words) {
    std::wstring common = words.front();
    for (const std::wstring& word : words) {
        const auto end = std::mismatch(common.begin(), common.end(), word.begin(), word.end()).first;
        common.erase(end, common.end());
    }
    return common;
}

}  // namespace

LineEditor::LineEditor(std::function<bool()> handleSignals, std::function<Completions(const std::wstring&)> complete)
    : handleSignals_(std::move(handleSignals)),
      complete_(std::move(complete)),
      history_(LineHistory::defaultFile()),
      editor_(el_init("lingsh", stdin, stdout, stderr)) {
    configure();
}

LineEditor::~LineEditor() { el_end(editor_); }

void LineEditor::configure() {
    (void)el_wset(editor_, EL_CLIENTDATA, this);
    (void)el_wset(editor_, EL_EDITOR, L"emacs");
    (void)el_wset(editor_, EL_HIST, history_w, history_.record());
    (void)el_wset(editor_, EL_GETCFN, readCharacter);
    (void)el_wset(editor_, EL_PROMPT_ESC, promptOf, static_cast<int>(kUnprinted));
    (void)el_wset(editor_, EL_ADDFN, L"ling-complete", L"Complete a name", completeAtCursor);
    (void)el_wset(editor_, EL_BIND, L"^I", L"ling-complete", nullptr);
    (void)el_wset(editor_, EL_BIND, L"^R", L"em-inc-search-prev", nullptr);
    (void)el_source(editor_, nullptr);  // The user's own settings come last.
}

LineEditor::Outcome LineEditor::read(const std::wstring& prompt, std::wstring& line) {
    prompt_ = prompt;
    std::replace(prompt_.begin(), prompt_.end(), L'\2', kUnprinted);
    interrupted_ = false;
    const Listening listening(signals_);
    prepareTerminal();
    int length = 0;
    const wchar_t* text = el_wgets(editor_, &length);
    if (interrupted_)
        return Outcome::Interrupted;
    if (text == nullptr || length <= 0)
        return Outcome::End;
    line.assign(text, static_cast<std::size_t>(length));
    if (line.ends_with(L'\n'))
        line.pop_back();
    return Outcome::Line;
}

/// The editor itself would show the prompt first, and what is typed in between would appear twice. A terminal that
/// cannot be edited on shows the keys by itself.
void LineEditor::prepareTerminal() {
    int edits = 0;
    if (el_wget(editor_, EL_EDITMODE, &edits) == 0 && edits != 0)
        (void)el_wset(editor_, EL_PREP_TERM, 1);
}

int LineEditor::readCharacter(EditLine* editor, wchar_t* character) {
    return ownerOf(editor).waitForCharacter(*character);
}

/// One for a character, 0 at the end, -1 when the line is given up.
int LineEditor::waitForCharacter(wchar_t& character) {
    bool whole = false;
    int result = 1;
    while (!whole && result == 1) {
        pollfd files[] = {{STDIN_FILENO, POLLIN, 0}, {signals_.readEnd(), POLLIN, 0}};
        if (poll(files, 2, -1) < 0 && errno != EINTR)
            return -1;
        if (files[1].revents != 0 && !goOnAfterSignals()) {
            interrupted_ = true;
            return -1;
        }
        if (files[0].revents != 0)
            result = readByte(character, whole);
    }
    return result;
}

bool LineEditor::goOnAfterSignals() {
    bool isForeign = false;
    for (const int signal : signals_.take()) {
        if (signal == SIGWINCH) {
            el_resize(editor_);
        } else if (signal == SIGCONT) {  // Whoever had the terminal meanwhile has left it in its own way.
            (void)el_wset(editor_, EL_PREP_TERM, 0);
            (void)el_wset(editor_, EL_PREP_TERM, 1);
            (void)el_wset(editor_, EL_REFRESH);
        } else {
            isForeign = true;
        }
    }
    return !isForeign || !handleSignals_();
}

int LineEditor::readByte(wchar_t& character, bool& whole) {
    char byte = 0;
    const ssize_t count = ::read(STDIN_FILENO, &byte, 1);
    if (count <= 0)
        return count < 0 && (errno == EINTR || errno == EAGAIN) ? 1 : static_cast<int>(count);
    const std::size_t used = std::mbrtowc(&character, &byte, 1, &decoding_);
    whole = used != static_cast<std::size_t>(-2);
    if (used == static_cast<std::size_t>(-1)) {
        decoding_ = {};
        character = kReplacement;
    }
    return 1;
}

wchar_t* LineEditor::promptOf(EditLine* editor) { return ownerOf(editor).prompt_.data(); }

unsigned char LineEditor::completeAtCursor(EditLine* editor, wint_t) { return ownerOf(editor).complete(); }

unsigned char LineEditor::complete() {
    const LineInfoW* info = el_wline(editor_);
    const std::wstring before(info->buffer, info->cursor);
    if (before.find_first_not_of(L" \t") == std::wstring::npos)
        return el_winsertstr(editor_, kIndentation) == 0 ? CC_REFRESH : CC_ERROR;
    const Completions completions = complete_(before);
    if (completions.words.empty())
        return CC_REFRESH_BEEP;
    const std::wstring rest = commonStart(completions.words).substr(completions.typed);
    if (!rest.empty())
        return el_winsertstr(editor_, rest.c_str()) == 0 ? CC_REFRESH : CC_ERROR;
    if (completions.words.size() == 1)
        return CC_NORM;
    list(completions.words);
    return CC_REDISPLAY;
}

/// In columns, below the line that is being edited.
void LineEditor::list(const std::vector<std::wstring>& words) const {
    std::size_t width = 0;
    for (const std::wstring& word : words)
        width = std::max(width, word.size() + 2);
    const std::size_t columns = std::max<std::size_t>(1, terminalWidth() / width);
    std::wstring text = L"\n";
    for (std::size_t index = 0; index < words.size(); ++index) {
        const bool isLast = (index + 1) % columns == 0 || index + 1 == words.size();
        text += words[index];
        text += isLast ? std::wstring(L"\n") : std::wstring(width - words[index].size(), L' ');
    }
    (void)std::printf("%ls", text.c_str());
    (void)std::fflush(stdout);
}

}  // namespace ling::shell
