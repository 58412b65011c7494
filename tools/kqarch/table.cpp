#include "table.h"

#include <algorithm>

#include "text.h"

namespace {

std::vector<size_t> column_widths(const std::vector<table_row>& rows) {
    std::vector<size_t> widths;
    for (const table_row& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], display_width(row[i]));
    }
    return widths;
}

std::string aligned(const table_row& row, const std::vector<size_t>& widths) {
    std::string line;
    for (size_t i = 0; i < row.size(); ++i) {
        line += row[i];
        if (i + 1 < row.size()) line.append(widths[i] - display_width(row[i]) + 2, ' ');
    }
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

}  // namespace

void print_table(const std::vector<table_row>& rows, output& out) {
    std::vector<size_t> widths = column_widths(rows);
    for (const table_row& row : rows) {
        if (&row == &rows.front())
            out.print_heading(aligned(row, widths));
        else
            out.print(aligned(row, widths) + "\n");
    }
}
