#include "options.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <string_view>

namespace ling::shell {

namespace {

constexpr int kWrongUsage = 2;

/// Flags of `python3` that say what the shell's interpreter is anyway (isolated, without `site`, writing no compiled
/// files), or that only its start could obey (-b, -d, -O, -R, -v). Modules that start `sys.executable` again pass them
/// on.
constexpr const char* kAcceptedFlags = "-b,-B,-d,-E,-I,-O,-P,-R,-s,-S,-v";

/// Where the value of an option is that stands at `index` among letters: behind it in the same argument, or next.
std::size_t argumentsTaken(std::string_view letters, std::size_t index) { return index + 1 < letters.size() ? 1 : 2; }

/// How many arguments are the shell's. Those that follow a file, "-", "-m MODULE" or "-c CODE" are the program's, even
/// when they look like options. Letters may stand together: "-Im MODULE".
std::size_t ownArguments(const std::vector<std::string>& arguments) {
    std::size_t index = 0;
    while (index < arguments.size()) {
        const std::string_view argument = arguments[index];
        if (argument == "-" || !argument.starts_with('-'))
            return index + 1;
        const bool isLong = argument.starts_with("--");
        const std::size_t letter = isLong ? std::string_view::npos : argument.find_first_of("cmeWX", 1);
        if (letter == std::string_view::npos) {
            index += argument == "--extensions" || argument == "--stubs" ? 2 : 1;
            continue;
        }
        index += argumentsTaken(argument, letter);
        if (argument[letter] == 'c' || argument[letter] == 'm')
            break;
    }
    return std::min(index, arguments.size());
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
    Subject{"--stubs", Mode::Stubs, "DIR", "Write .pyi files of all host modules, for what checks Python code."},
};

void describeInterpreter(CLI::App& app, Options& options, bool& showVersion) {
    app.add_flag("-i", options.interactive, "Go on with the console after the program, or without a terminal.");
    app.add_flag("-q", options.quiet, "Do not greet.");
    app.add_flag("-u", options.interpreter.unbuffered, "Write what is printed at once.");
    app.add_option("-W", options.interpreter.warnings, "Add a filter for warnings; may be repeated.")
        ->option_text("FILTER")
        ->allow_extra_args(false);
    app.add_option("-X", options.interpreter.extras, "Set an option of the interpreter; may be repeated.")
        ->option_text("OPTION")
        ->allow_extra_args(false);
    app.add_flag("-V", showVersion, "Print the version of Python and exit.");
    app.add_flag(kAcceptedFlags)->group("");  // Not shown.
}

void describe(CLI::App& app, Options& options, std::string& file, bool& showVersion) {
    app.set_version_flag("--version", "lingsh " LING_VERSION, "Print the version and exit.");
    app.set_help_flag("--help,-h", "Print this text and exit.");
    app.add_option("--extensions", options.extensions,
                   "Load extensions from DIR instead of qcomponents/qextensions beside lingsh; may be repeated.")
        ->option_text("DIR")
        ->allow_extra_args(false);
    for (const Subject& subject : kSubjects)
        app.add_option(subject.option, options.subject, subject.text)->option_text(subject.value)->take_last();
    describeInterpreter(app, options, showVersion);
    app.add_option("FILE", file, "Run a Python file as __main__; \"-\" runs standard input.")->option_text(" ");
    app.footer(
        "What follows FILE, -, -m MODULE or -c CODE are the program's arguments. Without any of these, the shell\n"
        "is an interactive console, or runs standard input where that is no terminal. Other options of python3\n"
        "that start a program in a certain way are accepted.");
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
    bool showVersion = false;
    describe(app, options, file, showVersion);
    const auto end = arguments.begin() + static_cast<std::ptrdiff_t>(ownArguments(arguments));
    try {
        app.parse(std::vector<std::string>(std::reverse_iterator(end), arguments.rend()));
        if (!settle(app, file, options))
            throw CLI::ValidationError("one of FILE, -m, -c, -e and --stubs is enough");
        if (showVersion)
            options.mode = Mode::PythonVersion;
    } catch (const CLI::ParseError& error) {
        exitStatus = app.exit(error) == 0 ? 0 : kWrongUsage;
        return std::nullopt;
    }
    options.arguments.assign(end, arguments.end());
    return options;
}

}  // namespace ling::shell
