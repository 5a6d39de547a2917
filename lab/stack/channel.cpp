// SPDX-License-Identifier: Apache-2.0
#include "lab/stack/channel.h"

#include "lab/refusal.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <fstream>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace switchlab {
namespace {

using nlohmann::json;
using switchcfg::Descriptor;

constexpr std::size_t longest_message = 60000;
constexpr std::size_t most_descriptors = 32;

constexpr timeval patience{5, 0}; // for a visitor, or a lab, that stops in the middle

std::string prefix()
{
    return "switchlab/" + std::to_string(::geteuid()) + "/";
}

struct Address {
    sockaddr_un bytes{};
    socklen_t length;
    explicit Address(const std::string &name)
    {
        const std::string text = prefix() + name;
        bytes.sun_family = AF_UNIX;
        // Behind a first byte of zero the name is one of the network namespace, and no file.
        const std::size_t size = std::min(text.size(), sizeof bytes.sun_path - 1);
        std::memcpy(&bytes.sun_path[1], text.data(), size);
        length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + size);
    }
    const sockaddr *get() const { return reinterpret_cast<const sockaddr *>(&bytes); }
};

Descriptor make_socket()
{
    Descriptor socket{::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0)};
    if (!socket) {
        throw refusal("socket", "AF_UNIX");
    }
    return socket;
}

bool same_user(int channel)
{
    ucred peer{};
    socklen_t length = sizeof peer;
    return ::getsockopt(channel, SOL_SOCKET, SO_PEERCRED, &peer, &length) == 0 && peer.uid == ::geteuid();
}

void limit_waiting(int channel)
{
    (void)::setsockopt(channel, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    (void)::setsockopt(channel, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
}

union Control {
    cmsghdr alignment;
    std::array<char, CMSG_SPACE(most_descriptors * sizeof(int))> bytes;
};

} // namespace

std::pair<Descriptor, Descriptor> make_channel()
{
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
        throw refusal("socketpair", "");
    }
    return {Descriptor{ends[0]}, Descriptor{ends[1]}};
}

bool send_message(int channel, const json &body, std::span<const int> descriptors)
{
    std::string text = body.dump(-1, ' ', false, json::error_handler_t::replace);
    iovec part{text.data(), text.size()};
    Control control{};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    if (!descriptors.empty()) {
        const std::size_t size = descriptors.size_bytes();
        message.msg_control = control.bytes.data();
        message.msg_controllen = CMSG_SPACE(size);
        cmsghdr *const header = CMSG_FIRSTHDR(&message);
        header->cmsg_level = SOL_SOCKET;
        header->cmsg_type = SCM_RIGHTS;
        header->cmsg_len = CMSG_LEN(size);
        std::memcpy(CMSG_DATA(header), descriptors.data(), size);
    }
    ssize_t sent = 0;
    do {
        sent = ::sendmsg(channel, &message, MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sent == static_cast<ssize_t>(text.size());
}

std::optional<Message> receive_message(int channel)
{
    std::string text(longest_message, '\0');
    iovec part{text.data(), text.size()};
    Control control{};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control.bytes.data();
    message.msg_controllen = sizeof control;
    ssize_t got = 0;
    do {
        got = ::recvmsg(channel, &message, MSG_CMSG_CLOEXEC);
    } while (got < 0 && errno == EINTR);
    if (got < 0) {
        return std::nullopt;
    }
    Message result;
    for (cmsghdr *header = CMSG_FIRSTHDR(&message); header != nullptr; header = CMSG_NXTHDR(&message, header)) {
        if (header->cmsg_level == SOL_SOCKET && header->cmsg_type == SCM_RIGHTS) {
            std::array<int, most_descriptors> all{};
            const std::size_t size = header->cmsg_len - CMSG_LEN(0);
            std::memcpy(all.data(), CMSG_DATA(header), size);
            for (std::size_t i = 0; i < size / sizeof(int); ++i) {
                result.descriptors.emplace_back(all.at(i));
            }
        }
    }
    result.body = json::parse(text.begin(), text.begin() + got, nullptr, false);
    if (!result.body.is_object()) {
        return std::nullopt;
    }
    return result;
}

Descriptor open_door(const std::string &name)
{
    Descriptor door = make_socket();
    const Address address{name};
    if (::bind(door.get(), address.get(), address.length) != 0 || ::listen(door.get(), 8) != 0) {
        if (errno == EADDRINUSE) {
            throw Refusal(
                "a lab '" + name + "' is up already: switchlab down ends it, --name gives this one another name");
        }
        throw refusal("bind", name);
    }
    return door;
}

Descriptor knock(const std::string &name)
{
    Descriptor visitor = make_socket();
    const Address address{name};
    if (::connect(visitor.get(), address.get(), address.length) != 0 || !same_user(visitor.get())) {
        return {};
    }
    limit_waiting(visitor.get());
    return visitor;
}

Descriptor admit(int door)
{
    Descriptor visitor{::accept4(door, nullptr, nullptr, SOCK_CLOEXEC)};
    if (!visitor || !same_user(visitor.get())) {
        return {};
    }
    limit_waiting(visitor.get());
    return visitor;
}

std::vector<std::string> labs_here()
{
    // "Num RefCount Protocol Flags Type St Inode Path"; flag 10000 is a socket that listens, "@" an abstract name.
    std::vector<std::string> names;
    std::ifstream table{"/proc/self/net/unix"};
    const std::string wanted = "@" + prefix();
    for (std::string line; std::getline(table, line);) {
        const std::size_t at = line.find(wanted);
        if (at != std::string::npos && line.find(" 00010000 ") < at) {
            names.push_back(line.substr(at + wanted.size()));
        }
    }
    std::ranges::sort(names);
    return names;
}

} // namespace switchlab
