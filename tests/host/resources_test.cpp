#include "language/evaluate.h"
#include "ling/byte_array.h"
#include "ling/error.h"
#include "ling/extension.h"
#include "ling/hash_containers.h"
#include "support/describe.h"
#include "support/python_test.h"
#include "support/resource_server.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <memory>
#include <thread>

/// What comes back from real servers through the providers of the plug-in, in good and in bad order.

namespace {

using ling::String;

ling::Any load(const std::string& uri) { return ling::load_resource(String(uri)); }

/// The bytes as text, or "error: " and the message.
std::string outcome(const ling::Any& value) {
    if (ling::internal::is_error_result(value))
        return "error: " + messageOf(value);
    const ling::Result<ling::ByteArray> bytes = ling::ByteArray::cast(value);
    return bytes ? std::string(bytes->view()) : "no bytes: " + describe(value);
}

std::string allBytes() {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte)
        bytes.push_back(static_cast<char>(byte));
    return bytes;
}

class ResourcesTest : public PythonTest {
protected:
    static void SetUpTestSuite() { server_ = std::make_unique<ResourceServer>(); }
    static void TearDownTestSuite() { server_.reset(); }

    static inline std::unique_ptr<ResourceServer> server_;
};

struct Row {
    std::string path;
    std::string expected;
};

TEST_F(ResourcesTest, HttpGivesThePageOrTheReasonAndNeverAPart) {
    const Row rows[] = {
        {"/found", "a page"},
        {"/bytes", allBytes()},  // The charset that the server names changes nothing.
        {"/packed", "packed"},
        {"/empty", ""},
        {"/echo?a=b%20c&d#e", "/echo?a=b%20c&d"},
        {"/redirect", "a page"},
        {"/moved", "a page"},
        {"/chunks", "a page"},
        {"/unmeasured", "as long as it is"},
        {"/missing", "error: HTTP Error 404: Not Found"},
        {"/failing", "error: HTTP Error 500: Internal Server Error"},
        {"/circle",
         "error: HTTP Error 302: The HTTP server returned a redirect error that would lead to an infinite loop.\n"
         "The last 30x error message was:\nFound"},
        {"/to-file", "error: HTTP Error 302: Found - Redirection to url 'file:///etc/hostname' is not allowed"},
        {"/cut", "error: IncompleteRead(100 bytes read, 900 more expected)"},
        {"/cut-chunks", "error: IncompleteRead(100 bytes read)"},
        {"/nothing", "error: Remote end closed connection without response"},
        {"/nonsense", "error: nonsense\r\n"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(outcome(load(server_->http(row.path))), row.expected) << row.path;
}

TEST_F(ResourcesTest, FtpGivesFilesAndListings) {
    const Row rows[] = {
        {"/file.bin", allBytes()},
        {"/empty", ""},
        {"/folder/two%20words%20%C3%A9.txt", "deep\r\n"},
        {"/folder/two words \xC3\xA9.txt", "deep\r\n"},
        {"", "file.bin\r\n"},
        {"/folder/", "two words\r\n"},
        {"/folder;type=d", "two words\r\n"},
        {"/cut", std::string(100, 'x')},  // See `registerSchemeProviders`: nobody tells that more was to come.
        {"/missing", "error: <urlopen error <urlopen error ftp error: error_perm('550 No such folder.')>>"},
        {"/missing/file", "error: <urlopen error 550 No such folder.>"},
        {"/two%0D%0Alines", "error: an illegal newline character should not be contained"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(outcome(load(server_->ftp(row.path))), row.expected) << row.path;
    EXPECT_EQ(outcome(load(server_->ftp("/file.bin", "reader:secret@"))), allBytes());
    EXPECT_EQ(outcome(load(server_->ftp("/file.bin", "reader:guess@"))), "error: <urlopen error 530 Login incorrect.>");
}

TEST_F(ResourcesTest, ALargePageIsGivenWhole) {
    const std::string bytes = outcome(load(server_->http("/large")));
    ASSERT_EQ(bytes.size(), 20u << 20);
    const std::string pattern = allBytes();
    for (std::size_t start = 0; start < bytes.size(); start += pattern.size())
        ASSERT_EQ(bytes.compare(start, pattern.size(), pattern), 0) << start;
}

// The server holds the answer back until it is asked for another page, which is asked for here after Python and the
// runtime have worked, while a thread waits for the answer.
TEST_F(ResourcesTest, OtherThreadsGoOnWhileOneWaitsForAServer) {
    std::string slow;
    std::atomic<bool> answered = false;
    std::thread waiting([&] {
        slow = outcome(load(server_->http("/slow")));
        answered = true;
    });
    EXPECT_EQ(outcome(load(server_->http("/begun"))), "begun");
    const ling::Map_Generic none;
    EXPECT_EQ(describe(ling::python::evaluateExpression(String("sum(range(10))"), none, none)), "integer 45");
    EXPECT_EQ(text("'a' * 3"), "aaa");
    EXPECT_EQ(outcome(load("data:,meanwhile")), "meanwhile");
    EXPECT_FALSE(answered);
    EXPECT_EQ(outcome(load(server_->http("/release"))), "done");
    waiting.join();
    EXPECT_EQ(slow, "released");
}

/// Says that it has no more to say in the middle of a request, and then resets the connection.
class ImpoliteServer {
public:
    ImpoliteServer() : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
        address_.sin_family = AF_INET;
        address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof(address_);
        if (::bind(socket_, generic(), size) != 0 || ::listen(socket_, 1) != 0 ||
            ::getsockname(socket_, generic(), &size) != 0)
            ADD_FAILURE() << "No server.";
        thread_ = std::thread([this] {
            const int client = ::accept(socket_, nullptr, nullptr);
            ::shutdown(client, SHUT_WR);
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            ::close(client);  // With most of the request unread.
        });
    }
    ~ImpoliteServer() {
        thread_.join();
        ::close(socket_);
    }
    std::string address() const { return "http://127.0.0.1:" + std::to_string(ntohs(address_.sin_port)) + "/"; }

private:
    sockaddr* generic() { return reinterpret_cast<sockaddr*>(&address_); }

    const int socket_;
    sockaddr_in address_{};
    std::thread thread_;
};

TEST_F(ResourcesTest, AServerThatResetsTheConnectionDoesNotEndTheHost) {
    const auto before = std::signal(SIGPIPE, SIG_DFL);
    {
        const ImpoliteServer server;
        const std::string told = outcome(load(server.address() + std::string(16 << 20, 'x')));
        EXPECT_EQ(told.substr(0, 7), "error: ") << told.substr(0, 100);
    }
    std::signal(SIGPIPE, before);
    runLocked("import urllib.parse\nurllib.parse.clear_cache()\n");  // It remembers addresses, this one included.
    sigset_t blocked;
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    EXPECT_EQ(sigismember(&blocked, SIGPIPE), 0) << "The thread does not hear of broken pipes any more.";
}

TEST_F(ResourcesTest, ManyThreadsFetchAtOnce) {
    constexpr int kThreads = 8;
    std::string pages[kThreads];
    std::vector<std::thread> threads;
    for (int index = 0; index < kThreads; ++index)
        threads.emplace_back([&page = pages[index], index] {
            for (int turn = 0; turn < 5; ++turn)
                page += outcome(load(server_->http("/echo?" + std::to_string(index)))) + " ";
        });
    for (std::thread& thread : threads)
        thread.join();
    for (int index = 0; index < kThreads; ++index) {
        std::string expected;
        for (int turn = 0; turn < 5; ++turn)
            expected += "/echo?" + std::to_string(index) + " ";
        EXPECT_EQ(pages[index], expected);
    }
}

}  // namespace
