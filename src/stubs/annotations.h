#pragma once

#include "ling/class.h"
#include "ling/type.h"

#include <map>
#include <set>
#include <string>
#include <string_view>

namespace ling::python {

/// Which way a value goes: what Python may pass on, or what it gets.
enum class Way : bool { Taken, Given };

/// A class whose instances are objects of a Python type of their own where Python sees them: numbers, texts, dates.
bool isSeenAsPythonType(const ling::Class_Generic& cls);

/// The types in the stub of one module, as Python's annotations, and the imports that they need.
///
/// What a module declares hides what is built in, and what a class declares hides both. So what has the same name as a
/// member of any class here is reached through a module. Needs the interpreter lock.
class Annotations {
public:
    /// The names that the module declares, and those that its classes do.
    Annotations(std::string module, std::set<std::string> declared, std::set<std::string> members)
        : module_(std::move(module)), declared_(std::move(declared)), members_(std::move(members)) {}

    std::string of(const ling::Type& type, Way way);
    /// The class by its name; "typing.Any" where no name leads to it.
    std::string nameOf(const ling::Class_Generic& cls);
    /// A name of a module as it can be written here.
    std::string name(const std::string& module, const std::string& name);
    std::string any() { return name("typing", "Any"); }

    /// The lines that import what was used so far.
    std::string imports() const;

private:
    /// Empty where it may be anything.
    std::string ofClass(const ling::Class_Generic& cls, Way way);
    std::string ofInterface(const std::string& abstract, const ling::Class_Generic& cls);
    std::string parametersOf(const std::string& abstract, const ling::Class_Generic& cls);
    std::string imported(const std::string& module);
    bool isTaken(const std::string& name) const { return declared_.contains(name) || members_.contains(name); }

    const std::string module_;
    const std::set<std::string> declared_;
    const std::set<std::string> members_;
    std::map<std::string, std::string> imports_;  // What a module is called here.
};

}  // namespace ling::python
