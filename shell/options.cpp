#include "options.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <string_view>

namespace ling::shell {

namespace {

constexpr int kWrongUsage = 2;

/// Flags of `python3` that say what the shell's interpreter is anyway: isolated, without `site`, writing no compiled
/// files. Modules that start `sys.executable` again (`multiprocessing`, for one) pass them on.
constexpr const char* kInterpreterFlags = "-B,-E,-I,-P,-S,-s,-q,-u";

bool takesValue(std::string_view argument) { return argument == "--extensions" || argument == "-e"; }

bool startsWithAny(std::string_view argument, std::initializer_list<std::string_view> prefixes) {
    return std::any_of(prefixes.begin(), prefixes.end(),
                       [argument](std::string_view prefix) { return argument.starts_with(prefix); });
}

/// How many arguments are the shell's. Those that follow a file, "-", "-m MODULE" or "-c CODE" are the program's, even
/// when they look like options.
std::size_t ownArguments(const std::vector<std::string>& arguments) {
    std::size_t index = 0;
    while (index < arguments.size()) {
        const std::string_view argument = arguments[index];
        if (argument == "-" || !argument.starts_with('-'))
            return index + 1;
        if (argument == "-m" || argument == "-c")
            return std::min(index + 2, arguments.size());
        if (startsWithAny(argument, {"-m", "-c"}))
            return index + 1;
        index += takesValue(argument) ? 2 : 1;
    }
    return arguments.size();
}

/// The option that was given, if one was, and what the shell is to do with its value.
struct Subject {
    const char* option;
    Mode mode;
    const char* value;
    const char* text;
};
constexpr std::array kSubjects = {
    Subject{"-m", Mode::Module, "MODULE", "Run a module as __main__."},
    Subject{"-c", Mode::Code, "CODE", "Run statements; print what they return."},
    Subject{"-e", Mode::Expression, "EXPR", "Evaluate one expression and print its display text."},
};

void describe(CLI::App& app, Options& options, std::string& file) {
    app.set_version_flag("--version", "lingsh " LING_VERSION, "Print the version and exit.");
    app.set_help_flag("--help,-h", "Print this text and exit.");
    app.add_option("--extensions", options.extensions,
                   "Load extensions from DIR instead of qcomponents/qextensions beside lingsh; may be repeated.")
        ->option_text("DIR")
        ->allow_extra_args(false);
    for (const Subject& subject : kSubjects)
        app.add_option(subject.option, options.subject, subject.text)->option_text(subject.value)->take_last();
    app.add_flag(kInterpreterFlags)->group("");  // Not shown.
    app.add_option("FILE", file, "Run a Python file as __main__; \"-\" runs standard input.")->option_text(" ");
    app.footer(
        "What follows FILE, -, -m MODULE or -c CODE are the program's arguments. Without any of these, the shell\n"
        "is an interactive console.");
}

/// Settles the mode. False when more than one was asked for.
bool settle(const CLI::App& app, const std::string& file, Options& options) {
    std::size_t modes = app.count("FILE");
    if (modes != 0) {
        options.mode = file == "-" ? Mode::StandardInput : Mode::File;
        options.subject = file;
    }
    for (const Subject& subject : kSubjects) {
        modes += app.count(subject.option);
        if (app.count(subject.option) != 0)
            options.mode = subject.mode;
    }
    return modes <= 1;
}

}  // namespace

std::optional<Options> parseOptions(const std::vector<std::string>& arguments, int& exitStatus) {
    CLI::App app("Runs Python programs in a host of the ling runtime.", "lingsh");
    Options options;
    std::string file;
    describe(app, options, file);
    const auto end = arguments.begin() + static_cast<std::ptrdiff_t>(ownArguments(arguments));
    try {
        app.parse(std::vector<std::string>(std::reverse_iterator(end), arguments.rend()));
        if (!settle(app, file, options))
            throw CLI::ValidationError("one of FILE, -m, -c and -e is enough");
    } catch (const CLI::ParseError& error) {
        exitStatus = app.exit(error) == 0 ? 0 : kWrongUsage;
        return std::nullopt;
    }
    options.arguments.assign(end, arguments.end());
    return options;
}

}  // namespace ling::shell
