// kqarch explain: what a result code, a key of kqarch.ini or a destination type means.
#ifndef KQARCH_EXPLAIN_H
#define KQARCH_EXPLAIN_H

#include <string>

#include "output.h"

// Explains a code (-808, 808, ARCH_E_INVALID_DEST, INVALID_DEST), a key or a type, in any case;
// with an empty topic lists them all. Needs no instance. exit_refused, with what could have been
// meant, for a topic that is none of them.
//
// The JSON document holds "topic" (or null) and what was found in "codes", "keys" and "types":
// without a topic every entry there is.
exit_status run_explain(output& out, const std::string& topic);

#endif
