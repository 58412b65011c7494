// Writing the registry as text.
#include <algorithm>
#include <cstring>
#include <memory>

#include "benchmarks.h"
#include "peers.h"

namespace bench {
namespace {

using text_buffer = std::unique_ptr<schar[]>;

text_buffer make_buffer() {
    return std::make_unique<schar[]>(ARCH_CFG_TEXT_SIZE);
}

// Module and peer have to write the same, to the byte.
void check_agreement() KQ_REQUIRES(arch_cfg_sys.mutex) {
    const text_buffer written = make_buffer();
    const text_buffer printed = make_buffer();
    check(arch_cfg_sys_write_to_rec(written.get()) == 0, "the text is not written");
    print_registry(arch_cfg_sys, printed.get());
    check(std::strcmp(written.get(), printed.get()) == 0, "module and peer write different texts");
}

}  // namespace

void write_text(benchmark::State& state, const instance& on) {
    const loaded_registry loaded(on);
    const text_buffer text = make_buffer();
    const arch_cfg_hold hold;
    check_agreement();
    for (auto _ : state) {
        benchmark::DoNotOptimize(arch_cfg_sys_write_to_rec(text.get()));
        benchmark::ClobberMemory();
    }
}

void print_text(benchmark::State& state, const instance& on) {
    const loaded_registry loaded(on);
    const text_buffer text = make_buffer();
    const arch_cfg_hold hold;
    check_agreement();
    for (auto _ : state) {
        print_registry(arch_cfg_sys, text.get());
        benchmark::ClobberMemory();
    }
}

void write_sections(benchmark::State& state, ulint count) {
    const instance on(local_sections(count), storage::asm_disk_group);
    const loaded_registry loaded(on);
    const text_buffer text = make_buffer();
    const arch_cfg_hold hold;
    kqcode_t worst = 0;
    for (auto _ : state) {
        worst = std::min(worst, arch_cfg_sys_write_to_rec(text.get()));
        benchmark::ClobberMemory();
    }
    check(worst == 0, "the text is not written");
}

}  // namespace bench
