// SPDX-License-Identifier: Apache-2.0
// Many clients at once, and a daemon that is killed and started again under them: every result belongs to its request,
// nothing leaks, nobody is stuck. Run in a lab:
//     funclist_stress BCMD CLIENTS CALLS RESTARTS LARGEST     (calls per client; bytes)
#include <switchcfg/funclist.h>

#include "support/daemon.h"
#include "support/descriptors.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <malloc.h>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using switchcfg::testing::Daemon;
using Clock = std::chrono::steady_clock;

struct Plan {
    const char *bcmd;
    int clients;
    int calls;
    int restarts;
    std::size_t largest;
};

constexpr int steps = 20;                     // each client tells its progress so many times
constexpr int most_tries = 50;                // of one request, while the daemon is away
constexpr double longest_wait_s = 8;          // 3 to find out that it died, 3 that it is not there yet, and some air
constexpr std::size_t heap_slack = 512 << 10; // links that were opened anew, and what they have on the way

struct Footprint {
    std::size_t heap;
    int descriptors;
};

Footprint footprint()
{
    const auto info = ::mallinfo2();
    return {info.uordblks + info.hblkhd, switchcfg::testing::open_descriptors()};
}

// Texts that no two requests share: who asks, how often, and a piece of noise without zero bytes.
class Requests {
  public:
    Requests(unsigned seed, std::size_t largest) : random_(seed), largest_(largest), noise_(2 * largest + 1, '\0')
    {
        std::uniform_int_distribution<int> byte{1, 255};
        std::ranges::generate(noise_, [&] { return static_cast<char>(byte(random_)); });
    }

    std::string next(int call)
    {
        // As many of 1 to 2 bytes as of half the largest to the largest.
        const double exponent = std::uniform_real_distribution<>{0, std::log2(static_cast<double>(largest_))}(random_);
        const auto size = static_cast<std::size_t>(std::exp2(exponent));
        const std::size_t from = std::uniform_int_distribution<std::size_t>{0, largest_}(random_);
        std::string text = std::to_string(::getpid()) + ':' + std::to_string(call) + ':';
        text.append(noise_, from, size);
        return text;
    }

  private:
    std::mt19937 random_;
    std::size_t largest_;
    std::string noise_;
};

enum class Echoed { right, wrong, not_at_all };

Echoed echo(const std::string &text)
{
    void *output = nullptr;
    std::uint32_t length = 0;
    const int result =
        bcm_cmd(BCMD_GENERAL_ECHO, 0, 0, 0, 0, text.data(), static_cast<std::uint32_t>(text.size()), &output, &length);
    const std::unique_ptr<void, decltype(&std::free)> owner{output, &std::free};
    if (result == -37 && output == nullptr) {
        return Echoed::not_at_all;
    }
    return result == 0 && length == text.size() && std::memcmp(output, text.data(), length) == 0 ? Echoed::right
                                                                                                 : Echoed::wrong;
}

int run_client(const Plan &plan, int number, int progress)
{
    Requests requests{static_cast<unsigned>(number), plan.largest};
    std::optional<Footprint> before;
    int failures = 0;
    double longest_s = 0;
    for (int call = 0; call < plan.calls; ++call) {
        const std::string text = requests.next(call);
        Echoed outcome = Echoed::not_at_all;
        for (int attempt = 0; attempt < most_tries && outcome == Echoed::not_at_all; ++attempt) {
            const Clock::time_point start = Clock::now();
            outcome = echo(text);
            longest_s = std::max(longest_s, std::chrono::duration<double>(Clock::now() - start).count());
            failures += outcome == Echoed::not_at_all ? 1 : 0;
        }
        if (outcome != Echoed::right) {
            std::printf("client %d, call %d of %zu bytes: %s\n", number, call, text.size(),
                outcome == Echoed::wrong ? "another one's answer" : "never answered");
            return EXIT_FAILURE;
        }
        if ((call + 1) % std::max(1, plan.calls / steps) == 0) {
            (void)!::write(progress, "", 1);
            if (!before) {
                before = footprint();
            }
        }
    }
    Footprint after = footprint();
    for (int wait = 0; wait < 500 && after.descriptors > before->descriptors; ++wait) {
        ::usleep(10000); // links that were given up a moment ago are being closed
        after = footprint();
    }
    std::printf("client %d: %d calls, %d failed and repeated, longest %.2f s, heap %zu -> %zu, descriptors %d -> %d\n",
        number, plan.calls, failures, longest_s, before->heap, after.heap, before->descriptors, after.descriptors);
    (void)std::fflush(stdout);
    return longest_s <= longest_wait_s && after.heap <= before->heap + heap_slack &&
                   after.descriptors <= before->descriptors
               ? EXIT_SUCCESS
               : EXIT_FAILURE;
}

struct Server {
    long resident_kib = 0;
    long descriptors = 0;
};

Server look_at(pid_t pid)
{
    Server server;
    const std::string folder = "/proc/" + std::to_string(pid);
    std::ifstream status{folder + "/status"};
    for (std::string word; status >> word;) {
        if (word == "VmRSS:") {
            status >> server.resident_kib;
        }
    }
    server.descriptors = std::distance(std::filesystem::directory_iterator{folder + "/fd"}, {});
    return server;
}

// When its links, the one to itself among them, have come or gone: the same for half a second.
Server look_at_quiet(pid_t pid)
{
    Server seen = look_at(pid);
    for (int same = 0; same < 50; ++same) {
        ::usleep(10000);
        const Server now = look_at(pid);
        same = now.descriptors == seen.descriptors ? same : 0;
        seen = now;
    }
    return seen;
}

std::unique_ptr<Daemon> start(const Plan &plan)
{
    auto daemon = std::make_unique<Daemon>(plan.bcmd);
    if (!daemon->ready()) {
        std::fprintf(stderr, "%s does not start\n", plan.bcmd);
        std::exit(EXIT_FAILURE);
    }
    return daemon;
}

int run(const Plan &plan)
{
    const Clock::time_point start_time = Clock::now();
    std::unique_ptr<Daemon> daemon = start(plan);
    const Server idle = look_at_quiet(daemon->pid());
    int progress[2];
    if (::pipe2(progress, O_CLOEXEC) != 0) {
        return EXIT_FAILURE;
    }
    std::vector<pid_t> clients;
    for (int number = 0; number < plan.clients; ++number) {
        const pid_t pid = ::fork();
        if (pid == 0) {
            ::close(progress[0]);
            std::_Exit(run_client(plan, number, progress[1]));
        }
        clients.push_back(pid);
    }
    ::close(progress[1]);

    long told = 0;
    int restarted = 0;
    const long all = static_cast<long>(plan.clients) * steps;
    for (char byte = 0; ::read(progress[0], &byte, 1) == 1;) {
        if (++told * (plan.restarts + 1) >= all * (restarted + 1) && restarted < plan.restarts) {
            const Server last = look_at(daemon->pid());
            std::printf("daemon %d killed: %ld KiB, %ld descriptors\n", static_cast<int>(daemon->pid()),
                last.resident_kib, last.descriptors);
            daemon->kill9();
            daemon = start(plan);
            ++restarted;
        }
    }
    bool good = restarted == plan.restarts;
    for (const pid_t pid : clients) {
        int status = 0;
        ::waitpid(pid, &status, 0);
        good = good && status == 0;
    }
    const Server left = look_at_quiet(daemon->pid()); // it learns of each client's end by itself
    good = good && left.descriptors == idle.descriptors;
    std::printf("%d clients, %d calls each, up to %zu bytes, %d restarts: %.1f s; daemon %ld -> %ld KiB, "
                "%ld -> %ld descriptors: %s\n",
        plan.clients, plan.calls, plan.largest, restarted,
        std::chrono::duration<double>(Clock::now() - start_time).count(), idle.resident_kib, left.resident_kib,
        idle.descriptors, left.descriptors, good ? "good" : "BAD");
    return good ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 6) {
        std::fprintf(stderr, "usage: funclist_stress BCMD CLIENTS CALLS RESTARTS LARGEST\n");
        return 2;
    }
    return run({argv[1], std::atoi(argv[2]), std::atoi(argv[3]), std::atoi(argv[4]),
        static_cast<std::size_t>(std::atoll(argv[5]))});
}
