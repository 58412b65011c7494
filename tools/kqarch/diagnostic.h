// What is wrong with a file, or may be, and how a command ends.
#ifndef KQARCH_DIAGNOSTIC_H
#define KQARCH_DIAGNOSTIC_H

#include <string>

#include "kqtype.h"

enum exit_status {
    exit_good = 0,
    exit_refused = 1,  // refused, or different
    exit_usage = 2,    // wrong use of the command line
    exit_failed = 3    // could not: a missing file, no permission, a full disk
};

enum class severity { error, warning, note };

const char* name_of(severity level);

// `FILE:LINE: error[CODE NAME]: text`, then `hint: ...`; what is empty or 0 is left out.
struct diagnostic {
    severity level = severity::error;
    std::string file = {};
    ulint line = 0;
    kqcode_t code = 0;
    std::string section = {};
    std::string key = {};
    std::string text = {};
    std::string hint = {};
    const char* rule = "other";  // of `kqarch check`, where there is no code: see find_doubt
};

// "-808 ARCH_E_INVALID_DEST".
std::string code_text(kqcode_t code);

// "db/kqarch.ini:4", or the program where there is no file.
std::string place_of(const diagnostic& found);

#endif
