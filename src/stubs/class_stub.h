#pragma once

#include "stubs/annotations.h"

#include <set>
#include <string>

namespace ling::python {

/// One function of a stub, indented by `indent`.
///
/// `head` is all but the documentation: "def take(self, count: int) -> None".
std::string definition(const std::string& indent, const std::string& head, const ling::String& doc);

/// What a function says about itself.
ling::String docOf(const ling::I_Invokable_Generic& function);

/// A text as the documentation of what it stands in, indented, or nothing.
std::string documentation(const std::string& indent, const ling::String& doc);

/// The class as a stub declares it, under its own name. One whose instances Python sees as objects of a type of its own
/// is no type for Python: it becomes an object that can be called. Needs the interpreter lock.
std::string stubOfClass(const ling::Class_Generic& cls, Annotations& annotations);

/// The names that such a stub declares in the class.
std::set<std::string> namesInStubOf(const ling::Class_Generic& cls);

}  // namespace ling::python
