#include <gtest/gtest.h>

#include <sys/stat.h>

#include <string>

#include "process/support/process.h"
#include "process/support/terminal.h"

/// The interactive console: what the shell adds to the editor of Python's own library, and the lines that are read
/// where there is no terminal. What is typed comes back as it is typed, so each test waits for a text that only a
/// statement that was run can have put together.

namespace {

namespace fs = std::filesystem;
using process::Command;
using process::contentOf;
using process::Folder;
using process::shell;
using process::Terminal;

class ShellConsole : public testing::Test {
protected:
    Command command(const char* terminal = "xterm") const {
        Command command = shell({});
        command.environment.emplace_back("TERM", terminal);
        command.environment.emplace_back("NO_COLOR", "1");
        command.environment.emplace_back("PAGER", "cat");
        command.environment.emplace_back("HOME", home_.path().string());
        return command;
    }

    /// Types keys and expects what they lead to. What came up to there.
    static std::string expectAfter(Terminal& terminal, const std::string& keys, const std::string& result) {
        terminal.type(keys);
        std::string shown = terminal.expect(result);
        EXPECT_EQ(shown.find("<there is no"), std::string::npos) << shown;
        return shown;
    }

    /// Ends the console and answers its status. The end of input counts at a prompt alone: a statement waits for that.
    static int leave(Terminal& terminal) {
        (void)expectAfter(terminal, "'bye' 'bye'\r", "'byebye'");
        (void)terminal.expect(">>> ");
        terminal.type("\x04");
        return terminal.finish().status;
    }

    const Folder home_;
};

TEST_F(ShellConsole, RunsStatementsAndGoesOnAfterErrors) {
    for (const char* kind : {"xterm", "dumb"}) {
        Terminal terminal(command(kind));
        EXPECT_NE(terminal.expect(">>> ").find("Python 3.13"), std::string::npos);
        (void)expectAfter(terminal, "'fo' 'rty' + str(len('\xC3\xA9\xF0\x9F\x98\x80'))\r", "'forty2'");
        (void)expectAfter(terminal, "_ + 'x'\r", "'forty2x'");
        (void)expectAfter(terminal, "ling.kind_of(1)\r", "'integer'");
        (void)expectAfter(terminal, "1 / 0\r", "ZeroDivisionError: division by zero");
        (void)expectAfter(terminal, "x y\r", "SyntaxError: invalid syntax");
        (void)expectAfter(terminal, "input('na' 'me? ')\r", "name? ");
        (void)expectAfter(terminal,
                          "some"
                          "body\r",
                          "'somebody'");
        (void)expectAfter(terminal, "help(len)\r", "Return the number of items in a container.");
        if (std::string(kind) == "xterm")
            (void)expectAfter(terminal, "\x1b[200~def f(n):\n    a = 'blo'\n\n    return a + n\n\x1b[201~\r", ">>> ");
        else
            (void)expectAfter(terminal, "f = lambda n: 'blo' + n\r", ">>> ");
        (void)expectAfter(terminal, "f('ck')\r", "'block'");
        (void)expectAfter(terminal, "import time; print('rea' 'dy'); time.sleep(50)\r", "ready\n");
        (void)expectAfter(terminal, "\x03", "KeyboardInterrupt\n");
        (void)expectAfter(terminal, "'still ' 'here'\r", "'still here'");
        EXPECT_EQ(leave(terminal), 0) << kind;
    }
}

TEST_F(ShellConsole, CompletesNames) {
    Terminal terminal(command());
    (void)terminal.expect(">>> ");
    (void)expectAfter(terminal, "pri\t('al' 'so')\r", "also\n");
    (void)expectAfter(terminal, "ling.kind_o\t(1)\r", "'integer'");
    (void)expectAfter(terminal, "ling.python.LanguagePython.evaluateE\t('6 * 7')\r", "42");
    (void)expectAfter(terminal, "x = 'pa' + 'rt'; x\r", "'part'");
    (void)expectAfter(terminal, "x.upp\t()\r", "'PART'");
    EXPECT_EQ(leave(terminal), 0);
}

// Completion lists names: what a property, `__getattr__` or `__dir__` of a program would do is not done.
TEST_F(ShellConsole, CompletionRunsNoCodeOfPrograms) {
    Terminal terminal(command());
    (void)terminal.expect(">>> ");
    (void)expectAfter(terminal,
                      "\x1b[200~class C:\n"
                      "    shown = property(lambda self: print('ra' 'n'))\n"
                      "    def __getattr__(self, name): print('ra' 'n')\n"
                      "    def __dir__(self): print('ra' 'n')\n"
                      "    def __init__(self): self.sto_red = 1\n\x1b[201~\r",
                      ">>> ");
    (void)expectAfter(terminal, "c = C(); 'ma' 'de'\r", "'made'");
    EXPECT_EQ(expectAfter(terminal, "c.s\t\t", "c.sto_red").find("ran"), std::string::npos);
    EXPECT_EQ(expectAfter(terminal, "hown.\t\x7f\x7f\x7f\x7f\x7f\x7fsto\t + 41\r", "42").find("ran"),
              std::string::npos);
    EXPECT_EQ(leave(terminal), 0);
}

TEST_F(ShellConsole, SharesItsHistory) {
    const fs::path file = home_.path() / ".lingsh_history";
    Terminal first(command());
    (void)first.expect(">>> ");
    (void)expectAfter(first, "'on' 'e'\r", "'one'");
    (void)expectAfter(first, "if 1: 'tw' 'o'\r\r", "'two'");
    EXPECT_EQ(contentOf(file), "'on' 'e'\nif 1: 'tw' 'o'\n");  // While the console is there.
    EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    {
        Command next = command();
        next.environment.emplace_back("XDG_STATE_HOME", (home_.path() / "state").string());
        fs::create_directories(home_.path() / "state/lingsh");
        fs::copy(file, home_.path() / "state/lingsh/history");
        Terminal second(next);
        (void)second.expect(">>> ");
        (void)expectAfter(second, "\x10\x10\r", "'one'");  // Ctrl-P twice.
        EXPECT_EQ(leave(second), 0);
        EXPECT_EQ(contentOf(home_.path() / "state/lingsh/history"), contentOf(file) + "'on' 'e'\n'bye' 'bye'\n");
    }
    EXPECT_EQ(leave(first), 0);
}

TEST_F(ShellConsole, EndsByExit) {
    constexpr std::pair<const char*, int> kRows[] = {{"exit()", 0}, {"quit('bye')", 1}, {"raise SystemExit(3)", 3}};
    for (const auto& [line, status] : kRows) {
        Terminal terminal(command());
        (void)terminal.expect(">>> ");
        terminal.type(std::string(line) + "\r");
        EXPECT_EQ(terminal.finish().status, status) << line;
    }
}

}  // namespace
