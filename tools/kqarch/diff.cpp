#include "diff.h"

#include <algorithm>
#include <cstddef>

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

bool is_near_a_change(const std::vector<diff_line>& all, size_t at) {
    size_t end = std::min(at + 2, all.size());
    for (size_t i = at > 0 ? at - 1 : 0; i < end; ++i)
        if (all[i].kind != change::kept) return true;
    return false;
}

}  // namespace

std::vector<diff_line> diff(const lines& before, const lines& after) {
    std::vector<diff_line> all = whole_diff(before, after);
    std::vector<diff_line> near;
    for (size_t i = 0; i < all.size(); ++i)
        if (is_near_a_change(all, i)) near.push_back(all[i]);
    return near;
}
