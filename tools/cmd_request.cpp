// SPDX-License-Identifier: Apache-2.0
// switchcfg request: one exchange with a daemon's port, byte by byte. For those who write a daemon.
#include "tools/command_line/failure.h"
#include "tools/command_line/output.h"
#include "tools/commands.h"
#include "tools/hex_text.h"

#include <arpa/inet.h>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <net/if.h>
#include <string>
#include <switchcfg/request_channel.h>
#include <unistd.h>

namespace switchcfg::tool {
namespace {

constexpr std::size_t largest_record = std::size_t{64} << 20;

struct DaemonRequest {
    std::uint32_t port = 0;
    std::string hex;
    std::string file;
    std::size_t length = 0; // 0: as long as what was given
    std::uint32_t timeout_s = 10;
    std::string ipv6;
    bool raw = false;
};

Bytes bytes_of_file(const std::string &path)
{
    if (path == "-") {
        return {std::istreambuf_iterator<char>{std::cin}, {}};
    }
    std::ifstream file{path, std::ios::binary};
    if (!file) {
        throw system_failure(path, "open");
    }
    Bytes bytes{std::istreambuf_iterator<char>{file}, {}};
    if (file.bad()) {
        throw system_failure(path, "read");
    }
    return bytes;
}

Bytes record_of(const DaemonRequest &request)
{
    Bytes record = request.file.empty() ? bytes_of_hex(request.hex) : bytes_of_file(request.file);
    if (request.length != 0) {
        if (record.size() > request.length) {
            throw Failure{"the record has " + std::to_string(record.size()) + " bytes, more than --length " +
                          std::to_string(request.length)};
        }
        record.resize(request.length);
    }
    if (record.empty()) {
        throw Failure{"no record: give --hex, --file or --length"};
    }
    if (record.size() > largest_record) {
        throw Failure{"a record of more than 64 MiB is no record"};
    }
    return record;
}

// "ADDRESS" or "ADDRESS%INTERFACE"
int connect_ipv6(const std::string &text, std::uint32_t port)
{
    const std::size_t percent = text.find('%');
    in6_addr address{};
    if (::inet_pton(AF_INET6, text.substr(0, percent).c_str(), &address) != 1) {
        throw Failure{"'" + text + "' is no IPv6 address"};
    }
    std::uint32_t scope_id = 0;
    if (percent != std::string::npos) {
        scope_id = ::if_nametoindex(text.substr(percent + 1).c_str());
        if (scope_id == 0) {
            throw system_failure(text.substr(percent + 1), "interface");
        }
    }
    return daemon_client_req_connect_ipv6(port, address.s6_addr, scope_id);
}

void exchange(const DaemonRequest &request)
{
    Bytes record = record_of(request);
    const std::string where =
        (request.ipv6.empty() ? "127.0.0.1" : "[" + request.ipv6 + "]") + ":" + std::to_string(request.port);
    const int fd =
        request.ipv6.empty() ? daemon_client_req_connect(request.port) : connect_ipv6(request.ipv6, request.port);
    if (fd < 0) {
        throw system_failure(where, "connect");
    }
    errno = 0;
    if (daemon_client_req_send(fd, request.timeout_s, record.data(), static_cast<std::uint32_t>(record.size())) < 0) {
        throw Failure{where + ": no reply of " + std::to_string(record.size()) + " bytes within " +
                      std::to_string(request.timeout_s) + " s" +
                      (errno != 0 ? std::string{": "} + std::strerror(errno) : "")};
    }
    ::close(fd);
    if (request.raw) {
        (void)std::fwrite(record.data(), 1, record.size(), stdout);
        return;
    }
    print(Json{{"server", where}, {"bytes", record.size()}, {"reply", hex_of(record)}}, [&] { print_dump(record); });
}

} // namespace

void add_request_command(CLI::App &app)
{
    auto *command = app.add_subcommand("request", "Send a record to a daemon's port and print the reply");
    auto request = std::make_shared<DaemonRequest>();
    command->add_option("port", request->port, "TCP port of the daemon")->required()->check(CLI::Range(1, 65535));
    auto *hex = command->add_option("--hex", request->hex, "The record in hexadecimal digits");
    command->add_option("--file", request->file, "The record from a file, - for standard input")->excludes(hex);
    command->add_option("--length", request->length, "Fill the record up with zeros to so many bytes")
        ->check(CLI::Range(std::size_t{1}, largest_record));
    command->add_option("--timeout", request->timeout_s, "Seconds for the whole reply")->capture_default_str();
    command->add_option("--ipv6", request->ipv6,
        "Connect to this address, such as ::1 or fe80::1%eth0, instead of "
        "127.0.0.1");
    command->add_flag("--raw", request->raw, "Print the reply's bytes as they are");
    command->footer("Request and reply have the same length; words are in the byte order of this machine.");
    command->callback([=] { exchange(*request); });
}

} // namespace switchcfg::tool
