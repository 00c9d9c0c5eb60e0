#include "history.h"

#include <cstdio>
#include <cstdlib>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ling::shell {

namespace {

constexpr int kLines = 2000;

std::filesystem::path directoryFrom(const char* variable) {
    const char* value = std::getenv(variable);
    return value != nullptr && *value == '/' ? value : "";
}

}  // namespace

std::filesystem::path LineHistory::defaultFile() {
    if (const std::filesystem::path state = directoryFrom("XDG_STATE_HOME"); !state.empty())
        return state / "lingsh" / "history";
    const std::filesystem::path home = directoryFrom("HOME");
    return home.empty() ? home : home / ".lingsh_history";
}

LineHistory::LineHistory(std::filesystem::path file) : file_(std::move(file)), record_(history_winit()) {
    HistEventW event;
    (void)history_w(record_, &event, H_SETSIZE, kLines);
    if (!file_.empty())
        load();
}

LineHistory::~LineHistory() { history_wend(record_); }

/// A file that has grown to twice what is remembered is written anew.
void LineHistory::load() {
    std::error_code failure;  // Shows again, in the file that cannot be opened.
    if (std::filesystem::create_directories(file_.parent_path(), failure))
        std::filesystem::permissions(file_.parent_path(), std::filesystem::perms::owner_all, failure);
    HistEventW event;
    const int loaded = history_w(record_, &event, H_LOAD, file_.c_str());
    if (loaded > 2 * kLines)
        (void)history_w(record_, &event, H_SAVE, file_.c_str());
}

void LineHistory::add(const std::wstring& line) {
    if (line == last_ || line.find_first_not_of(L" \t") == std::wstring::npos)
        return;
    last_ = line;
    HistEventW event;
    (void)history_w(record_, &event, H_ENTER, line.c_str());
    if (file_.empty())
        return;
    const int descriptor = open(file_.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, S_IRUSR | S_IWUSR);
    std::FILE* stream = descriptor < 0 ? nullptr : fdopen(descriptor, "a");
    if (stream == nullptr)
        return;
    (void)std::fseek(stream, 0, SEEK_END);  // Only an empty file gets the editor's heading.
    HistoryW* const single = history_winit();
    (void)history_w(single, &event, H_SETSIZE, 1);
    (void)history_w(single, &event, H_ENTER, line.c_str());
    (void)history_w(single, &event, H_SAVE_FP, stream);
    history_wend(single);
    (void)std::fclose(stream);
}

}  // namespace ling::shell
