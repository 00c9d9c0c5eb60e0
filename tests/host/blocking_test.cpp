#include "language/evaluate.h"
#include "ling/ling.h"
#include "support/python_test.h"

#include <atomic>
#include <chrono>
#include <thread>

/// Native code that is marked as blocking, called by Python.

namespace {

class Blocking : public PythonTest {
protected:
    /// Evaluates with a function `native` that is `code`.
    template <class F>
    static std::string evaluate(F code, const char* parameters, const char* source) {
        const ling::Map_Generic names{{"native", ling::make_function("native", parameters, std::move(code))}};
        const ling::Any answer = ling::python::evaluate(source, ling::Map_Generic(), names, ling::Map_Generic());
        return ling::display(answer).toStdString();
    }
};

/// Without the lock the other thread comes to what is waited for. Nobody but the call has its argument.
TEST_F(Blocking, LetsOtherThreadsRunAndKeepsItsArguments) {
    std::atomic<bool> isDone = false;
    const auto code = [&isDone](const ling::Any& held, const std::function<void()>& finish) {
        for (int turn = 0; turn < 2000 && !isDone; ++turn)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        const bool hasRun = isDone;
        finish();
        return ling::String(u"{} {}").arg(held, hasRun);
    };
    const ling::Map_Generic names{
        {"native", ling::make_function("native", "held, finish", ling::blocking(code))},
        {"done", ling::make_function("done", "", [&isDone] { isDone = true; })},
    };
    const ling::Any answer = ling::python::evaluate(R"(
import threading, time
class Held:
    def __repr__(self): return 'kept'
held = [Held()]
def other():
    while held: time.sleep(0.001)
    done()
thread = threading.Thread(target=other)
seen = []
thread.start()
text = native(held.pop(), lambda: seen.append(threading.current_thread() is thread))
thread.join()
return f'{text} {seen}')",
                                                    ling::Map_Generic(), names, ling::Map_Generic());
    EXPECT_EQ(ling::display(answer).toStdString(), "kept true [False]");
}

/// The callback takes the lock by itself; what it raises goes through native code as what it is.
TEST_F(Blocking, CallsBackAndLetsInterruptionsThrough) {
    const auto code = [](const std::function<std::int64_t(std::int64_t)>& back) { return back(20) + 1; };
    EXPECT_EQ(evaluate(ling::blocking(code), "back", "return native(lambda n: n * 2)"), "41");
    for (const char* raised : {"KeyboardInterrupt", "ValueError"}) {
        std::string source = "def back(n): raise ";
        source += raised;
        source += "\ntry:\n  native(back)\nexcept BaseException as e:\n  return type(e.__cause__ or e).__name__";
        EXPECT_EQ(evaluate(ling::blocking(code), "back", source.c_str()), raised);
    }
}

/// A thread that holds no lock has none to let go.
TEST_F(Blocking, IsCalledByTheHostAsAnyOther) {
    EXPECT_EQ(ling::make_function("native", "", ling::blocking([] { return 7; }))().asInteger(), 7);
}

}  // namespace
