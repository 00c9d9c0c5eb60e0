#pragma once

#include "services/item_cursor.h"

#include <optional>
#include <unordered_set>
#include <vector>

namespace ling::internal {

/// The making of one display text.
///
/// Open containers are kept in a list, not on the stack, so that deep ones can be shown. What is being shown by this
/// thread, here or in a run that waits for a class to give the text of its instance, shows as "..." where it comes
/// round again.
class display_run {
public:
    display_run() noexcept : outer_(innermost_) { innermost_ = this; }
    display_run(const display_run&) = delete;
    display_run& operator=(const display_run&) = delete;
    ~display_run() { innermost_ = outer_; }

    String text(const Any& value);

private:
    enum class Shape : std::uint8_t { Items, Pairs };
    struct level {
        Any container;
        item_cursor items;
        Shape shape;
        const char* close;
        const char* closeSingle;  ///< In place of `close` after exactly one item.
        std::size_t written = 0;
    };

    void write(const Any& value);
    void writeContent(const Any& value);
    void writeObject(const Any& value);
    void writeFunction(const Any& value);
    void writeNext();
    void open(const Any& container, const char* opening, level opened);
    void openMap(const Any& map);
    void openSet(const Any& set);
    std::optional<String> ownText(const Any& value);
    bool isBeingShown(const object_value* object) const;

    static inline thread_local constinit display_run* innermost_ = nullptr;
    display_run* const outer_;
    string_builder out_;
    std::vector<level> levels_;
    std::unordered_set<const object_value*> shown_;
};

}  // namespace ling::internal
