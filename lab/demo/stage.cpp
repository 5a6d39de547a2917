// SPDX-License-Identifier: Apache-2.0
#include "lab/demo/stage.h"

#include "lab/refusal.h"
#include "lab/sandbox/sandbox.h"
#include "lab/stack/progress.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <poll.h>
#include <sstream>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace switchlab::demo {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto command_limit = std::chrono::seconds{30};
constexpr auto wait_limit = std::chrono::seconds{20};
constexpr useconds_t pause_us = 50'000;
constexpr std::size_t widest = 90;

constexpr char bold[] = "\033[1m";
constexpr char dim[] = "\033[2m";
constexpr char green[] = "\033[32m";
constexpr char red[] = "\033[31m";
constexpr char yellow[] = "\033[33m";

struct Child {
    pid_t pid;
    int output;
};

Child start_switchlab(const Words &arguments)
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        throw refusal("pipe", "");
    }
    (void)std::fflush(stdout);
    const pid_t parent = ::getpid();
    const pid_t pid = ::fork();
    if (pid < 0) {
        throw refusal("fork", "");
    }
    if (pid == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() != parent) {
            ::_exit(exit_lab_failed);
        }
        std::vector<char *> words{const_cast<char *>("switchlab")};
        for (const std::string &word : arguments) {
            words.push_back(const_cast<char *>(word.c_str()));
        }
        words.push_back(nullptr);
        const int nothing = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
        ::dup2(nothing, STDIN_FILENO);
        ::dup2(ends[1], STDOUT_FILENO);
        ::dup2(ends[1], STDERR_FILENO);
        ::execv("/proc/self/exe", words.data());
        ::_exit(exit_not_executable);
    }
    ::close(ends[1]);
    return {pid, ends[0]};
}

int status_of(pid_t pid)
{
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

// As a person types it: what the shell would split or change stands in quotes.
std::string typed(const std::string &word)
{
    const bool plain = word.find_first_of(" '\"$&|;<>*[]()") == std::string::npos && !word.empty();
    return plain ? word : "'" + word + "'";
}

} // namespace

Running::Running(const Words &arguments)
{
    const Child child = start_switchlab(arguments);
    pid_ = child.pid;
    output_ = child.output;
}

Running::~Running()
{
    if (pid_ > 0) {
        ::kill(pid_, SIGINT);
        (void)wait();
    }
    ::close(output_);
}

bool Expected::fits(const Said &said) const
{
    if (kind == Kind::all) {
        return said.status == 0 && (said.text == text || said.text == text + "\n");
    }
    return said.status == 0 && said.text.find(text) != std::string::npos;
}

std::string Running::read_until(const std::string &text, const std::function<void(const std::string &)> &line) const
{
    std::string now;
    char byte = 0;
    while (::read(output_, &byte, 1) == 1) {
        if (byte != '\n') {
            now += byte;
            continue;
        }
        line(now);
        if (now.find(text) != std::string::npos) {
            return now;
        }
        now.clear();
    }
    return {};
}

int Running::wait()
{
    return status_of(std::exchange(pid_, 0));
}

Stage::Stage() : colours_(colour_wanted(STDOUT_FILENO)) {}

std::string Stage::painted(const char *colour, const std::string &text) const
{
    return colours_ ? colour + text + "\033[0m" : text;
}

void Stage::chapter(const std::string &title) const
{
    std::printf("\n%s\n", painted(bold, "== " + title + " ==").c_str());
}

void Stage::say(const std::string &text) const
{
    std::istringstream words{text};
    std::size_t column = 0;
    for (std::string word; words >> word;) {
        const bool fits = column + 1 + word.size() <= widest;
        std::printf("%s%s", column == 0 ? "" : fits ? " " : "\n", word.c_str());
        column = fits && column != 0 ? column + 1 + word.size() : word.size();
    }
    std::printf("\n");
    (void)std::fflush(stdout);
}

void Stage::print(const std::string &line) const
{
    std::printf("  %s\n", line.c_str());
    (void)std::fflush(stdout);
}

void Stage::command(const Words &arguments) const
{
    std::string line = "$ switchlab";
    for (const std::string &word : arguments) {
        line += " " + typed(word);
    }
    std::printf("%s\n", painted(dim, line).c_str());
    (void)std::fflush(stdout);
}

Said Stage::run(const Words &arguments) const
{
    const Child child = start_switchlab(arguments);
    const auto end = Clock::now() + command_limit;
    Said said;
    std::array<char, 4096> block{};
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
        pollfd more{child.output, POLLIN, 0};
        if (left.count() <= 0 || ::poll(&more, 1, static_cast<int>(left.count())) == 0) {
            ::kill(child.pid, SIGKILL);
            said.text += "(no answer within 30 s)\n";
            break;
        }
        const ssize_t got = ::read(child.output, block.data(), block.size());
        if (got <= 0) {
            break;
        }
        said.text.append(block.data(), static_cast<std::size_t>(got));
    }
    ::close(child.output);
    said.status = status_of(child.pid);
    return said;
}

Said Stage::show(const Words &arguments, const Words &only) const
{
    command(arguments);
    Said said = run(arguments);
    std::istringstream lines{said.text};
    for (std::string line; std::getline(lines, line);) {
        const auto is_in_line = [&](const std::string &text) { return line.find(text) != std::string::npos; };
        if (only.empty() || std::ranges::any_of(only, is_in_line)) {
            print(line);
        }
    }
    return said;
}

void Stage::check(const std::string &what, bool holds, const std::string &expected, const std::string &came)
{
    if (!holds) {
        std::printf("%s  %s\n", painted(red, " FAIL").c_str(), what.c_str());
        for (const auto &[title, text] : {std::pair{"expected", &expected}, {"what came", &came}}) {
            std::printf("       %s:\n", title);
            std::istringstream lines{text->empty() ? "(nothing)" : *text};
            for (std::string line; std::getline(lines, line);) {
                std::printf("         %s\n", line.c_str());
            }
        }
        (void)std::fflush(stdout);
        throw Failed{what};
    }
    ++checks_;
    std::printf("%s  %s\n", painted(green, "   ok").c_str(), what.c_str());
    (void)std::fflush(stdout);
}

void Stage::check_says(const std::string &what, const Said &said, const Expected &expected)
{
    const std::string wanted = (expected.kind == Expected::Kind::all ? "" : "a text with ") + ("'" + expected.text);
    check(what, expected.fits(said), wanted + "', and exit status 0",
        said.text + (said.status == 0 ? "" : "\n(exit status " + std::to_string(said.status) + ")"));
}

void Stage::check_comes(const std::string &what, const Words &arguments, const Expected &expected)
{
    const auto end = Clock::now() + wait_limit;
    Said said = run(arguments);
    while (!expected.fits(said) && Clock::now() < end) {
        (void)::usleep(pause_us);
        said = run(arguments);
    }
    check_says(what, said, expected);
}

void Stage::leave_out(const std::string &why)
{
    std::printf("%s  %s\n", painted(yellow, " left out").c_str(), why.c_str());
    left_out_.push_back(why);
}

void Stage::finish() const
{
    const std::chrono::duration<double> took = Clock::now() - begin_;
    char time[16];
    (void)std::snprintf(time, sizeof time, "%.1f s", took.count());
    std::printf("\n%s\n",
        painted(bold, "All " + std::to_string(checks_) + " checks passed, in " + std::string{time} + ".").c_str());
    for (const std::string &why : left_out_) {
        std::printf("Left out: %s\n", why.c_str());
    }
}

} // namespace switchlab::demo
