// SPDX-License-Identifier: Apache-2.0
// The output of a shell command as text.
#include <switchcfg/process.h>

#include "util/owned.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace switchcfg {
namespace {

constexpr std::size_t first_room = 4096;
constexpr std::size_t least_free = 1024; // a full pipe is taken in few reads, a short text in one

// A growing text that is always terminated once it has memory.
class GrowingText {
  public:
    // Makes room for at least one more byte and the terminator.
    bool make_room() noexcept
    {
        if (room_ - length_ > least_free) {
            return true;
        }
        const std::size_t wanted = room_ == 0 ? first_room : room_ * 2;
        auto *const grown = wanted > room_ ? static_cast<char *>(std::realloc(text_.get(), wanted)) : nullptr;
        if (grown == nullptr) {
            return false;
        }
        (void)text_.release();
        text_.reset(grown);
        room_ = wanted;
        grown[length_] = '\0';
        return true;
    }
    char *free_part() noexcept { return text_.get() + length_; }
    std::size_t free_size() const noexcept { return room_ - length_ - 1; }
    void grew_by(std::size_t more) noexcept
    {
        length_ += more;
        text_.get()[length_] = '\0';
    }
    char *release() noexcept { return text_.release(); }

  private:
    Malloced<char> text_;
    std::size_t length_ = 0;
    std::size_t room_ = 0;
};

// One output of the command on its way to the caller.
struct Captured {
    char **receiver = nullptr;
    int target = -1; // its number in the child
    Descriptor read_end;
    Descriptor write_end;
    GrowingText text;

    // The ends are above 2, whatever the caller has closed, so that moving one to its place cannot hit the other.
    bool open() noexcept
    {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0) {
            return false;
        }
        read_end.reset(ends[0]);
        write_end.reset(ends[1]);
        return above_standard(read_end) && above_standard(write_end);
    }

    // False on failure. At the end of the output the text goes to the caller.
    bool take() noexcept
    {
        if (!text.make_room()) {
            return false;
        }
        const ssize_t got = ::read(read_end.get(), text.free_part(), text.free_size());
        if (got < 0) {
            return errno == EINTR || errno == EAGAIN;
        }
        if (got == 0) {
            read_end.reset();
            *receiver = text.release();
            return true;
        }
        text.grew_by(static_cast<std::size_t>(got));
        return true;
    }

  private:
    static bool above_standard(Descriptor &end) noexcept
    {
        if (end.get() <= STDERR_FILENO) {
            end.reset(::fcntl(end.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
        }
        return static_cast<bool>(end);
    }
};

[[noreturn]] void run_shell(const char *command, const std::array<Captured, 2> &outputs) noexcept
{
    for (const Captured &output : outputs) {
        if (output.write_end && ::dup2(output.write_end.get(), output.target) < 0) {
            ::_exit(127);
        }
    }
    const char *const argv[] = {"/bin/sh", "-c", command, nullptr};
    ::execv(argv[0], const_cast<char *const *>(argv)); // execv() changes neither the vector nor the texts
    ::_exit(127);
}

// Both outputs are served as they fill: waiting for one while the command waits for the other would never end.
bool take_all(std::array<Captured, 2> &outputs) noexcept
{
    while (outputs[0].read_end || outputs[1].read_end) {
        pollfd waiting[2]; // a negative number is passed over
        for (std::size_t i = 0; i < 2; ++i) {
            waiting[i] = {outputs[i].read_end.get(), POLLIN, 0};
        }
        if (::poll(waiting, 2, -1) < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        for (std::size_t i = 0; i < 2; ++i) {
            if (waiting[i].revents != 0 && !outputs[i].take()) {
                return false;
            }
        }
    }
    return true;
}

} // namespace
} // namespace switchcfg

int pipe_create(int *read_end, int *write_end) noexcept
{
    int ends[2];
    const int result = ::pipe(ends);
    if (result == 0) {
        *read_end = ends[0];
        *write_end = ends[1];
    }
    return result;
}

int system_capture(const char *command, char **out_text, char **err_text) noexcept
{
    using namespace switchcfg;
    std::array<Captured, 2> outputs;
    outputs[0].receiver = out_text;
    outputs[0].target = STDOUT_FILENO;
    outputs[1].receiver = err_text;
    outputs[1].target = STDERR_FILENO;
    for (Captured &output : outputs) {
        if (output.receiver != nullptr && !output.open()) {
            return -1;
        }
    }
    const pid_t child = ::fork();
    if (child == 0) {
        run_shell(command, outputs);
    }
    for (Captured &output : outputs) {
        output.write_end.reset();
    }
    if (!take_all(outputs) || child < 0) {
        return -1;
    }
    int status = 0;
    return ::waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
