// A peer's configuration message of any bytes, read with names and without.
//
// The first byte chooses whose message it is compared with and in what cluster; the rest is the
// message's entries. The answer must be the model's, no byte outside the message may be read, and
// no block of the pool may be held. A message that is well formed must come out of the encoder
// byte for byte as it went in.
#include <ini.h>
#include <stdio.h>
#include <stdlib.h>

#include <cstdint>

#include "peer_model.h"
#include "support/instance.h"
#include "watched_block.h"

using namespace test_support;

namespace {

using paths = std::vector<archive_path>;

const paths receivers[] = {
    {},
    {{false, "/a", "A"}},
    {{true, "/b", "B"}, {false, "/a", "A"}},
    {{true, "/b", "B"}, {true, "", ""}, {true, "c", "Cc"}, {false, "/a", "A"}},
};

void demand(bool holds, const char* what) {
    if (holds) return;
    fprintf(stderr, "%s\n", what);
    abort();
}

void read(const paths& own, ulint nodes, const byte* body, ulint size, kqbool is_shared) {
    kqenv_t env = mem_env_create(0);
    kqcode_t code = 0;
    {
        arch_cfg_hold lock;
        code = arch_cfg_info_decode_and_check(env, body, size, is_shared);
    }
    demand(mem_env_destroy(env) == 0, "a block of the pool is held");
    demand(code == answer_of(own, nodes, body, size, is_shared == 1), "another answer was due");
}

void write_again(const byte* body, ulint size, bool with_names) {
    auto entries = read_message(body, size, with_names);
    if (!entries) return;
    for (archive_path& each : *entries)
        each.is_remote = true;
    fill_registry(*entries);
    arch_cfg_hold lock;
    demand(arch_cfg_info_len_calc(with_names) == size + 4, "the length is another");
    auto message = make_block<byte>(size + 4);
    arch_cfg_info_encode(message.get(), 0, 0, with_names);
    demand(message[0] == (size & 255) && message[1] == size >> 8, "the body's length is another");
    demand(std::equal(body, body + size, message.get() + 4), "the bytes are others");
}

// The instance stays open; the corpus is found from where the run was started.
bool open_instance() {
    static std::filesystem::path outside = std::filesystem::current_path();
    static instance_directory instance;
    kqcode_t code = instance.open("INSTANCE_NAME = A\n");
    std::filesystem::current_path(outside);
    return code == 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static bool is_open = open_instance();
    demand(is_open, "the instance cannot be opened");
    if (size < 1 || size > 65536) return 0;
    auto body_size = static_cast<ulint>(size - 1);
    auto body = make_block<byte>(body_size);
    std::copy(data + 1, data + size, body.get());
    const paths& own = receivers[data[0] % std::size(receivers)];
    ulint nodes = data[0] / 4 % 4;
    ini_set_value(ini_index_hpc_node, nodes);
    fill_registry(own);
    for (kqbool is_shared : {0u, 1u})
        read(own, nodes, body.get(), body_size, is_shared);
    for (bool with_names : {false, true})
        write_again(body.get(), body_size, with_names);
    return 0;
}
