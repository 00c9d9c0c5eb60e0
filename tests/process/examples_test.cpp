#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "process/support/process.h"

/// The scripts that show what the whole is for, run as a user runs them, and the walk through the standard library.

namespace {

namespace fs = std::filesystem;
using process::Ended;

const fs::path kSources = LING_SOURCES;
const fs::path kScripts = LING_TEST_SCRIPTS;

std::string lastLine(const std::string& text) {
    const std::string trimmed = text.substr(0, text.find_last_not_of('\n') + 1);
    return trimmed.substr(trimmed.rfind('\n') + 1);
}

TEST(Examples, TheReportSummarisesTheOrdersThatAreShipped) {
    const Ended ended = process::run(process::shell({(kSources / "examples/report.py").string()}));
    EXPECT_EQ(ended.status, 0) << ended.err;
    EXPECT_EQ(ended.lines().at(0), "4042 orders from 2023-01-01 to 2024-12-30, 267,407.12 in all");
}

TEST(Examples, ThePluginAndAnotherExtensionWorkTogether) {
    const fs::path own = host_run::stage() / "qcomponents/qextensions";
    const fs::path shop = host_run::stage().parent_path() / "examples/shop/extensions";
    std::vector<std::string> arguments = {"--extensions", own.string(), "--extensions", shop.string(),
                                          (kSources / "examples/shop/report.py").string()};
    const Ended ended = process::run(process::shell(arguments));
    EXPECT_EQ(ended.status, 0) << ended.err;
    EXPECT_EQ(ended.lines().at(0), "Refused, as it should be: stock: Stock cannot be negative: -1.");
    EXPECT_EQ(lastLine(ended.out), "12 products, turnover 113619.82, 139 orders refused");

    // The programs that a program starts are in the same host.
    arguments.back() = "-c";
    arguments.emplace_back(
        "import subprocess, sys; subprocess.run([sys.executable, '-c', 'print(ling.qualname(shop))'])");
    EXPECT_EQ(process::run(process::shell(arguments)).out, "shop\n");
}

TEST(Library, EveryPublicMemberMakesTheWayToTheRuntimeAndBack) {
    process::Command walk = process::shell({(kScripts / "library_walk.py").string()});
    walk.limit = std::chrono::seconds(240);
    const Ended ended = process::run(walk);
    EXPECT_EQ(ended.status, 0) << ended.out << ended.err;
}

}  // namespace
