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
    const fs::path own = process::stage() / "qcomponents/qextensions";
    const fs::path shop = process::stage().parent_path() / "examples/shop/extensions";
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

constexpr const char* kWorkers = R"(
import concurrent.futures, multiprocessing, sys
from decimal import Decimal
import ling, shop

def restock(basket):
    count, item = basket
    return ling.List([shop.Item(item.name, item.price, count)])

def sell(item):
    item.take(1)

if __name__ == "__main__":
    pen = shop.Item("pen", Decimal("1.5"))
    baskets = [ling.List([count, pen]) for count in range(3)]
    context = multiprocessing.get_context(sys.argv[1])
    with context.Pool(2) as pool:
        print([str(items[0].total) for items in pool.map(restock, baskets)])
        print(pool.map(shop.discounted, [Decimal(10)], chunksize=1))
    with concurrent.futures.ProcessPoolExecutor(2, mp_context=context) as pool:
        print([str(items[0].total) for items in pool.map(restock, baskets)])
        error = pool.submit(sell, pen).exception()
        print(isinstance(error, shop.OutOfStock.exception), ling.display(error.ling))
    queue = context.Queue()
    queue.put(baskets[2])
    print(queue.get()[1].name)
)";

class Workers : public testing::TestWithParam<const char*> {};

TEST_P(Workers, HaveTheHostAndItsExtensionsAndItsValuesTravel) {
    const process::Folder folder;
    const fs::path own = process::stage() / "qcomponents/qextensions";
    const fs::path shop = process::stage().parent_path() / "examples/shop/extensions";
    const Ended ended = process::run(process::shell({"--extensions", own.string(), "--extensions", shop.string(),
                                                     folder.write("workers.py", kWorkers).string(), GetParam()}));
    EXPECT_EQ(ended.out,
              "['0.0', '1.5', '3.0']\n[Decimal('9')]\n['0.0', '1.5', '3.0']\nTrue pen: 1 wanted, 0 left\npen\n");
    EXPECT_EQ(ended.status, 0) << ended.err;
}

INSTANTIATE_TEST_SUITE_P(Start, Workers, testing::Values("fork", "spawn", "forkserver"),
                         [](const auto& row) { return std::string(row.param); });

TEST(Documents, TheTablesOfConversionsHold) {
    const Ended ended = process::run(
        process::shell({(kScripts / "check_conversions.py").string(), (kSources / "docs/conversions.md").string()}));
    EXPECT_EQ(ended.status, 0) << ended.out << ended.err;
}

TEST(Library, EveryPublicMemberMakesTheWayToTheRuntimeAndBack) {
    process::Command walk = process::shell({(kScripts / "library_walk.py").string()});
    walk.limit = std::chrono::seconds(240);
    const Ended ended = process::run(walk);
    EXPECT_EQ(ended.status, 0) << ended.out << ended.err;
}

}  // namespace
