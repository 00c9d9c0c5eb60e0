#include "ling/iterable.h"

#include "bridge/convert.h"
#include "ling/ling.h"
#include "proxies/python_proxy.h"
#include "support/describe.h"
#include "support/python_test.h"

namespace {

constexpr const char* kObjects = R"(
import array, collections
def raising():
    yield 1
    yield 2
    raise ValueError('third')
def ending_by_itself():
    yield 1
    raise RuntimeError('no end')
def interrupted():
    yield 1
    raise KeyboardInterrupt
def endless():
    try:
        while True: yield 0
    finally: ended.append(True)
ended = []
def reentering():
    yield next(running[0])
running = []
class Given:
    def __init__(self, iterator): self.iterator = iterator
    def __iter__(self):
        if isinstance(self.iterator, BaseException): raise self.iterator
        return self.iterator
class OddStop:
    class Stop(StopIteration): pass
    def __iter__(self): return self
    def __next__(self): raise self.Stop
class Contains:
    answers = {}
    def __init__(self, answer): self.answer = answer
    def __iter__(self): return iter(())
    def __contains__(self, value): return self.answer
class NoIter:
    __iter__ = None
    def __getitem__(self, i): raise IndexError
class Grows(dict):
    def __iter__(self):
        for key in super().__iter__():
            self[key + 1] = None
            yield key
)";

/// Iterates Python objects as `ling` code does.
class ProxyIteration : public PythonTest {
protected:
    Any proxy(const char* expression) {
        GilGuard gil;
        define("proxy_iteration_test_objects", kObjects);
        PyRef object = eval(expression);
        return toLing(object.get());
    }
    static Any iteratorOf(const Any& iterable) { return iterable.callMethod(I_Iterable_Generic::$iter); }
    static Any next(const Any& iterator) { return iterator.callMethod(I_Iterator_Generic::$next); }
    static bool isEnd(const Any& value) { return raw_class_of(value).isSameAs(StopIteration::getClass()); }
    /// All steps of an iteration in one line; its end is "end", or the error.
    static std::string steps(const Any& iterator, int limit = 10) {
        std::string line;
        while (limit-- > 0) {
            const Any item = next(iterator);
            if (isEnd(item))
                return line + "end";
            if (internal::is_error_result(item))
                return line + messageOf(item);
            line += display(item).toStdString() + " ";
        }
        return line + "...";
    }
};

struct Walk {
    const char* object;
    const char* expected;
};

constexpr Walk kWalks[] = {
    {"[]", "end"},
    {"[1, 'a']", "1 a end"},
    {"frozenset()", "end"},
    {"{1}", "1 end"},
    {"range(2, 8, 3)", "2 5 end"},
    {"collections.deque([1, 2])", "1 2 end"},
    {"array.array('d', [0.5, 2])", "0.5 2 end"},
    {"{'a': 1}.items()", "('a', 1) end"},
    {"raising()", "1 2 third"},
    {"ending_by_itself()", "1 no end"},
    {"interrupted()", "1 The call was interrupted."},
    {"endless()", "0 0 0 0 0 0 0 0 0 0 ..."},
    {"OddStop()", "end"},
    {"(2 ** n for n in (3, 70, 4))", "8 -1 16 end"},  // Beyond 64 bits: the value that says so.
};

TEST_F(ProxyIteration, StepsAsPythonDoes) {
    for (const Walk& walk : kWalks) {
        SCOPED_TRACE(walk.object);
        EXPECT_EQ(steps(iteratorOf(proxy(walk.object))), walk.expected);
    }
}

TEST_F(ProxyIteration, AnIteratorThatCannotBeHadIsAnError) {
    EXPECT_EQ(messageOf(iteratorOf(proxy("Given(ValueError('none'))"))), "none");
    EXPECT_EQ(messageOf(iteratorOf(proxy("Given(SystemExit(3))"))), "The call was interrupted.");
    EXPECT_EQ(messageOf(proxy("raising()").callMethod(I_Iterable_Generic::$collect)), "third");
    EXPECT_EQ(messageOf(next(iteratorOf(proxy("Given(5)")))), "The object is not an iterator.");
    EXPECT_EQ(messageOf(iteratorOf(PythonProxyIterable::getClass().allocateInstance())), "Invalid object.");
    EXPECT_TRUE(isEnd(next(PythonProxyIterator::getClass().allocateInstance())));
    GilGuard gil;
    PyRef plain = eval("NoIter()");
    const Any asIterable = PythonProxy::create(ProxyClass::Iterable, plain.get());
    EXPECT_EQ(messageOf(iteratorOf(asIterable)), "Missing '__iter__' method.");
    EXPECT_EQ(messageOf(asIterable.callMethod(I_Iterable_Generic::$collect)), "Missing '__iter__' method.");
}

TEST_F(ProxyIteration, ContainersStartAnewAndGeneratorsGoOn) {
    const Any set = proxy("frozenset([7])");
    const Any first = iteratorOf(set);
    const Any second = iteratorOf(set);
    EXPECT_EQ(steps(first), "7 end");
    EXPECT_EQ(steps(second), "7 end");
    EXPECT_EQ(steps(second), "end");  // The end stays.
    const Any generator = proxy("(i for i in range(3))");
    const Any one = iteratorOf(generator);
    const Any other = iteratorOf(generator);
    EXPECT_EQ(display(next(one)), u"0");
    EXPECT_EQ(steps(other), "1 2 end");
    EXPECT_EQ(steps(one), "end");
}

TEST_F(ProxyIteration, DroppingAnIterationEndsTheGenerator) {
    EXPECT_EQ(steps(iteratorOf(proxy("endless()")), 2), "0 0 ...");
    EXPECT_EQ(text("ended.pop()"), "True");
}

TEST_F(ProxyIteration, AnIterationThatEntersItselfIsAnError) {
    const Any generator = proxy("(running.clear(), running.append(reentering()), running[0])[2]");
    EXPECT_EQ(steps(iteratorOf(generator)), "generator already executing");
    runLocked("running.clear()");
}

TEST_F(ProxyIteration, AContainerThatChangesMeanwhileIsAnError) {
    const Any map = proxy("{1: 2}.keys()");
    EXPECT_EQ(steps(iteratorOf(proxy("iter(Grows({0: 0}))"))), "0 dictionary changed size during iteration");
    EXPECT_EQ(messageOf(proxy("iter(Grows({0: 0}))").callMethod(I_Iterable_Generic::$collect)),
              "dictionary changed size during iteration");
    EXPECT_EQ(steps(iteratorOf(map)), "1 end");
}

constexpr Walk kContains[] = {
    {"Contains(True)", "true"},
    {"Contains(False)", "false"},
    {"Contains(1)", "error: Unable to cast a value of class 'ling.Integer' to 'ling.Boolean'."},
    {"Contains('yes')", "error: Unable to cast a value of class 'ling.String' to 'ling.Boolean'."},
    {"frozenset([5])", "true"},
    {"iter([5])", "error: The method is missing: __contains__, target object: "},  // No scan of what is left.
};

TEST_F(ProxyIteration, MembershipIsAskedNeverSearched) {
    for (const Walk& row : kContains) {
        SCOPED_TRACE(row.object);
        const Any iterable = proxy(row.object);
        const std::string answer = describe(iterable.callMethod(I_Iterable_Generic::$contains, {5}));
        EXPECT_EQ(answer.substr(0, std::string(row.expected).size()), row.expected);
    }
}

/// One value answers that it has no form, beside the error; an operation on all of them has the error for its result.
TEST_F(ProxyIteration, AnItemWithoutAFormEndsWhatTakesAll) {
    const Any list = proxy("[2 ** 70, 5]");
    const Any map = proxy("{2 ** 70: 1}");
    const Any good = proxy("frozenset([5])");
    for (const char* expression : {"[1, 2 ** 70]", "frozenset([1, 2 ** 70])", "iter((1, 2 ** 70))",
                                   "{1: 1, 2 ** 70: 1}", "collections.deque([1, 2 ** 70])"}) {
        SCOPED_TRACE(expression);
        const List_Generic target{9};
        EXPECT_EQ(messageOf(target.extend(proxy(expression))), "int too big to convert");
        EXPECT_EQ(messageOf(target.callMethod(Any::$__add__, {proxy(expression)})), "int too big to convert");
        EXPECT_EQ(target.size(), 1u);
        iteration walk = unchecked<I_Iterable_Generic>(proxy(expression)).beginImpl();
        while (walk.advance())
            EXPECT_TRUE(walk.item().isSameAs(1));
        EXPECT_EQ(messageOf(walk.error()), "int too big to convert");
    }
    EXPECT_EQ(unchecked<I_Sequence_Generic>(list).at(0).asInteger(), -1);
    EXPECT_EQ(display(unchecked<I_Map_Generic>(map).keys()), String("[-1]"));
    // What is left beside one answer is no concern of the next operation.
    EXPECT_TRUE(unchecked<I_Iterable_Generic>(good).collectImpl());
}

}  // namespace
