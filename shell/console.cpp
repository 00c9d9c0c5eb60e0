#include "console.h"

#include "completion.h"
#include "line_editor.h"
#include "shell_driver.h"

#include <cstdio>

#include <unistd.h>

namespace ling::shell {

namespace {

// The numbers that the Python side answers a line with.
constexpr int kDone = 0;
constexpr int kEnded = 2;

String fromWide(const std::wstring& text) {
    string_builder units;
    for (const wchar_t character : text) {
        const auto code = static_cast<char32_t>(character);
        if (code >= 0x10000)
            units.append(static_cast<char16_t>(0xD7C0 + (code >> 10)))
                .append(static_cast<char16_t>(0xDC00 + (code & 0x3FF)));
        else
            units.append(static_cast<char16_t>(code));
    }
    return units.build();
}

std::size_t toSize(const String& digits) {
    std::size_t value = 0;
    for (const char16_t digit : digits.view())
        value = value * 10 + (digit - u'0');
    return value;
}

/// What the Python side answers: the length of the word, the host's module or class to ask, and the names it knows.
Completions completionsFor(const PythonDriver& driver, const std::wstring& text) {
    const std::vector<String> answer = driver.callForText("console.complete", {{"text", fromWide(text)}}).split(u"\n");
    Completions completions;
    if (answer.size() < 2)
        return completions;
    completions.typed = toSize(answer[0]);
    for (std::size_t index = 2; index < answer.size(); ++index)
        completions.words.push_back(answer[index].toWide());
    if (answer[1].isEmpty())
        return completions;
    const std::wstring word = text.substr(text.size() - completions.typed);
    for (const String& name : memberNames(answer[1])) {
        if (std::wstring known = name.toWide(); known.starts_with(word) && (!word.empty() || !known.starts_with(L'_')))
            completions.words.push_back(std::move(known));
    }
    return completions;
}

void print(const std::string& text) {
    (void)std::fwrite(text.data(), 1, text.size(), stdout);
    (void)std::fflush(stdout);
}

class Console {
public:
    explicit Console(const PythonDriver& driver)
        : driver_(driver),
          editor_([this] { return driver_.callForNumber("console.handle_signals") != kDone; },
                  [this](const std::wstring& text) { return completionsFor(driver_, text); }) {}

    int run() {
        while (true) {
            std::wstring line;
            switch (read(line)) {
                case LineEditor::Outcome::End:
                    print("\n");
                    return 0;
                case LineEditor::Outcome::Interrupted:
                    forget();
                    break;
                case LineEditor::Outcome::Line:
                    if (take(line) == kEnded)
                        return driver_.callForNumber("console.status");
                    break;
            }
        }
    }

private:
    LineEditor::Outcome read(std::wstring& line) {
        const String prompt = driver_.callForText("console.prompt", {{"wakeup", editor_.wakeup()}});
        const LineEditor::Outcome outcome = editor_.read(prompt.toWide(), line);
        if (driver_.callForNumber("console.typed") == kDone)
            return outcome;
        (void)driver_.callForNumber("console.typed");  // Ctrl-C came in its place.
        return LineEditor::Outcome::Interrupted;
    }

    int take(const std::wstring& line) {
        editor_.remember(line);
        const int status = driver_.callForNumber("console.push", {{"line", fromWide(line)}});
        if (status == PythonDriver::kInterrupted)
            forget();
        return status;
    }

    void forget() {
        print("\nKeyboardInterrupt\n");
        (void)driver_.callForNumber("console.drop");
    }

    const PythonDriver& driver_;
    LineEditor editor_;
};

bool isAtTerminal() { return isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0; }

}  // namespace

int runConsole(const PythonDriver& driver) {
    if (!driver.load("console", kConsoleSource))
        return 1;
    const String python = driver.callForText("console.begin");
    if (!isAtTerminal())
        return driver.callForNumber("console.run_lines");
    print("lingsh " LING_VERSION ", " + python.toStdString() + "\n");
    print("Type \"help\", \"copyright\", \"credits\" or \"license\" for more information.\n");
    return Console(driver).run();
}

}  // namespace ling::shell
