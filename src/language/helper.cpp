#include "bridge/compile_helper.h"
#include "bridge/convert.h"
#include "bridge/text.h"
#include "host/interruption.h"
#include "host/platform.h"
#include "language/builtins.h"
#include "language/code_wrap.h"
#include "language/namespace.h"
#include "language/variables.h"
#include "ling/result.h"

#include <algorithm>
#include <string_view>

namespace ling::python {

namespace {

using Helper = ling::Result<PyRef>;

constexpr std::u16string_view kBlanks = u" \t\f";
constexpr std::u16string_view kEndOfName = u" \t\f\r\n\\(:[#";

Helper notCompiled() { return Helper::failure(platform::failure(u"Unable to compile the function.")); }

Helper raised() { return Helper::failure(takePythonError()); }

Helper notFound(const ling::String& name) {
    return Helper::failure(
        platform::failure(ling::String(u"Unable to find the function: {}.").arg(platform::brief(name))));
}

/// Takes the word and the blanks behind it off the front of `text`, if it stands there.
bool takeWord(std::u16string_view& text, std::u16string_view word) {
    if (!text.starts_with(word) || kBlanks.find(text.substr(word.size(), 1)) == std::u16string_view::npos ||
        text.size() == word.size())
        return false;
    text.remove_prefix(word.size());
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    return true;
}

/// The name that a definition at the front of `text` binds, or empty when there is no definition.
std::u16string_view definedAt(std::u16string_view text) {
    (void)takeWord(text, u"async");
    return takeWord(text, u"def") ? text.substr(0, text.find_first_of(kEndOfName)) : std::u16string_view();
}

/// The same for a source text, in which decorators may come first.
std::u16string_view definedName(std::u16string_view source) {
    if (!source.starts_with(u'@'))
        return definedAt(source);
    for (std::size_t end = source.find(u'\n'); end != std::u16string_view::npos; end = source.find(u'\n', end + 1)) {
        if (const std::u16string_view name = definedAt(source.substr(end + 1)); !name.empty())
            return name;
    }
    return {};
}

Helper fromLambda(const ling::String& source, PyObject* globals) {
    PyRef made = callBuiltin(names::eval, source, globals, globals);
    if (!made)
        return raised();
    return PyCallable_Check(made.get()) != 0 ? Helper(std::move(made)) : notCompiled();
}

Helper lookUp(const ling::String& name, PyObject* globals) {
    PyRef key = PyRef::steal(textToPython(name));
    PyObject* found = key ? PyDict_GetItemWithError(globals, key.get()) : nullptr;
    if (found == nullptr && PyErr_Occurred() != nullptr)
        return raised();
    return found != nullptr && PyCallable_Check(found) != 0 ? Helper(PyRef::borrow(found)) : notFound(name);
}

Helper fromDefinition(const ling::String& source, const ling::String& name, PyObject* globals) {
    if (!callBuiltin(names::exec, source, globals, globals))
        return raised();
    return lookUp(name, globals);
}

Helper fromBody(const ling::String& body, PyObject* globals) {
    if (!callBuiltin(names::exec, wrapFunctionBody(body), globals, globals)) {
        forgetError();
        return notCompiled();
    }
    return lookUp(names::kBodyFunction, globals);
}

Helper compile(const ling::String& text) {
    PyRef globals = PyRef::steal(PyDict_New());
    if (!globals)
        return raised();
    if (ling::Any problem = bindModules(globals.get()); !problem.isNone())
        return Helper::failure(std::move(problem));
    if (text.startsWith(u"lambda "))
        return fromLambda(text, globals.get());
    if (const std::u16string_view name = definedName(text.view()); !name.empty())
        return fromDefinition(text, ling::String(name), globals.get());
    return fromBody(text, globals.get());
}

}  // namespace

PyObject* compileHelper(const ling::String& source, ling::Any& error) {
    Helper helper = compile(source.trimmed());
    if (helper)
        return helper->release();
    error = helper.error();
    return nullptr;
}

}  // namespace ling::python
