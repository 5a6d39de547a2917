// SPDX-License-Identifier: Apache-2.0
// The key test and the busy indicator of the command line.
#include <switchcfg/pager.h>

#include "util/owned.h"

#include <cstdio>
#include <switchcfg/robust_io.h>
#include <termios.h>
#include <unistd.h>

int check_keypress(double timeout_s) noexcept
{
    termios saved;
    const bool is_terminal = ::tcgetattr(STDIN_FILENO, &saved) == 0;
    if (is_terminal) {
        termios working = saved;
        working.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
        (void)::tcsetattr(STDIN_FILENO, TCSANOW, &working);
    }
    const int result = fd_has_data(timeout_s, STDIN_FILENO);
    if (is_terminal) {
        const switchcfg::KeepErrno keep;
        (void)::tcsetattr(STDIN_FILENO, TCSANOW, &saved);
    }
    return result;
}

void busyindicator() noexcept
{
    static char shown = '/';
    if (::isatty(STDOUT_FILENO) != 1) {
        return;
    }
    switch (shown) {
    case '/':
        shown = '-';
        break;
    case '-':
        shown = '\\';
        break;
    case '\\':
        shown = '|';
        break;
    default:
        shown = '/';
    }
    (void)std::printf("%c\b", shown);
    (void)std::fflush(stdout);
}
