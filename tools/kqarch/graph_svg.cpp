// The picture as SVG that needs nothing but a viewer.
//
// Instances stand on the left, what they archive to on the right. Every edge has a lane of its own
// beside its instance, where its label stands on it, and an entry of its own at its target: so no
// text ever lies on another, whatever the number of edges. Widths are reckoned from the number of
// characters, which a font of fixed width makes exact.
#include <algorithm>
#include <cmath>
#include <cstdio>

#include "graph.h"
#include "graph_style.h"
#include "text.h"

namespace {

constexpr double name_size = 15;
constexpr double text_size = 12;
constexpr double line_height = 17;
constexpr double lane_height = 30;
constexpr double padding = 12;
constexpr double gap = 26;  // between boxes of a column
constexpr double margin = 24;
constexpr double bend_width = 150;  // for the edges to change lanes
constexpr double entry_height = 14;
constexpr size_t longest_problem_line = 100;

constexpr const char* font = "'DejaVu Sans Mono', Menlo, Consolas, 'Liberation Mono', monospace";

std::string number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.0f", std::round(value));
    return text;
}

std::string escaped(const std::string& text) {
    std::string safe;
    for (char letter : text) {
        if (letter == '&')
            safe += "&amp;";
        else if (letter == '<')
            safe += "&lt;";
        else if (letter == '>')
            safe += "&gt;";
        else if (letter == '"')
            safe += "&quot;";
        else
            safe += letter;
    }
    return safe;
}

// What is not ASCII may be drawn in another font, and wide.
double width_of(const std::string& text, double size) {
    double width = 0;
    for (char letter : text) {
        bool follows = (letter & '\xc0') == '\x80';
        bool ascii = (letter & '\x80') == 0;
        if (!follows) width += ascii ? 0.61 * size : 1.1 * size;
    }
    return width;
}

std::vector<std::string> wrapped(const std::string& text) {
    std::vector<std::string> lines(1);
    for (const std::string& word : split(text, ' ')) {
        if (!lines.back().empty() && lines.back().size() + word.size() > longest_problem_line)
            lines.emplace_back();
        lines.back() += (lines.back().empty() ? "" : " ") + word;
    }
    return lines;
}

struct placed_box {
    double left = 0;
    double top = 0;
    double width = 0;
    double height = 0;
    size_t lanes = 0;  // edges that start or end here
    size_t used = 0;   // of them, those already drawn
};

class svg_picture {
  public:
    explicit svg_picture(const graph& drawn) : drawn_(drawn), places_(drawn.boxes.size()) {}

    std::string draw() {
        measure();
        place_columns();
        for (const edge& one : drawn_.edges)
            draw_edge(one);
        for (size_t at = 0; at < drawn_.boxes.size(); ++at)
            draw_box(at);
        draw_title();
        draw_problems();
        return head() + body_ + "</svg>\n";
    }

  private:
    void measure() {
        for (const edge& one : drawn_.edges) {
            ++places_[one.from].lanes;
            ++places_[one.to].lanes;
            std::string label = label_of(one);
            lane_width_ = std::max(lane_width_, width_of(label, text_size) + 2 * padding);
        }
        for (size_t at = 0; at < places_.size(); ++at) {
            const box& one = drawn_.boxes[at];
            placed_box& place = places_[at];
            place.width = width_of(one.name, name_size);
            for (const std::string& line : small_lines(one))
                place.width = std::max(place.width, width_of(line, text_size));
            place.width += 2 * padding;
            double text = name_size + line_height * static_cast<double>(small_lines(one).size());
            double lanes =
                (is_source(one) ? lane_height : entry_height) * static_cast<double>(place.lanes);
            place.height = std::max(text + 2 * padding, lanes + padding);
        }
    }

    void place_columns() {
        double heights[2] = {0, 0};
        double widths[2] = {0, 0};
        for (size_t at = 0; at < places_.size(); ++at) {
            bool right = !is_source(drawn_.boxes[at]);
            places_[at].top = first_top_ + heights[right];
            heights[right] += places_[at].height + gap;
            widths[right] = std::max(widths[right], places_[at].width);
        }
        bool alone = widths[1] == 0;
        double right_column = margin + widths[0] + (alone ? 0 : lane_width_ + bend_width);
        double tallest = std::max(heights[0], heights[1]);
        for (size_t at = 0; at < places_.size(); ++at) {
            bool right = !is_source(drawn_.boxes[at]);
            places_[at].left = right ? right_column : margin;
            places_[at].width = widths[right];
            places_[at].top += (tallest - heights[right]) / 2;
        }
        bottom_ = first_top_ + tallest;
        width_ = right_column + widths[1] + margin;
    }

    std::string label_of(const edge& one) const {
        return one.problems.empty() ? one.label : one.label + "  " + drawn_.mark_of(one.problems);
    }

    std::vector<std::string> small_lines(const box& one) const {
        std::vector<std::string> lines = {kind_name(one.kind)};
        lines.insert(lines.end(), one.details.begin(), one.details.end());
        if (!one.problems.empty()) lines.push_back(drawn_.mark_of(one.problems));
        return lines;
    }

    // The lanes of a box are spread over its height.
    double next_lane(size_t at) {
        placed_box& place = places_[at];
        double step = place.height / static_cast<double>(place.lanes);
        return place.top + step * (static_cast<double>(place.used++) + 0.5);
    }

    void draw_edge(const edge& one) {
        const char* colour = one.problems.empty() ? "#444444" : wrong_colour;
        double from = next_lane(one.from);
        double to = next_lane(one.to);
        double start = places_[one.from].left + places_[one.from].width;
        double turn = start + lane_width_;
        double end = places_[one.to].left - 9;
        double middle = (turn + end) / 2;
        body_ += "<path d=\"M" + number(start) + " " + number(from) + " H" + number(turn) + " C" +
                 number(middle) + " " + number(from) + " " + number(middle) + " " + number(to) +
                 " " + number(end) + " " + number(to) + "\" fill=\"none\" stroke=\"" + colour +
                 "\" stroke-width=\"" + (one.problems.empty() ? "1.5" : "2.5") + "\"/>\n";
        body_ += "<path d=\"M" + number(end + 9) + " " + number(to) + " l-10 -5 v10 z\" fill=\"" +
                 colour + "\"/>\n";
        draw_text(start + padding, from - 5, label_of(one), text_size, colour,
                  !one.problems.empty());
    }

    void draw_box(size_t at) {
        const box& one = drawn_.boxes[at];
        const placed_box& place = places_[at];
        const box_style& style = style_of(one.kind);
        bool wrong = !one.problems.empty();
        body_ += "<rect x=\"" + number(place.left) + "\" y=\"" + number(place.top) + "\" width=\"" +
                 number(place.width) + "\" height=\"" + number(place.height) + "\" rx=\"" +
                 number(style.corner) + "\" fill=\"" + style.fill + "\" stroke=\"" +
                 (wrong ? wrong_colour : style.stroke) + "\" stroke-width=\"" +
                 (wrong ? "3" : "1.5") + "\"" +
                 (one.kind == box_kind::remote ? " stroke-dasharray=\"6 4\"" : "") + "/>\n";
        std::vector<std::string> lines = small_lines(one);
        double text = name_size + line_height * static_cast<double>(lines.size());
        double y = place.top + (place.height - text) / 2 + name_size - 2;
        draw_text(place.left + padding, y, one.name, name_size, "#111111", true);
        for (const std::string& line : lines) {
            y += line_height;
            bool is_mark = wrong && &line == &lines.back();
            draw_text(place.left + padding, y, line, text_size, is_mark ? wrong_colour : "#444444",
                      is_mark);
        }
    }

    void draw_title() {
        bool good = drawn_.problems.empty();
        draw_text(margin, margin + name_size, drawn_.title(), name_size,
                  good ? good_colour : wrong_colour, true);
    }

    void draw_problems() {
        for (size_t i = 0; i < drawn_.problems.size(); ++i)
            for (const std::string& line :
                 wrapped("[" + std::to_string(i + 1) + "] " + drawn_.problems[i])) {
                bottom_ += line_height;
                draw_text(margin, bottom_, line, text_size, wrong_colour, false);
            }
        bottom_ += margin;
    }

    void draw_text(double x, double y, const std::string& text, double size, const char* colour,
                   bool bold) {
        width_ = std::max(width_, x + width_of(text, size) + margin);
        body_ += "<text x=\"" + number(x) + "\" y=\"" + number(y) + "\" font-size=\"" +
                 number(size) + "\" fill=\"" + colour + "\"" +
                 (bold ? " font-weight=\"bold\"" : "") + ">" + escaped(text) + "</text>\n";
    }

    std::string head() const {
        std::string size = number(width_) + "\" height=\"" + number(bottom_);
        return "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + size + "\" viewBox=\"0 0 " +
               number(width_) + " " + number(bottom_) + "\" font-family=\"" + font +
               "\" xml:space=\"preserve\">\n<title>" + escaped(drawn_.title()) +
               "</title>\n<rect width=\"100%\" height=\"100%\" fill=\"#ffffff\"/>\n";
    }

    const graph& drawn_;
    std::vector<placed_box> places_;
    double first_top_ = margin + name_size + gap;
    double lane_width_ = 0;
    double bottom_ = 0;
    double width_ = 0;
    std::string body_;
};

}  // namespace

std::string draw_svg(const graph& drawn) {
    return svg_picture(drawn).draw();
}
