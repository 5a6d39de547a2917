// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/pager.h>

#include "support/descriptors.h"
#include "support/file_text.h"
#include "support/output.h"
#include "support/terminal.h"

#include <csignal>
#include <cstdio>
#include <gtest/gtest.h>
#include <sched.h>
#include <string>
#include <termios.h>
#include <unistd.h>

namespace {

using namespace switchcfg::testing;

// Presses the blank bar at each screen, and "q" at the last, until the program has ended; everything shown meanwhile.
std::string page_to_the_end(Terminal &screen)
{
    std::string text;
    // The prompt is complete: a small more(1) ends it with a blank, the others with the end of what stands out.
    while (screen.shows("--More--") && screen.shows_either("--More-- ", "\033[m")) {
        text += screen.seen();
        screen.press(screen.seen().find("(END)") == std::string::npos ? " " : "q");
    }
    return text + screen.seen();
}

TEST(Pager, DisabledOrWithoutAFileItPrintsStraightAndFinishesWithoutAProgram)
{
    EXPECT_EQ(pager_get_out(), nullptr);
    EXPECT_EQ(output_of([] {
        EXPECT_EQ(pprintf("port %d\n", 7), 7);
        EXPECT_EQ(pager_get_out(), stdout);
        pager_finish_grep_only("nothing matches this", "");
        EXPECT_EQ(pager_get_out(), nullptr);
        pager_init_file("/tmp/no/such/folder");
        pager_init_file(nullptr);
        EXPECT_EQ(pager_get_out(), nullptr);
        pprintf("so it is standard output\n");
        pager_finish();
    }),
        "port 7\nso it is standard output\n");
}

TEST(Pager, EnabledItCollectsAndFiltersAtTheEnd)
{
    pager_enable(1);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(output_of([] {
            pprintf("Up 1\ndown 2\nup 3\n");
            EXPECT_NE(pager_get_out(), stdout);
            pager_finish_grep_only("up", "-i");
            EXPECT_EQ(pager_get_out(), nullptr);
        }),
            "Up 1\nup 3\n");
    }
    EXPECT_EQ(output_of([] {
        pprintf("a b\nab\n");
        pager_finish_grep("a b", "-n");
    }),
        "1:a b\n");
    EXPECT_EQ(output_of([] {
        pager_init();
        pager_init_stdout();
        EXPECT_NE(pager_get_out(), stdout) << "the first to open the stream wins";
        pager_finish();
    }),
        "");
    EXPECT_EQ(output_of([] {
        pprintf("kept\n");
        pager_finish_grep_only("k", nullptr);
        EXPECT_EQ(pfprintf(stdout, "%s\n", "beside"), 7);
        EXPECT_EQ(pfprintf(nullptr, "%s", "nowhere"), -1);
    }),
        "kept\nbeside\n");
}

TEST(Pager, FileStreamTakesTheTextAndShowsNothing)
{
    const std::string shown = output_of([] {
        pager_init_file("/tmp/first");
        pager_init_file("/tmp/second");
        pager_init_null();
        pprintf("to the file\n");
        pager_finish();
    });
    EXPECT_EQ(shown, "");
    EXPECT_EQ(file_text("/tmp/first"), "to the file\n");
    EXPECT_NE(::access("/tmp/second", F_OK), 0);
    EXPECT_EQ(output_of([] {
        pager_init_null();
        EXPECT_EQ(pprintf("dropped\n"), 8);
        pager_finish();
    }),
        "");
}

TEST(Pager, WithoutProcessesTheTextIsDropped)
{
    pager_enable(1);
    EXPECT_EQ(output_of([] {
        pprintf("lost\n");
        const NoMoreDescriptors none; // popen() needs a pipe
        pager_finish();
        EXPECT_EQ(pager_get_out(), nullptr);
        tail_printf("lost as well\n");
    }),
        "");
}

TEST(Pager, ProgramThatEndsEarlyRaisesNothing)
{
    pager_enable(1);
    const std::string much(1 << 20, 'x');
    EXPECT_EQ(output_of([&] {
        pprintf("hit\n%s\n", much.c_str());
        pager_finish_grep_only("hit", "-m 1");
        tail_printf_number_grep_more(0, 0, "-m 1 hit", "hit\n%s", much.c_str());
    }),
        "hit\nhit\n");
    sigset_t waiting;
    ::sigpending(&waiting);
    EXPECT_EQ(::sigismember(&waiting, SIGPIPE), 0);
    ::pthread_sigmask(SIG_SETMASK, nullptr, &waiting);
    EXPECT_EQ(::sigismember(&waiting, SIGPIPE), 0);
}

TEST(Pager, MoreMayBeLeftEarly)
{
    Terminal left{10, 60, [] {
                      pager_enable(1);
                      for (int i = 1; i <= 100000; ++i) {
                          EXPECT_GT(pprintf("line %d of many\n", i), 0);
                      }
                      pager_finish();
                      std::printf("still here\n");
                  }};
    ASSERT_TRUE(left.shows("--More--"));
    left.press("q");
    EXPECT_NE(left.rest().find("still here"), std::string::npos) << left.seen();
    EXPECT_EQ(left.join(), 0);
}

constexpr char twelve[] = "a1\nb2\na3\nb4\na5\nb6\na7\nb8\na9\nb10\na11\nb12\n";

TEST(TailPrinters, ShowTheLastLines)
{
    EXPECT_EQ(output_of([] { tail_printf("%s", twelve); }), "a3\nb4\na5\nb6\na7\nb8\na9\nb10\na11\nb12\n");
    EXPECT_EQ(output_of([] { tail_printf_number(2, "%s", twelve); }), "a11\nb12\n");
    EXPECT_EQ(output_of([] { tail_printf_number(0, "%s", "x\ny\n"); }), "x\ny\n");
    EXPECT_EQ(output_of([] { tail_printf_number_grep(2, "a", "%s", twelve); }), "a9\na11\n");
    EXPECT_EQ(output_of([] { tail_printf_number_grep(0, "a", "%s", twelve); }), "") << "no lines, not all of them";
    EXPECT_EQ(output_of([] { tail_printf_number_grep_more(0, 0, "b1", "%s", twelve); }), "b10\nb12\n");
    EXPECT_EQ(output_of([] { tail_printf_number_grep_more(1, 1, "-v b", "%s", twelve); }), "a11\n");
    pager_enable(1);
    EXPECT_EQ(output_of([] { tail_printf_number(1, "%d\n%d\n", 1, 2); }), "2\n");
    EXPECT_EQ(pager_get_out(), nullptr);
}

// Which printers page: on a screen that is too small for what they print.
TEST(TailPrinters, PageAsTheirFlagsSay)
{
    struct {
        bool enabled;
        void (*print)();
        bool pages;
    } const cases[] = {
        {true, [] { tail_printf_number(8, "%s", twelve); }, true},
        {false, [] { tail_printf_number(8, "%s", twelve); }, false},
        {true, [] { tail_printf("%s", twelve); }, false},
        {true, [] { tail_printf_number_grep(5, "b", "%s", twelve); }, true},
        {false, [] { tail_printf_number_grep(5, "b", "%s", twelve); }, false},
        {true, [] { tail_printf_number_grep_more(0, 0, "b", "%s", twelve); }, false},
        {false, [] { tail_printf_number_grep_more(0, 1, "b", "%s", twelve); }, true},
        {true, [] { pprintf("%s", twelve), pager_finish(); }, true},
        {true, [] { pprintf("%s", twelve), pager_finish_grep("b", ""); }, true},
    };
    for (const auto &[enabled, print, pages] : cases) {
        Terminal screen{4, 40, [&] {
                            pager_enable(enabled ? 1 : 0);
                            print();
                        }};
        if (pages) {
            ASSERT_TRUE(screen.shows("--More--")) << screen.seen();
            EXPECT_EQ(screen.seen().find("b12"), std::string::npos);
            EXPECT_NE(page_to_the_end(screen).find("b12"), std::string::npos) << screen.seen();
        } else {
            EXPECT_NE(screen.rest().find("b12"), std::string::npos);
            EXPECT_EQ(screen.seen().find("--More--"), std::string::npos) << screen.seen();
        }
        EXPECT_EQ(screen.join(), 0);
    }
}

TEST(TerminalHelpers, KeyTestSeesAKeyWithoutItsLineAndLeavesIt)
{
    Terminal screen{5, 40, [] {
                        std::printf("before %d\n", check_keypress(0.0));
                        std::fflush(stdout);
                        std::printf("waited %d\n", check_keypress(30.0));
                        termios settings;
                        ::tcgetattr(STDIN_FILENO, &settings);
                        std::printf(
                            "restored %d\n", (settings.c_lflag & ICANON) != 0 && (settings.c_lflag & ECHO) != 0);
                        std::fflush(stdout);
                        char line[8];
                        std::printf("line %s", std::fgets(line, sizeof line, stdin));
                    }};
    ASSERT_TRUE(screen.shows("before 0"));
    while (screen.line_mode()) { // until it waits
        ::sched_yield();
    }
    screen.press("k");
    ASSERT_TRUE(screen.shows("restored 1")) << screen.seen();
    EXPECT_NE(screen.seen().find("waited 1"), std::string::npos);
    EXPECT_EQ(screen.seen().find('k'), std::string::npos) << "no echo while it waits";
    screen.press("\n");
    EXPECT_NE(screen.rest().find("line k"), std::string::npos) << screen.seen();
}

TEST(TerminalHelpers, KeyTestWorksOnAPipe)
{
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    ASSERT_EQ(::dup2(ends[0], STDIN_FILENO), STDIN_FILENO);
    EXPECT_EQ(check_keypress(0.0), 0);
    ASSERT_EQ(::write(ends[1], "k", 1), 1);
    EXPECT_EQ(check_keypress(0.0), 1);
    ::close(STDIN_FILENO);
    EXPECT_EQ(check_keypress(0.0), -1);
}

TEST(TerminalHelpers, SpinnerTurnsOnATerminalOnly)
{
    EXPECT_EQ(output_of([] { busyindicator(); }), "");
    Terminal screen{5, 40, [] {
                        for (int i = 0; i < 5; ++i) {
                            busyindicator();
                        }
                    }};
    EXPECT_EQ(screen.rest(), "-\b\\\b|\b/\b-\b");
}

} // namespace
