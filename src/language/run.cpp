#include "language/run.h"

#include "host/gil_guard.h"
#include "host/interruption.h"
#include "host/platform.h"
#include "host/py_ref.h"
#include "language/stop_signal.h"
#include "ling/error.h"
#include "proxies/python_proxy.h"

#include <pthread.h>

#include <algorithm>
#include <condition_variable>
#include <csignal>
#include <mutex>
#include <thread>
#include <vector>

namespace ling::python {

/// All runs, and the watch: a thread that ends those that are to be ended, since whoever wants that must not wait for
/// the interpreter lock. It starts with the first time limit or interruption.
///
/// The lock is taken with the interpreter lock held or not, and nothing is waited for while it is held.
class Runs {
public:
    static Runs& all() {
        static Runs& runs = *new Runs;
        return runs;
    }

    void open(Run& run);
    /// Whether anything was sent to it.
    bool close(Run& run);
    std::size_t interrupt();
    /// Whether the code of this thread is to be interrupted by the signal that just arrived.
    bool takeSignal();

private:
    using Clock = std::chrono::steady_clock;
    using Hold = std::unique_lock<std::mutex>;

    Runs();
    void startAgain();
    void unlink(Run& run);
    void startWatch();
    [[noreturn]] void watch();
    Clock::time_point mark(Clock::time_point now);
    bool sendSignals();
    void sendExceptions(bool isAlive);
    enum class Sent { Exception, Signal };
    void noteSent(unsigned long thread, Sent how);
    bool isDue() const;

    std::mutex mutex_;
    std::condition_variable* changed_ = new std::condition_variable;
    bool isWatched_ = false;
    Run* first_ = nullptr;  // The innermost run of a thread comes first.
};

namespace {

constexpr std::chrono::milliseconds kLongestPause{1000};

/// The exception by which somebody outside ended the code that answered this, borrowed, or null.
PyObject* interruptionIn(const ling::Any& outcome) {
    const ling::Result<ling::Error> error = ling::Error::cast(outcome);
    PyObject* raised = error ? PythonProxy::pythonObject(platform::originOf(*error)) : nullptr;
    return raised != nullptr && PyErr_GivenExceptionMatches(raised, PyExc_KeyboardInterrupt) != 0 ? raised : nullptr;
}

bool isEndedBySignal(double limit) {
    const auto isMeant = [] { return Runs::all().takeSignal(); };
    return limit < kNoLimit ? prepareStopSignal(isMeant) : hasStopSignal();
}

Run::Time endOf(double limit, Run::Time start) {
    constexpr double kForEver = 1e9;  // Seconds: what a clock can hold, and more than anybody waits.
    if (!(limit < kForEver))
        return Run::Time::max();
    return start + std::chrono::duration_cast<Run::Time::duration>(std::chrono::duration<double>(std::max(limit, 0.0)));
}

}  // namespace

Runs::Runs() {
    (void)pthread_atfork([] { all().mutex_.lock(); }, [] { all().mutex_.unlock(); }, [] { all().startAgain(); });
}

/// In the child of a fork, which has the runs of the thread that forked and no watch. The watch of the parent waits at
/// the old condition for ever.
void Runs::startAgain() {
    changed_ = new std::condition_variable;
    isWatched_ = false;
    const unsigned long thread = PyThread_get_thread_ident();
    for (Run* run = first_; run != nullptr; run = run->after_)
        if (run->thread_ != thread)
            unlink(*run);
    mutex_.unlock();
}

void Runs::unlink(Run& run) {
    (run.before_ != nullptr ? run.before_->after_ : first_) = run.after_;
    if (run.after_ != nullptr)
        run.after_->before_ = run.before_;
}

void Runs::open(Run& run) {
    const Hold hold(mutex_);
    run.after_ = first_;
    if (first_ != nullptr)
        first_->before_ = &run;
    first_ = &run;
    run.isOpen_ = true;
    if (run.next_ < Run::Time::max()) {
        startWatch();
        changed_->notify_one();
    }
}

bool Runs::close(Run& run) {
    const Hold hold(mutex_);
    unlink(run);
    run.isOpen_ = false;
    PyThreadState* state = PyThreadState_Get();
    if (!run.isSent_ || state->async_exc != PyExc_KeyboardInterrupt)
        return run.isSent_;
    // It has not arrived. A run around this one may have been meant as well.
    (void)PyThreadState_SetAsyncExc(run.thread_, nullptr);
    for (Run* outer = run.after_; outer != nullptr; outer = outer->after_)
        outer->isDue_ = outer->isDue_ || (outer->thread_ == run.thread_ && outer->isSent_);
    changed_->notify_one();
    return true;
}

std::size_t Runs::interrupt() {
    const Hold hold(mutex_);
    std::vector<unsigned long> threads;
    for (Run* run = first_; run != nullptr; run = run->after_) {
        run->isInterrupted_ = run->isDue_ = true;
        if (std::find(threads.begin(), threads.end(), run->thread_) == threads.end())
            threads.push_back(run->thread_);
    }
    if (!threads.empty()) {
        startWatch();
        changed_->notify_one();
    }
    return threads.size();
}

/// With the lock held. Signals of the process are none of the watch's business.
void Runs::startWatch() {
    if (isWatched_)
        return;
    sigset_t every;
    sigset_t before;
    sigfillset(&every);
    pthread_sigmask(SIG_SETMASK, &every, &before);
    std::thread([this] { watch(); }).detach();
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    isWatched_ = true;
}

void Runs::watch() {
    Hold hold(mutex_);
    for (;;) {
        const Clock::time_point next = mark(Clock::now());
        if (isDue() && !sendSignals()) {
            hold.unlock();
            {
                const GilGuard gil = GilGuard::ifAlive();
                const Hold again(mutex_);
                sendExceptions(static_cast<bool>(gil));
            }
            hold.lock();
        } else if (next < Clock::time_point::max()) {
            changed_->wait_until(hold, next);
        } else {
            changed_->wait(hold);
        }
    }
}

/// Finds the runs whose time is over. Answers when to look again.
Runs::Clock::time_point Runs::mark(Clock::time_point now) {
    Clock::time_point next = Clock::time_point::max();
    for (Run* run = first_; run != nullptr; run = run->after_) {
        if (run->next_ <= now) {
            run->isOverLimit_ = run->isDue_ = true;
            run->next_ = now + run->pause_;  // Code may catch what is raised; then it is raised again.
            run->pause_ = std::min(run->pause_ * 2, kLongestPause);
        }
        next = std::min(next, run->next_);
    }
    return next;
}

bool Runs::isDue() const {
    for (Run* run = first_; run != nullptr; run = run->after_)
        if (run->isDue_)
            return true;
    return false;
}

/// What is sent to a thread reaches all that runs there, so one is enough.
void Runs::noteSent(unsigned long thread, Sent how) {
    for (Run* run = first_; run != nullptr; run = run->after_) {
        if (run->thread_ != thread || !run->isDue_)
            continue;
        run->isDue_ = false;
        run->isSent_ = true;
        run->isSignalled_ = how == Sent::Signal;
    }
}

/// Whether that was all there was to send.
bool Runs::sendSignals() {
    for (Run* run = first_; run != nullptr; run = run->after_) {
        if (!run->isDue_ || !run->hasSignal_)
            continue;
        run->hasSignal_ = sendStopSignal();
        if (run->hasSignal_)
            noteSent(run->thread_, Sent::Signal);
    }
    return !isDue();
}

/// Where the interpreter is at its end there is nobody to send to.
void Runs::sendExceptions(bool isAlive) {
    for (Run* run = first_; run != nullptr; run = run->after_) {
        if (!run->isDue_)
            continue;
        noteSent(run->thread_, Sent::Exception);
        if (isAlive)
            (void)PyThreadState_SetAsyncExc(run->thread_, PyExc_KeyboardInterrupt);
    }
}

bool Runs::takeSignal() {
    const Hold hold(mutex_);
    const unsigned long thread = PyThread_get_thread_ident();
    bool isMeant = false;
    for (Run* run = first_; run != nullptr; run = run->after_) {
        if (run->thread_ != thread || !run->isSignalled_)
            continue;
        run->isSignalled_ = false;
        isMeant = true;
    }
    return isMeant;
}

Run::Run(double limit, Time start)
    : limit_(limit),
      thread_(PyThread_get_thread_ident()),
      hasSignal_(isEndedBySignal(limit)),
      next_(endOf(limit, start)) {
    Runs::all().open(*this);
}

Run::~Run() {
    if (isOpen_)
        (void)Runs::all().close(*this);
}

ling::Any Run::finish(ling::Any outcome) {
    // Nobody else knows this run any more when it is closed.
    if (!Runs::all().close(*this) || !isOverLimit_ || isInterrupted_)
        return outcome;
    if (interruptionIn(outcome) == nullptr && !isInterruptionHeld())
        return outcome;
    Py_XDECREF(releaseInterruption());  // It was for this run alone.
    return limitError(outcome);
}

ling::Any Run::limitError(const ling::Any& interruption) const {
    ling::Any error = platform::failure(ling::String(u"The time limit of {} seconds was exceeded.").arg(limit_));
    if (interruptionIn(interruption) != nullptr)
        platform::rememberOrigin(ling::unchecked<ling::Error>(error),
                                 platform::originOf(ling::unchecked<ling::Error>(interruption)));
    return error;
}

std::size_t interruptRuns() { return Runs::all().interrupt(); }

}  // namespace ling::python
