#include "host/scheme_loader.h"
#include "ling/byte_array.h"
#include "ling/error.h"
#include "ling/extension.h"
#include "support/describe.h"
#include "support/python_test.h"

#include <unistd.h>
#include <atomic>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <thread>

/// What the providers of the plug-in answer for URIs, of good and of bad servers. How Python fetches is Python's own.

namespace {

Any load(const std::string& uri) { return load_resource(String(uri)); }

/// The bytes as text, or "error: " and the message.
std::string outcome(const Any& value) {
    if (internal::is_error_result(value))
        return "error: " + messageOf(value);
    const Result<ByteArray> bytes = ByteArray::cast(value);
    return bytes ? std::string(bytes->view()) : "no bytes: " + describe(value);
}

std::string allBytes() {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte)
        bytes.push_back(static_cast<char>(byte));
    return bytes;
}

/// A server on threads of this interpreter's: whoever kept the lock while it waits would wait for ever.
constexpr const char* kServer = R"(
import http.server, socket, threading, time
begun, may_end = threading.Event(), threading.Event()
class Page(http.server.BaseHTTPRequestHandler):
    def log_message(self, *arguments): pass
    def do_GET(self):
        status, body, headers = 200, b'a page', {}
        if self.path == '/bytes':
            body, headers = bytes(range(256)), {'Content-Type': 'text/plain; charset=utf-16'}
        elif self.path == '/missing': status = 404
        elif self.path == '/cut': headers = {'Content-Length': '1000'}
        elif self.path == '/moved': status, headers = 302, {'Location': '/found'}
        elif self.path == '/slow':
            begun.set()
            body = b'released' if may_end.wait(20) else b'given up'
        elif self.path == '/release': may_end.set()
        self.send_response(status)
        for header in headers.items(): self.send_header(*header)
        self.end_headers()
        self.wfile.write(body)
server = http.server.ThreadingHTTPServer(('127.0.0.1', 0), Page)
serving = threading.Thread(target=server.serve_forever, daemon=True)
serving.start()
def address_of(socket): return 'http://127.0.0.1:%d' % socket.getsockname()[1]
address = address_of(server.socket)
def rude():
    """One that has no more to say in the middle of a request, and then resets the connection."""
    listening = socket.create_server(('127.0.0.1', 0))
    def serve():
        client, _ = listening.accept()
        client.shutdown(socket.SHUT_WR)
        time.sleep(0.1)
        client.close()
        listening.close()
    threading.Thread(target=serve, daemon=True).start()
    return address_of(listening)
)";

class LoaderTest : public PythonTest {
protected:
    /// The threads that answered may still be at it.
    void TearDown() override {
        runLocked(
            "import threading\n"
            "for thread in threading.enumerate():\n    if 'process_request' in thread.name: thread.join()\n");
        PythonTest::TearDown();
    }
    /// What a thread holds that still runs at the end looks like a leak.
    static void TearDownTestSuite() {
        GilGuard gil;
        PyRun_SimpleString(
            "import sys\n"
            "if tests := sys.modules.get('loader_test_server'):\n"
            "    tests.server.shutdown()\n    tests.serving.join()\n");
    }
    void startServer() {
        GilGuard gil;
        define("loader_test_server", kServer);
    }
};

TEST_F(LoaderTest, AnUriGivesItsBytesOrTheReason) {
    startServer();
    const std::string http = text("address");
    const std::pair<std::string, std::string> rows[] = {
        {"data:text/plain;base64,aGVsbG8=", "hello"},
        {"data:application/octet-stream;base64,AAH/", std::string("\0\1\xff", 3)},
        {"data:,a%00b", std::string("a\0b", 3)},
        {"DATA:,a,b", "a,b"},
        {"data:text/plain;charset=latin-1,%E9", "\xE9"},  // The charset says how to read the bytes.
        {"data:,\xC3\xA9", "\xC3\xA9"},
        {"data:no comma", "error: not enough values to unpack (expected 2, got 1)"},
        {"file:///no/such/file", "error: <urlopen error [Errno 2] No such file or directory: '/no/such/file'>"},
        {"file:///usr", "error: <urlopen error [Errno 21] Is a directory: '/usr'>"},
        {"http:", "error: <urlopen error no host given>"},
        {"ftp://127.0.0.1:1/", "error: <urlopen error [Errno 111] Connection refused>"},
        {"https://127.0.0.1:1/", "error: <urlopen error [Errno 111] Connection refused>"},
        {"gopher://127.0.0.1/", "error: Unknown URI scheme: 'gopher'."},
        {http + "/found", "a page"},
        {http + "/bytes", allBytes()},
        {http + "/moved", "a page"},
        {http + "/missing", "error: HTTP Error 404: Not Found"},
        {http + "/cut", "error: IncompleteRead(6 bytes read, 994 more expected)"},
    };
    for (const auto& [uri, expected] : rows)
        EXPECT_EQ(outcome(load(uri)), expected) << uri;
}

TEST_F(LoaderTest, FilesAreGivenWholeWhateverTheirNames) {
    std::string content(100'000, 'x');
    content[1] = '\0';
    content[2] = '\r';
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("ling loader " + std::to_string(getpid()));
    std::filesystem::create_directory(folder);
    const std::pair<const char*, const char*> rows[] = {
        {"two words", "two%20words"}, {"%20", "%2520"}, {"a#b?c", "a%23b%3Fc"}, {"\xC3\xA4", "%C3%A4"}, {"\n", "%0A"}};
    for (const auto& [name, escaped] : rows) {
        SCOPED_TRACE(name);
        std::ofstream(folder / name, std::ios::binary) << content;
        const std::string path = folder.parent_path().string() + "/ling%20loader%20" + std::to_string(getpid()) + "/";
        for (const char* start : {"file://", "file://localhost", "file:"})
            EXPECT_EQ(outcome(load(start + path + escaped)), content) << start;
    }
    EXPECT_EQ(outcome(load("file://" + (folder / "two words").string())), content);
    std::filesystem::remove_all(folder);
}

TEST_F(LoaderTest, OtherThreadsGoOnWhileOneWaitsForAServer) {
    startServer();
    std::string slow;
    std::atomic<bool> answered = false;
    std::thread waiting([&] {
        slow = outcome(load(text("address") + "/slow"));
        answered = true;
    });
    EXPECT_EQ(text("begun.wait(20)"), "True");
    EXPECT_EQ(outcome(load("data:,meanwhile")), "meanwhile");
    EXPECT_FALSE(answered);
    EXPECT_EQ(outcome(load(text("address") + "/release")), "a page");
    waiting.join();
    EXPECT_EQ(slow, "released");
    runLocked("begun.clear()\nmay_end.clear()\n");
}

TEST_F(LoaderTest, AServerThatResetsTheConnectionDoesNotEndTheHost) {
    startServer();
    const auto before = std::signal(SIGPIPE, SIG_DFL);
    const std::string told = outcome(load(text("rude()") + "/" + std::string(16 << 20, 'x')));
    EXPECT_TRUE(told.starts_with("error: ")) << told.substr(0, 100);
    std::signal(SIGPIPE, before);
    runLocked("import urllib.parse\nurllib.parse.clear_cache()\n");  // It remembers addresses, this one included.
    sigset_t blocked;
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    EXPECT_EQ(sigismember(&blocked, SIGPIPE), 0) << "The thread does not hear of broken pipes any more.";
}

TEST_F(LoaderTest, ThePathIsOfNoUseAndTheUriIsText) {
    EXPECT_EQ(outcome(loadResource(Any(), String("data:,x"))), "x");
    EXPECT_EQ(messageOf(loadResource(Any(), Any(1))),
              "'int' object has no attribute 'timeout' and no __dict__ for setting new attributes");
}

}  // namespace
