#include "change_support.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <functional>

#include "add.h"
#include "backup.h"
#include "backups.h"
#include "drop.h"
#include "init.h"
#include "modify.h"
#include "support/instance.h"

namespace fs = std::filesystem;

namespace {

exit_status run(const std::function<exit_status(output&)>& command) {
    output out("test", json_form);
    try {
        return command(out);
    } catch (const std::exception&) {
        return exit_failed;
    }
}

template <typename options>
options agreed(const std::string& directory, bool force) {
    options given;
    given.directory = directory;
    given.yes = true;
    given.force = force;
    return given;
}

target target_of(const asked_change& change) {
    return {change.dest, change.dest.empty()};
}

}  // namespace

changed_instance::changed_instance() {
    std::string name = fs::temp_directory_path() / "kqarch_change.XXXXXX";
    EXPECT_NE(mkdtemp(name.data()), nullptr);
    root_ = fs::canonical(name);
    EXPECT_EQ(run([this](output& out) {
                  return run_init({.directory = directory(), .kind = "standby"}, out);
              }),
              exit_good);
    original_ = config();
}

changed_instance::~changed_instance() {
    fs::remove_all(root_);
}

void changed_instance::reset() const {
    for (const fs::directory_entry& entry : fs::directory_iterator(directory())) {
        std::string name = entry.path().filename();
        bool made = name.starts_with(".kq") || name.starts_with("kqarch_");
        if (made) fs::remove(entry.path());
    }
    fs::remove_all(root_ / "second");
    std::ofstream(directory() + "/kqarch.ini", std::ios::binary) << original_;
}

std::string changed_instance::read(const std::string& name) const {
    if (!fs::is_regular_file(directory() + "/" + name)) return "";
    return test_support::read_file(directory() + "/" + name);
}

bool changed_instance::has(const std::string& name) const {
    return fs::exists(directory() + "/" + name);
}

std::string changed_instance::beside(const std::string& name) const {
    return root_ / name;
}

std::string changed_instance::local_clause() const {
    return "TYPE=LOCAL, FILE_SIZE=64, DEST=" + beside("second");
}

void changed_instance::know_instances(const std::vector<std::string>& names) const {
    std::ofstream file(directory() + "/kqmal.ini");
    for (const std::string& name : names)
        file << "[" << name << "]\nMAL_INST_NAME = " << name
             << "\nMAL_INST_HOST = 10.0.0.1\nMAL_INST_PORT = 5236\n";
}

exit_status changed_instance::make(const asked_change& change, bool force) const {
    return run([&](output& out) {
        if (change.command == "add") {
            auto given = agreed<add_options>(directory(), force);
            given.clause = change.clause;
            return run_add(given, out);
        }
        if (change.command == "modify") {
            auto given = agreed<modify_options>(directory(), force);
            given.which = target_of(change);
            given.clause = change.clause;
            return run_modify(given, out);
        }
        auto given = agreed<drop_options>(directory(), force);
        given.which = target_of(change);
        return run_drop(given, out);
    });
}

exit_status changed_instance::restore(lint64 number) const {
    auto given = agreed<restore_options>(directory(), false);
    given.number = number;
    return run([&](output& out) { return run_restore(given, out); });
}

lint64 changed_instance::last_backup() const {
    std::vector<lint64> numbers = backups_in(directory());
    return numbers.empty() ? 0 : numbers.back();
}
