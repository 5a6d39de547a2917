// SPDX-License-Identifier: Apache-2.0
#include "support/terminal.h"

#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <termios.h>

namespace switchcfg::testing {

Terminal::Terminal(int rows, int columns, const std::function<void()> &body)
{
    winsize size{};
    size.ws_row = static_cast<unsigned short>(rows);
    size.ws_col = static_cast<unsigned short>(columns);
    pid_ = ::forkpty(&master_, nullptr, nullptr, &size);
    if (pid_ < 0) {
        std::abort();
    }
    if (pid_ == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::setenv("TERM", "vt100", 1);
        ::unsetenv("MORE");
        body();
        std::exit(0);
    }
}

Terminal::~Terminal()
{
    kill9();
    ::close(master_);
}

bool Terminal::read_more()
{
    constexpr int patience_ms = 10000;
    pollfd waiting{master_, POLLIN, 0};
    char piece[4096];
    if (::poll(&waiting, 1, patience_ms) != 1) {
        return false;
    }
    const ssize_t got = ::read(master_, piece, sizeof piece); // EIO once nobody has the terminal open
    if (got > 0) {
        seen_.append(piece, static_cast<std::size_t>(got));
    }
    return got > 0;
}

bool Terminal::shows_either(const std::string &one, const std::string &other)
{
    while (seen_.find(one) == std::string::npos && seen_.find(other) == std::string::npos) {
        if (!read_more()) {
            return false;
        }
    }
    return true;
}

void Terminal::press(const std::string &keys)
{
    seen_.clear();
    if (::write(master_, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size())) {
        std::abort();
    }
}

std::string Terminal::rest()
{
    while (read_more()) {
    }
    return seen_;
}

bool Terminal::line_mode() const
{
    termios settings{};
    return ::tcgetattr(master_, &settings) == 0 && (settings.c_lflag & ICANON) != 0;
}

} // namespace switchcfg::testing
