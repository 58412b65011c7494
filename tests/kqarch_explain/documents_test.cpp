// The pages that repeat the tables hold every row of them and nothing else. With DOCS_REWRITE=1 in
// the environment they are written anew.
#include <gtest/gtest.h>

#include <cstdlib>

#include "documents.h"
#include "support/instance.h"

namespace {

void expect_document(const std::string& name, const std::string& expected) {
    const std::string path = PROJECT_DIRECTORY "/docs/" + name;
    if (std::getenv("DOCS_REWRITE") != nullptr) test_support::write_file(path, expected);
    EXPECT_EQ(test_support::read_file(path), expected)
        << "to write it anew: DOCS_REWRITE=1 script/test release -R documents";
}

TEST(documents, errors_page_is_the_table_of_codes) {
    expect_document("errors.md", errors_document());
}

TEST(documents, keys_page_is_the_table_of_keys_and_types) {
    expect_document("keys.md", keys_document());
}

}  // namespace
