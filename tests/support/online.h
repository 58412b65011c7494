// What tests of online changes share: an instance whose neighbours are known, and its registry and
// file as texts.
#ifndef TESTS_SUPPORT_ONLINE_H
#define TESTS_SUPPORT_ONLINE_H

#include <functional>
#include <string>

#include "support/instance.h"

namespace test_support {

// Makes instance directories in memory while it lives, where there is room for them: these tests
// write thousands of files.
class directories_in_memory {
  public:
    directories_in_memory();
    ~directories_in_memory();
    directories_in_memory(const directories_in_memory&) = delete;
    directories_in_memory& operator=(const directories_in_memory&) = delete;

  private:
    bool set;
};

// kqmal.ini knows INST1 to INST20 and KQSERVER, which is this instance; kqtimer.ini T1 and T2.
class online_instance {
  public:
    online_instance();
    kqcode_t open(const std::string& parameters) { return directory.open(parameters); }

  private:
    directories_in_memory first;
    instance_directory directory;
};

// Starts up from a text of kqarch.ini.
kqcode_t start_from(const std::string& text);

// Starts up from what was written and looks at what came of it; afterwards the running registry is
// as it was.
kqcode_t start_up_aside(kqbool valid_chk, const std::function<void()>& look);

// The text that the registry would be written as; the registry lock is taken.
std::string registry_text();

// Every field of the registry and of its records that is not as in new ones.
std::string registry_fields_text();

}  // namespace test_support

#endif
