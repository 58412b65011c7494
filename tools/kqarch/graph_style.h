// How the drawn pictures look: the same colours in every format.
#pragma once

#include "graph_model.h"

struct box_style {
    const char* shape;  // of DOT
    const char* fill;
    const char* stroke;
    double corner;
};

inline constexpr box_style box_styles[] = {
    {"box", "#dbe8fb", "#2458a6", 10},      // instance
    {"box", "#eeeeee", "#777777", 10},      // remote
    {"folder", "#e3f3e3", "#2f7d3b", 2},    // directory
    {"box", "#fdf0d5", "#a86f00", 10},      // standby
    {"box", "#f0e3f7", "#7a3b9c", 10},      // subscriber
    {"ellipse", "#d9f0f0", "#14747a", 22},  // Raft group
};

inline constexpr const char* wrong_colour = "#c01818";
inline constexpr const char* good_colour = "#1c7a35";

inline const box_style& style_of(box_kind kind) {
    return box_styles[static_cast<size_t>(kind)];
}
