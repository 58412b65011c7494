// A table for people: columns as wide as their widest cell, two blanks between them.
#ifndef KQARCH_TABLE_H
#define KQARCH_TABLE_H

#include <string>
#include <vector>

#include "output.h"

using table_row = std::vector<std::string>;

// The first row is the heading; every row has as many cells.
void print_table(const std::vector<table_row>& rows, output& out);

#endif
