#include "config_reader.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <new>

#include "ini.h"

namespace platform {
namespace {

KQ_PRINTF(3, 0)
void print_refusal(const std::string& path, ulint line, const schar* format, va_list arguments) {
    flockfile(stderr);
    (void)std::fprintf(stderr, "%s:%u: ", path.c_str(), line);
    (void)std::vfprintf(stderr, format, arguments);
    (void)std::fputc('\n', stderr);
    funlockfile(stderr);
}

}  // namespace

kqcode_t config_reader::read() {
    kqcode_t code = kq_ini_walk(path_.c_str(), take_line, this);
    if (code == ARCH_E_FILE_OPEN)
        return refuse_at(0, code, "cannot be read, or is no regular file");
    if (code == ARCH_E_OUT_OF_MEMORY) return refuse(code, "out of memory");
    return code < 0 ? code : on_end();
}

kqcode_t config_reader::on_section(const schar*) {
    return refuse(ARCH_E_INVALID_VALUE, "a section has no place in this file");
}

kqcode_t config_reader::refuse(kqcode_t code, const schar* format, ...) const {
    va_list arguments;
    va_start(arguments, format);
    print_refusal(path_, line_, format, arguments);
    va_end(arguments);
    return code;
}

kqcode_t config_reader::refuse_at(ulint line, kqcode_t code, const schar* format, ...) const {
    va_list arguments;
    va_start(arguments, format);
    print_refusal(path_, line, format, arguments);
    va_end(arguments);
    return code;
}

kqcode_t config_reader::check_name(const schar* name) const {
    std::size_t length = std::string_view(name).size();
    if (length >= 1 && length <= KQ_SYSNAME_MAX) return 0;
    return refuse(ARCH_E_INVALID_VALUE, "a name has 1 to %d characters", +KQ_SYSNAME_MAX);
}

kqcode_t config_reader::take_line(const kq_ini_line_t* line, void* reader) noexcept {
    try {
        return static_cast<config_reader*>(reader)->take(*line);
    } catch (const std::bad_alloc&) {
        return ARCH_E_OUT_OF_MEMORY;
    }
}

kqcode_t config_reader::take(const kq_ini_line_t& line) {
    line_ = line.number;
    if (line.kind == KQ_INI_SECTION) return on_section(line.key);
    if (line.kind == KQ_INI_KEY) return on_key(line.key, line.value);
    return refuse(ARCH_E_INVALID_VALUE, "%s", line.value);
}

kqcode_t config_reader::refuse_unknown(const schar* key) const {
    return refuse(ARCH_E_PARA_NOT_ALLOWED, "unknown key %s", escape_controls(key).c_str());
}

kqcode_t config_reader::take_number(std::string_view key, const schar* value, ulint least,
                                    ulint most, ulint& number) const {
    if (ini_is_integer(value) != 0) {
        auto read = static_cast<ulint>(std::strtoul(value, nullptr, 0));
        if (read >= least && read <= most) {
            number = read;
            return 0;
        }
    }
    return refuse(ARCH_E_INVALID_VALUE, "%s must be a number from %u to %u", key.data(), least,
                  most);
}

kqcode_t config_reader::take_text(std::string_view key, const schar* value, ulint least, ulint most,
                                  std::string& text) const {
    std::string_view read = value;
    if (read.size() < least || read.size() > most) {
        return refuse(ARCH_E_INVALID_VALUE, "%s must have %u to %u characters", key.data(), least,
                      most);
    }
    text = read;
    return 0;
}

}  // namespace platform
