#include "document.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "catalogue.h"
#include "machine.h"

namespace bench {
namespace {

constexpr const char* begin_marker = "<!-- measured: begin -->\n";
constexpr const char* end_marker = "<!-- measured: end -->\n";

std::string fixed(double number, int decimals) {
    char text[64];
    (void)std::snprintf(text, sizeof text, "%.*f", decimals, number);
    return text;
}

// Three digits and the unit that suits them.
std::string time_text(double nanoseconds) {
    constexpr const char* units[] = {" ns", " µs", " ms", " s"};
    std::size_t unit = 0;
    while (nanoseconds >= 1000 && unit + 1 < std::size(units)) {
        nanoseconds /= 1000;
        ++unit;
    }
    return fixed(nanoseconds, nanoseconds < 10 ? 2 : nanoseconds < 100 ? 1 : 0) + units[unit];
}

std::string time_cells(const summary& measured) {
    return time_text(measured.median) + " | " + fixed(100 * measured.spread, 0) + " % | ";
}

// Median and spread of a benchmark and of its peer, and their ratio.
std::string comparison_cells(const results& measured, const std::string& name) {
    summary ours;
    summary peer;
    const bool has_ours = measured.find(name, ours);
    const bool has_peer = measured.find(name + "/peer", peer);
    std::string cells = has_ours ? time_cells(ours) : "- | - | ";
    cells += has_peer ? time_cells(peer) : "- | - | ";
    cells += has_ours && has_peer ? fixed(ours.median / peer.median, 2) : "-";
    return cells + " |\n";
}

std::string goal_table(const results& measured) {
    std::string text =
        "| what | beside | ratio to reach | reached | spread |\n"
        "|---|---|--:|--:|--:|\n";
    for (const goal& one : goals()) {
        summary ours;
        summary peer;
        const bool has_both = measured.find(one.ours, ours) && measured.find(one.peer, peer);
        const double ratio = has_both ? ours.median / peer.median * one.share : 0;
        text += std::string("| ") + one.what + " | " + one.beside + " | " + fixed(one.to_reach, 2) +
                " | " + (has_both ? fixed(ratio, 2) : "-") + " | " +
                fixed(100 * std::max(ours.spread, peer.spread), 0) + " % |\n";
    }
    return text;
}

std::string instance_table(const results& measured) {
    std::string text =
        "| what, beside what | instance | module | spread | peer | spread | ratio |\n"
        "|---|---|--:|--:|--:|--:|--:|\n";
    for (const instance_row& row : instance_rows()) {
        std::string title = std::string(row.title) + "; beside " + row.peer_title;
        for (const instance_kind& kind : instance_kinds()) {
            text += "| " + title + " | " + kind.name + " | " +
                    comparison_cells(measured, std::string(row.name) + "/" + kind.name);
            title.clear();
        }
    }
    return text;
}

std::string single_table(const results& measured) {
    std::string text =
        "| what, beside what | module | spread | peer | spread | ratio |\n"
        "|---|--:|--:|--:|--:|--:|\n";
    for (const single_row& row : single_rows())
        text += std::string("| ") + row.title + "; beside " + row.peer_title + " | " +
                comparison_cells(measured, row.name);
    return text;
}

// The cost of one section, and how many times that at 100 sections it is.
std::string growth_cells(const results& measured, const std::string& name, ulint count) {
    summary at_hundred;
    summary at_count;
    const bool has_hundred = measured.find(name + "/100", at_hundred);
    if (!measured.find(name + "/" + std::to_string(count), at_count)) return "- | - | - | - |\n";
    const double of_one = at_count.median / count;
    return time_cells(at_count) + time_text(of_one) + " | " +
           (has_hundred ? fixed(of_one / (at_hundred.median / 100), 2) : "-") + " |\n";
}

std::string growth_table(const results& measured) {
    std::string text =
        "| what | sections | all | spread | one section | over one of 100 |\n"
        "|---|--:|--:|--:|--:|--:|\n";
    for (const growth_row& row : growth_rows()) {
        std::string title = row.title;
        for (const ulint count : row.counts) {
            text += "| " + title + " | " + std::to_string(count) + " | " +
                    growth_cells(measured, row.name, count);
            title.clear();
        }
    }
    return text;
}

std::string read_file(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    check(file.good(), path + " cannot be read");
    return {std::istreambuf_iterator<char>(file), {}};
}

// Written beside it and put in its place, so that the document is never half a document.
void replace_file(const std::string& path, const std::string& text) {
    const std::string beside = path + ".new";
    {
        std::ofstream file(beside, std::ios::binary);
        file << text;
        check(file.flush().good(), beside + " cannot be written");
    }
    std::filesystem::rename(beside, path);
}

}  // namespace

document::document(const std::string& path) : path_(path) {
    const std::string text = read_file(path);
    const std::size_t begin = text.find(begin_marker);
    const std::size_t end = text.find(end_marker);
    check(begin != text.npos && end != text.npos && begin < end, path + " has no markers");
    before_ = text.substr(0, begin + std::string_view(begin_marker).size());
    after_ = text.substr(end);
}

void document::write(const results& measured) const {
    replace_file(path_, before_ + "\nMeasured on " + describe_machine() + ".\n\n" +
                            goal_table(measured) + "\n" + instance_table(measured) + "\n" +
                            single_table(measured) + "\n" + growth_table(measured) + "\n" + after_);
}

}  // namespace bench
