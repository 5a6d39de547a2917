// SPDX-License-Identifier: Apache-2.0
// The tests run in a lab themselves, so every lab made here is one inside another.
#include "lab/lab_runner.h"
#include "support/file_text.h"

#include <csignal>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <switchcfg/socket.h>
#include <unistd.h>

namespace switchcfg::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::StartsWith;

TEST(LabRun, GivesTheExitStatusOfTheCommand)
{
    EXPECT_EQ(lab("exit 0").status, 0);
    EXPECT_EQ(lab("exit 7").status, 7);
    EXPECT_EQ(lab("kill -SEGV $$").status, 128 + SIGSEGV);
    EXPECT_EQ(lab("sleep 1000 & exit 3").status, 3) << "what is left in the background ends with the lab";

    EXPECT_EQ(run({SWITCHLAB, "run", "--", "no-such-command"}),
        (Outcome{127, "switchlab: no-such-command: No such file or directory\n"}));
    EXPECT_EQ(
        run({SWITCHLAB, "run", "--", "/etc/passwd"}), (Outcome{126, "switchlab: /etc/passwd: Permission denied\n"}));
    for (const Words &wrong : {Words{SWITCHLAB, "run"}, Words{SWITCHLAB, "run", "--"}, Words{SWITCHLAB},
             Words{SWITCHLAB, "run", "--nonsense", "--", "true"}}) {
        EXPECT_EQ(run(wrong).status, 125);
    }
}

TEST(LabRun, FoldersAreItsOwnAndLeaveNothingBehind)
{
    const std::string mounts = file_text("/proc/self/mountinfo");
    for (const char *folder : {"/var/", "/tmp/", "/mnt/", "/dev/", "/dev/shm/"}) {
        write_file(std::string{folder} + "outside", "");
    }
    write_file("/etc/ntp.keys", "outside\n");
    const Outcome inside = lab("for f in /var /tmp /mnt /dev /dev/shm; do test -e $f/outside && echo $f is shared; "
                               "touch $f/inside || exit 1; done; "
                               "cat /etc/ntp.keys; echo inside > /etc/ntp.keys && rm /etc/hostname && echo x > "
                               "/etc/fresh && cat /etc/ntp.keys; "
                               "hostname inside");
    EXPECT_EQ(inside.status, 0);
    EXPECT_EQ(inside.output, "outside\ninside\n");
    for (const char *folder : {"/var/", "/tmp/", "/mnt/", "/dev/", "/dev/shm/"}) {
        EXPECT_FALSE(fs::exists(std::string{folder} + "inside")) << folder;
    }
    EXPECT_EQ(file_text("/etc/ntp.keys"), "outside\n");
    EXPECT_TRUE(fs::exists("/etc/hostname"));
    EXPECT_FALSE(fs::exists("/etc/fresh"));
    EXPECT_EQ(file_text("/proc/self/mountinfo"), mounts);
}

TEST(LabRun, StartsWithTheFoldersOfAnEmptySwitch)
{
    const Outcome inside = lab("stat -c '%A %n' /tmp /var/run/cfg /var/log /var/lib /var/tmp /mnt/flash/log /dev/shm; "
                               "ls -A /mnt/flash; "
                               "for d in null zero full random urandom; do test -c /dev/$d || echo $d; done; "
                               "echo x > /dev/null; echo y > /dev/stdout; head -c 3 /dev/zero | od -An -tx1; "
                               "script -qc 'test -t 0 && tty' /dev/null | grep -c ^/dev/pts/0");
    EXPECT_EQ(inside.output, "drwxrwxrwt /tmp\n"
                             "drwxr-xr-x /var/run/cfg\n"
                             "drwxr-xr-x /var/log\n"
                             "drwxr-xr-x /var/lib\n"
                             "drwxrwxrwt /var/tmp\n"
                             "drwxr-xr-x /mnt/flash/log\n"
                             "drwxrwxrwt /dev/shm\n"
                             "log\n"
                             "y\n 00 00 00\n1\n");
}

TEST(LabRun, ProgramsThatStopAMachineOnlyTakeNote)
{
    if (!fs::exists("/sbin/shutdown")) {
        GTEST_SKIP() << "this machine has no /sbin/shutdown";
    }
    // Never the machine's own: first a look at what would run.
    EXPECT_EQ(lab("grep -q power.log /sbin/shutdown && /sbin/shutdown -r now && cat /tmp/power.log").output,
        "shutdown -r now\n");
}

TEST(LabRun, LoopbackIsUpAndNobodyElses)
{
    const int server = socket_is6_create_any(63003); // of both families
    for (const char *const address : {"127.0.0.1", "::1"}) {
        const std::string connect = std::string{"exec 3<>/dev/tcp/"} + address + "/63003";
        EXPECT_EQ(run({"bash", "-c", connect}).output, "");
        EXPECT_THAT(lab("exec 2>&1; bash -c '" + connect + "'").output, HasSubstr("Connection refused"));
    }
    ::close(server);
}

TEST(LabRun, ProcessesAreItsOwnAndOrphansAreReaped)
{
    EXPECT_EQ(lab("echo $$ /proc/[0-9]*").output, "2 /proc/1 /proc/2\n");
    // The loop ends when the orphan's entry is gone; an unreaped one would stay.
    EXPECT_EQ(lab("mkfifo /tmp/pid; (sh -c 'echo $$ > /tmp/pid' &); read orphan < /tmp/pid; "
                  "while test -e /proc/$orphan; do :; done; echo gone")
                  .output,
        "gone\n");
}

TEST(LabRun, PassesSignalsOn)
{
    Program program{lab_words("trap 'echo caught; exit 5' TERM; sleep 1000 & echo up; wait")};
    ASSERT_EQ(program.line(), "up");
    ASSERT_EQ(program.send(SIGTERM), 0);
    EXPECT_EQ(program.line(), "caught");
    EXPECT_EQ(program.exit_status(), 5);
}

TEST(LabRun, EndsWithItsParentAndWhenKilled)
{
    // Every process of the lab holds the pipe, so the end of file proves that all are gone.
    const std::string script = "sleep 1000 & setsid sleep 1000 & echo up; wait";
    Program killed{lab_words(script)};
    ASSERT_EQ(killed.line(), "up");
    killed.send(SIGKILL);
    EXPECT_EQ(killed.rest(), "");

    Program parent{{"sh", "-c", SWITCHLAB " run -- sh -c '" + script + "'; true"}};
    ASSERT_EQ(parent.line(), "up");
    parent.send(SIGKILL);
    EXPECT_EQ(parent.rest(), "");
}

TEST(LabRun, KeepsFoldersInTheirPlaces)
{
    fs::create_directories("/tmp/checkout/source");
    fs::create_directories("/var/other");
    fs::create_directory("/tmp/gone");
    fs::create_directory_symlink("/tmp/checkout", "/mnt/link");
    write_file("/tmp/checkout/source/file", "kept\n");
    fs::create_symlink("/bin/sh", "/tmp/alone");

    const Outcome kept = lab("cat /tmp/checkout/source/file; ls -d /tmp/checkout /tmp/gone /var/other 2> /dev/null; "
                             "echo new > /tmp/checkout/new",
        {"--keep", "/tmp/checkout/source", "--keep", "/tmp/checkout", "--keep", "/var/other/"});
    EXPECT_EQ(kept.output, "kept\n/tmp/checkout\n/var/other\n");
    EXPECT_EQ(file_text("/tmp/checkout/new"), "new\n");
    EXPECT_EQ(lab("cat /mnt/link/new; ls /mnt", {"--keep", "/mnt/link"}).output, "new\nflash\nlink\n");

    fs::current_path("/tmp/checkout/source");
    EXPECT_EQ(lab("pwd; ls; test -e ../new || echo no new; test -e /tmp/gone || echo gone").output,
        "/tmp/checkout/source\nfile\nno new\ngone\n")
        << "the current folder, and only it, is kept without asking";
    fs::current_path("/tmp");
    EXPECT_EQ(lab("pwd; test -e checkout || echo gone").output, "/tmp\ngone\n")
        << "a private folder stays private even when it is the current one";
    EXPECT_EQ(run({SWITCHLAB, "run", "--", "./alone", "-c", "ls -d alone gone 2> /dev/null"}).output, "alone\n");

    for (const char *wrong : {"/tmp", "/", "/var/run", "/mnt/flash/../../tmp"}) {
        const Outcome refused = lab("true", {"--keep", wrong});
        EXPECT_EQ(refused.status, 125);
        EXPECT_THAT(refused.output, StartsWith(std::string{"switchlab: --keep "} + wrong + ": Invalid argument; "));
    }
    EXPECT_EQ(lab("true", {"--keep", "/tmp/absent"}).output,
        "switchlab: --keep /tmp/absent: No such file or directory; name a folder that exists\n");
}

TEST(LabRun, ServesAUserWithoutRightsAndSaysWhatTheKernelRefused)
{
    if (!makes_user_namespaces()) {
        GTEST_SKIP() << "no user namespaces are to be had here, as below chroot()";
    }
    const auto user_lab = [user = plain_user({SWITCHLAB})](const std::string &script) {
        Words words = user;
        words.insert(words.end(), {"/tmp/user/switchlab", "run", "--", "sh", "-c", script});
        return run(words);
    };
    const Outcome inside =
        user_lab("id -u; touch /var/x /tmp/x /mnt/x /dev/x /etc/x && echo >> /etc/passwd && echo written; "
                 "rm /etc/group; test -e /etc/group || echo gone; echo $$; ip link show lo 2>&1 | grep -c LOOPBACK,UP");
    EXPECT_EQ(inside.output, "0\nwritten\ngone\n2\n1\n");
    EXPECT_TRUE(fs::exists("/etc/group"));
    EXPECT_FALSE(fs::exists("/etc/x"));
    EXPECT_EQ(user_lab("echo 0 > /proc/sys/user/max_net_namespaces; /tmp/user/switchlab run -- true"),
        (Outcome{125, "switchlab: clone new mount, network and process namespaces: No space left on device; "
                      "a limit on namespaces is reached: raise the sysctls user.max_*_namespaces\n"}));
}

TEST(LabRun, WorksInsideItself)
{
    // Deep enough that overlayfs refuses to be stacked any further.
    const std::string nest = std::string{SWITCHLAB} + " run -- ";
    const Outcome deep =
        lab(nest + nest + nest + "sh -c 'echo deep > /etc/deep; cat /etc/deep; test -s /etc/passwd; echo $?'");
    EXPECT_EQ(deep.output, "deep\n0\n");
}

} // namespace
} // namespace switchcfg::testing
