#include "ling/extension.h"
#include "runtime/support/values.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace ling::testing {
namespace {

namespace fs = std::filesystem;

/// A directory of copies of the small extensions. A copy is a library of its own: it is loaded, and its initialisers
/// run, whatever tests ran before.
class Extensions : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "ling-extensions-XXXXXX").string();
        directory_ = mkdtemp(pattern.data());
        const Any module = find_or_create_module(u"extension_log");
        insert_property_value(module, property_ident_untyped("lines"), lines_);
    }
    void TearDown() override {
        EXPECT_TRUE(init_handlers_unsafe().empty()) << "Handlers were left in the queue.";
        init_handlers_unsafe().clear();
        fs::remove_all(directory_);
    }

    fs::path add(const char* extension, const fs::path& name) {
        fs::copy_file(fs::path(LING_TEST_EXTENSIONS) / (std::string(extension) + ".so"), directory_ / name);
        return directory_ / name;
    }
    /// One line for each report: the name of the file, and the problem where there is one.
    std::vector<std::string> load() {
        std::vector<std::string> told;
        for (const ExtensionReport& report : load_extensions(directory_)) {
            const std::string problem = report.problem.toStdString();
            told.push_back(report.file.filename().string() + (problem.empty() ? "" : ": " + problem));
        }
        return told;
    }
    std::vector<std::string> log() const {
        std::vector<std::string> lines;
        for (const Any& line : lines_.copyItems())
            lines.push_back(shown(line));
        return lines;
    }

    using Lines = std::vector<std::string>;
    fs::path directory_;
    const List_Generic lines_;
};

TEST_F(Extensions, StartOneAfterTheOtherInTheOrderOfTheirNames) {
    add("plain", "c.so");
    add("levels", "b.so");
    add("plain", u8"\u00e4 space.so");
    add("plain", "B.so");
    EXPECT_EQ(load(), (Lines{"B.so", "b.so", "c.so", "\u00e4 space.so"}));
    EXPECT_EQ(log(), (Lines{"plain: entry", "levels: entry", "levels: 1 first", "levels: 1 second",
                            "levels: 1 queued by the entry", "levels: 2", "levels: 3", "levels: 1 queued late",
                            "levels: 4", "levels: 4 queued late", "plain: entry", "plain: entry"}));
}

TEST_F(Extensions, ThoseThatCannotStartAreSkippedWithTheirHandlers) {
    add("no_entry", "a.so");
    add("throwing_entry", "b.so");
    add("borrowed_entry", "c.so");
    add("plain", "d.so");
    EXPECT_EQ(load(), (Lines{"a.so: The library has no function 'quorvanta_extension_init'.",
                             "b.so: The function 'quorvanta_extension_init' failed: No site packages.",
                             "c.so: The library has no function 'quorvanta_extension_init'.", "d.so"}));
    EXPECT_EQ(log(), (Lines{"throwing_entry: entry", "plain: entry"}));
    EXPECT_TRUE(run_init_handlers().empty());
    EXPECT_EQ(log().size(), 2u) << "A dropped handler ran later.";
}

TEST_F(Extensions, WhatCannotBeLoadedIsReported) {
    const std::string unresolved = add("unresolved", "a.so").string();
    const std::string text = (directory_ / "b.so").string();
    std::ofstream(text) << "This is no library, and it is long enough not to be taken for a short one.\n";
    std::ofstream(directory_ / "c.so");
    add("plain", "d.so");
    EXPECT_EQ(load(), (Lines{"a.so: " + unresolved + ": undefined symbol: functionThatNobodyHas",
                             "b.so: " + text + ": invalid ELF header",
                             "c.so: " + (directory_ / "c.so").string() + ": file too short", "d.so"}));
    EXPECT_EQ(log(), (Lines{"plain: entry"}));
}

TEST_F(Extensions, AHandlerThatThrowsEndsAlone) {
    add("throwing_handler", "a.so");
    EXPECT_EQ(load(), (Lines{"a.so: An initialisation handler failed: No classes.\n"
                             "An initialisation handler failed: An exception of an unknown kind."}));
    EXPECT_EQ(log(), (Lines{"throwing_handler: entry", "throwing_handler: 1", "throwing_handler: 4"}));
}

TEST_F(Extensions, OnlyRegularFilesWithTheSuffixCount) {
    fs::create_directory(directory_ / "directory.so");
    fs::create_symlink(directory_ / "absent", directory_ / "broken.so");
    add("plain", "upper.SO");
    add("plain", "version.so.1");
    add("plain", ".so");
    fs::create_directory(directory_ / "below");
    add("plain", "below/deep.so");
    fs::create_symlink("upper.SO", directory_ / "link.so");
    EXPECT_EQ(load(), (Lines{"link.so"}));
    EXPECT_EQ(log(), (Lines{"plain: entry"}));
}

TEST_F(Extensions, OneThatIsInUseDoesNotStartAgain) {
    add("levels", "a.so");
    fs::create_symlink("a.so", directory_ / "b.so");
    EXPECT_EQ(load(), (Lines{"a.so", "b.so"}));
    const std::size_t lines = log().size();
    EXPECT_EQ(load(), (Lines{"a.so", "b.so"}));
    EXPECT_EQ(log().size(), lines);
}

TEST_F(Extensions, OneThatFailedDoesNotStartAgainAndIsStillReported) {
    add("throwing_entry", "a.so");
    add("throwing_handler", "b.so");
    const Lines told = load();
    ASSERT_EQ(told.size(), 2u);
    const std::size_t lines = log().size();
    EXPECT_EQ(load(), told);
    EXPECT_EQ(log().size(), lines);
}

TEST_F(Extensions, ADirectoryThatCannotBeReadIsReported) {
    const fs::path absent = directory_ / "absent";
    const std::vector<ExtensionReport> reports = load_extensions(absent);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].file, absent);
    EXPECT_EQ(shown(reports[0].problem), "Unable to read the directory: No such file or directory.");
    std::ofstream(directory_ / "file") << "x";
    EXPECT_EQ(shown(load_extensions(directory_ / "file").at(0).problem),
              "Unable to read the directory: Not a directory.");
}

std::vector<std::string> ran;

TEST_F(Extensions, WhatOthersQueuedStaysQueued) {
    ran.clear();
    add_init_handler(InitLevel::Start, [] { ran.push_back("earlier"); });
    add("levels", "a.so");
    add("no_entry", "b.so");
    load();
    EXPECT_EQ(ran, Lines());
    EXPECT_EQ(init_handlers_unsafe().size(), 1u);
    EXPECT_TRUE(run_init_handlers().empty());
    EXPECT_EQ(ran, (Lines{"earlier"}));
}

TEST(InitHandlers, RunByLevelAndThenInOrder) {
    ran.clear();
    add_init_handler(InitLevel::Functions, [] { ran.push_back("4"); });
    add_init_handler(InitLevel::Start, [] { ran.push_back("2a"); });
    add_init_handler(InitLevel::Start, nullptr);
    init_handlers_unsafe().emplace_back(InitLevel::Start, [] {
        ran.push_back("2b");
        throw std::runtime_error("2b failed");
    });
    add_init_handler(InitLevel::Classes, [] {
        ran.push_back("1");
        add_init_handler(InitLevel::Start, [] { ran.push_back("2c"); });
    });
    EXPECT_EQ(run_init_handlers(), (std::vector<String>{u"2b failed"}));
    EXPECT_EQ(ran, (std::vector<std::string>{"1", "2a", "2b", "2c", "4"}));
    EXPECT_TRUE(run_init_handlers().empty());
}

}  // namespace
}  // namespace ling::testing
