// The difference between two texts, line by line.
#ifndef KQARCH_DIFF_H
#define KQARCH_DIFF_H

#include <cstddef>
#include <string>
#include <vector>

enum class change { kept, removed, added };

struct diff_line {
    change kind;
    std::string text;
};

// Changes that stand close together, with up to three unchanged lines around them.
struct diff_hunk {
    size_t before = 1;  // the line that it begins with, counted from 1
    size_t after = 1;
    std::vector<diff_line> lines = {};
};

// "@@ -3,7 +3,8 @@": where a hunk stands in both texts.
std::string heading_of(const diff_hunk& hunk);

// What turns `before` into `after`.
std::vector<diff_hunk> diff(const std::vector<std::string>& before,
                            const std::vector<std::string>& after);

#endif
