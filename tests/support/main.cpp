#include "support/host_environment.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

/// What Python's `urllib` and `ssl` read of the user's environment, when they are first used. The tests have servers of
/// their own.
constexpr const char* kNetworkVariables[] = {
    "http_proxy",  "https_proxy", "ftp_proxy", "all_proxy", "no_proxy",      "REQUEST_METHOD", "HTTP_PROXY",
    "HTTPS_PROXY", "FTP_PROXY",   "ALL_PROXY", "NO_PROXY",  "SSL_CERT_FILE", "SSL_CERT_DIR",
};

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    for (const char* name : kNetworkVariables)
        unsetenv(name);
    if (!GTEST_FLAG_GET(list_tests))
        startHost();
    return RUN_ALL_TESTS();
}
