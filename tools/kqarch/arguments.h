// The commands of the command line. Each group of commands adds its own, with its arguments, its
// --help and what runs it.
#ifndef KQARCH_ARGUMENTS_H
#define KQARCH_ARGUMENTS_H

#include <CLI/CLI.hpp>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "output.h"

using command_run = std::function<exit_status(output&)>;

class command_line {
  public:
    command_line();

    // Has a command added by `add` if it is needed: the one that is asked for, or each of them where
    // that is not known or all are to be listed.
    void offer(std::string_view name, void (*add)(command_line&));

    // A command that `run` carries out; the caller adds its arguments. `footer` stands at the end
    // of its --help.
    CLI::App& add(const std::string& name, const std::string& what, const std::string& footer,
                  command_run run);

    // Parses and runs; the exit status of the process.
    int run(int count, char** words);

  private:
    void add_commands(const std::string& asked);
    exit_status refuse_usage(const std::string& text, const std::string& word, output& out) const;

    CLI::App app_;
    bool json_ = false;
    std::string asked_;  // the one command that is needed; empty: all are
    std::map<std::string, command_run> runs_;
};

// --lsn and --replace-backup of a command that takes a backup.
void add_backup_number(CLI::App& command, std::optional<lint64>& number, bool& replace);

// init, check, show, fmt, explain
void offer_look_commands(command_line& commands);

// add, modify, drop, backup, backups, restore, backup-delete, journal
void offer_change_commands(command_line& commands);

// peer-check, peer-export, peer-verify, raft, graph
void offer_cluster_commands(command_line& commands);

#endif
