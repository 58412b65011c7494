#include "description.h"

namespace bench {
namespace {

// Two digits, so that all names of a kind are equally long.
std::string numbered(std::string_view prefix, ulint number) {
    const std::string digits = std::to_string(number);
    return std::string(prefix) + (digits.size() < 2 ? "0" : "") + digits;
}

std::string line(std::string_view key, std::string_view value) {
    return std::string(key) + " = " + std::string(value) + "\n";
}

std::string line(std::string_view key, ulint value) {
    return line(key, std::to_string(value));
}

destination local(ulint number) {
    return {"ARCHIVE_LOCAL" + std::to_string(number),
            ARCH_TYPE_LOCAL,
            {},
            numbered("archive", number),
            number};
}

// Sixteen names of seven characters just fit into a value.
destination realtime(ulint number, ulint instances) {
    destination made{
        "ARCHIVE_REALTIME" + std::to_string(number), ARCH_TYPE_REALTIME, {}, "", number};
    for (ulint i = 1; i <= instances; ++i)
        made.instances.push_back(numbered(numbered("RT", number) + "_", i));
    return made;
}

destination async(ulint number) {
    return {"ARCHIVE_ASYNC" + std::to_string(number),
            ARCH_TYPE_ASYNC,
            {numbered("ASYNC", number)},
            "",
            number};
}

destination remote(ulint number) {
    return {"ARCH_REMOTE" + std::to_string(number),
            ARCH_TYPE_REMOTE,
            {numbered("NODE", number)},
            numbered("incoming", number),
            number};
}

destination raft(ulint number) {
    return {
        numbered("RAFT_MEMBER", number), ARCH_TYPE_RAFT, {numbered("VOTER", number)}, "", number};
}

destination learner(ulint number) {
    return {numbered("RAFT_LEARNER", number),
            ARCH_TYPE_LEARNER,
            {numbered("LEARNER", number)},
            "",
            number};
}

std::string sizes() {
    return line("ARCH_FILE_SIZE", 64) + line("ARCH_SPACE_LIMIT", 4096) +
           line("ARCH_FLUSH_BUF_SIZE", 8);
}

std::string member_lines(const destination& dest) {
    const ulint id = dest.type == ARCH_TYPE_RAFT ? dest.number : 100 + dest.number;
    return line("ARCH_DEST_IP", "10.20.30." + std::to_string(id)) + line("ARCH_DEST_PORT", 6530) +
           line("ARCH_DEST_ID", id) + line("ARCH_CENTER_ID", 3);
}

// What follows ARCH_TYPE and ARCH_DEST.
std::string own_lines(const destination& dest) {
    switch (dest.type) {
        case ARCH_TYPE_LOCAL:
            return sizes() + line("ARCH_HANG_FLAG", 1);
        case ARCH_TYPE_REALTIME:
            return line("WAIT_APPLY", ulint{0}) + line("ARCH_FAILOVER", 1);
        case ARCH_TYPE_ASYNC:
            return line("ARCH_TIMER_NAME", numbered("TIMER", dest.number)) +
                   line("ARCH_SEND_DELAY", 10);
        case ARCH_TYPE_REMOTE:
            return line("ARCH_INCOMING_PATH", dest.directory) + sizes();
        default:
            return member_lines(dest);
    }
}

}  // namespace

description small_instance() {
    return {"", {local(1), realtime(1, 1), realtime(2, 1)}};
}

description full_instance() {
    description made;
    made.settings = line("ARCH_WAIT_APPLY", ulint{0}) + line("ARCH_RESERVE_TIME", 1440) +
                    line("ARCH_LOCAL_SHARE", 1) + line("ARCH_LOCAL_SHARE_CHECK", 1) +
                    line("XMAL_HB_INTERVAL", 5) + line("RAFT_HB_INTERVAL", 5) +
                    line("RAFT_VOTE_INTERVAL", 20) + line("XMAL_IP", "10.20.30.200") +
                    line("XMAL_PORT", 6531) + line("RAFT_SELF_ID", 200) +
                    line("ARCH_ASM_MIRROR", 1) + line("ARCH_ASM_STRIPING", 64) +
                    line("RAFT_PKG_INTERVAL", 100) + line("SELF_CENTER_ID", 3);
    for (ulint i = 1; i <= 8; ++i)
        made.destinations.push_back(local(i));
    for (ulint i = 1; i <= 8; ++i)
        made.destinations.push_back(realtime(i, 2 * i));
    for (ulint i = 1; i <= 8; ++i)
        made.destinations.push_back(async(i));
    for (ulint i = 1; i <= 8; ++i)
        made.destinations.push_back(remote(i));
    return made;
}

description raft_instance() {
    description made;
    made.settings = line("XMAL_HB_INTERVAL", 5) + line("RAFT_HB_INTERVAL", 5) +
                    line("RAFT_VOTE_INTERVAL", 20) + line("XMAL_IP", "10.20.30.200") +
                    line("XMAL_PORT", 6531) + line("RAFT_SELF_ID", 200) +
                    line("RAFT_PKG_INTERVAL", 100) + line("SELF_CENTER_ID", 3);
    made.destinations.push_back(local(1));
    for (ulint i = 1; i <= 8; ++i)
        made.destinations.push_back(raft(i));
    for (ulint i = 1; i <= 9; ++i)
        made.destinations.push_back(learner(i));
    return made;
}

description fifty_destinations() {
    description made;
    for (ulint i = 1; i <= 10; ++i)
        made.destinations.push_back(local(i));
    for (ulint i = 1; i <= 20; ++i)
        made.destinations.push_back(realtime(i, 1));
    for (ulint i = 1; i <= 10; ++i)
        made.destinations.push_back(async(i));
    for (ulint i = 1; i <= 10; ++i)
        made.destinations.push_back(remote(i));
    return made;
}

description local_sections(ulint count) {
    description made;
    for (ulint i = 1; i <= count; ++i)
        made.destinations.push_back(local(i));
    return made;
}

description section_headers(ulint count) {
    description made;
    for (ulint i = 1; i <= count; ++i)
        made.destinations.push_back(
            {"ARCHIVE_LOCAL" + std::to_string(i), ARCH_TYPE_NONE, {}, "", i});
    return made;
}

std::string dest_text(const destination& dest) {
    if (dest.type == ARCH_TYPE_LOCAL) return dest.directory;
    std::string joined;
    for (const std::string& name : dest.instances)
        joined += (joined.empty() ? "" : "/") + name;
    return joined;
}

std::string kqarch_text(const description& instance) {
    std::string text;
    for (const destination& dest : instance.destinations) {
        text += "\n[" + dest.section + "]\n";
        if (&dest == &instance.destinations.front()) text += instance.settings;
        if (dest.type == ARCH_TYPE_NONE) continue;
        text += line("ARCH_TYPE", arch_cfg_get_arch_name_by_type(dest.type));
        text += line("ARCH_DEST", dest_text(dest));
        text += own_lines(dest);
    }
    return text;
}

std::string kqmal_text(const description& instance) {
    std::string text = "[MAL0]\n" + line("MAL_INST_NAME", own_name);
    ulint number = 0;
    for (const destination& dest : instance.destinations) {
        for (const std::string& name : dest.instances) {
            text += "\n[MAL" + std::to_string(++number) + "]\n" + line("MAL_INST_NAME", name) +
                    line("MAL_INST_HOST", "10.20.31.1") + line("MAL_INST_PORT", 5236);
        }
    }
    return text;
}

std::string kqtimer_text(const description& instance) {
    std::string text;
    for (const destination& dest : instance.destinations)
        if (dest.type == ARCH_TYPE_ASYNC)
            text += "[" + numbered("TIMER", dest.number) + "]\n" + line("TYPE", 2) + "\n";
    return text;
}

}  // namespace bench
