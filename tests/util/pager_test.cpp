// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/pager.h>

#include "support/output.h"
#include "support/terminal.h"

#include <array>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <string>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>
#include <vector>

namespace {

using switchcfg::testing::output_of;
using switchcfg::testing::Terminal;

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

void print_lines(int count)
{
    for (int i = 1; i <= count; ++i) {
        EXPECT_GT(pprintf("line %d of many\n", i), 0);
    }
}

TEST(Pager, DisabledItPrintsStraightAndFinishesWithoutAProgram)
{
    EXPECT_EQ(pager_get_out(), nullptr);
    EXPECT_EQ(output_of([] {
        EXPECT_EQ(pprintf("port %d\n", 7), 7);
        EXPECT_EQ(pager_get_out(), stdout);
        pager_finish_grep_only("nothing matches this", "");
        EXPECT_EQ(pager_get_out(), nullptr);
    }),
        "port 7\n");
    pager_finish();
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
    std::array<char, 64> text{};
    const int fd = ::open("/tmp/first", O_RDONLY);
    EXPECT_EQ(::read(fd, text.data(), text.size()), 12);
    ::close(fd);
    EXPECT_STREQ(text.data(), "to the file\n");
    struct stat info {};
    EXPECT_NE(::stat("/tmp/second", &info), 0);
    EXPECT_EQ(output_of([] {
        pager_init_null();
        EXPECT_EQ(pprintf("dropped\n"), 8);
        pager_finish();
    }),
        "");
}

TEST(Pager, StreamThatCannotBeOpenedStaysIdle)
{
    pager_init_file("/tmp/no/such/folder");
    EXPECT_EQ(pager_get_out(), nullptr);
    pager_init_file(nullptr);
    EXPECT_EQ(pager_get_out(), nullptr);
    EXPECT_EQ(output_of([] { pprintf("so it is standard output\n"); }), "so it is standard output\n");
    pager_finish();
}

TEST(Pager, WithoutProcessesTheTextIsDropped)
{
    // popen() needs a pipe: none is left when every descriptor is taken.
    pager_enable(1);
    pprintf("lost\n");
    std::vector<int> taken;
    for (int fd = ::dup(STDIN_FILENO); fd >= 0; fd = ::dup(STDIN_FILENO)) {
        taken.push_back(fd);
    }
    pager_finish();
    const bool idle = pager_get_out() == nullptr;
    tail_printf("lost as well\n");
    for (const int fd : taken) {
        ::close(fd);
    }
    EXPECT_TRUE(idle);
}

TEST(Pager, ProgramThatEndsEarlyRaisesNothing)
{
    pager_enable(1);
    const std::string much(1 << 20, 'x');
    int hits = 0;
    EXPECT_EQ(output_of([&] {
        pprintf("hit\n%s\n", much.c_str());
        pager_finish_grep_only("hit", "-m 1");
        tail_printf_number_grep_more(0, 0, "-m 1 hit", "hit\n%s", much.c_str());
        ++hits;
    }),
        "hit\nhit\n");
    EXPECT_EQ(hits, 1);
    sigset_t waiting;
    ::sigpending(&waiting);
    EXPECT_EQ(::sigismember(&waiting, SIGPIPE), 0);
    ::pthread_sigmask(SIG_SETMASK, nullptr, &waiting);
    EXPECT_EQ(::sigismember(&waiting, SIGPIPE), 0);
}

TEST(Pager, MoreStopsAtEachScreenAndAtAnEarlyEnd)
{
    Terminal whole{10, 60, [] {
                       pager_enable(1);
                       print_lines(20);
                       pager_finish();
                       std::printf("done\n");
                   }};
    ASSERT_TRUE(whole.shows("--More--")) << whole.seen();
    EXPECT_NE(whole.seen().find("line 9 of many"), std::string::npos);
    EXPECT_EQ(whole.seen().find("line 10 of many"), std::string::npos);
    const std::string all = page_to_the_end(whole);
    EXPECT_NE(all.find("line 20 of many"), std::string::npos) << all;
    EXPECT_NE(all.find("done"), std::string::npos) << all;
    EXPECT_EQ(whole.join(), 0);

    Terminal left{10, 60, [] {
                      pager_enable(1);
                      print_lines(100000);
                      pager_finish();
                      std::printf("still here\n");
                  }};
    ASSERT_TRUE(left.shows("--More--"));
    left.press("q");
    EXPECT_NE(left.rest().find("still here"), std::string::npos) << left.seen();
    EXPECT_EQ(left.join(), 0);
}

TEST(Pager, FilteredAndPaged)
{
    Terminal screen{6, 60, [] {
                        pager_enable(1);
                        print_lines(60);
                        pager_finish_grep("5 of", "");
                    }};
    ASSERT_TRUE(screen.shows("--More--"));
    EXPECT_NE(screen.seen().find("line 45 of many"), std::string::npos);
    EXPECT_EQ(screen.seen().find("line 50 of many"), std::string::npos);
    EXPECT_NE(page_to_the_end(screen).find("line 55 of many"), std::string::npos) << screen.seen();
    EXPECT_EQ(screen.join(), 0);
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
