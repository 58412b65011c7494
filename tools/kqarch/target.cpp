#include "target.h"

#include "password.h"

std::string target::shown() const {
    return subscriber ? "--subscriber" : hide_password(dest, text_place::other);
}

// A directory is registered without separators at its end.
std::string target::text() const {
    std::string text = dest;
    while (text.starts_with('/') && text.size() > 1 && text.ends_with('/'))
        text.pop_back();
    return text;
}

arch_cfg_t* find(const target& which) {
    if (!which.subscriber && which.dest.empty()) return nullptr;
    return arch_cfg_find_by_dest(which.text().c_str(), which.subscriber ? 1 : 0);
}
