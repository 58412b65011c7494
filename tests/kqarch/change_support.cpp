#include "change_support.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <functional>

#include "add.h"
#include "backups.h"
#include "drop.h"
#include "init.h"
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

template <class options>
options agreed(const std::string& directory) {
    options given;
    given.directory = directory;
    given.yes = true;
    return given;
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

exit_status changed_instance::add(const std::string& clause) const {
    auto given = agreed<add_options>(directory());
    given.clause = clause;
    return run([&](output& out) { return run_add(given, out); });
}

exit_status changed_instance::drop(const std::string& dest) const {
    auto given = agreed<drop_options>(directory());
    given.which.dest = dest;
    return run([&](output& out) { return run_drop(given, out); });
}

exit_status changed_instance::restore(lint64 number) const {
    auto given = agreed<restore_options>(directory());
    given.number = number;
    return run([&](output& out) { return run_restore(given, out); });
}
