#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "process/support/process.h"
#include "support/resource_server.h"

/// Resources in a program of its own: what its environment changes, which certificates it trusts, what it needs.

namespace {

using process::Command;
using process::Ended;
using process::Environment;

class ResourcesProcess : public testing::Test {
protected:
    static void SetUpTestSuite() { server_ = std::make_unique<ResourceServer>(); }
    static void TearDownTestSuite() { server_.reset(); }

    /// What the shell prints of a resource that is text; the last line of the complaint when there is none.
    static std::string load(const std::string& uri, const Environment& environment = {}) {
        Command command = process::shell({"-c", "print(ling.load_resource('" + uri + "').decode())"});
        command.environment.insert(command.environment.end(), environment.begin(), environment.end());
        const Ended ended = process::run(command);
        const std::string text = ended.status == 0 ? ended.out : ended.err;
        const std::string trimmed = text.substr(0, text.find_last_not_of('\n') + 1);
        return trimmed.substr(trimmed.rfind('\n') + 1);
    }

    static inline std::unique_ptr<ResourceServer> server_;
};

TEST_F(ResourcesProcess, ProxiesOfTheEnvironmentAreUsed) {
    const Environment proxy = {{"http_proxy", server_->http("")}};
    EXPECT_EQ(load("http://elsewhere.invalid/page", proxy), "through the proxy: http://elsewhere.invalid/page");
    EXPECT_EQ(load("data:,no network", proxy), "no network");
    EXPECT_EQ(load(server_->http("/found"), {{"http_proxy", server_->http("")}, {"no_proxy", "127.0.0.1"}}), "a page");
    EXPECT_EQ(load(server_->http("/found"), {{"https_proxy", "http://127.0.0.1:1"}}), "a page");
}

TEST_F(ResourcesProcess, ACertificateThatNobodyTrustsIsRefused) {
    const std::string refused =
        "RuntimeError: <urlopen error [SSL: CERTIFICATE_VERIFY_FAILED] certificate verify failed: ";
    EXPECT_EQ(load(server_->https("/found")).substr(0, refused.size() + 23), refused + "self-signed certificate");
    const Environment trusting = {{"SSL_CERT_FILE", ResourceServer::certificate()}};
    EXPECT_EQ(load(server_->https("/found"), trusting), "a page");
    const std::string otherName = "IP address mismatch, certificate is not valid for '127.0.0.1'.";
    EXPECT_EQ(load(server_->https("/found", "127.0.0.1"), trusting).substr(0, refused.size() + otherName.size()),
              refused + otherName);
    // Nothing in the environment turns the check off.
    EXPECT_EQ(load(server_->https("/found"), {{"PYTHONHTTPSVERIFY", "0"}}).substr(0, refused.size()), refused);
}

TEST_F(ResourcesProcess, ASecurePageMayNotBeAskedForWithoutSecurity) {
    const std::string port = server_->http("").substr(std::string("http://127.0.0.1").size());
    EXPECT_NE(load("https://localhost" + port + "/found").find("[SSL: "), std::string::npos);
}

// The page, the byte array of `ling` and the bytes of Python's that come back from there are three times 20 MB.
TEST_F(ResourcesProcess, LargePagesTakeTheMemoryOfAFewCopies) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "The checkers keep memory that was given back.";
#endif
    Command command = process::shell({"-c",
                                      "import resource, sys\n"
                                      "def peak(): return resource.getrusage(resource.RUSAGE_SELF).ru_maxrss // 1024\n"
                                      "size = len(ling.load_resource(sys.argv[1] + '/empty'))\n"
                                      "before = peak()\n"
                                      "for turn in range(5): size += len(ling.load_resource(sys.argv[1] + '/large'))\n"
                                      "print(size >> 20, peak() - before)\n",
                                      server_->http("")});
    const Ended ended = process::run(command);
    ASSERT_EQ(ended.out.substr(0, 4), "100 ") << ended.err;
    EXPECT_LT(std::stoi(ended.out.substr(4)), 90);
}

}  // namespace
