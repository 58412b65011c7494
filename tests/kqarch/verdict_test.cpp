// The code that `kqarch check` names is the one that the server's own start-up returns.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "arch_cfg.h"
#include "kq_instance.h"
#include "osfile.h"
#include "program.h"

namespace {

constexpr const char* local = "[L]\nARCH_TYPE = LOCAL\nARCH_DEST = {dir}/db/arch\n";

// What stands behind the section above.
constexpr const char* bodies[] = {
    "",
    "ARCH_FILE_SIZE = 1\nARCH_HANG_FLAG = 1\nNOTHING = 1\n",
    "no line\nARCH_FILE_SIZE = 1\n",
    "[l]\nARCH_TYPE = LOCAL\nARCH_FILE_SIZE = 1\n",
    "[R]\nARCH_TYPE = REALTIME\nARCH_DEST = KQ2\n",
    "[R]\nARCH_TYPE = REALTIME\nARCH_DEST = KQ2/KQ3\nARCH_FAILOVER = 1\n",
    "[R]\nARCH_TYPE = REALTIME\nARCH_DEST = KQ2/KQ1\nX = 1\n",
    "[R]\nARCH_TYPE = REALTIME\nARCH_DEST = KQ9\n[A]\nARCH_TYPE = ASYNC\nARCH_DEST = KQ2\n",
    "[A]\nARCH_TYPE = ASYNC\nARCH_DEST = KQ2\nARCH_TIMER_NAME = NEVER\n",
    "[T]\nARCH_TYPE = TIMELY\nARCH_DEST = KQ2\nWAIT_APPLY = 1\nARCH_FAILOVER = 1\n",
    "[T]\nARCH_TYPE = TIMELY\nARCH_DEST = KQ2\n[R]\nARCH_TYPE = REALTIME\nARCH_DEST = KQ3\n",
    "[T]\nARCH_TYPE = TIMELY\nARCH_DEST = KQ2\nARCH_FAILOVER = 1\n",
    "[S]\nARCH_TYPE = SYNC\nARCH_DEST = KQ2\nARCH_SEND_DELAY = 1\n",
    "[S]\nARCH_TYPE = SUBSCRIBE\nARCH_DEST = u/p@localhost\nARCH_TIMER_NAME = NIGHTLY\n",
    "[S]\nARCH_TYPE = SUBSCRIBE\nARCH_DEST = u/p@localhost:5236\nARCH_TIMER_NAME = NIGHTLY\n",
    "[F]\nARCH_TYPE = RAFT\nARCH_DEST = KQ2\nARCH_DEST_ID = 1\n",
    "[M]\nARCH_TYPE = REMOTE\nARCH_DEST = KQ2\nARCH_INCOMING_PATH = {dir}/db/arch/\n",
    "[M]\nARCH_TYPE = LOCAL\nARCH_DEST = {dir}/db/kq.ini/arch\n[N]\nARCH_TYPE = LOCAL\n",
};

// Start-up as the server does it, except that nothing on disk is changed.
kqcode_t start_up(const std::string& directory) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(kq_instance_open(directory.c_str()), 0);
    os_set_dry_run(1);
    kqcode_t code = arch_cfg_sys_init(nullptr, 1, 0);
    os_set_dry_run(0);
    if (code >= 0) arch_cfg_sys_destroy();
    kq_instance_close();
    testing::internal::GetCapturedStderr();
    return code;
}

TEST(verdict, is_the_code_of_start_up) {
    workplace place;
    ASSERT_EQ(place.run("kqarch init --kind standby db").status, 0);
    size_t refused = 0;
    for (const char* body : bodies) {
        place.write("db/kqarch.ini", std::string(local) + "ARCH_FILE_SIZE = 64\n" + body);
        kqcode_t expected = start_up(place.path("db"));
        run_result result = place.run("kqarch check --json db");
        auto document = nlohmann::json::parse(result.output);
        EXPECT_EQ(document["directories"][0]["code"], expected) << body;
        EXPECT_EQ(result.status, expected < 0 ? 1 : 0) << body;
        refused += expected < 0 ? 1 : 0;
    }
    EXPECT_EQ(refused, 14U);
}

}  // namespace
