#include "language/code_wrap.h"

#include <string_view>

namespace ling::python {

namespace {

constexpr std::u16string_view kBlanks = u" \t\f\r";

/// How far the first line is indented that is neither blank nor a comment: what Python takes for the indentation of
/// the whole body.
std::u16string_view indentationOf(std::span<const ling::String> lines) {
    for (const ling::String& line : lines) {
        const std::size_t first = line.view().find_first_not_of(kBlanks);
        if (first != std::u16string_view::npos && line.view()[first] != u'#')
            return line.view().substr(0, first);
    }
    return {};
}

}  // namespace

ling::String wrapMethod(const ling::String& code, std::span<const ling::String> variables) {
    ling::string_builder text;
    text.append("def ling_outer():\n");
    const std::vector<ling::String> lines = code.split(u"\n");
    const std::u16string_view indentation = indentationOf(lines);
    for (const ling::String& name : variables)
        text.append("\t").append(indentation).append("global ").append(name).append("\n");
    for (const ling::String& line : lines)
        text.append("\t").append(line).append("\n");
    text.append(names::kStoreResult).append("( ling_outer() )\n");
    for (const ling::String& name : variables)
        text.append(names::kStoreLocal).append("('").append(name).append("',").append(name).append(")\n");
    return text.build();
}

ling::String wrapFunctionBody(const ling::String& body) {
    ling::string_builder text;
    text.append("def ").append(names::kBodyFunction).append("(*args):");
    for (const ling::String& line : body.split(u"\n"))
        text.append("\n\t").append(line);
    return text.build();
}

}  // namespace ling::python
