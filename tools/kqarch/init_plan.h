// What `kqarch init` writes for each kind of instance.
#ifndef KQARCH_INIT_PLAN_H
#define KQARCH_INIT_PLAN_H

#include <string>
#include <vector>

struct planned_file {
    std::string path;  // inside the directory that is initialised
    std::string text;
    unsigned mode;
};

struct init_plan {
    std::vector<std::string> instances;    // their directories inside it; "" for the directory
    std::vector<std::string> directories;  // to be made, in this order
    std::vector<planned_file> files;
};

std::vector<std::string> init_kinds();

// The plan for one of the kinds in the absolute directory `root`. Each kqarch.ini reads as the
// server writes it, so that the first online change rewrites nothing else.
init_plan plan_init(const std::string& kind, const std::string& root);

#endif
