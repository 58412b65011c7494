#include "counts.h"

#include "catalogue.h"
#include "instance.h"
#include "text.h"

type_counts counts_of_registry() {
    arch_cfg_hold hold;
    type_counts counts;
    for (const arch_cfg_t* arch = arch_cfg_sys.arch_lst.start; arch; arch = arch->link.next)
        ++counts[arch->type];
    return counts;
}

std::string counts_text(const type_counts& counts) {
    std::vector<std::string> texts;
    for (const auto& [type, count] : counts)
        texts.push_back(std::to_string(count) + " " + arch_cfg_get_arch_name_by_type(type));
    return texts.empty() ? "no destinations" : join(texts, ", ");
}

nlohmann::ordered_json counts_document(const type_counts& counts) {
    nlohmann::ordered_json document = nlohmann::ordered_json::object();
    for (const type_entry& type : all_types()) {
        auto found = counts.find(type.number);
        if (type.number != ARCH_TYPE_NONE)
            document[type.name] = found != counts.end() ? found->second : 0;
    }
    return document;
}
