// The fields of a record and of a registry by name, with the value that each has in a new one.
#ifndef TESTS_SUPPORT_FIELDS_H
#define TESTS_SUPPORT_FIELDS_H

#include <arch_cfg.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace test_support {

template <class Record>
struct field {
    std::string name;
    std::string unset;
    std::string (*get)(const Record&);
    void (*set)(Record&, const std::string&);
};

const std::vector<field<arch_cfg_t>>& record_fields();
const std::vector<field<arch_cfg_sys_t>>& registry_fields();

// " name=value" of every field that differs from `other`, or without it from a new one.
template <class Record>
std::string differences(const std::vector<field<Record>>& fields, const Record& record,
                        const Record* other = nullptr) {
    std::string text;
    for (const field<Record>& each : fields) {
        std::string value = each.get(record);
        if (value != (other ? each.get(*other) : each.unset)) text += " " + each.name + "=" + value;
    }
    return text;
}

// Sets a field from "NAME=value".
template <class Record>
void set_field(const std::vector<field<Record>>& fields, Record& record,
               const std::string& assignment) {
    size_t equals = assignment.find('=');
    for (const field<Record>& each : fields)
        if (each.name == assignment.substr(0, equals))
            return each.set(record, assignment.substr(equals + 1));
    throw std::runtime_error("no field " + assignment);
}

}  // namespace test_support

#endif
