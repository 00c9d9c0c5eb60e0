#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "process/support/process.h"
#include "support/table.h"

/// Programs and packages that nobody here wrote, run by the shell: in each the host takes part. The packages are those
/// of the machine's CPython 3.13, put where the shell imports from. What is not installed is skipped.

namespace {

namespace fs = std::filesystem;
using process::Ended;

const fs::path kSources = LING_SOURCES;
const fs::path kScripts = LING_TEST_SCRIPTS;
const fs::path kExtension = process::stage().parent_path() / "examples/shop/extensions";

/// Where the machine's CPython 3.13 has packages.
const std::vector<fs::path>& packageFolders() {
    static const std::vector<fs::path> folders = [] {
        process::Command command;
        command.program = process::python();
        command.arguments = {"-c", "import site\nprint(*site.getsitepackages(), sep='\\n')"};
        const std::vector<std::string> lines = process::run(command).lines();
        return std::vector<fs::path>(lines.begin(), lines.end());
    }();
    return folders;
}

std::optional<fs::path> folderOf(const std::string& package, const std::vector<fs::path>& folders) {
    const auto found = std::ranges::find_if(folders, [&](const fs::path& each) { return fs::exists(each / package); });
    return found != folders.end() ? std::optional(*found) : std::nullopt;
}

/// A shell of its own, beside whose plug-in those packages are.
class Machine {
public:
    Machine() {
        fs::copy_file(process::stage() / "lingsh", tree_.path() / "lingsh");
        for (const fs::path& folder : packageFolders()) {
            if (!fs::exists(folder))
                continue;
            for (const fs::directory_entry& package : fs::directory_iterator(folder)) {
                const fs::path place = tree_.extensions() / "site-packages" / package.path().filename();
                if (!fs::exists(fs::symlink_status(place)))
                    fs::create_symlink(package.path(), place);
            }
        }
    }

    Ended run(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(),
                         {"--extensions", tree_.extensions().string(), "--extensions", kExtension.string()});
        process::Command command = process::shell(std::move(arguments));
        command.program = tree_.path() / "lingsh";
        command.limit = std::chrono::seconds(240);
        command.environment.emplace_back("HOME", home_.path().string());
        return process::run(command);
    }

private:
    process::ScratchTree tree_;
    process::Folder home_;
};

const Machine& machine() {
    static const Machine& shared = *new Machine;
    return shared;
}

struct Row {
    const char* name;
    const char* package;  ///< What of it is looked for.
    const char* debian;   ///< The package of Debian that has it.
    const char* lastLine;
};

const Row kPrograms[] = {
    {"numpy", "numpy", "python3-numpy", "numpy 91"},
    {"pandas", "pandas", "python3-pandas", "pandas True"},
    {"matplotlib", "matplotlib", "python3-matplotlib", "matplotlib 1"},
    {"requests", "requests", "python3-requests", "requests 404"},
    {"lxml", "lxml", "python3-lxml", "lxml 1"},
    {"pillow", "PIL", "python3-pil", "pillow 3072"},
    {"sqlalchemy", "sqlalchemy", "python3-sqlalchemy", "sqlalchemy ['ink', 'paper', 'pen']"},
    {"pydantic", "pydantic", "python3-pydantic", "pydantic 2"},
    {"pytest", "pytest", "python3-pytest", "pytest 1 True"},
    {"ipython", "IPython", "python3-ipython", "ipython 0"},
    {"ipykernel", "ipykernel", "python3-ipykernel", "ipykernel [1, 2]"},
};

LING_TABLE(Programs, testing::Test, kPrograms);

TEST_P(Programs, RunInTheHost) {
    const Row& row = GetParam();
    if (!folderOf(row.package, packageFolders()))
        GTEST_SKIP() << "CPython 3.13 has no package " << row.package << " here (on Debian 13: " << row.debian << ").";
    const fs::path program = kSources / "tests/programs" / (std::string(row.name) + "_program.py");
    const Ended ended = machine().run({program.string(), (kSources / "examples/data/orders.csv").string()});
    EXPECT_EQ(ended.status, 0) << ended.out << ended.err;
    EXPECT_TRUE(ended.out.ends_with(std::string(row.lastLine) + "\n")) << ended.out;
}

TEST(Clusters, ComputeWhatOneProcessComputes) {
    if (!folderOf("distributed", packageFolders()))
        GTEST_SKIP() << "CPython 3.13 has no package distributed here (on Debian 13: python3-distributed).";
    const std::string program = (kSources / "examples/cluster.py").string();
    const Ended alone = machine().run({program, "--alone"});
    EXPECT_EQ(alone.lines().size(), 14u) << alone.err;
    const Ended shared = machine().run({program, "--workers", "2"});
    EXPECT_EQ(shared.out, alone.out) << shared.err;
    EXPECT_EQ(shared.err, "2 workers, 2 of them processes of their own\n");
}

/// Neither needs native modules of mypy: those of another Python do.
TEST(Stubs, HoldForTheHostAndFindMistakes) {
    std::vector<fs::path> folders = packageFolders();
    folders.emplace_back("/usr/lib/python3/dist-packages");
    const auto mypy = folderOf("mypy/stubtest.py", folders);
    if (!mypy)
        GTEST_SKIP() << "mypy is not installed (on Debian: python3-mypy).";
    const process::Folder folder;
    const fs::path own = process::stage() / "qcomponents/qextensions";
    const std::vector<std::string> host = {"--extensions", own.string(), "--extensions", kExtension.string()};
    const fs::path stubs = folder.path() / "stubs";
    process::Command command = process::shell(host);
    command.arguments.insert(command.arguments.end(), {"--stubs", stubs.string()});
    const Ended written = process::run(command);
    EXPECT_EQ(written.status, 0) << written.err;
    EXPECT_EQ(written.out + written.err, "");

    command = process::shell(host);
    command.arguments.insert(command.arguments.end(),
                             {(kScripts / "check_stubs.py").string(), stubs.string(), mypy->string()});
    command.environment.emplace_back("MYPYPATH", stubs.string());
    command.limit = std::chrono::seconds(240);
    const Ended ended = process::run(command);
    EXPECT_EQ(ended.status, 0) << ended.out << ended.err;

    // A folder that cannot be: the first file that could not be written is named.
    command = process::shell({"--stubs", folder.write("file", "").string()});
    const Ended refused = process::run(command);
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err, "Unable to write '" + (folder.path() / "file/ling/__init__.pyi").string() + "'.\n");
}

}  // namespace
