// Changing a running registry: a clause parsed, a destination added and dropped with the file
// rewritten.
#include <fcntl.h>
#include <strings.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

#include "benchmarks.h"

namespace bench {
namespace {

constexpr char clause[] = "TYPE = REALTIME, DEST = INST1/INST2, WAIT_APPLY = 1, ARCH_FAILOVER = 0";

// A clause split into texts and dispatched into a record, as one would write it.
bool parse_plainly(const std::string& text, arch_cfg_t& record, std::string& dest) {
    arch_init(&record, "");
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find(',', begin), text.size());
        const std::string segment = text.substr(begin, end - begin);
        begin = end + 1;
        const std::size_t equals = segment.find('=');
        if (equals == std::string::npos) return false;
        const auto trimmed = [](const std::string& part) {
            const std::size_t first = part.find_first_not_of(' ');
            return part.substr(first, part.find_last_not_of(' ') - first + 1);
        };
        const std::string keyword = trimmed(segment.substr(0, equals));
        const std::string value = trimmed(segment.substr(equals + 1));
        if (strcasecmp(keyword.c_str(), "TYPE") == 0)
            record.type = static_cast<usint>(arch_cfg_get_arch_type_by_name(value.c_str()));
        else if (strcasecmp(keyword.c_str(), "DEST") == 0)
            dest = value;
        else if (strcasecmp(keyword.c_str(), "WAIT_APPLY") == 0)
            record.wait_apply = static_cast<kqbool>(std::strtoul(value.c_str(), nullptr, 0));
        else if (strcasecmp(keyword.c_str(), "ARCH_FAILOVER") == 0)
            record.arch_failover = static_cast<ulint>(std::strtoul(value.c_str(), nullptr, 0));
        else
            return false;
    }
    return true;
}

// A small instance without its last REALTIME destination, which is added and dropped again.
class changing_instance {
  public:
    changing_instance() : on_(small_instance()), loaded_(on_) {
        arch_cfg_sys_enter();
        arch_cfg_t* last = arch_cfg_sys.arch_lst.end;
        arch_cfg_sys_exit();
        asked_ = *last;
        check(asked_.type == ARCH_TYPE_REALTIME, "the last destination is not REALTIME");
        drop(last);
    }

    arch_cfg_t* add() {
        arch_cfg_t record = asked_;
        arch_cfg_t* added = nullptr;
        check(arch_cfg_add_march(&record, &added) == 0, "a destination was not added");
        return added;
    }

    void drop(arch_cfg_t* added) const {
        check(arch_cfg_drop_low(added) == 0, "a destination was not dropped");
    }

    std::string config_file() const { return on_.config_file(); }

  private:
    instance on_;
    loaded_registry loaded_;
    arch_cfg_t asked_;
};

// The system calls of a rewrite alone.
bool rewrite_bare(const std::string& path, const std::string& text) {
    const int file = open(path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
    if (file < 0) return false;
    const bool written = write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    const bool synced = fsync(file) == 0;
    return close(file) == 0 && written && synced;
}

}  // namespace

void parse_clause(benchmark::State& state) {
    arch_cfg_t record;
    char text[sizeof clause];
    char dest[ARCH_CLAUSE_DEST_MAX + 1];
    usint named = 0;
    ulint vote_interval = 0;
    kqcode_t worst = 0;
    for (auto _ : state) {
        std::memcpy(text, clause, sizeof clause);
        worst = std::min(worst, arch_cfg_parse_sql(text, &record, dest, &named, &vote_interval));
        benchmark::ClobberMemory();
    }
    check(worst == 0 && record.wait_apply == 1, "the clause was not parsed");
}

void parse_clause_plainly(benchmark::State& state) {
    arch_cfg_t record;
    std::string dest;
    bool is_good = true;
    for (auto _ : state) {
        is_good = parse_plainly(clause, record, dest) && is_good;
        benchmark::ClobberMemory();
    }
    check(is_good && record.wait_apply == 1, "the clause was not parsed");
}

void add_destination(benchmark::State& state) {
    changing_instance on;
    for (auto _ : state) {
        arch_cfg_t* added = on.add();
        state.PauseTiming();
        on.drop(added);
        state.ResumeTiming();
    }
}

void drop_destination(benchmark::State& state) {
    changing_instance on;
    for (auto _ : state) {
        state.PauseTiming();
        arch_cfg_t* added = on.add();
        state.ResumeTiming();
        on.drop(added);
    }
}

void rewrite_file_bare(benchmark::State& state) {
    const changing_instance on;
    const std::string path = on.config_file();
    std::ifstream file(path);
    const std::string text(std::istreambuf_iterator<char>(file), {});
    bool is_good = true;
    for (auto _ : state) {
        state.PauseTiming();  // as the others pause
        state.ResumeTiming();
        is_good = rewrite_bare(path, text) && is_good;
    }
    check(is_good, "the file could not be rewritten");
}

}  // namespace bench
