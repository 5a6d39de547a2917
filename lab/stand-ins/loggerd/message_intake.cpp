// SPDX-License-Identifier: Apache-2.0
#include "lab/stand-ins/loggerd/message_intake.h"

#include <switchcfg/robust_io.h>
#include <switchcfg/socket.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace switchlab::loggerd {

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto patience = std::chrono::seconds{5};
constexpr std::size_t most_senders = 256; // more wait in the backlog

class Sender {
  public:
    explicit Sender(int fd) : fd_(fd), deadline_(Clock::now() + patience)
    {
        (void)fcntl_set(fd_, O_NONBLOCK, 0);
        bytes_.resize(sizeof header_);
    }
    Sender(Sender &&other) noexcept
        : fd_(std::exchange(other.fd_, -1)), deadline_(other.deadline_), header_(other.header_),
          bytes_(std::move(other.bytes_)), received_(other.received_), in_text_(other.in_text_)
    {
    }
    Sender &operator=(Sender &&other) noexcept
    {
        std::swap(fd_, other.fd_);
        deadline_ = other.deadline_;
        header_ = other.header_;
        bytes_.swap(other.bytes_);
        received_ = other.received_;
        in_text_ = other.in_text_;
        return *this;
    }
    Sender(const Sender &) = delete;
    Sender &operator=(const Sender &) = delete;
    ~Sender()
    {
        if (fd_ >= 0) {
            ::close(fd_);
        }
    }

    int fd() const { return fd_; }
    Clock::time_point deadline() const { return deadline_; }

    // Takes what has arrived. True when there is nothing more to expect of this sender.
    bool advance(Journal &journal)
    {
        for (;;) {
            const ssize_t got = ::recv(fd_, bytes_.data() + received_, bytes_.size() - received_, 0);
            if (got < 0) {
                return errno != EAGAIN && errno != EINTR;
            }
            if (got == 0) {
                journal.note(in_text_ ? "a sender left before its text was whole" : "a sender left before its header");
                return true;
            }
            received_ += static_cast<std::size_t>(got);
            if (received_ == bytes_.size() && (in_text_ ? finish(journal) : start_text(journal))) {
                return true;
            }
        }
    }

  private:
    bool start_text(Journal &journal)
    {
        std::memcpy(&header_, bytes_.data(), sizeof header_);
        const bool named =
            header_.category[0] != '\0' && std::memchr(header_.category, '\0', sizeof header_.category) != nullptr;
        if (!named || header_.text_length == 0) {
            journal.note(named ? "a header that announces no text" : "a header without a proper category");
            return true;
        }
        in_text_ = true;
        received_ = 0;
        bytes_.resize(header_.text_length);
        return false;
    }

    bool finish(Journal &journal) const
    {
        // A text too long for its length field comes without a terminator.
        journal.add(header_, {bytes_.data(), ::strnlen(bytes_.data(), bytes_.size())});
        return true;
    }

    int fd_;
    Clock::time_point deadline_;
    log_message_header header_{};
    std::vector<char> bytes_;
    std::size_t received_ = 0;
    bool in_text_ = false;
};

std::vector<pollfd> to_wait_for(int listener, const std::vector<Sender> &senders)
{
    std::vector<pollfd> wait;
    wait.push_back({senders.size() < most_senders ? listener : -1, POLLIN, 0});
    for (const Sender &sender : senders) {
        wait.push_back({sender.fd(), POLLIN, 0});
    }
    return wait;
}

int time_left_ms(const std::vector<Sender> &senders)
{
    if (senders.empty()) {
        return -1;
    }
    const auto next = std::ranges::min_element(senders, {}, &Sender::deadline)->deadline();
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now()).count();
    return static_cast<int>(std::max<decltype(left)>(left, 0));
}

} // namespace

void take_messages(int listener, Journal &journal)
{
    std::vector<Sender> senders;
    for (;;) {
        std::vector<pollfd> wait = to_wait_for(listener, senders);
        if (::poll(wait.data(), wait.size(), time_left_ms(senders)) < 0) {
            continue;
        }
        const auto now = Clock::now();
        for (std::size_t i = senders.size(); i-- > 0;) { // backwards: those done are taken out
            // What has arrived is taken before its sender is given up: it may be the daemon that was late.
            const bool finished = wait[i + 1].revents != 0 && senders[i].advance(journal);
            const bool late = !finished && senders[i].deadline() <= now;
            if (late) {
                journal.note("a sender took too long");
            }
            if (finished || late) {
                senders.erase(senders.begin() + static_cast<std::ptrdiff_t>(i));
            }
        }
        if (wait[0].revents != 0) {
            const int fd = socket_us_accept(listener);
            if (fd >= 0) {
                senders.emplace_back(fd);
                if (senders.back().advance(journal)) {
                    senders.pop_back();
                }
            }
        }
    }
}

} // namespace switchlab::loggerd
