#include "host/scheme_loader.h"

#include "ling/byte_array.h"
#include "ling/error.h"
#include "ling/extension.h"
#include "support/python_test.h"

#include <unistd.h>
#include <cctype>
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
        {"data:,a%00b", std::string("a\0b", 3)},
        {"data:,", ""},
        {"data:;base64,", ""},
        {"data:;base64,%59%51==", "a"},
        {"DATA:,a,b", "a,b"},
        // The charset says how to read the bytes; they are given as they are.
        {"data:text/plain;charset=latin-1,%E9", "\xE9"},
        {"data:text/plain;charset=utf-8;base64,w6k=", "\xC3\xA9"},
        {"data:,\xC3\xA9", "\xC3\xA9"},
    };
    for (const DataRow& row : rows)
        EXPECT_EQ(bytesOf(ling::load_resource(row.uri)), row.bytes) << row.uri;
}

TEST_F(SchemeLoaderTest, WhatIsNoResourceIsThePythonError) {
    struct {
        const char* uri;
        const char* message;
    } const rows[] = {
        {"data:no comma", "not enough values to unpack (expected 2, got 1)"},
        {"data:;base64,YQ", "Incorrect padding"},
        {"file:///no/such/file", "<urlopen error [Errno 2] No such file or directory: '/no/such/file'>"},
        {"file:///usr", "<urlopen error [Errno 21] Is a directory: '/usr'>"},
        {"file:///a%00b", "stat: embedded null character in path"},
        {"file://elsewhere.invalid/etc", "<urlopen error file not on local host>"},
        {"http:", "<urlopen error no host given>"},
        {"http:///page", "<urlopen error no host given>"},
        {"http://127.0.0.1:port/", "nonnumeric port: 'port'"},
        {"http://127.0.0.1/a b", "URL can't contain control characters. '/a b' (found at least ' ')"},
        {"http://127.0.0.1:1/", "<urlopen error [Errno 111] Connection refused>"},
        {"https://127.0.0.1:1/", "<urlopen error [Errno 111] Connection refused>"},
        {"ftp://127.0.0.1:1/", "<urlopen error [Errno 111] Connection refused>"},
        {"ftp:", "<urlopen error ftp error: no host given>"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(messageOf(ling::load_resource(row.uri)), row.message) << row.uri;
}

TEST_F(SchemeLoaderTest, OtherSchemesAreNotPythons) {
    EXPECT_EQ(messageOf(ling::load_resource("gopher://127.0.0.1/")), "Unknown URI scheme: 'gopher'.");
    EXPECT_EQ(messageOf(ling::load_resource("no scheme")), "Unknown URI scheme: ''.");
    EXPECT_EQ(messageOf(ling::python::loadResource(ling::Any(), ling::String("gopher://127.0.0.1/"))),
              "<urlopen error unknown url type: gopher>");
}

/// Every byte that is not a letter, a digit or a slash, as an escape.
std::string escaped(const std::string& path) {
    std::string uri;
    for (const char byte : path) {
        char text[4] = {byte};
        if (std::isalnum(static_cast<unsigned char>(byte)) == 0 && byte != '/')
            (void)std::snprintf(text, sizeof(text), "%%%02X", static_cast<unsigned char>(byte));
        uri += text;
    }
    return uri;
}

TEST_F(SchemeLoaderTest, FilesAreGivenWholeWhateverTheirNames) {
    std::string content(100'000, 'x');
    content[1] = '\0';
    content[2] = '\r';
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("ling loader " + std::to_string(getpid()));
    std::filesystem::create_directory(folder);
    for (const char* name : {"plain", "two words", "100%", "%20", "a#b?c", "a;b&c=d",
                             "\xC3\xA4\xE4\xB8\xAD\xF0\x9F\x90\x8D", "line\nend"}) {
        SCOPED_TRACE(name);
        const std::filesystem::path file = folder / name;
        std::ofstream(file, std::ios::binary) << content;
        const std::string path = escaped(file.string());
        EXPECT_EQ(bytesOf(ling::load_resource(ling::String("file://" + path))), content);
        EXPECT_EQ(bytesOf(ling::load_resource(ling::String("file://localhost" + path))), content);
        EXPECT_EQ(bytesOf(ling::load_resource(ling::String("file:" + path))), content);
    }
    for (const char* unescaped : {"two words", "\xC3\xA4\xE4\xB8\xAD\xF0\x9F\x90\x8D"})
        EXPECT_EQ(bytesOf(ling::load_resource(ling::String("file://" + (folder / unescaped).string()))), content);
    std::filesystem::remove_all(folder);
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
