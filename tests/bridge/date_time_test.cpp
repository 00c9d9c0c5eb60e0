#include "bridge/date_time.h"

#include "bridge/convert.h"
#include "host/cached_import.h"
#include "support/describe.h"
#include "support/python_test.h"
#include "support/script.h"

namespace {

constexpr const char* kClasses = R"(
from datetime import *
import types
class Offset(tzinfo):
    def __init__(self, offset, name='here'):
        self.offset = offset
        self.name = name
    def utcoffset(self, when):
        if isinstance(self.offset, Exception):
            raise self.offset
        return self.offset
    def tzname(self, when):
        if isinstance(self.name, Exception):
            raise self.name
        return self.name
    def dst(self, when):
        return None
class Whole(timedelta):
    def total_seconds(self):
        return int(super().total_seconds())
class Failing(timedelta):
    def total_seconds(self):
        raise KeyError('seconds')
fields = types.SimpleNamespace(year=2024, month=2, day=29, hour=1, minute=2, second=3, microsecond=4,
                               utcoffset=lambda: None)
no_day = types.SimpleNamespace(year=2024, month=2)
text_day = types.SimpleNamespace(year=2024, month=2, day='29')
)";

class DateTimeTest : public PythonTest {};

struct Row {
    const char* expression;
    const char* expected;
    const char* pending = "";
};

constexpr Row kRows[] = {
    {"date(1, 1, 1)", "Date 0001-01-01"},
    {"date(9999, 12, 31)", "Date 9999-12-31"},
    {"time()", "Time 00:00:00"},
    {"time(23, 59, 59, 999999)", "Time 23:59:59.999999000"},
    {"datetime(2024, 2, 29, 1, 2, 3, 4)", "DateTime 2024-02-29T01:02:03.000004000"},
    // The offset of Python's own `timedelta` is a float, and is lost with zone and fold.
    {"datetime(2024, 1, 1, tzinfo=timezone.utc)", "DateTime 2024-01-01T00:00:00"},
    {"time(1, tzinfo=Offset(timedelta(hours=2)))", "Time 01:00:00"},
    {"time(1, tzinfo=Offset(None))", "Time 01:00:00"},
    {"time(1, tzinfo=Offset(Whole(hours=2)))", "Time 01:00:00+02:00"},
    {"time(1, tzinfo=Offset(Whole(hours=-2, minutes=-30)))", "Time 01:00:00-02:30"},
    {"datetime(2024, 1, 1, tzinfo=Offset(Whole(hours=2)))", "DateTime 2024-01-01T00:00:00+02:00"},
    // What fails stays pending, beside what could be read.
    {"time(1, tzinfo=Offset(ValueError('offset')))", "Time 01:00:00", "ValueError: offset"},
    {"time(1, tzinfo=Offset(Failing(hours=2)))", "Time 01:00:00", "KeyError: 'seconds'"},
    {"time(1, tzinfo=Offset(Whole(hours=2), ValueError('name')))", "Time 01:00:00+02:00", "ValueError: name"},
};

TEST_F(DateTimeTest, FieldsCrossToLing) {
    GilGuard gil;
    define("date_time_test_classes", kClasses);
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.expression);
        PyRef object = eval(row.expression);
        EXPECT_EQ(describe(toLing(object.get())), row.expected);
        EXPECT_EQ(takePending(), row.pending);
    }
}

TEST_F(DateTimeTest, ZoneNameAndFoldComeWithAWholeOffset) {
    GilGuard gil;
    define("date_time_test_classes", kClasses);
    PyRef object = eval("time(1, 2, 3, 4, tzinfo=Offset(Whole(hours=2), 'zone'), fold=1)");
    const std::optional<Time> time = readTime(object.get());
    ASSERT_TRUE(time);
    EXPECT_EQ(time->nanoSeconds(), 4000U);
    EXPECT_EQ(time->offset(), 7200);
    EXPECT_EQ(time->zoneName().toStdString(), "zone");
    EXPECT_EQ(time->fold(), 1);
    object = eval("time(1, tzinfo=Offset(Whole(hours=2), None))");
    EXPECT_EQ(readTime(object.get())->zoneName().toStdString(), "");
}

TEST_F(DateTimeTest, AllFieldsMustBeIntegers) {
    GilGuard gil;
    define("date_time_test_classes", kClasses);
    PyRef fields = eval("fields");
    EXPECT_EQ(describe(*readDate(fields.get())), "Date 2024-02-29");
    EXPECT_EQ(describe(*readDateTime(fields.get())), "DateTime 2024-02-29T01:02:03.000004000");
    PyRef noDay = eval("no_day");
    EXPECT_EQ(readDate(noDay.get()), std::nullopt);
    EXPECT_EQ(takePending(), "AttributeError: 'types.SimpleNamespace' object has no attribute 'day'");
    PyRef textDay = eval("text_day");
    EXPECT_EQ(readDate(textDay.get()), std::nullopt);
    EXPECT_EQ(readTime(textDay.get()), std::nullopt);
    EXPECT_EQ(takePending(), "AttributeError: 'types.SimpleNamespace' object has no attribute 'hour'");
}

TEST_F(DateTimeTest, ValuesOfBothSidesComeBackEqual) {
    EXPECT_EQ(script(R"(
from datetime import date, datetime, time
from decimal import Decimal
values = [date(1, 1, 1), date(9999, 12, 31), time(23, 59, 59, 999999), datetime(1, 1, 1), date(2024, 2, 29),
          datetime(9999, 12, 31, 23, 59, 59, 999999), time(1, 2, 3, 4)]
values += [Decimal(text) for text in ('123456789012345678901234567890', '-0.000000000000000000000000000001', 'NaN',
           '-sNaN12', 'Infinity', '-Infinity', '0E+3', '1E+999999999', '1E-999999999999', '1.10', '-0', '1E-999',
           '-1.000000000000000000000000000000000001E+40')]
return [value for value in values if repr(ling.List([value])[0]) != repr(value)]
)"),
              "[]");
}

TEST_F(DateTimeTest, AnImportThatFailsIsNotTriedAgainAndNotSeen) {
    static constinit CachedImport missing{"no_such_module_anywhere", "thing"};
    static constinit CachedImport attribute{"decimal", "no_such_name"};
    GilGuard gil;
    PyErr_SetString(PyExc_KeyError, "before");
    EXPECT_EQ(missing.get(), nullptr);
    EXPECT_EQ(attribute.get(), nullptr);
    EXPECT_EQ(takePending(), "KeyError: 'before'");
    run("import decimal\ndecimal.no_such_name = 5");
    EXPECT_EQ(attribute.get(), nullptr);
    run("del decimal.no_such_name");
}

TEST_F(DateTimeTest, AModuleThatIsStillBeingImportedMayYetHaveTheName) {
    static constinit CachedImport late{"cached_import_test_module", "thing"};
    GilGuard gil;
    run("import sys, types\n"
        "module = types.ModuleType('cached_import_test_module')\n"
        "module.__spec__ = types.SimpleNamespace(_initializing=True)\n"
        "sys.modules['cached_import_test_module'] = module");
    EXPECT_EQ(late.get(), nullptr);
    run("module.thing = 'there'\nmodule.__spec__._initializing = False");
    EXPECT_NE(late.get(), nullptr);
    run("del sys.modules['cached_import_test_module']");
    EXPECT_NE(late.get(), nullptr);
}

}  // namespace
