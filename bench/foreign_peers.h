// Other people's libraries, behind plain functions: their headers share names with ours.
#ifndef BENCH_FOREIGN_PEERS_H
#define BENCH_FOREIGN_PEERS_H

#include <cstddef>
#include <string>
#include <vector>

namespace bench {

// Reads a file with inih and does nothing with it. False when it cannot.
bool parse_with_inih(const char* path);

// Loads a file into a GKeyFile. False when it cannot.
bool load_with_glib(const char* path);

struct packed_entry {
    std::string path;
    std::string name;
};

// Packs entries with msgpack-c, into the same buffer each time.
class msgpack_packer {
  public:
    msgpack_packer();
    ~msgpack_packer();
    msgpack_packer(const msgpack_packer&) = delete;
    msgpack_packer& operator=(const msgpack_packer&) = delete;

    // How many bytes it made.
    std::size_t pack(const std::vector<packed_entry>& entries);

  private:
    struct buffer;
    buffer* buffer_;
};

}  // namespace bench

#endif
