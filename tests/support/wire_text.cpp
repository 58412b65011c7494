#include "support/wire_text.h"

#include <cctype>
#include <cstring>
#include <regex>
#include <sstream>

namespace test_support {

namespace {

bool is_plain(byte value) {
    return isalnum(value) || (value != 0 && strchr("/._-", value) != nullptr);
}

void append(std::vector<byte>& bytes, const std::string& text) {
    bytes.insert(bytes.end(), text.begin(), text.end());
}

void append_with_length(std::vector<byte>& bytes, const std::string& text) {
    bytes.push_back(static_cast<byte>(text.size()));
    bytes.push_back(static_cast<byte>(text.size() >> 8));
    append(bytes, text);
}

}  // namespace

std::string wire_text(const byte* bytes, size_t size) {
    static const char digits[] = "0123456789ABCDEF";
    std::string text;
    for (size_t at = 0; at < size;) {
        if (at > 0) text += ' ';
        size_t end = at;
        while (end < size && is_plain(bytes[end]))
            end++;
        if (end > at) {
            text += "\"" + std::string(bytes + at, bytes + end) + "\"";
            at = end;
        } else {
            text += digits[bytes[at] >> 4];
            text += digits[bytes[at++] & 15];
        }
    }
    return text;
}

std::vector<byte> wire_bytes(const std::string& text) {
    static const std::regex word(R"RE("([^"]*)"|(\S+))RE");
    std::vector<byte> bytes;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        bool entry = line.rfind("entry ", 0) == 0;
        if (entry) line.erase(0, 6);
        for (std::sregex_iterator at(line.begin(), line.end(), word), end; at != end; ++at) {
            bool quoted = (*at)[1].matched;
            std::string each = quoted ? (*at)[1] : (*at)[2];
            if (entry)
                append_with_length(bytes, each);
            else if (quoted)
                append(bytes, each);
            else
                bytes.push_back(static_cast<byte>(std::stoul(each, nullptr, 16)));
        }
    }
    return bytes;
}

}  // namespace test_support
