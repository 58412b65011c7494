#include "foreign_peers.h"

#include <glib.h>
#include <ini.h>
#include <msgpack.h>

namespace bench {
namespace {

int ignore_line(void*, const char*, const char*, const char*) {
    return 1;
}

void pack_text(::msgpack_packer* packer, const std::string& text) {
    msgpack_pack_str(packer, text.size());
    msgpack_pack_str_body(packer, text.data(), text.size());
}

}  // namespace

bool parse_with_inih(const char* path) {
    return ini_parse(path, ignore_line, nullptr) == 0;
}

bool load_with_glib(const char* path) {
    GKeyFile* file = g_key_file_new();
    const bool loaded = g_key_file_load_from_file(file, path, G_KEY_FILE_NONE, nullptr) != 0;
    g_key_file_free(file);
    return loaded;
}

struct msgpack_packer::buffer {
    msgpack_sbuffer bytes;
};

msgpack_packer::msgpack_packer() : buffer_(new buffer) {
    msgpack_sbuffer_init(&buffer_->bytes);
}

msgpack_packer::~msgpack_packer() {
    msgpack_sbuffer_destroy(&buffer_->bytes);
    delete buffer_;
}

std::size_t msgpack_packer::pack(const std::vector<packed_entry>& entries) {
    msgpack_sbuffer_clear(&buffer_->bytes);
    ::msgpack_packer packer;
    msgpack_packer_init(&packer, &buffer_->bytes, msgpack_sbuffer_write);
    msgpack_pack_array(&packer, 2 * entries.size());
    for (const packed_entry& entry : entries) {
        pack_text(&packer, entry.path);
        pack_text(&packer, entry.name);
    }
    return buffer_->bytes.size;
}

}  // namespace bench
