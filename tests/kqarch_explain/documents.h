// docs/errors.md and docs/keys.md as they have to be.
#ifndef TESTS_KQARCH_EXPLAIN_DOCUMENTS_H
#define TESTS_KQARCH_EXPLAIN_DOCUMENTS_H

#include <string>

std::string errors_document();
std::string keys_document();

#endif
