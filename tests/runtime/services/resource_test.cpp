#include "runtime/support/values.h"

namespace ling::testing {
namespace {

/// Answers what it was called with, as bytes.
FunctionCL_Generic echo() {
    return make_function("echo", "path, uri",
                         [](const String& path, const String& uri) { return (path + String(u"|") + uri).toUTF8(); });
}

const struct UriCase {
    const char* name;
    const char* uri;
    const char* outcome;
} kUris[] = {
    {"Authority", "echo://user@host:80/a/b?q=/c#/d", "b'/a/b|echo://user@host:80/a/b?q=/c#/d'"},
    {"NoPath", "echo://host", "b'|echo://host'"},
    {"NoPathButQuery", "echo://host?a/b", "b'|echo://host?a/b'"},
    {"NoAuthority", "echo:text/plain,x", "b'text/plain,x|echo:text/plain,x'"},
    {"EmptyAuthority", "echo:///a%20b", "b'/a%20b|echo:///a%20b'"},
    {"Nothing", "echo:", "b'|echo:'"},
    {"UpperCase", "ECHO:a", "b'a|ECHO:a'"},
    {"EveryKindOfUnit", "mixed+1.X-Y:a:b", "b'a:b|mixed+1.X-Y:a:b'"},
    {"Failure", "fails:a", "error: Not there."},
    {"NoBytes", "text:a", "error: The provider of the URI scheme 'text' gave no bytes."},
    {"Lazy", "lazy:a", "b'late'"},
    {"Unknown", "ech:a", "error: Unknown URI scheme: 'ech'."},
    {"NoScheme", "echo", "error: Unknown URI scheme: ''."},
    {"EmptyScheme", ":a", "error: Unknown URI scheme: ''."},
    {"Empty", "", "error: Unknown URI scheme: ''."},
    {"DigitFirst", "1echo:a", "error: Unknown URI scheme: ''."},
    {"PathWithColon", "/echo:a", "error: Unknown URI scheme: ''."},
    {"NotAscii", "\u00e9cho:a", "error: Unknown URI scheme: ''."},
};

class Providers : public LiveObjects {
protected:
    static void SetUpTestSuite() {
        register_scheme_provider("echo", echo());
        register_scheme_provider("Mixed+1.x-y", echo());
        register_scheme_provider(
            "fails", make_function("fail", "path, uri", [](const Any&, const Any&) { return failure(u"Not there."); }));
        register_scheme_provider(
            "text", make_function("text", "path, uri", [](const Any&, const Any&) { return String(u"no bytes"); }));
        register_scheme_provider("lazy", make_function("lazy", "path, uri", [](const Any&, const Any&) {
                                     return Lazy_Generic([] { return ByteArray("late"); });
                                 }));
    }
};

LING_TABLE(Resource, Providers, kUris);

TEST_P(Resource, GoesToTheProviderOfItsScheme) { EXPECT_EQ(shown(load_resource(GetParam().uri)), GetParam().outcome); }

TEST(ResourceProviders, ALaterOneReplacesTheEarlier) {
    bool dropped = false;
    register_scheme_provider(
        "replaced", make_function("old", "path, uri", [witness = onDrop([&] {
                                                           // Dropped with nothing locked: the table is there to be
                                                           // asked.
                                                           dropped = shown(load_resource("replaced:a")) == "b'new'";
                                                       })](const Any&, const Any&) { return ByteArray("old"); }));
    EXPECT_EQ(shown(load_resource("replaced:a")), "b'old'");
    register_scheme_provider(
        "REPLACED", make_function("new", "path, uri", [](const Any&, const Any&) { return ByteArray("new"); }));
    EXPECT_TRUE(dropped);
    EXPECT_EQ(shown(load_resource("replaced:a")), "b'new'");
}

}  // namespace
}  // namespace ling::testing
