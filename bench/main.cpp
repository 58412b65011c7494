// Measures the module beside its peers.
//   arch_cfg_bench [--document=FILE] [BENCHMARK OPTION...]
// --document measures everything nine times in random order, and writes the tables into FILE.
#include <cstdio>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "catalogue.h"
#include "document.h"
#include "machine.h"
#include "results.h"

namespace {

// Interleaved, because a machine that slows down for a while then slows down everything.
constexpr const char* document_options[] = {
    "--benchmark_repetitions=9",
    "--benchmark_enable_random_interleaving=true",
    "--benchmark_min_time=0.1",
};

// Takes --document=FILE out of the arguments and puts what it stands for before the others.
std::optional<bench::document> take_document(std::vector<std::string>& arguments) {
    constexpr std::string_view option = "--document=";
    for (auto at = arguments.begin() + 1; at != arguments.end(); ++at) {
        if (!at->starts_with(option)) continue;
        const bench::document found(at->substr(option.size()));
        arguments.erase(at);
        arguments.insert(arguments.begin() + 1, std::begin(document_options),
                         std::end(document_options));
        return found;
    }
    return std::nullopt;
}

// Tells the library its options; false when one is none of them.
bool initialize(std::vector<std::string>& arguments) {
    std::vector<char*> pointers;
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    int count = static_cast<int>(pointers.size());
    benchmark::Initialize(&count, pointers.data());
    return !benchmark::ReportUnrecognizedArguments(count, pointers.data());
}

int run(std::vector<std::string> arguments) {
    const std::optional<bench::document> document = take_document(arguments);
    if (!initialize(arguments)) return 2;
    bench::stay_on_one_processor();
    bench::keep_memory();
    bench::register_benchmarks();
    bench::results measured;
    benchmark::RunSpecifiedBenchmarks(&measured);
    if (measured.any_failed()) return 1;
    if (document) document->write(measured);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run({argv, argv + argc});
    } catch (const std::exception& error) {
        (void)std::fprintf(stderr, "arch_cfg_bench: %s\n", error.what());
        return 1;
    }
}
