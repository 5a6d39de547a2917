// SPDX-License-Identifier: Apache-2.0
// Calls into the switch-chip daemon: remote ones beside bare ZeroMQ with as many bytes each way, local ones beside the
// same call through a look-up in a map of as many functions.
#include <switchcfg/funclist.h>

#include "bench/support/bare_zeromq.h"
#include "bench/support/compare.h"
#include "bench/support/served.h"

#include <cstdlib>
#include <cstring>
#include <map>
#include <string>

namespace {

using namespace switchcfg::bench;

// What a call adds to its payload on the wire, each way.
constexpr std::size_t overhead = 33 + 4 + 3;

std::int32_t answer(std::uint32_t size, std::uint32_t /*arg2*/, std::uint32_t /*arg3*/, std::uint32_t /*arg4*/,
    const void * /*input*/, void **output, std::uint32_t *output_length)
{
    *output = std::malloc(size);
    std::memset(*output, 'x', size);
    *output_length = size;
    return 0;
}

std::int32_t sum(std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3, std::uint32_t arg4, const void * /*input*/,
    void ** /*output*/, std::uint32_t * /*output_length*/)
{
    return static_cast<std::int32_t>(arg1 + arg2 + arg3 + arg4);
}

void serve()
{
    BcmdFunclistServer &server = BcmdFunclistServer::getInstance();
    server.registerLegacyCallback(BCMD_GENERAL_ECHO, answer);
    server.enableStatistics();
    server.startProcessing();
    serving();
    server.wait();
}
const ServeAs chip_daemon{"chip-daemon", serve};

// `input` bytes there, `output` bytes back.
void call(benchmark::State &state, const Row &row, std::size_t input_size, std::size_t output_size)
{
    const Served bare_server{"bare-zeromq"};
    const Served daemon{"chip-daemon"};
    BareZeromq bare;
    const std::string input(input_size, 'x');
    compare(
        state, row, [&] { return bare.exchange(input_size + overhead, output_size + overhead); },
        [&] {
            void *output = nullptr;
            std::uint32_t length = 0;
            const int result = bcm_cmd(BCMD_GENERAL_ECHO, static_cast<std::uint32_t>(output_size), 0, 0, 0,
                input.data(), static_cast<std::uint32_t>(input_size), &output, &length);
            std::free(output);
            return result == 0 && length == output_size;
        });
}

void remote_call(benchmark::State &state)
{
    const auto size = static_cast<std::size_t>(state.range(0));
    call(state, {"remote call", "bare ZeroMQ with the same bytes", 1.15, Row::Clock::wall}, size, size);
}
SWITCHCFG_ROW(remote_call)->ArgName("bytes")->Arg(64)->Arg(4096);

void scaling_reply_size(benchmark::State &state)
{
    call(state, {"remote call, by bytes of its reply", "bare ZeroMQ with the same bytes", 0, Row::Clock::wall}, 64,
        static_cast<std::size_t>(state.range(0)));
}
SWITCHCFG_ROW(scaling_reply_size)
    ->Arg(64)
    ->Arg(512)
    ->Arg(4096)
    ->Arg(32768)
    ->Arg(262144)
    ->Arg(2097152)
    ->Arg((16 << 20) - 64); // a message holds 16 MiB, the reply's own fields included

std::map<FunclistBcmdFuncGeneralType, bcmd_legacy_callback> table()
{
    std::map<FunclistBcmdFuncGeneralType, bcmd_legacy_callback> functions;
    const auto &numbers = *FunclistBcmdFuncGeneralType_descriptor();
    for (int i = 0; i < numbers.value_count(); ++i) {
        functions[static_cast<FunclistBcmdFuncGeneralType>(numbers.value(i)->number())] = sum;
    }
    return functions;
}

void local_call(benchmark::State &state)
{
    auto functions = table();
    auto type = BCMD_GENERAL_MIRROR_SET;
    BcmdFunclistServer::getInstance().registerLegacyCallback(type, sum);
    BcmdFunclistClient::getInstance()->local_call = true;
    compare(
        state, {"local call", "an indirect call through a map look-up", 2},
        [&] {
            benchmark::DoNotOptimize(functions);
            benchmark::DoNotOptimize(type);
            void *output = nullptr;
            std::uint32_t length = 0;
            return functions[type](1, 2, 3, 4, nullptr, &output, &length);
        },
        [&] {
            benchmark::DoNotOptimize(type);
            void *output = nullptr;
            std::uint32_t length = 0;
            return bcm_cmd(type, 1, 2, 3, 4, nullptr, 0, &output, &length);
        });
    BcmdFunclistClient::getInstance()->local_call = false;
}
SWITCHCFG_ROW(local_call);

} // namespace
