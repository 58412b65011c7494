// What a change of the configuration means, in plain sentences.
#ifndef KQARCH_CONSEQUENCES_H
#define KQARCH_CONSEQUENCES_H

#include <map>
#include <set>
#include <string>
#include <vector>

#include "arch_cfg.h"
#include "counts.h"
#include "settings.h"

struct destination_facts {
    ulint type;
    std::string destination;  // fit to be shown
    std::string connection;   // SUBSCRIBE: with its password
    std::vector<setting> settings;
    std::vector<std::string> instances;  // that it serves
    std::string directory;               // LOCAL and REMOTE
};

// What sentences are made of: a registry as it stands after start-up.
struct configuration_facts {
    type_counts counts = {};
    std::map<std::string, destination_facts> destinations = {};  // by section
    std::vector<setting> globals = {};
};

// Where it archives to.
std::set<std::string> directories_of(const configuration_facts& facts);

configuration_facts facts_of_registry() KQ_EXCLUDES(arch_cfg_sys.mutex);

std::vector<std::string> consequences(const configuration_facts& before,
                                      const configuration_facts& after);

#endif
