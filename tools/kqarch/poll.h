// What several nodes say of one thing, and what most of them say.
#ifndef KQARCH_POLL_H
#define KQARCH_POLL_H

#include <algorithm>
#include <string>
#include <vector>

class poll {
  public:
    void vote(const std::string& opinion, size_t node) {
        for (entry& one : entries_)
            if (one.opinion == opinion) return one.nodes.push_back(node);
        entries_.push_back({opinion, {node}});
    }

    bool empty() const { return entries_.empty(); }

    // Of several opinions that as many have, the one that was voted for first.
    const std::string& winner() const { return most().opinion; }
    const std::vector<size_t>& majority() const { return most().nodes; }

  private:
    struct entry {
        std::string opinion;
        std::vector<size_t> nodes;
    };

    const entry& most() const {
        return *std::max_element(entries_.begin(), entries_.end(),
                                 [](const entry& left, const entry& right) {
                                     return left.nodes.size() < right.nodes.size();
                                 });
    }

    std::vector<entry> entries_;
};

#endif
