#include "bridge/text.h"

#include "support/python_test.h"

#include <algorithm>
#include <string_view>

namespace {

class TextTest : public PythonTest {
protected:
    /// The way over UTF-8 that the short way stands for.
    static String overUtf8(PyObject* unicode) {
        PyRef bytes = PyRef::steal(PyUnicode_AsUTF8String(unicode));
        if (!bytes)
            return {};
        return String::fromUTF8(
            {PyBytes_AS_STRING(bytes.get()), static_cast<std::size_t>(PyBytes_GET_SIZE(bytes.get()))});
    }
    static PyRef overUtf8(const String& text) {
        const std::string bytes = text.toStdString();
        return PyRef::steal(PyUnicode_FromStringAndSize(bytes.data(), static_cast<Py_ssize_t>(bytes.size())));
    }
    static std::string takePendingError() {
        PyRef error = PyRef::steal(PyErr_GetRaisedException());
        PyRef shown = PyRef::steal(error ? PyObject_Repr(error.get()) : nullptr);
        return shown ? PyUnicode_AsUTF8(shown.get()) : "";
    }
};

// Each width of storage, and what stands at the edges of each.
constexpr const char* kTexts[] = {
    "''",
    "'a\\0b'",
    "'\\xff' * 33",
    "'\\ud7ff\\ue000\\uffff'",
    "'\\U0010ffff' + 'a' * 100",
    "'\\u20ac\\U0001f600\\0'",
    "type('Text', (str,), {'__str__': lambda self: 'other'})('derived')",
};

constexpr const char* kNoTexts[] = {
    "'\\ud800'",
    "'\\udfff'",
    "'\\ud83d\\ude00'",
    "'a' * 100 + '\\udc00'",
    "'\\ud800' + 'a' * 64",
    "'\\U0001f600\\ud800'",
    "'a' * 31 + '\\udbff' + 'b'",
};

struct Units {
    const char* name;
    std::u16string_view units;
};
constexpr Units kUnits[] = {
    {"empty", u""},
    {"zero", std::u16string_view(u"a\0b", 3)},
    {"leading alone", std::u16string_view(u"\xD800", 1)},
    {"trailing alone", std::u16string_view(u"x\xDC00y", 3)},
    {"two leading", std::u16string_view(u"\xD800\xD83D\xDE00", 3)},
    {"reversed pair", std::u16string_view(u"\xDE00\xD83D", 2)},
    {"leading at the end of a block",
     std::u16string_view(u"0123456789abcdef0123456789abcde\xD83D\xDE00 0123456789abcdef0123456789abcdef", 66)},
};

TEST_F(TextTest, FromPythonAgreesWithTheWayOverUtf8) {
    GilGuard gil;
    for (const char* expression : kTexts) {
        SCOPED_TRACE(expression);
        PyRef text = eval(expression);
        const String made = textFromPython(text.get());
        EXPECT_EQ(PyErr_Occurred(), nullptr);
        EXPECT_EQ(made.view(), overUtf8(text.get()).view());
        PyRef back = PyRef::steal(textToPython(made));
        EXPECT_EQ(PyUnicode_Compare(back.get(), text.get()), 0);
    }
}

TEST_F(TextTest, LoneSurrogatesGiveAnEmptyStringAndTheErrorOfTheEncoder) {
    GilGuard gil;
    for (const char* expression : kNoTexts) {
        SCOPED_TRACE(expression);
        PyRef text = eval(expression);
        EXPECT_EQ(textFromPython(text.get()).length(), 0U);
        const std::string pending = takePendingError();
        (void)overUtf8(text.get());
        EXPECT_EQ(pending, takePendingError());
        EXPECT_EQ(pending.substr(0, 18), "UnicodeEncodeError");
    }
}

TEST_F(TextTest, ToPythonAgreesWithTheWayOverUtf8) {
    GilGuard gil;
    for (const Units& row : kUnits) {
        SCOPED_TRACE(row.name);
        const String text(row.units);
        PyRef made = PyRef::steal(textToPython(text));
        PyRef expected = overUtf8(text);
        ASSERT_TRUE(made);
        EXPECT_EQ(PyUnicode_Compare(made.get(), expected.get()), 0);
        // Python takes a string that is stored wider than it needs for another one.
        EXPECT_EQ(PyUnicode_KIND(made.get()), PyUnicode_KIND(expected.get()));
        EXPECT_EQ(PyUnicode_IS_ASCII(made.get()), PyUnicode_IS_ASCII(expected.get()));
        EXPECT_EQ(PyObject_Hash(made.get()), PyObject_Hash(expected.get()));
    }
}

/// Texts are looked at in blocks: a unit that is wider than its neighbours is seen wherever it stands.
TEST_F(TextTest, EachPlaceInABlockCounts) {
    GilGuard gil;
    for (const char16_t odd : {u'a', u'\u007F', u'\u0080', u'\u00FF', u'\u0100', u'\uD7FF', u'\uE000', u'\xD800'}) {
        for (std::size_t place = 0; place < 40; ++place) {
            for (const std::size_t length : {place + 1, std::size_t(40), place + 33}) {
                std::u16string units(std::max(length, place + 1), u'x');
                units[place] = odd;
                const String text(units);
                PyRef made = PyRef::steal(textToPython(text));
                PyRef expected = overUtf8(text);
                ASSERT_EQ(PyUnicode_Compare(made.get(), expected.get()), 0)
                    << static_cast<unsigned>(odd) << " at " << place;
                ASSERT_EQ(PyUnicode_KIND(made.get()), PyUnicode_KIND(expected.get()))
                    << static_cast<unsigned>(odd) << " at " << place;
                ASSERT_EQ(PyUnicode_IS_ASCII(made.get()), PyUnicode_IS_ASCII(expected.get()))
                    << static_cast<unsigned>(odd) << " at " << place;
                ASSERT_EQ(textFromPython(made.get()).view(), overUtf8(made.get()).view())
                    << static_cast<unsigned>(odd) << " at " << place;
            }
        }
    }
}

TEST_F(TextTest, PartsOfLongStringsConvert) {
    GilGuard gil;
    const String whole(std::u16string(5000, u'x') + u"\U0001F600" + std::u16string(200, u'y'));
    const String part = whole.sliced(4998, 200);
    PyRef made = PyRef::steal(textToPython(part));
    EXPECT_EQ(textFromPython(made.get()).view(), part.view());
    EXPECT_EQ(PyUnicode_GET_LENGTH(made.get()), 199);
}

}  // namespace
