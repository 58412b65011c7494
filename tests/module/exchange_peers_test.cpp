// Two nodes, a process each, that send one another their messages through pipes.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/instance.h"

namespace {

using namespace test_support;
namespace fs = std::filesystem;

void write_all(int descriptor, const void* data, size_t size) {
    if (write(descriptor, data, size) != static_cast<ssize_t>(size)) _exit(1);
}

void read_all(int descriptor, void* data, size_t size) {
    for (size_t done = 0; done < size;) {
        ssize_t got = read(descriptor, static_cast<char*>(data) + done, size - done);
        if (got <= 0) _exit(2);
        done += static_cast<size_t>(got);
    }
}

struct pipe_ends {
    int read_end, write_end;
    pipe_ends() {
        int ends[2];
        if (pipe(ends) != 0) throw std::runtime_error("no pipe");
        read_end = ends[0];
        write_end = ends[1];
    }
    ~pipe_ends() {
        close(read_end);
        close(write_end);
    }
    pipe_ends(const pipe_ends&) = delete;
    pipe_ends& operator=(const pipe_ends&) = delete;
};

struct node {
    std::string name;
    std::string main_settings;
    std::string destinations;
};

// What a node says of the other: 1 is for one that does not come up.
kqcode_t speak(const node& self, int from_peer, int to_peer) {
    instance_directory instance;
    write_file("kqmal.ini", "[A]\nMAL_INST_NAME = A\n[B]\nMAL_INST_NAME = B\n");
    write_file("kqarch.ini", self.destinations);
    if (instance.open("INSTANCE_NAME = " + self.name + "\nMAL_INI = 1\n" + self.main_settings) < 0)
        return 1;
    if (arch_cfg_sys_init(nullptr, 1, 1) != 0) return 1;
    registry_lock lock;
    kqbool share = arch_cfg_sys.arch_local_share;
    std::vector<byte> sent(arch_cfg_info_len_calc(share));
    arch_cfg_info_encode(sent.data(), 0, static_cast<ulint>(sent.size()), share);
    write_all(to_peer, sent.data(), sent.size());

    byte length[4];
    read_all(from_peer, length, sizeof length);
    auto size = static_cast<ulint>(length[0] | length[1] << 8 | length[2] << 16);
    std::vector<byte> body(size);
    read_all(from_peer, body.data(), size);
    kqenv_t env = mem_env_create(0);
    kqcode_t code = arch_cfg_info_decode_and_check(env, body.data(), size, share);
    return mem_env_destroy(env) == 0 ? code : 1;
}

pid_t start(const node& self, const pipe_ends& from_peer, const pipe_ends& to_peer,
            const pipe_ends& result) {
    pid_t process = fork();
    if (process != 0) return process;
    kqcode_t code = 1;
    try {
        code = speak(self, from_peer.read_end, to_peer.write_end);
    } catch (const std::exception&) {
        code = 1;
    }
    write_all(result.write_end, &code, sizeof code);
    _exit(0);
}

struct answers {
    kqcode_t of_a, of_b;
    bool operator==(const answers&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const answers& both) {
    return stream << "A: " << both.of_a << ", B: " << both.of_b;
}

answers exchange(const node& a, const node& b) {
    pipe_ends a_to_b, b_to_a, result_of_a, result_of_b;
    pid_t processes[] = {start(a, b_to_a, a_to_b, result_of_a),
                         start(b, a_to_b, b_to_a, result_of_b)};
    answers both{1, 1};
    for (pid_t process : processes) {
        int status = -1;
        EXPECT_EQ(waitpid(process, &status, 0), process);
        EXPECT_EQ(status, 0);
    }
    read_all(result_of_a.read_end, &both.of_a, sizeof both.of_a);
    read_all(result_of_b.read_end, &both.of_b, sizeof both.of_b);
    return both;
}

class peers : public testing::Test {
  protected:
    peers() : storage(fs::absolute("storage")) { fs::create_directory(storage); }

    // A node with a directory of its own and the other's.
    node sharing(const std::string& name, const std::string& own, const std::string& other,
                 const std::string& others) const {
        return {name, "HPC_NODE = 2\n",
                "ARCH_LOCAL_SHARE = 1\n[L]\nARCH_TYPE = LOCAL\nARCH_DEST = " + at(own) +
                    "\n[R]\nARCH_TYPE = REMOTE\nARCH_DEST = " + other +
                    "\nARCH_INCOMING_PATH = " + at(others) + "\n"};
    }

    node alone(const std::string& name, const std::string& own) const {
        return {name, "", "[L]\nARCH_TYPE = LOCAL\nARCH_DEST = " + at(own) + "\n"};
    }

    std::string at(const std::string& path) const { return (storage / path).string(); }

    instance_directory here;
    fs::path storage;
};

TEST_F(peers, agree_when_each_has_the_other_as_it_is) {
    EXPECT_EQ(exchange(sharing("A", "a", "B", "b"), sharing("B", "b", "A", "a")), (answers{0, 0}));
    EXPECT_EQ(exchange(sharing("A", "a", "b", "b"), sharing("b", "b", "a", "a")), (answers{0, 0}));
}

TEST_F(peers, disagree_each_for_itself) {
    constexpr kqcode_t mismatch = ARCH_E_PEER_CFG_MISMATCH;
    node a = sharing("A", "a", "B", "b");
    EXPECT_EQ(exchange(a, sharing("B", "other", "A", "a")), (answers{mismatch, 0}));
    EXPECT_EQ(exchange(a, sharing("B", "b", "A", "other")), (answers{0, mismatch}));
    EXPECT_EQ(exchange(a, sharing("B", "B", "A", "A")), (answers{mismatch, mismatch}));
    node b_alone = alone("B", "b");
    b_alone.main_settings = "HPC_NODE = 2\n";
    b_alone.destinations.insert(0, "ARCH_LOCAL_SHARE = 1\n");
    EXPECT_EQ(exchange(a, b_alone), (answers{0, 0}));
}

TEST_F(peers, without_sharing_have_no_path_in_common) {
    constexpr kqcode_t conflict = ARCH_E_PEER_PATH_CONFLICT, mismatch = ARCH_E_PEER_CFG_MISMATCH;
    EXPECT_EQ(exchange(alone("A", "a"), alone("B", "b")), (answers{0, 0}));
    EXPECT_EQ(exchange(alone("A", "a"), alone("B", "a")), (answers{conflict, conflict}));
    node of_several = alone("A", "a");
    of_several.main_settings = "HPC_NODE = 2\n";
    EXPECT_EQ(exchange(of_several, alone("B", "b")), (answers{mismatch, 0}));
}

}  // namespace
