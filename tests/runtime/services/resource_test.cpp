#include "runtime/support/live_objects.h"
#include "runtime/support/values.h"

namespace ling::testing {
namespace {

/// Answers what it was called with, as bytes.
FunctionCL_Generic echo() {
    return make_function("echo", "path, uri",
                         [](const String& path, const String& uri) { return (path + String(u"|") + uri).toUTF8(); });
}

struct UriCase {
    const char* name;
    const char* uri;
    const char* outcome;
};

class Resource : public LiveObjectsOf<::testing::TestWithParam<UriCase>> {
protected:
    static void SetUpTestSuite() {
        register_scheme_provider("echo", echo());
        register_scheme_provider("Mixed+1.x-y", echo());
        register_scheme_provider("fails", make_function("fail", "path, uri", [](const Any&, const Any&) {
                                     return internal::failure(u"Not there.");
                                 }));
        register_scheme_provider(
            "text", make_function("text", "path, uri", [](const Any&, const Any&) { return String(u"no bytes"); }));
        register_scheme_provider("lazy", make_function("lazy", "path, uri", [](const Any&, const Any&) {
                                     return Lazy_Generic([] { return ByteArray("late"); });
                                 }));
    }
};

TEST_P(Resource, GoesToTheProviderOfItsScheme) { EXPECT_EQ(shown(load_resource(GetParam().uri)), GetParam().outcome); }

INSTANTIATE_TEST_SUITE_P(
    Rows, Resource,
    ::testing::Values(UriCase{"Authority", "echo://user@host:80/a/b?q=/c#/d",
                              "b'/a/b|echo://user@host:80/a/b?q=/c#/d'"},
                      UriCase{"NoPath", "echo://host", "b'|echo://host'"},
                      UriCase{"NoPathButQuery", "echo://host?a/b", "b'|echo://host?a/b'"},
                      UriCase{"NoAuthority", "echo:text/plain,x", "b'text/plain,x|echo:text/plain,x'"},
                      UriCase{"EmptyAuthority", "echo:///a%20b", "b'/a%20b|echo:///a%20b'"},
                      UriCase{"Nothing", "echo:", "b'|echo:'"}, UriCase{"UpperCase", "ECHO:a", "b'a|ECHO:a'"},
                      UriCase{"EveryKindOfUnit", "mixed+1.X-Y:a:b", "b'a:b|mixed+1.X-Y:a:b'"},
                      UriCase{"Failure", "fails:a", "error: Not there."},
                      UriCase{"NoBytes", "text:a", "error: The provider of the URI scheme 'text' gave no bytes."},
                      UriCase{"Lazy", "lazy:a", "b'late'"},
                      UriCase{"Unknown", "ech:a", "error: Unknown URI scheme: 'ech'."},
                      UriCase{"NoScheme", "echo", "error: Unknown URI scheme: ''."},
                      UriCase{"EmptyScheme", ":a", "error: Unknown URI scheme: ''."},
                      UriCase{"Empty", "", "error: Unknown URI scheme: ''."},
                      UriCase{"DigitFirst", "1echo:a", "error: Unknown URI scheme: ''."},
                      UriCase{"PathWithColon", "/echo:a", "error: Unknown URI scheme: ''."},
                      UriCase{"NotAscii", "\u00e9cho:a", "error: Unknown URI scheme: ''."}),
    [](const auto& row) { return row.param.name; });

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
