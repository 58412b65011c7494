#include "diff.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace {

using lines = std::vector<std::string>;

// Above this many pairs of lines the middle of a difference is shown as one block.
constexpr size_t most_pairs = 4'000'000;

// lengths[i][j]: how many lines before[i...] and after[j...] have in common, in order.
std::vector<std::vector<unsigned>> common_lengths(const lines& before, const lines& after) {
    std::vector<std::vector<unsigned>> lengths(before.size() + 1,
                                               std::vector<unsigned>(after.size() + 1));
    if (before.size() * after.size() > most_pairs) return lengths;
    for (size_t i = before.size(); i-- > 0;)
        for (size_t j = after.size(); j-- > 0;)
            lengths[i][j] = before[i] == after[j] ? lengths[i + 1][j + 1] + 1
                                                  : std::max(lengths[i + 1][j], lengths[i][j + 1]);
    return lengths;
}

std::vector<diff_line> whole_diff(const lines& before, const lines& after) {
    std::vector<std::vector<unsigned>> lengths = common_lengths(before, after);
    std::vector<diff_line> found;
    size_t i = 0;
    size_t j = 0;
    while (i < before.size() || j < after.size()) {
        if (i < before.size() && j < after.size() && before[i] == after[j]) {
            found.push_back({change::kept, before[i++]});
            ++j;
        } else if (i < before.size() &&
                   (j == after.size() || lengths[i + 1][j] >= lengths[i][j + 1])) {
            found.push_back({change::removed, before[i++]});
        } else {
            found.push_back({change::added, after[j++]});
        }
    }
    return found;
}

constexpr size_t context = 3;

bool is_near_a_change(const std::vector<diff_line>& all, size_t at) {
    size_t end = std::min(at + context + 1, all.size());
    for (size_t i = at > context ? at - context : 0; i < end; ++i)
        if (all[i].kind != change::kept) return true;
    return false;
}

size_t count_without(const diff_hunk& hunk, change kind) {
    return static_cast<size_t>(
        std::count_if(hunk.lines.begin(), hunk.lines.end(),
                      [kind](const diff_line& line) { return line.kind != kind; }));
}

// A text that has no line in the hunk is named by the line above it.
std::string range_of(size_t begin, size_t count) {
    return std::to_string(count == 0 ? begin - 1 : begin) + "," + std::to_string(count);
}

}  // namespace

std::string heading_of(const diff_hunk& hunk) {
    return "@@ -" + range_of(hunk.before, count_without(hunk, change::added)) + " +" +
           range_of(hunk.after, count_without(hunk, change::removed)) + " @@";
}

std::vector<diff_hunk> diff(const lines& before, const lines& after) {
    std::vector<diff_line> all = whole_diff(before, after);
    std::vector<diff_hunk> hunks;
    diff_hunk next;
    size_t before_line = 1;
    size_t after_line = 1;
    for (size_t i = 0; i < all.size(); ++i) {
        if (is_near_a_change(all, i)) {
            if (next.lines.empty()) next = {before_line, after_line, {}};
            next.lines.push_back(all[i]);
        } else if (!next.lines.empty()) {
            hunks.push_back(std::exchange(next, {}));
        }
        if (all[i].kind != change::added) ++before_line;
        if (all[i].kind != change::removed) ++after_line;
    }
    if (!next.lines.empty()) hunks.push_back(std::move(next));
    return hunks;
}
