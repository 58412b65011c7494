// Whole processes: kqarch, and what else is run to see whether a configuration is good.
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

#include "benchmarks.h"

namespace bench {
namespace {

using words = std::vector<std::string>;

struct outcome {
    bool is_good = false;
    double seconds = 0;  // of the processor
};

double seconds_of(const timeval& time) {
    return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
}

// Runs a program to its end, silently.
outcome run(const words& command) {
    std::vector<char*> arguments;
    for (const std::string& word : command)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t silent;
    posix_spawn_file_actions_init(&silent);
    posix_spawn_file_actions_addopen(&silent, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&silent, 2, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    const int failed =
        posix_spawn(&child, arguments[0], &silent, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&silent);
    outcome made;
    int status = 0;
    rusage used{};
    if (failed != 0 || wait4(child, &status, 0, &used) != child) return made;
    made.is_good = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    made.seconds = seconds_of(used.ru_utime) + seconds_of(used.ru_stime);
    return made;
}

void run_repeatedly(benchmark::State& state, const words& command) {
    check(access(command[0].c_str(), X_OK) == 0, command[0] + " is not there");
    bool is_good = true;
    for (auto _ : state) {
        const outcome made = run(command);
        is_good = made.is_good && is_good;
        state.SetIterationTime(made.seconds);
    }
    check(is_good, command[0] + " failed");
}

// 32 upstreams of two servers, each with its place.
std::string nginx_configuration(const std::string& directory) {
    std::string text = "error_log " + directory + "/error.log;\npid " + directory +
                       "/pid;\nevents {}\nhttp {\naccess_log off;\n";
    std::string places;
    for (int i = 1; i <= 32; ++i) {
        const std::string number = std::to_string(i);
        text += "upstream u" + number + " { server 10.0.0." + number + ":8080; server 10.0.1." +
                number + ":8080; }\n";
        places += "location /u" + number + " { proxy_pass http://u" + number + "; }\n";
    }
    return text + "server {\nlisten 127.0.0.1:8099;\n" + places + "}\n}\n";
}

}  // namespace

void run_kqarch(benchmark::State& state) {
    const instance on(full_instance());
    run_repeatedly(state, {KQARCH_PROGRAM, "check", on.directory()});
}

void run_nothing(benchmark::State& state) {
    run_repeatedly(state, {"/bin/true"});
}

void run_nginx(benchmark::State& state) {
    const instance on(small_instance());
    const std::string path = on.directory() + "/nginx.conf";
    std::ofstream(path) << nginx_configuration(on.directory());
    run_repeatedly(state, {"/usr/sbin/nginx", "-t", "-c", path});
}

}  // namespace bench
