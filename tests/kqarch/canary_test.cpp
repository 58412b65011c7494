// A password must not come out of kqarch in any form, wherever it stands in the file.
#include <gtest/gtest.h>

#include "program.h"
#include "text.h"

namespace {

constexpr const char* canary = "Kanary7Word";

// Bodies of a kqarch.ini; PASS is the password.
constexpr const char* bodies[] = {
    "[S]\nARCH_TYPE = SUBSCRIBE\nARCH_DEST = sysdba/PASS@10.9.8.7:5236\nARCH_TIMER_NAME = T\n",
    "[S]\nARCH_TYPE = SUBSCRIBE\nARCH_DEST = sysdba/PASS@localhost:5236\n",
    "[S]\nARCH_TYPE = SUBSCRIBE\nARCH_DEST = sysdba/PASS\n",
    "[S]\nARCH_TYPE = SUBSCRIBE\nARCH_DEST = /PASS@host:52\n",
    "[S]\nARCH_TYPE = SUBSCRIBE\nARCH_DEST = sysdba:PASS@nowhere\n",
    "[S]\nARCH_TYPE = SUBSCRIBE\nARCH_DEST = a/x@PASS/y@host:5\n",
    "[S]\nARCH_TYPE = SUBSCRIBE\nARCH_DEST = a/PASS\x07@host:5\n",
    "[S]\nARCH_TYPE = SUBSCRIBR\nARCH_DEST = sysdba/PASS@host:5236\n",
    "[S]\nARCH_DEST = sysdba/PASS@host:5236\nARCH_TYPE = SUBSCRIBE\n",
    "[SUB]\nARCH_DEST = sysdba/PASS\n",
    "[S]\nARCH_TYPE = LOCAL\nARCH_DEST = sysdba/PASS@host:5236\n",
    "[S]\nARCH_TYPE = REMOTE\nARCH_DEST = sysdba/PASS@host\nARCH_INCOMING_PATH = a/PASS@b\n",
    "[S]\nARCH_TYPE = REALTIME\nARCH_DEST = sysdba/PASS@host\n",
    "[S]\nARCH_TYPE = REALTIME\nARCH_DEST = a/PASS/x@h\n",
    "[S]\nARCH_TYPE = ASYNC\nARCH_TIMER_NAME = a/PASS@b\nARCH_DEST = X\n",
    "[S]\nARCH_TYPE = RAFT\nARCH_DEST = a/PASS@b\nARCH_DEST_IP = a/PASS@b\n",
    "[S]\nARCH_TYPE = LOCAL\nARCH_FILE_SIZE = a/PASS@b\nARCH_DST = a/PASS@b\n",
    "[S]\nARCH_TYPE = a/PASS@b\n[a/PASS@b]\n[a/PASS@b]\nARCH_TYPE = LOCAL\n",
    "[L]\nARCH_TYPE = LOCAL\n[S\nARCH_TYPE = SUBSCRIBE\nARCH_DEST = sysdba/PASS\n",
    "ARCH_DEST sysdba/PASS@host:5236\nsysdba/PASS@host\nsysdba/PASS=x@host\nsysdba/x=PASS@h = 1\n",
    ("#ARCH_DEST = sysdba/PASS\n# ARCH_DEST = sysdba/PASS@host\n"
     "[L]\nARCH_TYPE = LOCAL\nARCH_DEST = {dir}/db/arch\nARCH_RECV_PATH = a/PASS@b\n"),
    ("[L]\nARCH_TYPE = LOCAL\nARCH_DEST = {dir}/db/arch\n[S]\nARCH_TYPE = SUBSCRIBE\n"
     "ARCH_DEST = sysdba/PASS@10.9.8.7:5236\nARCH_TIMER_NAME = T\nARCH_FILE_SIZE = 64\n"),
    "[S]\nARCH_TYPE = SUBSCRIBE\nARCH_DEST = sysdba PASS@10.9.8.7:5236\nARCH_TIMER_NAME = T\n",
    "# old: a/x@h new: b/PASS\n; sysdba/PASS\n# pw=PASS\n#CONNECT a/PASS\n# my password: PASS\n",
    "ARCH_DEST sysdba/PASS@10.0.0.9:5236\n",
    "ARCH_DEST: sysdba/PASS@10.0.0.9:5236\nARCH_DEST: sysdba/PASS\n",
    "sysdba/PASS@h:1\n",
    "[sysdba/PASS@h:1\n= sysdba:PASS@h\n",
    "# see /arch@old and u/PASS\n#\r# a@b\rsysdba/PASS\r",
};

// Command lines with the password where none belongs.
constexpr const char* commands[] = {
    "explain sysdba/PASS@host",
    "explain --json sysdba/PASS",
    "check sysdba/PASS@localhost",
    "show --json sysdba/PASS@host",
    "show db sysdba/PASS",
    "fmt db sysdba/PASS@host",
    "sysdba/PASS",
    "init db --kind sysdba/PASS@h",
    "check misplaced",
    "check --json misplaced",
    "check -o sarif misplaced sysdba/PASS@localhost",
    "check -o nagios sysdba/PASS@localhost",
    "check -o nagios misplaced --lsn=sysdba/PASS",
    "check -o sysdba/PASS misplaced",
    "add db TYPE=SUBSCRIBE, DEST=sysdba/PASS@10.9.8.7:5236",
    "add db TYPE=SUBSCRIBE,DEST=sysdba/PASS --dry-run",
    "add db TYPE=SUBSCRIBR,DEST=sysdba/PASS --yes",
    "add db TYPE=LOCAL,DEST=sysdba/PASS@h,FILE_SIZE=1 --dry-run",
    "add db 'TYPE=REALTIME, DEST=sysdba/PASS@h' --dry-run",
    "add db 'TYPE=SUBSCRIBE, DEST=sysdba/x,PASS@h' --dry-run",
    "add sysdba/PASS@h TYPE=LOCAL --yes",
    "modify db sysdba/PASS@h FILE_SIZE=64 --yes",
    "modify db --subscriber DEST=sysdba/PASS --yes",
    "modify db {dir}/db/arch DEST=sysdba/PASS@h,FILE_SIZE=1 --yes",
    "drop db sysdba/PASS@h --yes",
    "restore db sysdba/PASS@h",
    "backup db --lsn sysdba/PASS@h",
    "show misplaced",
};

std::string body_with_canary(std::string body) {
    for (size_t at = body.find("PASS"); at != body.npos; at = body.find("PASS", at))
        body.replace(at, 4, canary);
    return body;
}

TEST(password, never_comes_out) {
    workplace place;
    ASSERT_EQ(place.run("kqarch init db && kqarch init other").status, 0);
    for (const char* body : bodies) {
        std::string text = body_with_canary(body);
        place.write("db/kqarch.ini", text);
        place.write("other/kqarch_bak_1.log", text);
        place.write("db/kqarch_bak_1.log", "");
        for (const char* command : {"check db",
                                    "check --no-timers db",
                                    "check -o sarif db",
                                    "check -o nagios db",
                                    "show db",
                                    "fmt db",
                                    "fmt --check db",
                                    "peer-check db other",
                                    "peer-check other db",
                                    "graph db other",
                                    "graph --format svg db",
                                    "graph --format dot db",
                                    "graph --format mermaid db",
                                    "raft db status",
                                    "raft db settings --vote 9 --dry-run",
                                    "raft db clear --dry-run",
                                    "raft db remove Kanary --dry-run --force",
                                    "peer-verify db </dev/null",
                                    "add db TYPE=LOCAL,DEST={dir}/new --dry-run --force",
                                    "modify db --subscriber ARCH_SEND_DELAY=1 --dry-run --force",
                                    "drop db --subscriber --dry-run --force",
                                    "restore other 1 --dry-run --force",
                                    "restore db 1 --dry-run --force",
                                    "backups other"})
            for (const char* form : {"", " --json"}) {
                run_result result = place.run(std::string("kqarch ") + command + form);
                std::string said = result.output + result.errors;
                EXPECT_FALSE(said.empty()) << command << "\n" << text;
                EXPECT_EQ(upper_case(said).find(upper_case(canary)), said.npos)
                    << command << form << "\n"
                    << text << "\n"
                    << said;
            }
    }
}

TEST(password, never_comes_out_of_a_wrong_place) {
    workplace place;
    ASSERT_EQ(place.run("kqarch init misplaced && kqarch init db").status, 0);
    for (const char* line : {"sysdba/PASS@localhost = 1", "sysdba/PASS = 1", "PASS/PASS"}) {
        place.write("misplaced/kq.ini", body_with_canary(line) + std::string("\n"));
        for (const char* command : commands) {
            run_result result = place.run("kqarch " + body_with_canary(command));
            EXPECT_NE(result.status, 0) << command;
            EXPECT_EQ((result.output + result.errors).find(canary), std::string::npos)
                << command << "\n"
                << result.output << result.errors;
        }
    }
}

}  // namespace
