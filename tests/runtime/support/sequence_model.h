#pragma once

#include "runtime/support/values.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

namespace ling::testing {

/// What a mutable sequence should do, told with a plain vector. Each operation answers what the sequence answers, as
/// text.
class sequence_model {
public:
    std::vector<int> items;

    std::string set(int index, int item) {
        const auto position = at(index);
        if (!position)
            return outOfRange(index);
        items[*position] = item;
        return "none";
    }
    std::string append(int item) {
        items.push_back(item);
        return "none";
    }
    std::string appendAt(int index, int item) {
        const int size = static_cast<int>(items.size());
        const int place = std::clamp(index < 0 ? index + size : index, 0, size);
        items.insert(items.begin() + place, item);
        return "none";
    }
    std::string extend(std::vector<int> more) {
        items.insert(items.end(), more.begin(), more.end());
        return "none";
    }
    std::string pop(int index) {
        const auto position = at(index);
        if (!position)
            return outOfRange(index);
        const int item = items[*position];
        items.erase(items.begin() + static_cast<std::ptrdiff_t>(*position));
        return std::to_string(item);
    }
    std::string removeAt(int index, int count) {
        if (count < 1)
            return "none";
        const auto position = at(index);
        if (!position)
            return outOfRange(index);
        if (*position + static_cast<std::size_t>(count) > items.size())
            return outOfRange(index + count - 1);
        const auto first = items.begin() + static_cast<std::ptrdiff_t>(*position);
        items.erase(first, first + count);
        return "none";
    }
    std::string removeOne(int item) {
        const auto found = std::find(items.begin(), items.end(), item);
        if (found == items.end())
            return "false";
        items.erase(found);
        return "true";
    }
    std::string clear() {
        items.clear();
        return "none";
    }
    std::string content() const {
        std::string text = "[";
        for (const int item : items)
            text += (text.size() == 1 ? "" : ", ") + std::to_string(item);
        return text + "]";
    }

private:
    std::optional<std::size_t> at(int index) const {
        const int size = static_cast<int>(items.size());
        const int position = index < 0 ? index + size : index;
        if (position < 0 || position >= size)
            return std::nullopt;
        return static_cast<std::size_t>(position);
    }
    static std::string outOfRange(int index) { return "error: Index out of range: " + std::to_string(index) + "."; }
};

/// One operation, done to the model and to a sequence.
struct sequence_operation {
    const char* name;
    std::string (*onModel)(sequence_model&);
    Any (*onSequence)(const I_MutableSequence_Generic&);
};

inline constexpr sequence_operation kSequenceOperations[] = {
    {"append 1", [](auto& m) { return m.append(1); }, [](auto& s) { return s.append(1); }},
    {"append 2", [](auto& m) { return m.append(2); }, [](auto& s) { return s.append(2); }},
    {"insert first", [](auto& m) { return m.appendAt(0, 3); }, [](auto& s) { return s.appendAt(0, 3); }},
    {"insert before last", [](auto& m) { return m.appendAt(-1, 4); }, [](auto& s) { return s.appendAt(-1, 4); }},
    {"insert far out", [](auto& m) { return m.appendAt(9, 5); }, [](auto& s) { return s.appendAt(9, 5); }},
    {"insert far before", [](auto& m) { return m.appendAt(-9, 5); }, [](auto& s) { return s.appendAt(-9, 5); }},
    {"set first", [](auto& m) { return m.set(0, 6); }, [](auto& s) { return s.set(0, 6); }},
    {"set last", [](auto& m) { return m.set(-1, 7); }, [](auto& s) { return s.set(-1, 7); }},
    {"set third", [](auto& m) { return m.set(2, 8); }, [](auto& s) { return s.set(2, 8); }},
    {"pop", [](auto& m) { return m.pop(-1); }, [](auto& s) { return s.pop(); }},
    {"pop first", [](auto& m) { return m.pop(0); }, [](auto& s) { return s.pop(0); }},
    {"pop before last", [](auto& m) { return m.pop(-2); }, [](auto& s) { return s.pop(-2); }},
    {"remove first", [](auto& m) { return m.removeAt(0, 1); }, [](auto& s) { return s.removeAt(0); }},
    {"remove two", [](auto& m) { return m.removeAt(1, 2); }, [](auto& s) { return s.removeAt(1, 2); }},
    {"remove last two", [](auto& m) { return m.removeAt(-2, 2); }, [](auto& s) { return s.removeAt(-2, 2); }},
    {"remove none", [](auto& m) { return m.removeAt(7, 0); }, [](auto& s) { return s.removeAt(7, 0); }},
    {"remove a 1", [](auto& m) { return m.removeOne(1); }, [](auto& s) { return s.removeOne(1); }},
    {"extend",
     [](auto& m) {
         return m.extend({1, 9});
     },
     [](auto& s) { return s.extend(listOf(1, 9)); }},
    {"extend by itself", [](auto& m) { return m.extend(m.items); }, [](auto& s) { return s.extend(s); }},
    {"clear", [](auto& m) { return m.clear(); }, [](auto& s) { return s.clear(); }},
};

/// Runs every list of `length` operations on the sequences that `make` makes, which hold `start`, and on the model.
/// Stops at the first difference. The content is read back in two ways: item by item, and by an iteration that began
/// before the last operation, which has to show what was there then when `snapshots` are promised.
template <class Make>
void expectAgreement(int length, bool snapshots, Make&& make, const std::vector<int>& start = {}) {
    constexpr int kCount = static_cast<int>(std::size(kSequenceOperations));
    int total = 1;
    for (int i = 0; i < length; ++i)
        total *= kCount;
    for (int run = 0; run < total && !::testing::Test::HasFailure(); ++run) {
        const Any made = make();
        const auto& sequence = unchecked<I_MutableSequence_Generic>(made);
        sequence_model model;
        model.items = start;
        std::string done;
        for (int step = 0, rest = run; step < length; ++step, rest /= kCount) {
            const sequence_operation& operation = kSequenceOperations[rest % kCount];
            done += std::string(operation.name) + "; ";
            const std::string before = model.content();
            const Any earlier = sequence.iter();
            ASSERT_EQ(shown(operation.onSequence(sequence)), operation.onModel(model)) << done;
            if (snapshots) {
                ASSERT_EQ(walked(earlier), before) << done;
            }
            ASSERT_EQ(walked(sequence), model.content()) << done;
            ASSERT_EQ(shown(sequence.length()), std::to_string(model.items.size())) << done;
        }
    }
}

}  // namespace ling::testing
