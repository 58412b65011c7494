// kqarch graph: where archives go, as a picture.
#ifndef KQARCH_GRAPH_H
#define KQARCH_GRAPH_H

#include <string>
#include <vector>

#include "graph_model.h"
#include "output.h"

struct graph_options {
    std::vector<std::string> directories;
    std::string format = "ascii";  // one of graph_formats()
};

std::vector<std::string> graph_formats();

exit_status run_graph(const graph_options& options, output& out);

// The pictures, complete texts.
void print_ascii(const graph& drawn, output& out);
std::string draw_dot(const graph& drawn);
std::string draw_mermaid(const graph& drawn);
std::string draw_svg(const graph& drawn);

#endif
