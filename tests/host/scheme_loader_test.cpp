#include "host/scheme_loader.h"

#include "ling/byte_array.h"
#include "ling/error.h"
#include "ling/extension.h"
#include "support/python_test.h"

#include <unistd.h>
#include <cstdio>
#include <filesystem>
#include <fstream>

namespace {

std::string bytesOf(const ling::Any& value) {
    const ling::Result<ling::ByteArray> bytes = ling::ByteArray::cast(value);
    if (!bytes) {
        ADD_FAILURE() << (ling::internal::is_error_result(value) ? messageOf(value) : "not a byte array");
        return {};
    }
    return std::string(bytes->view());
}

class SchemeLoaderTest : public PythonTest {};

struct DataRow {
    const char* uri;
    std::string bytes;
};

TEST_F(SchemeLoaderTest, DataUrisGiveTheirBytes) {
    const DataRow rows[] = {
        {"data:text/plain;base64,aGVsbG8=", "hello"},
        {"data:,plain%20text", "plain text"},
        {"data:application/octet-stream;base64,AAH/", std::string("\0\1\xff", 3)},
        {"data:,", ""},
    };
    for (const DataRow& row : rows)
        EXPECT_EQ(bytesOf(ling::load_resource(row.uri)), row.bytes) << row.uri;
}

TEST_F(SchemeLoaderTest, AMalformedUriIsThePythonError) {
    EXPECT_EQ(messageOf(ling::load_resource("data:no comma")), "not enough values to unpack (expected 2, got 1)");
}

TEST_F(SchemeLoaderTest, AFileIsGivenWhole) {
    const std::filesystem::path file =
        std::filesystem::temp_directory_path() / ("ling loader " + std::to_string(getpid()));
    std::string content(100000, 'x');
    content[1] = '\0';
    std::ofstream(file, std::ios::binary) << content;
    runLocked("import urllib.request\n");
    const std::string uri = "file://" + text(("urllib.request.pathname2url('" + file.string() + "')").c_str());
    EXPECT_EQ(bytesOf(ling::load_resource(ling::String(uri))), content);
    std::filesystem::remove(file);
    const std::string message = messageOf(ling::load_resource(ling::String(uri)));
    EXPECT_EQ(message.substr(0, 14), "<urlopen error");
    EXPECT_NE(message.find("No such file or directory"), std::string::npos) << message;
}

/// A server on this machine, in a Python thread of its own.
constexpr const char* kServer = R"(
import http.server, threading
class Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        found = self.path == '/found'
        body = b'a page' if found else b'an error page'
        self.send_response(200 if found else 404)
        self.send_header('Content-Length', str(len(body)))
        self.end_headers()
        self.wfile.write(body)
    def log_message(self, *arguments): pass
server = http.server.HTTPServer(('127.0.0.1', 0), Handler)
thread = threading.Thread(target=server.serve_forever)
thread.start()
address = 'http://127.0.0.1:%d' % server.server_port
)";

TEST_F(SchemeLoaderTest, HttpGivesThePageAndNeverTheErrorPage) {
    unsetenv("http_proxy");
    runLocked(kServer);
    const std::string address = text("address");
    EXPECT_EQ(bytesOf(ling::load_resource(ling::String(address + "/found"))), "a page");
    EXPECT_EQ(messageOf(ling::load_resource(ling::String(address + "/missing"))), "HTTP Error 404: Not Found");
    runLocked("server.shutdown()\nthread.join()\nserver.server_close()\n");
}

TEST_F(SchemeLoaderTest, ThePathIsOfNoUse) {
    EXPECT_EQ(bytesOf(ling::python::loadResource(ling::String("anything"), ling::String("data:,x"))), "x");
    EXPECT_EQ(bytesOf(ling::python::loadResource(ling::Any(), ling::String("data:,x"))), "x");
}

TEST_F(SchemeLoaderTest, AnUriThatIsNoTextIsThePythonError) {
    EXPECT_EQ(messageOf(ling::python::loadResource(ling::Any(), ling::Any(1))),
              "'int' object has no attribute 'timeout' and no __dict__ for setting new attributes");
    EXPECT_EQ(messageOf(ling::python::loadResource(ling::Any(), ling::String())), "unknown url type: ''");
}

}  // namespace
