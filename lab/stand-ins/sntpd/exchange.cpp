// SPDX-License-Identifier: Apache-2.0
#include "lab/stand-ins/sntpd/exchange.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <endian.h>
#include <netinet/in.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <poll.h>
#include <random>
#include <span>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace switchlab::sntpd {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t packet_size = 48;
constexpr std::size_t longest_digest = 20; // longer ones are cut
constexpr std::uint8_t version_4_client = 0x23;
constexpr std::uint64_t unix_epoch = 2208988800U; // seconds from 1900 to 1970
constexpr std::chrono::seconds patience{1};

enum Place : std::size_t { stratum_at = 1, originate_at = 24, receive_at = 32, transmit_at = 40 };

class Socket {
  public:
    explicit Socket(int family) : fd_(::socket(family, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {}
    ~Socket() { ::close(fd_); }
    Socket(const Socket &) = delete;
    Socket &operator=(const Socket &) = delete;
    int get() const { return fd_; }

  private:
    int fd_;
};

void put64(std::uint8_t *place, std::uint64_t value)
{
    value = htobe64(value);
    std::memcpy(place, &value, sizeof value);
}

std::uint64_t get64(const std::uint8_t *place)
{
    std::uint64_t value = 0;
    std::memcpy(&value, place, sizeof value);
    return be64toh(value);
}

// Seconds since 1900 in the upper half, their fraction in the lower.
std::uint64_t ntp_now()
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(now);
    const auto rest = std::chrono::duration_cast<std::chrono::nanoseconds>(now - seconds);
    return ((static_cast<std::uint64_t>(seconds.count()) + unix_epoch) << 32U) +
           (static_cast<std::uint64_t>(rest.count()) << 32U) / 1000000000U;
}

// Differences wrap around with the era, so they are right across its end.
double seconds_between(std::uint64_t from, std::uint64_t to)
{
    return static_cast<double>(static_cast<std::int64_t>(to - from)) / 4294967296.0;
}

// Digest of the key and the packet; empty for a type that is not known.
Bytes digest_of(const Key &key, std::span<const std::uint8_t> packet)
{
    const EVP_MD *const kind = ::EVP_get_digestbyname(key.type == "M" ? "MD5" : key.type.c_str());
    if (kind == nullptr) {
        return {};
    }
    Bytes input{key.value.begin(), key.value.end()};
    input.insert(input.end(), packet.begin(), packet.end());
    Bytes digest(EVP_MAX_MD_SIZE);
    unsigned length = 0;
    if (::EVP_Digest(input.data(), input.size(), digest.data(), &length, kind, nullptr) != 1) {
        return {};
    }
    digest.resize(std::min<std::size_t>(length, longest_digest));
    return digest;
}

Bytes question(std::uint64_t mark, const Key *key)
{
    Bytes packet(packet_size);
    packet[0] = version_4_client;
    put64(&packet[transmit_at], mark);
    if (key != nullptr) {
        const Bytes digest = digest_of(*key, packet);
        const std::uint32_t id = htonl(key->id);
        packet.resize(packet_size + sizeof id);
        std::memcpy(&packet[packet_size], &id, sizeof id);
        packet.insert(packet.end(), digest.begin(), digest.end());
    }
    return packet;
}

bool is_authentic(const Bytes &reply, const Key &key)
{
    const Bytes digest = digest_of(key, std::span{reply}.first(packet_size));
    std::uint32_t id = 0;
    if (digest.empty() || reply.size() != packet_size + sizeof id + digest.size()) {
        return false;
    }
    std::memcpy(&id, &reply[packet_size], sizeof id);
    return ntohl(id) == key.id && ::CRYPTO_memcmp(&reply[packet_size + sizeof id], digest.data(), digest.size()) == 0;
}

Answer judge(const Bytes &reply, std::uint64_t mark, std::uint64_t sent, const Key *key)
{
    const std::uint64_t received = ntp_now();
    Answer answer;
    const auto word = [&](Place place) { return get64(&reply[place]); };
    if (reply.size() < packet_size || (reply[0] & 7U) != 4 || word(originate_at) != mark) {
        answer.refused = "is no answer to the question";
    } else if (key != nullptr && !is_authentic(reply, *key)) {
        answer.refused = "is not authenticated with key " + std::to_string(key->id);
    } else if (reply[0] >> 6U == 3 || reply[stratum_at] == 0 || reply[stratum_at] > 15) {
        answer.refused = "comes from a server that has no time itself";
    } else {
        answer.stratum = reply[stratum_at];
        answer.offset_s = (seconds_between(sent, word(receive_at)) + seconds_between(received, word(transmit_at))) / 2;
    }
    return answer;
}

} // namespace

Answer ask(const cfg_ip_addr &server, std::uint16_t port, const Key *key)
{
    if (key != nullptr && digest_of(*key, {}).empty()) {
        return {"needs a key of type " + key->type + ", which is not known", 0, 0};
    }
    const bool four = server.length == 4;
    sockaddr_in v4{};
    v4.sin_family = AF_INET;
    v4.sin_port = htons(port);
    std::memcpy(&v4.sin_addr, server.addr, sizeof v4.sin_addr);
    sockaddr_in6 v6{};
    v6.sin6_family = AF_INET6;
    v6.sin6_port = htons(port);
    std::memcpy(&v6.sin6_addr, server.addr, sizeof v6.sin6_addr);
    const Socket fd{four ? AF_INET : AF_INET6};
    const auto *const address =
        four ? reinterpret_cast<const sockaddr *>(&v4) : reinterpret_cast<const sockaddr *>(&v6);
    // A number that nobody else can know stands for the time of sending: it comes back and tells our answers apart.
    std::random_device random;
    const std::uint64_t mark = (static_cast<std::uint64_t>(random()) << 32U) | random();
    const Bytes packet = question(mark, key);
    if (::connect(fd.get(), address, four ? sizeof v4 : sizeof v6) != 0) {
        return {"cannot be reached", 0, 0};
    }
    const std::uint64_t sent = ntp_now();
    if (::send(fd.get(), packet.data(), packet.size(), 0) < 0) {
        return {"cannot be reached", 0, 0};
    }
    pollfd wait{fd.get(), POLLIN, 0};
    if (::poll(&wait, 1, static_cast<int>(std::chrono::milliseconds{patience}.count())) <= 0) {
        return {"does not answer", 0, 0};
    }
    Bytes reply(512);
    const ssize_t length = ::recv(fd.get(), reply.data(), reply.size(), 0);
    if (length < 0) {
        return {"does not answer", 0, 0};
    }
    reply.resize(static_cast<std::size_t>(length));
    return judge(reply, mark, sent, key);
}

} // namespace switchlab::sntpd
