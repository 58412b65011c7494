// What a rule says when it refuses, and where it says it.
//
// A rule reads `if (condition) return refuse(ARCH_E_..., "message\n", ...);`, so that a search for
// the message finds the rule. The variants differ only in where the message goes. A text in a
// message can never start a line of its own: its control characters are shown as \xNN.
#ifndef ARCH_COMMON_REPORT_H
#define ARCH_COMMON_REPORT_H

#include "common/text.h"

namespace arch {

// As much of a text that may be of any length as a message has room for, so that the message keeps
// its end.
class clipped {
  public:
    explicit clipped(const schar* text) { copy_text(text_, text); }
    const schar* text() const { return text_; }

  private:
    schar text_[KQ_PATHNAME_MAX + 1];
};

// Printed on standard error, and logged at level 4.
kqcode_t refuse(kqcode_t code, const schar* format, ...) KQ_PRINTF(2, 3);

// The same, logged without the line feed at its end.
kqcode_t refuse_log_bare(kqcode_t code, const schar* format, ...) KQ_PRINTF(2, 3);

// Printed on standard error only.
kqcode_t refuse_printed(kqcode_t code, const schar* format, ...) KQ_PRINTF(2, 3);

// Logged at level 4 only.
kqcode_t refuse_logged(kqcode_t code, const schar* format, ...) KQ_PRINTF(2, 3);

// Written to standard error directly, past the console printer, and logged at level 4.
kqcode_t refuse_direct(kqcode_t code, const schar* format, ...) KQ_PRINTF(2, 3);

// Logged at level 3; nothing fails.
void warn(const schar* format, ...) KQ_PRINTF(1, 2);

// Logged at level 2: a change that was made.
void report_change(const schar* format, ...) KQ_PRINTF(1, 2);

// Records a code with the place that raised it, and returns it.
kqcode_t raise(kqcode_t code, int line = __builtin_LINE());

}  // namespace arch

#endif
