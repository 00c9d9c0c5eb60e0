#include "host/scheme_loader.h"

#include "host/platform.h"
#include "language/evaluate.h"
#include "ling/extension.h"

#include <dlfcn.h>
#include <pthread.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <ctime>

namespace ling::python {

namespace {

constexpr const char* kSchemes[] = {"data", "file", "ftp", "http", "https"};

constexpr const char* kScript =
    "\n        import urllib.request\n\n        with urllib.request.urlopen(in_uri) as response:\n"
    "            return response.read()\n    ";

/// Keeps SIGPIPE from this thread. A server that resets the connection while a request is being written would end a
/// host that has not set the signal aside, as Python's own program does; Python is told by the failing call all the
/// same. The signal of a broken connection goes to the thread that wrote, so one that came is taken back here, before
/// the thread listens to it again. One that was pending or blocked before is the host's.
class BrokenPipesIgnored {
public:
    BrokenPipesIgnored() {
        sigemptyset(&pipe_);
        sigaddset(&pipe_, SIGPIPE);
        sigset_t pending;
        sigpending(&pending);
        isTaken_ = sigismember(&pending, SIGPIPE) == 0 && pthread_sigmask(SIG_BLOCK, &pipe_, &before_) == 0;
    }
    ~BrokenPipesIgnored() {
        if (!isTaken_)
            return;
        constexpr timespec kAtOnce{0, 0};
        while (sigtimedwait(&pipe_, nullptr, &kAtOnce) == -1 && errno == EINTR) {
        }
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    BrokenPipesIgnored(const BrokenPipesIgnored&) = delete;
    BrokenPipesIgnored& operator=(const BrokenPipesIgnored&) = delete;

private:
    sigset_t pipe_;
    sigset_t before_;
    bool isTaken_ = false;
};

/// OpenSSL takes its tables down in an exit handler of its own: a thread that is still fetching when `main` returns, in
/// `hashlib` or `ssl`, would crash there. Told so before its first use, it leaves them to the end of the process. Where
/// Python uses another library, or none, there is nothing to tell.
void keepCryptographyToTheEnd() {
    static const bool isTold [[maybe_unused]] = [] {
        constexpr std::uint64_t kNoExitHandler = 0x00080000;  // OPENSSL_INIT_NO_ATEXIT
        void* library = dlopen("libcrypto.so.3", RTLD_NOW);   // Never closed: Python is never unloaded.
        void* function = library == nullptr ? nullptr : dlsym(library, "OPENSSL_init_crypto");
        if (function == nullptr)
            return false;
        return reinterpret_cast<int (*)(std::uint64_t, const void*)>(function)(kNoExitHandler, nullptr) == 1;
    }();
}

ling::FunctionCL_Generic makeLoader() {
    const ling::FunctionCL_Generic loader = platform::makeFunction("load", "in_path, in_uri", &loadResource,
                                                                   "Fetches the resource behind a URI through Python.");
    (void)loader.setParameterDefaults({ling::String(), ling::String()});
    return loader;
}

}  // namespace

ling::Any loadResource(const ling::Any& path, const ling::Any& uri) {
    const BrokenPipesIgnored guard;
    keepCryptographyToTheEnd();
    const ling::Map_Generic variables =
        platform::makeMap({{ling::String("in_path"), path}, {ling::String("in_uri"), uri}});
    return evaluateMethod(ling::Any(), kScript, variables, platform::makeMap(), platform::makeMap());
}

void registerSchemeProviders() {
    const ling::FunctionCL_Generic loader = makeLoader();
    for (const char* scheme : kSchemes)
        ling::register_scheme_provider(scheme, loader);
}

}  // namespace ling::python
