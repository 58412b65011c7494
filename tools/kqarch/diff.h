// The difference between two texts, line by line.
#ifndef KQARCH_DIFF_H
#define KQARCH_DIFF_H

#include <string>
#include <vector>

enum class change { kept, removed, added };

struct diff_line {
    change kind;
    std::string text;
};

// What turns `before` into `after`, with one unchanged line around each change.
std::vector<diff_line> diff(const std::vector<std::string>& before,
                            const std::vector<std::string>& after);

#endif
