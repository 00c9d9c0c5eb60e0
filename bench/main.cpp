/// What crossing between Python and `ling` costs, each row beside the best hand-written code for the same work in the
/// same process. Prints a table and writes it as JSON.
///
///     ling_bench [--only TEXT] [--json FILE]     only rows with TEXT in their name; FILE is "benchmark.json" if not
///     given

#include "rows.h"

#include "host/search_paths.h"
#include "ling/extension.h"

#include <cstdio>
#include <cstring>
#include <iterator>

namespace {

using namespace ling::bench;

struct Options {
    std::string only;
    std::string json = "benchmark.json";
};

bool parse(int count, char** texts, Options& options) {
    for (int i = 1; i + 1 < count; i += 2) {
        if (std::strcmp(texts[i], "--only") == 0)
            options.only = texts[i + 1];
        else if (std::strcmp(texts[i], "--json") == 0)
            options.json = texts[i + 1];
        else
            return false;
    }
    return count % 2 == 1;
}

void startHost() {
    ling::python::addOwnSearchPaths();
    (void)ling::run_init_handlers();
}

/// Whole processes come first, while this one is small: what a new process inherits for a moment counts as its memory.
template <class Use>
void forEachRow(const std::string& only, Use&& use) {
    for (auto part : {processRows, hostRows, pythonRows, containerRows, growthRows}) {
        if (part == hostRows)
            startHost();
        for (const Row& row : part())
            if (row.name.find(only) != std::string::npos)
                use(row);
    }
}

const char* verdict(const Row& row, const Figures& figures) { return figures.figure <= row.target ? "kept" : "missed"; }

/// The names of rows are plain text without quotes.
bool writeJson(const std::string& file, const std::vector<Row>& rows, const std::vector<Figures>& all) {
    std::FILE* out = std::fopen(file.c_str(), "w");
    if (out == nullptr)
        return false;
    std::fputs("[\n", out);
    for (std::size_t i = 0; i < rows.size(); ++i)
        std::fprintf(out,
                     "  {\"row\": \"%s\", \"ns\": %.2f, \"yardstick_ns\": %.2f, \"figure\": %.3f, \"target\": %g, "
                     "\"outcome\": \"%s\"}%s\n",
                     rows[i].name.c_str(), all[i].nanoseconds, all[i].yardstick, all[i].figure, rows[i].target,
                     verdict(rows[i], all[i]), i + 1 < rows.size() ? "," : "");
    std::fputs("]\n", out);
    return std::fclose(out) == 0;
}

}  // namespace

int main(int count, char** texts) {
    Options options;
    if (!parse(count, texts, options)) {
        std::fprintf(stderr, "usage: ling_bench [--only TEXT] [--json FILE]\n");
        return 2;
    }
    std::vector<Row> rows;
    std::vector<Figures> all;
    std::printf("%-44s %12s %12s %8s %8s\n", "row", "ns", "by hand", "ratio", "target");
    forEachRow(options.only, [&](const Row& row) {
        const Figures it = row.measure();
        std::printf("%-44s %12.1f %12.1f %8.2f %8.2f  %s\n", row.name.c_str(), it.nanoseconds, it.yardstick, it.figure,
                    row.target, verdict(row, it));
        std::fflush(stdout);
        rows.push_back(row);
        all.push_back(it);
    });
    return writeJson(options.json, rows, all) ? 0 : 1;
}
