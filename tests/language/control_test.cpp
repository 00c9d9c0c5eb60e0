#include "ling/ling.h"
#include "support/python_test.h"
#include "support/table.h"

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

/// What a host controls Python by: interruption and time limits, scopes that last, output, the end.

namespace {

std::string shown(const Any& value) {
    const ling::Result<ling::Error> error = ling::Error::cast(value);
    return (error ? u"error: " + error->message() : ling::display(value)).toStdString();
}

class Control : public PythonTest {
protected:
    static const I_Language& python() {
        static const I_Language& language = *new I_Language(*ling::find_language("Python"));
        return language;
    }
    /// A second of Python that no interruption of something else must end.
    static void expectUsable() {
        EXPECT_EQ(shown(python().evaluateExpression("sum(n for n in range(1000))")), "499500");
    }
};

// Time limits and interruption.

constexpr const char* kExceeded = "error: The time limit of 0.05 seconds was exceeded.";

struct EndlessCode {
    const char* name;
    const char* code;
    bool onMainThreadAlone;  ///< Code that waits in C and looks for signals there.
};
constexpr EndlessCode kEndless[] = {
    {"Loop", "while True: pass", false},
    {"CaughtAsException", "while True:\n try:\n  while True: pass\n except Exception: pass", false},
    {"SwallowedTwice", "for i in range(3):\n try:\n  while True: pass\n except BaseException:\n  if i == 2: raise",
     false},
    {"WithinNativeCode", "class Item:\n def __eq__(self, other):\n  while True: pass\nItem() in ling.List([Item()])",
     false},
    {"WithinAnEvaluation", "ling.python.evaluate('while True: pass')", false},
    {"SignalsGivenBack",
     "import signal\nkept = {n: signal.signal(n, signal.SIG_DFL) for n in range(signal.SIGRTMIN, signal.SIGRTMAX)}\n"
     "try:\n while True: pass\nfinally:\n for n in kept: signal.signal(n, kept[n])",
     true},
    {"Sleep", "import time\ntime.sleep(60)", true},
    {"Lock", "import threading\nlock = threading.Lock()\nlock.acquire()\nlock.acquire()", true},
    {"Condition", "import threading\nthreading.Event().wait()", true},
    {"Pattern", "import re\nre.match('(a+)+$', 'a' * 40 + 'b')", true},
    {"Socket", "import socket\na, b = socket.socketpair()\na.recv(1)", true},
};

LING_TABLE(Limit, Control, kEndless);

TEST_P(Limit, EndsTheCodeAndNothingElse) {
    EXPECT_EQ(shown(python().evaluateWithin(0.05, GetParam().code)), kExceeded);
    expectUsable();
    if (GetParam().onMainThreadAlone)
        return;
    std::thread([] {
        EXPECT_EQ(shown(python().evaluateWithin(0.05, GetParam().code)), kExceeded);
        expectUsable();
    }).join();
}

TEST_F(Control, WhatEndsInTimeAnswers) {
    const Map_Generic names{{"n", 20}};
    EXPECT_EQ(shown(python().evaluateWithin(60, "n += 1\nreturn n * 2", names)), "42");
    EXPECT_EQ(shown(names.get("n")), "21");
    EXPECT_EQ(shown(python().evaluateWithin(60, "raise KeyboardInterrupt")), "error: The call was interrupted.");
}

/// No Python runs when the limit is over, and none after it: what was sent must reach nobody.
TEST_F(Control, NoInterruptionIsLeftForTheNextEvaluation) {
    const auto rest = ling::make_function("rest", "", [] {
        std::this_thread::sleep_for(std::chrono::milliseconds(60));
        return 7;
    });
    const auto work = [&rest] {
        EXPECT_EQ(shown(python().callWithin(0.01, rest, {})), "7");
        expectUsable();
    };
    work();
    std::thread(work).join();
}

/// The limit is that of the inner call alone; the error knows where the code was.
TEST_F(Control, ALimitWithinPythonIsAnErrorThere) {
    const Any answer = python().evaluate(R"(
language = ling.python.LanguagePython
def endless():
    while True: pass
seen = []
for call in (lambda: language.evaluateWithin(0.05, 'while True: pass'), lambda: language.callWithin(0.05, endless)):
    try:
        call()
    except RuntimeError as error:
        seen.append(f'{error} {type(error.__cause__).__name__}')
return seen)");
    EXPECT_EQ(shown(answer),
              "['The time limit of 0.05 seconds was exceeded. KeyboardInterrupt', "
              "'The time limit of 0.05 seconds was exceeded. KeyboardInterrupt']");
    EXPECT_EQ(
        shown(python().callWithin(60, ling::make_function("sum", "a, b", [](int a, int b) { return a + b; }), {1, 2})),
        "3");
}

TEST_F(Control, InterruptEndsWhatRunsOnOtherThreads) {
    EXPECT_EQ(shown(python().interrupt()), "0");
    std::atomic<int> running = 0;
    const Map_Generic names{{"running", ling::make_function("running", "", [&running] { ++running; })}};
    std::vector<std::string> outcomes(3);
    std::vector<std::thread> threads;
    for (std::string& outcome : outcomes)
        threads.emplace_back([&] {
            outcome = shown(python().evaluateExpression("[running()] + [0 for _ in iter(int, 1)]", names));
            expectUsable();
        });
    while (running < 3)
        std::this_thread::yield();
    EXPECT_EQ(shown(python().interrupt()), "3");
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(outcomes, std::vector<std::string>(3, "error: The call was interrupted."));
}

// Scopes.

TEST_F(Control, AScopeLasts) {
    const auto scope = python().makeScope();
    ASSERT_TRUE(scope);
    EXPECT_EQ(shown(python().evaluateIn(*scope, R"(
import math
def twice(n): return both(n, n)
def both(a, b): return a + b
class Point:
    def __init__(self, x): self.x = twice(x)
total = 1)")),
              "none");
    (void)scope->set("given", ling::List_Generic{1, 2});
    EXPECT_EQ(shown(python().evaluateIn(*scope, "total += Point(3).x + given[1]; del math")), "none");
    EXPECT_EQ(shown(scope->get("total")), "9");
    EXPECT_EQ(shown(scope->contains("math")), "false");
    EXPECT_EQ(
        shown(python().evaluateExpressionIn(*scope, "[Point.__module__, ling.kind_of(given), 'self' in globals()]")),
        "['__main__', 'list', False]");
    EXPECT_EQ(shown(python().evaluateIn(*scope, "total = 0\nmissing")), "error: name 'missing' is not defined");
    EXPECT_EQ(shown(scope->get("total")), "0");
    EXPECT_EQ(shown(ling::unchecked<ling::I_Invokable_Generic>(scope->get("twice"))(4)), "8");
    EXPECT_EQ(shown(python().callMethod("evaluateIn", {*scope, "while True: pass", 0.05})), kExceeded);
    EXPECT_EQ(shown(python().callMethod("evaluateIn", {Map_Generic{{"a", 1}}, "a"})),
              "error: A scope is a dictionary of Python, not {'a': 1}.");
    (void)scope->clear();
}

// Output.

TEST_F(Control, OutputGoesToAFunctionUntilItIsGivenBack) {
    std::vector<std::string> pieces;
    const auto output =
        ling::make_function("output", "text, stream", [&](const std::string& text, const std::string& to) {
            pieces.push_back(std::string(to).append(":").append(text));
            if (text == "no")
                throw std::runtime_error("Full.");
        });
    ASSERT_EQ(shown(python().takeOutput(output)), "none");
    EXPECT_EQ(shown(python().evaluate(R"(
import sys
print('a\r\né', end='', flush=True)
print('\udcff', end='', file=sys.stderr)
sys.stdout.buffer.write('é'.encode()[:1])
sys.stdout.buffer.write('é'.encode()[1:])
try:
    print('no', end='')
except RuntimeError as error:
    return [str(error), sys.stdout.isatty(), sys.stdout.name])")),
              "['Full.', False, '<stdout>']");
    EXPECT_EQ(pieces, (std::vector<std::string>{"stdout:a\r\né", "stderr:\\udcff", "stdout:é", "stdout:no"}));
    EXPECT_EQ(shown(python().takeOutput(5)), "error: Output goes to a function, or to none.");
    EXPECT_EQ(shown(python().takeOutput(Any())), "none");
    EXPECT_EQ(
        shown(python().evaluate("import sys\nreturn sys.stdout is sys.__stdout__ and sys.stderr is sys.__stderr__")),
        "true");
}

}  // namespace
