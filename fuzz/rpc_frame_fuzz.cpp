// SPDX-License-Identifier: Apache-2.0
// Frames of the request/reply library: what parses is written again to the same bytes.
#include "fuzz/fuzz_input.h"
#include "rpc/frame.h"

#include <algorithm>
#include <vector>

using namespace switchcfg::fuzz;
using namespace switchcfg::rpc;

namespace {

bool same(Bytes frame, std::vector<std::uint8_t> written, Bytes payload)
{
    written.insert(written.end(), payload.begin(), payload.end());
    return std::ranges::equal(frame, written);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const Bytes frame{data, size};
    std::vector<std::uint8_t> out;
    int kinds = 0;
    if (const auto request = parse_request(frame)) {
        require(!request->service.empty() && request->service.size() <= max_service);
        out.resize(request_head + request->service.size());
        write_request_head(out.data(), *request);
        require(same(frame, out, request->payload));
        kinds += 1;
    }
    if (const auto reply = parse_reply(frame)) {
        out.assign(reply_head, 0);
        write_reply_head(out.data(), *reply);
        require(same(frame, out, reply->payload));
        kinds += 1;
    }
    if (const auto probe = parse_probe(frame)) {
        out.assign(probe_size, 0);
        write_probe(out.data(), *probe);
        require(same(frame, out, {}));
        kinds += 1;
    }
    if (const auto alive = parse_alive(frame)) {
        out.assign(alive_size, 0);
        write_alive(out.data(), *alive);
        require(same(frame, out, {}));
        kinds += 1;
    }
    require(kinds <= 1);
    return 0;
}
