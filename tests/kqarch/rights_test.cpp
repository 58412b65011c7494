// Which user's rights a check tested: only root can run it as another user than the owner.
#include <gtest/gtest.h>
#include <unistd.h>

#include "program.h"

namespace {

bool has(const run_result& result, const char* piece) {
    return (result.output + result.errors).find(piece) != std::string::npos;
}

TEST(rights, of_another_user_than_the_owner_are_told) {
    if (geteuid() != 0) GTEST_SKIP() << "only root may give files away";
    workplace place;
    ASSERT_EQ(place.run("kqarch init db").status, 0);
    EXPECT_FALSE(has(place.run("kqarch check db"), "warning"));
    run_result given = place.run("chown -R 65533 db && kqarch check db");
    EXPECT_TRUE(has(given, "tested with the rights of root")) << given.errors;
    EXPECT_TRUE(has(given, "sudo -u '#65533' kqarch check db")) << given.errors;
    EXPECT_EQ(given.status, 0);
    run_result absent = place.run("rm db/kqarch.ini && kqarch check db");
    EXPECT_TRUE(has(absent, "db/kq.ini: warning: belongs to #65533")) << absent.errors;
}

TEST(rights, of_the_owner_must_include_writing) {
    if (geteuid() != 0) GTEST_SKIP() << "only root may give files away";
    workplace place;
    run_result locked = place.run(
        "kqarch init db && chown -R 65533 db && chmod 400 db/kqarch.ini && kqarch check db");
    EXPECT_TRUE(has(locked, "may not be written by its owner")) << locked.errors;
}

}  // namespace
