#include "language/code_wrap.h"

namespace ling::python {

ling::String wrapMethod(const ling::String& code, std::span<const ling::String> variables) {
    ling::string_builder text;
    text.append("def ling_outer():\n");
    for (const ling::String& name : variables)
        text.append("\tglobal ").append(name).append("\n");
    for (const ling::String& line : code.split(u"\n"))
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
