#pragma once

#include "ling/interruption.h"
#include "ling/shown_values.h"
#include "ling/walk_check.h"
#include "services/item_cursor.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <vector>

namespace ling::internal {

/// The making of one display text.
///
/// Open containers are kept in a list, not on the stack, so that deep ones can be shown. What is being shown by this
/// thread already, here or by anybody else (`shown_scope`), shows as "..." where it comes round again. A text may have
/// a limit: from there on "..." stands for what is left out, and open brackets are closed. The same goes for what is
/// left when the run ends too soon, which it notes for the `walk_check` of the thread.
class display_run {
public:
    explicit display_run(std::size_t limit = std::numeric_limits<std::size_t>::max()) noexcept : limit_(limit) {}
    display_run(const display_run&) = delete;
    display_run& operator=(const display_run&) = delete;

    String text(const Any& value);

private:
    enum class Shape : std::uint8_t { Items, Pairs };
    struct level {
        Any container;
        shown_scope shown;
        item_cursor items;
        Shape shape;
        bool made;  ///< Came out of a lazy or external value.
        const char* close;
        const char* closeSingle;  ///< In place of `close` after exactly one item.
        std::size_t written = 0;
    };

    void write(const Any& value);
    void writeContent(const Any& value);
    String cutText(const String& text) const;
    void writeText(const String& text);
    void writeQuoted(std::u16string_view text);
    void writeBytes(std::string_view bytes);
    void writeObject(const Any& value);
    void writeFunction(const Any& value);
    void writeNext();
    void close(bool isCut);
    struct brackets {
        const char* open;
        const char* close;
        const char* closeSingle;
    };
    void open(const Any& container, brackets around, Shape shape, item_cursor items);
    void openMap(const Any& map);
    void openSet(const Any& set);
    std::optional<String> ownText(const Any& value);
    bool isFull() const noexcept { return walk_check::isEnded() || out_.length() >= limit_; }
    /// How many items of one container can be met before the text is full, and one that no longer fits.
    std::size_t mostItems() const noexcept { return std::max(limit_, limit_ + 1); }
    /// How many units there is room for, at most `wanted`.
    std::size_t roomFor(std::size_t wanted) const noexcept;

    const std::size_t limit_;
    string_builder out_;
    std::vector<level> levels_;
    bool made_ = false;           // The value that is being written came out of a lazy or external one.
    std::size_t madeLevels_ = 0;  // Open levels of such values.
    interruption_poll mustStop_;
};

}  // namespace ling::internal
