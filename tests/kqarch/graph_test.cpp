// The picture that `kqarch graph --format svg` draws: well-formed, with every name in it, no text
// on another and all of it inside.
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <regex>
#include <vector>

#include "program.h"
#include "support/scenario.h"

namespace {

struct element {
    std::string name;
    std::map<std::string, std::string> attributes;
    std::string text;

    double number(const std::string& attribute) const {
        return std::strtod(attributes.at(attribute).c_str(), nullptr);
    }
};

std::string unescaped(std::string text) {
    const std::pair<const char*, const char*> entities[] = {
        {"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&amp;", "&"}};
    for (const auto& [entity, letter] : entities)
        for (size_t at = text.find(entity); at != text.npos; at = text.find(entity, at + 1))
            text.replace(at, std::string(entity).size(), letter);
    return text;
}

// Reads the picture by the grammar of XML, so far as a picture needs it, and counts what offends.
class svg_reader {
  public:
    explicit svg_reader(const std::string& text) {
        static const std::regex piece(
            R"RE(</([\w:-]+)>|<([\w:-]+)((?: +[\w:-]+="[^"<]*")*) *(/?)>|([^<]+))RE");
        std::vector<std::string> open;
        auto at = text.cbegin();
        for (std::smatch found;
             at != text.cend() && std::regex_search(at, text.cend(), found, piece,
                                                    std::regex_constants::match_continuous);
             at = found[0].second) {
            if (found[1].matched) {
                faults += open.empty() || open.back() != found[1];
                if (!open.empty()) open.pop_back();
            } else if (found[2].matched) {
                elements.push_back({found[2], attributes_of(found[3]), ""});
                if (found[4].length() == 0) open.push_back(found[2]);
            } else {
                read_text(found[5]);
            }
        }
        faults += open.size() + (at != text.cend());
    }

    std::vector<element> elements;  // with their text
    size_t faults = 0;

  private:
    std::map<std::string, std::string> attributes_of(const std::string& text) {
        static const std::regex attribute(R"RE(([\w:-]+)="([^"]*)")RE");
        std::map<std::string, std::string> attributes;
        for (std::sregex_iterator at(text.begin(), text.end(), attribute), end; at != end; ++at)
            faults += !attributes.emplace((*at)[1], (*at)[2]).second;
        return attributes;
    }

    void read_text(const std::string& raw) {
        static const std::regex escaped("(?:[^&]|&(?:lt|gt|quot|amp);)*");
        faults += !std::regex_match(raw, escaped);
        if (!elements.empty() && raw != "\n") elements.back().text = unescaped(raw);
    }
};

struct extent {
    double left, top, right, bottom;

    explicit extent(const element& text)
        : left(text.number("x")),
          top(text.number("y") - 0.76 * text.number("font-size")),
          right(left + 0.602 * text.number("font-size") * static_cast<double>(text.text.size())),
          bottom(top + text.number("font-size")) {}

    bool overlaps(const extent& other) const {
        return left < other.right && other.left < right && top < other.bottom && other.top < bottom;
    }
};

void expect_legible(const std::vector<element>& elements) {
    double width = elements.at(0).number("width");
    double height = elements.at(0).number("height");
    std::vector<extent> texts;
    for (const element& one : elements) {
        if (one.name != "text") continue;
        extent place(one);
        EXPECT_TRUE(place.left >= 0 && place.top >= 0) << one.text;
        EXPECT_TRUE(place.right <= width && place.bottom <= height) << one.text;
        for (const extent& other : texts)
            EXPECT_FALSE(place.overlaps(other)) << one.text;
        texts.push_back(place);
    }
    EXPECT_GT(texts.size(), 3U);
}

bool shows(const std::vector<element>& elements, const std::string& name) {
    for (const element& one : elements)
        if (one.name == "text" && one.text.find(name) != std::string::npos) return true;
    return false;
}

void expect_picture(const workplace& place, const std::string& directories,
                    const std::vector<std::string>& names) {
    run_result result = place.run("kqarch graph --format svg " + directories);
    svg_reader picture(result.output);
    EXPECT_EQ(picture.faults, 0U) << result.output;
    ASSERT_FALSE(picture.elements.empty());
    EXPECT_EQ(result.status, shows(picture.elements, "[1]") ? 1 : 0) << result.errors;
    expect_legible(picture.elements);
    for (const std::string& name : names)
        EXPECT_TRUE(shows(picture.elements, name)) << name << "\n" << result.output;
}

TEST(svg, shows_every_name_of_a_cluster_and_of_a_group) {
    workplace place;
    place.run(
        "kqarch init --kind cluster c; kqarch init --kind raft r; kqarch init --kind standby s");
    expect_picture(place, "c/node1 c/node2", {"KQ1", "KQ2", "c/node1/arch", "REMOTE KQ2"});
    expect_picture(place, "r/node1", {"KQ2", "KQ3", "RAFT id 3", "Raft group", "quorum 2 of 3"});
    expect_picture(place, "s", {"REALTIME", "ASYNC at NIGHTLY", "standby"});
    place.run("sed -i '/RAFT_KQ3/,$d' r/node2/kqarch.ini");
    expect_picture(place, "r/node?", {"DISAGREES [1]", "[1] KQ2 does not list KQ3"});
}

TEST(svg, stays_legible_with_every_destination_that_there_can_be) {
    workplace place;
    place.run("kqarch init db && mkdir db/a");
    place.write(
        "db/kqarch.ini",
        test_support::expand_input("ARCH_WAIT_APPLY = 0\n"
                                   "repeat 1 8 [L{i}] LOCAL {dir}/db/{xx*{i}0} ARCH_FILE_SIZE=64\n"
                                   "repeat 1 8 [A{i}] ASYNC S{i}/T{i}/U{i} T\n"));
    expect_picture(place, "db", {"S8", "U1", std::string(160, 'x')});
}

TEST(svg, escapes_what_means_something_to_it) {
    workplace place;
    place.run("kqarch init db");
    for (const char* name :
         {"<b>\"'&amp;", "]]>-->", "</text></svg>", "&#60;&lt;", "%s\\n${HOME}"}) {
        place.write("db/kqarch.ini", std::string("[") + name +
                                         "]\nARCH_TYPE = LOCAL\nARCH_DEST = {dir}/db/" + name +
                                         "\nARCH_FILE_SIZE = 64\n");
        expect_picture(place, "db", {name});
    }
}

}  // namespace
