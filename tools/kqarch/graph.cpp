#include "graph.h"

#include <algorithm>

#include "text.h"

namespace {

using drawing = std::string (*)(const graph&);

struct format_row {
    const char* name;
    drawing draw;  // null: printed line by line, for the colours of a terminal
};

constexpr format_row format_rows[] = {
    {"ascii", nullptr}, {"dot", draw_dot}, {"mermaid", draw_mermaid}, {"svg", draw_svg}};

size_t widest_label(const graph& drawn, size_t from) {
    size_t width = 0;
    for (const edge& one : drawn.edges)
        if (one.from == from) width = std::max(width, display_width(one.label));
    return width;
}

std::string with_mark(const std::string& text, const graph& drawn,
                      const std::vector<size_t>& problems) {
    return problems.empty() ? text : text + "  " + drawn.mark_of(problems);
}

void print_line(const std::string& text, bool wrong, output& out) {
    if (wrong)
        out.print_alarm(text);
    else
        out.print(text + "\n");
}

void print_source(const graph& drawn, size_t at, output& out) {
    const box& source = drawn.boxes[at];
    std::vector<std::string> details = source.details;
    details.insert(details.begin(), kind_name(source.kind));
    out.print("\n");
    print_line(with_mark(source.name + "  (" + join(details, ", ") + ")", drawn, source.problems),
               !source.problems.empty(), out);
    size_t width = widest_label(drawn, at);
    for (const edge& one : drawn.edges) {
        if (one.from != at) continue;
        const box& target = drawn.boxes[one.to];
        std::string line = "  |-- " + one.label + " ";
        line.append(width - display_width(one.label), '-');
        line += "--> " + target.name;
        if (target.kind == box_kind::standby || target.kind == box_kind::subscriber)
            line += std::string("  (") + kind_name(target.kind) + ")";
        if (!target.details.empty()) line += "  (" + join(target.details, ", ") + ")";
        print_line(with_mark(line, drawn, one.problems), !one.problems.empty(), out);
    }
}

}  // namespace

void print_ascii(const graph& drawn, output& out) {
    print_line(drawn.title(), !drawn.problems.empty(), out);
    for (size_t at = 0; at < drawn.boxes.size(); ++at)
        if (is_source(drawn.boxes[at])) print_source(drawn, at, out);
    if (!drawn.problems.empty()) out.print("\n");
    for (size_t i = 0; i < drawn.problems.size(); ++i)
        print_line("[" + std::to_string(i + 1) + "] " + drawn.problems[i], true, out);
}

std::vector<std::string> graph_formats() {
    std::vector<std::string> names;
    for (const format_row& row : format_rows)
        names.emplace_back(row.name);
    return names;
}

exit_status run_graph(const graph_options& options, output& out) {
    if (!out.as_text())
        return out.fail(exit_usage, "a graph is no JSON document", "",
                        "Leave --json out; --format chooses the picture, and `kqarch peer-check "
                        "--json` gives what it shows.");
    exit_status status = exit_good;
    cluster all = examine(options.directories, status, out);
    if (all.nodes.empty()) return status;
    graph drawn = graph_of(all);
    for (const format_row& row : format_rows)
        if (options.format == row.name && row.draw != nullptr) out.print_data(row.draw(drawn));
    if (options.format == format_rows[0].name) print_ascii(drawn, out);
    return status == exit_good && !drawn.problems.empty() ? exit_refused : status;
}
