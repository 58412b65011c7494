// Which user's rights a check tested, and whose is what is made: only root can run kqarch as another
// user than the owner.
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

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
    run_result locked = place.run("chmod 400 db/kqarch.ini && kqarch check db");
    EXPECT_TRUE(has(locked, "may not be written by its owner")) << locked.errors;
    run_result absent = place.run("rm -f db/kqarch.ini && kqarch check db");
    EXPECT_TRUE(has(absent, "db/kq.ini: warning: belongs to #65533")) << absent.errors;
}

// The server's user goes on with what root made for it; what was there stays whose it was.
constexpr struct {
    const char* command;
    const char* made;
    const char* owner;
} owner_rows[] = {
    {"mkdir new && chown 65533:65532 new && kqarch init new/a/b",
     "new/a new/a/b new/a/b/kqarch.ini new/a/b/arch", "65533:65532"},
    {"mkdir -m 755 old && kqarch add db 'TYPE=LOCAL, DEST={dir}/old/x/../y/z' --yes && "
     "setpriv --reuid=65533 --regid=65532 --clear-groups kqarch check db",
     "old/x old/y old/y/z db/kqarch.ini db/kqarch_bak_1.log db/.kqarch.lock db/kqarch_journal.log",
     "65533:65532"},
    {"mkdir old && kqarch add db 'TYPE=LOCAL, DEST={dir}/old/x' --yes", "old", "0:0"},
    {"rm db/kqarch.ini && kqarch add db 'TYPE=LOCAL, DEST={dir}/one' --yes", "db/kqarch.ini one",
     "65533:65532"},
    {"rmdir db/arch && kqarch check --probe db", "db/arch", "65533:65532"},
    // What the server's user could not make in root's directory is not given to him.
    {"mkdir -m 755 old && sed -i 's|^ARCH_DEST *=.*|ARCH_DEST = {dir}/old/x|' db/kqarch.ini && "
     "kqarch check --probe db",
     "old/x", "0:0"},
    {"chown 0:0 db && kqarch backup db", "db/kqarch_bak_1.log db/.kqarch.lock", "65533:65532"},
    {"kqarch backup db && echo >>db/kqarch.ini && kqarch restore db 1 --yes",
     "db/kqarch.ini db/kqarch_bak_2.log", "65533:65532"},
    // A copy is readable by nobody who may not read its source.
    {"chown 0:0 db/kqarch.ini && kqarch backup db", "db/kqarch_bak_1.log", "0:0"},
    {"chown 65533:0 db/kqarch.ini && chmod 640 db/kqarch.ini && "
     "setpriv --reuid=65533 --regid=65532 --clear-groups kqarch backup db",
     "-c '%u:%g %a' db/kqarch_bak_1.log", "65533:65532 600"},
};

TEST(rights, of_what_is_made_are_those_of_the_owner) {
    if (geteuid() != 0) GTEST_SKIP() << "only root may give files away";
    for (const auto& row : owner_rows) {
        workplace place;
        run_result made =
            place.run(std::string("kqarch init db >&2 && chown -R 65533:65532 db && ") + "{ " +
                      row.command + "; } >&2 && stat -c %u:%g " + row.made + " | sort -u");
        EXPECT_EQ(made.output, std::string(row.owner) + "\n") << row.command << made.errors;
    }
}

}  // namespace
