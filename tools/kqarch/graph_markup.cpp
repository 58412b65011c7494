// The picture as text for programs that draw: DOT and Mermaid.
#include <cctype>

#include "graph.h"
#include "graph_style.h"
#include "text.h"

namespace {

std::vector<std::string> lines_of(const graph& drawn, const box& one) {
    std::vector<std::string> lines = {one.name, kind_name(one.kind)};
    lines.insert(lines.end(), one.details.begin(), one.details.end());
    if (!one.problems.empty()) lines.push_back(drawn.mark_of(one.problems));
    return lines;
}

std::vector<std::string> lines_of(const graph& drawn, const edge& one) {
    if (one.problems.empty()) return {one.label};
    return {one.label, drawn.mark_of(one.problems)};
}

std::string node_id(size_t at) {
    return "n" + std::to_string(at);
}

// ---- DOT: between quotes, with `\n` between lines ----

std::string dot_text(const std::vector<std::string>& lines, const char* end = "\\n") {
    std::string text;
    for (const std::string& line : lines) {
        if (!text.empty()) text += end;
        for (char letter : line) {
            if (letter == '"' || letter == '\\') text += '\\';
            text += letter;
        }
    }
    return "\"" + text + "\"";
}

std::string dot_wrong(bool wrong) {
    std::string colour = std::string("\"") + wrong_colour + "\"";
    return wrong ? ", color=" + colour + ", fontcolor=" + colour + ", penwidth=2" : "";
}

// ---- Mermaid: between quotes, everything unusual by its number ----

std::string mermaid_text(const std::vector<std::string>& lines) {
    static const std::string plain = " _./:,()@*+=-[]";
    std::string text;
    for (const std::string& line : lines) {
        if (!text.empty()) text += "<br/>";
        for (char letter : line) {
            bool usual = (letter & '\x80') != 0 || std::isalnum(letter) != 0 ||
                         plain.find(letter) != plain.npos;
            text += usual ? std::string(1, letter) : "#" + std::to_string(letter) + ";";
        }
    }
    return "\"" + text + "\"";
}

std::string numbered(const graph& drawn, size_t at) {
    return "[" + std::to_string(at + 1) + "] " + drawn.problems[at];
}

}  // namespace

std::string draw_dot(const graph& drawn) {
    std::string text =
        "digraph kqarch {\n    rankdir=LR;\n    labelloc=t;\n    node [style=filled];\n";
    std::vector<std::string> title = {drawn.title()};
    for (size_t i = 0; i < drawn.problems.size(); ++i)
        title.push_back(numbered(drawn, i));
    text += "    label=" + dot_text(title, "\\l") + ";\n";
    for (size_t i = 0; i < drawn.boxes.size(); ++i) {
        const box& one = drawn.boxes[i];
        const box_style& style = style_of(one.kind);
        text += "    " + node_id(i) + " [shape=" + style.shape + ", fillcolor=\"" + style.fill +
                "\", label=" + dot_text(lines_of(drawn, one)) + dot_wrong(!one.problems.empty()) +
                "];\n";
    }
    for (const edge& one : drawn.edges)
        text += "    " + node_id(one.from) + " -> " + node_id(one.to) +
                " [label=" + dot_text(lines_of(drawn, one)) + dot_wrong(!one.problems.empty()) +
                "];\n";
    return text + "}\n";
}

std::string draw_mermaid(const graph& drawn) {
    std::string text = "flowchart LR\n";
    for (size_t i = 0; i < drawn.boxes.size(); ++i) {
        const box& one = drawn.boxes[i];
        text += "    " + node_id(i) + "[" + mermaid_text(lines_of(drawn, one)) + "]\n";
        text += "    style " + node_id(i) + " fill:" + style_of(one.kind).fill;
        if (!one.problems.empty())
            text += std::string(",stroke:") + wrong_colour + ",stroke-width:3px";
        text += "\n";
    }
    for (size_t i = 0; i < drawn.edges.size(); ++i) {
        const edge& one = drawn.edges[i];
        text += "    " + node_id(one.from) + " -->|" + mermaid_text(lines_of(drawn, one)) + "| " +
                node_id(one.to) + "\n";
        if (!one.problems.empty())
            text += "    linkStyle " + std::to_string(i) + " stroke:" + wrong_colour +
                    ",color:" + wrong_colour + ",stroke-width:3px\n";
    }
    for (size_t i = 0; i < drawn.problems.size(); ++i)
        text += "    p" + std::to_string(i) + "[" + mermaid_text({numbered(drawn, i)}) +
                "]\n    style p" + std::to_string(i) + " fill:#ffffff,stroke:" + wrong_colour +
                "\n";
    return text;
}
