#include <gtest/gtest.h>

#include <sys/stat.h>

#include <csignal>
#include <string>

#include "process/support/process.h"
#include "process/support/terminal.h"

/// The interactive console, at a terminal and without one.

namespace {

namespace fs = std::filesystem;
using process::Command;
using process::contentOf;
using process::Ended;
using process::Folder;
using process::run;
using process::shell;
using process::Terminal;

class ShellConsole : public testing::Test {
protected:
    Command command() const {
        Command command = shell({});
        command.environment.emplace_back("TERM", "xterm");
        command.environment.emplace_back("NO_COLOR", "1");
        command.environment.emplace_back("HOME", home_.path().string());
        return command;
    }

    /// Types a line at the prompt and answers what it led to, up to the next prompt.
    static std::string answerTo(Terminal& terminal, const std::string& line) {
        terminal.type(line + "\r");
        (void)terminal.expect(line + "\n");
        std::string answer = terminal.expect(">>> ");
        return answer.substr(0, answer.size() - 4);
    }

    /// Ends the console and answers its status.
    static int leave(Terminal& terminal) {
        terminal.type("\x04");
        return terminal.finish().status;
    }

    const Folder home_;
};

TEST_F(ShellConsole, ShowsValuesAndGoesOnAfterErrors) {
    Terminal terminal(command());
    EXPECT_NE(terminal.expect(">>> ").find("Python 3.13"), std::string::npos);
    EXPECT_EQ(answerTo(terminal, "6 * 7"), "42\n");
    EXPECT_EQ(answerTo(terminal, "_ + 1"), "43\n");
    EXPECT_EQ(answerTo(terminal, "None"), "");
    EXPECT_EQ(answerTo(terminal, "x = '\xC3\xA9\xF0\x9F\x98\x80'; x"), "'\xC3\xA9\xF0\x9F\x98\x80'\n");
    EXPECT_EQ(answerTo(terminal, "ling.kind_of(1)"), "'integer'\n");
    EXPECT_EQ(answerTo(terminal, "1 / 0"),
              "Traceback (most recent call last):\n  File \"<console-5>\", line 1, in <module>\n    1 / 0\n    ~~^~~\n"
              "ZeroDivisionError: division by zero\n");
    EXPECT_EQ(answerTo(terminal, "x y"),
              "  File \"<console-6>\", line 1\n    x y\n      ^\nSyntaxError: invalid syntax\n");
    EXPECT_EQ(answerTo(terminal, "raise BaseException('odd')").substr(0, 10), "Traceback ");
    EXPECT_EQ(leave(terminal), 0);
}

TEST_F(ShellConsole, ReadsInputOfThePrograms) {
    Terminal terminal(command());
    (void)terminal.expect(">>> ");
    terminal.type("input('name? ')\r");
    (void)terminal.expect("name? ')\n");
    (void)terminal.expect("name? ");
    terminal.type("somebody\r");
    EXPECT_EQ(terminal.expect(">>> "), "somebody\n'somebody'\n>>> ");
    EXPECT_EQ(leave(terminal), 0);
}

TEST_F(ShellConsole, ContinuesUnfinishedStatements) {
    Terminal terminal(command());
    (void)terminal.expect(">>> ");
    terminal.type("def f(n):\r");
    (void)terminal.expect("... ");
    terminal.type("\treturn n and 1 / 0\r");  // A tab at the start of a line indents.
    (void)terminal.expect("return n and 1 / 0\n... ");
    EXPECT_EQ(answerTo(terminal, ""), "");
    EXPECT_EQ(answerTo(terminal, "f(0)"), "0\n");
    const std::string trace = answerTo(terminal, "f(1)");
    EXPECT_NE(trace.find("line 2, in f\n    return n and 1 / 0\n"), std::string::npos) << trace;
    terminal.type("[1,\r");
    (void)terminal.expect("... ");
    EXPECT_EQ(answerTo(terminal, "2]"), "[1, 2]\n");
    terminal.type("'''a\r");
    (void)terminal.expect("... ");
    EXPECT_EQ(answerTo(terminal, "b'''"), "'a\\nb'\n");
    EXPECT_EQ(leave(terminal), 0);
}

TEST_F(ShellConsole, SurvivesControlC) {
    Terminal terminal(command());
    (void)terminal.expect(">>> ");
    terminal.type("something");
    (void)terminal.expect("something");
    terminal.type("\x03");
    EXPECT_EQ(terminal.expect(">>> "), "\nKeyboardInterrupt\n>>> ");
    terminal.type("if True:\r");
    (void)terminal.expect("... ");
    terminal.type("\x03");
    EXPECT_EQ(terminal.expect(">>> "), "\nKeyboardInterrupt\n>>> ");
    terminal.type("import time; print('ready'); time.sleep(50)\r");
    (void)terminal.expect("\nready\n");
    terminal.type("\x03");
    EXPECT_NE(terminal.expect(">>> ").find("\nKeyboardInterrupt\n"), std::string::npos);
    EXPECT_EQ(answerTo(terminal, "1 + 1"), "2\n");
    EXPECT_EQ(leave(terminal), 0);
}

TEST_F(ShellConsole, RunsTheHandlersOfAProgramWhileItWaits) {
    Terminal terminal(command());
    (void)terminal.expect(">>> ");
    (void)answerTo(terminal, "import signal");
    (void)answerTo(terminal, "signal.signal(signal.SIGALRM, lambda *_: print('al' + 'arm'))");
    (void)answerTo(terminal, "signal.setitimer(signal.ITIMER_REAL, 0.2)");
    EXPECT_EQ(terminal.expect("alarm\n"), "alarm\n");
    EXPECT_EQ(answerTo(terminal, "1 + 1"), "2\n");
    EXPECT_EQ(leave(terminal), 0);
}

TEST_F(ShellConsole, CompletesNames) {
    Terminal terminal(command());
    (void)terminal.expect(">>> ");
    terminal.type("pri\t(1)\r");
    EXPECT_EQ(terminal.expect(">>> "), "print(1)\n1\n>>> ");
    terminal.type("ling.bound_m\t\r");
    EXPECT_NE(terminal.expect(">>> ").find("ling.bound_method\n"), std::string::npos);
    terminal.type("ling.python.LanguagePython.evaluateE\t\r");
    EXPECT_NE(terminal.expect(">>> ").find(".evaluateExpression\n"), std::string::npos);
    (void)answerTo(terminal, "import os");
    terminal.type("os.path.comm\t");
    EXPECT_EQ(terminal.expect("commonp"), "os.path.commonp");
    terminal.type("\t");
    EXPECT_EQ(terminal.expect(">>> os.path.commonp"), "\ncommonpath    commonprefix\n>>> os.path.commonp");
    terminal.type("\x03");
    (void)terminal.expect(">>> ");
    EXPECT_EQ(leave(terminal), 0);
}

// Completion lists names: what a property, `__getattr__` or `__dir__` of a program would do is not done.
TEST_F(ShellConsole, CompletionRunsNoCodeOfPrograms) {
    Terminal terminal(command());
    (void)terminal.expect(">>> ");
    terminal.type("class C:\r");
    (void)terminal.expect("... ");
    for (const char* line :
         {"    @property\r", "    def shown(self): print('ran')\r", "    def __getattr__(self, name): print('ran')\r",
          "    def __dir__(self): print('ran')\r", "    def __init__(self): self.stored = 1\r"}) {
        terminal.type(line);
        (void)terminal.expect("... ");
    }
    (void)answerTo(terminal, "");
    (void)answerTo(terminal, "c = C()");
    terminal.type("c.s\t");
    EXPECT_EQ(terminal.expect(">>> c.s"), "c.s\nshown   stored\n>>> c.s");
    terminal.type(
        "hown.\t\x7f\x7f\x7f\x7f\x7f\x7f\x7f\x7f"
        "c.sto\t == 1\r");
    EXPECT_NE(terminal.expect("\n").find("c.stored == 1"), std::string::npos);
    EXPECT_EQ(terminal.expect(">>> "), "True\n>>> ");
    EXPECT_EQ(leave(terminal), 0);
}

TEST_F(ShellConsole, KeepsAHistory) {
    const fs::path file = home_.path() / ".lingsh_history";
    {
        Terminal terminal(command());
        (void)terminal.expect(">>> ");
        EXPECT_EQ(answerTo(terminal, "'one'"), "'one'\n");
        EXPECT_EQ(answerTo(terminal, "'two'"), "'two'\n");
        terminal.type("\x10\x10\r");  // Ctrl-P twice.
        EXPECT_NE(terminal.expect("'one'\n").find("'two'"), std::string::npos);
        (void)terminal.expect(">>> ");
        EXPECT_EQ(leave(terminal), 0);
    }
    EXPECT_EQ(contentOf(file), "_HiStOrY_V2_\n'one'\n'two'\n'one'\n");
    EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    Command next = command();
    next.environment.emplace_back("XDG_STATE_HOME", (home_.path() / "state").string());
    fs::create_directories(home_.path() / "state/lingsh");
    fs::rename(file, home_.path() / "state/lingsh/history");
    Terminal terminal(next);
    (void)terminal.expect(">>> ");
    terminal.type("\x10\x10\r");
    EXPECT_NE(terminal.expect("'two'\n").find("'one'"), std::string::npos);
    (void)terminal.expect(">>> ");
    EXPECT_EQ(leave(terminal), 0);
    EXPECT_FALSE(fs::exists(file));
}

TEST_F(ShellConsole, HonoursPrompts) {
    Terminal terminal(command());
    (void)terminal.expect(">>> ");
    terminal.type("import sys; sys.ps1 = 'next? '; sys.ps2 = 'more? '\r");
    (void)terminal.expect("\nnext? ");
    terminal.type("(1,\r");
    (void)terminal.expect("\nmore? ");
    terminal.type(")\r");
    EXPECT_EQ(terminal.expect("next? "), ")\n(1,)\nnext? ");
    EXPECT_EQ(leave(terminal), 0);
}

struct Leaving {
    const char* line;
    int status;
};

TEST_F(ShellConsole, EndsByExit) {
    for (const Leaving& leaving :
         {Leaving{"exit()", 0}, {"exit(5)", 5}, {"quit('bye')", 1}, {"raise SystemExit(3)", 3}}) {
        Terminal terminal(command());
        (void)terminal.expect(">>> ");
        terminal.type(std::string(leaving.line) + "\r");
        EXPECT_EQ(terminal.finish().status, leaving.status) << leaving.line;
    }
}

TEST_F(ShellConsole, OffersWhatSiteOffers) {
    Command plain = command();
    plain.environment.emplace_back("PAGER", "cat");
    Terminal terminal(plain);
    (void)terminal.expect(">>> ");
    const std::string help = answerTo(terminal, "help(len)");
    EXPECT_NE(help.find("Return the number of items in a container."), std::string::npos) << help;
    EXPECT_NE(answerTo(terminal, "copyright").find("Python Software Foundation"), std::string::npos);
    EXPECT_NE(answerTo(terminal, "exit").find("Use exit()"), std::string::npos);
    EXPECT_EQ(leave(terminal), 0);
}

// Stopped and continued, and with another size: the line is still there.
TEST_F(ShellConsole, GoesOnAfterAStop) {
    Terminal terminal(command());
    (void)terminal.expect(">>> ");
    terminal.type("6 *");
    (void)terminal.expect("6 *");
    terminal.signal(SIGSTOP);
    terminal.signal(SIGCONT);
    (void)terminal.expect(">>> 6 *");
    terminal.signal(SIGWINCH);
    terminal.type(" 7\r");
    EXPECT_EQ(terminal.expect(">>> ").find(" 7\n42\n"), 0U);
    EXPECT_EQ(leave(terminal), 0);
}

struct Lines {
    const char* name;
    const char* input;
    const char* out;
    const char* err = "";
    int status = 0;

    friend void PrintTo(const Lines& lines, std::ostream* out) { *out << lines.name; }
};

const Lines kLines[] = {
    {"Nothing", "", ""},
    {"Values", "1 + 1\n'a'\nNone\n", "2\n'a'\n"},
    {"Block", "for x in range(2):\n    print(x)\n\nprint('end')\n", "0\n1\nend\n"},
    {"BlockUpToTheEnd", "if True:\n    print(1)", "1\n"},
    {"InputReadsTheNextLine", "x = input()\nhello\nx\n", "'hello'\n"},
    {"ErrorAndOn", "1 / 0\n2\n", "2\n",
     "Traceback (most recent call last):\n  File \"<console-0>\", line 1, in <module>\n    1 / 0\n    ~~^~~\n"
     "ZeroDivisionError: division by zero\n"},
    {"Exit", "print(1)\nexit(6)\nprint(2)\n", "1\n", "", 6},
};

class ShellLines : public testing::TestWithParam<Lines> {};

TEST_P(ShellLines, AreTakenWithoutATerminal) {
    const Folder home;
    Command command = shell({});
    command.input = GetParam().input;
    command.environment.emplace_back("HOME", home.path().string());
    const Ended ended = run(command);
    EXPECT_EQ(ended.out, GetParam().out);
    EXPECT_EQ(ended.err, GetParam().err);
    EXPECT_EQ(ended.status, GetParam().status);
    EXPECT_TRUE(fs::is_empty(home.path()));
}

INSTANTIATE_TEST_SUITE_P(Rows, ShellLines, testing::ValuesIn(kLines),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
