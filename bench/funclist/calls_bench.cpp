// SPDX-License-Identifier: Apache-2.0
// Calls into the switch-chip daemon. Remote ones stand beside request_reply_floor, bare ZeroMQ with as many bytes each
// way; local ones beside the same call through a look-up in a map of as many functions.
#include <switchcfg/funclist.h>

#include <benchmark/benchmark.h>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

std::int32_t echo(std::uint32_t arg1, std::uint32_t /*arg2*/, std::uint32_t /*arg3*/, std::uint32_t /*arg4*/,
    const void *input, void **output, std::uint32_t *output_length)
{
    *output = std::malloc(arg1);
    std::memcpy(*output, input, arg1);
    *output_length = arg1;
    return 0;
}

std::int32_t sum(std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3, std::uint32_t arg4, const void * /*input*/,
    void ** /*output*/, std::uint32_t * /*output_length*/)
{
    return static_cast<std::int32_t>(arg1 + arg2 + arg3 + arg4);
}

// To be made before this process has a server of its own.
class Daemon {
  public:
    Daemon()
    {
        int ready[2];
        if (::pipe(ready) != 0) {
            std::abort();
        }
        pid_ = ::fork();
        if (pid_ == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            BcmdFunclistServer &server = BcmdFunclistServer::getInstance();
            server.registerLegacyCallback(BCMD_GENERAL_ECHO, echo);
            server.enableStatistics();
            server.startProcessing();
            (void)!::write(ready[1], "", 1);
            server.wait();
            ::_exit(1);
        }
        ::close(ready[1]);
        char byte = 0;
        if (::read(ready[0], &byte, 1) != 1) {
            std::abort();
        }
        ::close(ready[0]);
    }
    ~Daemon()
    {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
    Daemon(const Daemon &) = delete;
    Daemon &operator=(const Daemon &) = delete;

  private:
    pid_t pid_;
};

void remote_call(benchmark::State &state)
{
    const Daemon daemon;
    const std::string input(static_cast<std::size_t>(state.range(0)), 'x');
    const auto size = static_cast<std::uint32_t>(input.size());
    for (auto _ : state) {
        void *output = nullptr;
        std::uint32_t length = 0;
        if (bcm_cmd(BCMD_GENERAL_ECHO, size, 0, 0, 0, input.data(), size, &output, &length) != 0 || length != size) {
            state.SkipWithError("the call failed");
            break;
        }
        std::free(output);
    }
}
BENCHMARK(remote_call)->Arg(64)->Arg(4096)->Arg(1 << 20)->UseRealTime()->Unit(benchmark::kMicrosecond);

std::map<FunclistBcmdFuncGeneralType, bcmd_legacy_callback> table()
{
    std::map<FunclistBcmdFuncGeneralType, bcmd_legacy_callback> functions;
    const auto &numbers = *FunclistBcmdFuncGeneralType_descriptor();
    for (int i = 0; i < numbers.value_count(); ++i) {
        functions[static_cast<FunclistBcmdFuncGeneralType>(numbers.value(i)->number())] = sum;
    }
    return functions;
}

void local_call_floor(benchmark::State &state)
{
    auto functions = table();
    auto type = BCMD_GENERAL_MIRROR_SET;
    for (auto _ : state) {
        benchmark::DoNotOptimize(functions);
        benchmark::DoNotOptimize(type);
        void *output = nullptr;
        std::uint32_t length = 0;
        benchmark::DoNotOptimize(functions[type](1, 2, 3, 4, nullptr, &output, &length));
    }
}
BENCHMARK(local_call_floor);

void local_call(benchmark::State &state)
{
    BcmdFunclistServer &server = BcmdFunclistServer::getInstance();
    server.registerLegacyCallback(BCMD_GENERAL_MIRROR_SET, sum);
    BcmdFunclistClient::getInstance()->local_call = true;
    auto type = BCMD_GENERAL_MIRROR_SET;
    for (auto _ : state) {
        benchmark::DoNotOptimize(type);
        void *output = nullptr;
        std::uint32_t length = 0;
        benchmark::DoNotOptimize(bcm_cmd(type, 1, 2, 3, 4, nullptr, 0, &output, &length));
    }
    BcmdFunclistClient::getInstance()->local_call = false;
}
BENCHMARK(local_call);

} // namespace
