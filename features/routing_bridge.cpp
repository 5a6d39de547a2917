// SPDX-License-Identifier: Apache-2.0
// One command to the routing stack and its replies.
#include "features/routing_codes.h"
#include "features/routing_connection.h"
#include "features/routing_lock.h"

#include "util/byte_order.h"
#include "util/owned.h"

#include <switchcfg/debug.h>
#include <switchcfg/routing.h>

#include <array>
#include <bit>
#include <cerrno>
#include <cstdlib>
#include <pthread.h>
#include <span>
#include <unistd.h>
#include <utility>

namespace switchcfg {
namespace {

constexpr char sender[] = "dc_socket_send"; // in the debug lines, whichever helper writes them
constexpr int write_attempts = 6;

constinit RoutingConnection connection;

struct RoutingCallback {
    dc_reply_callback callback;
    void *user_data;
};
constinit RoutingCallback registration{};

pthread_mutex_t registering = PTHREAD_MUTEX_INITIALIZER;

// A registration lasts for one exchange, which has it to itself: another thread that gives up waiting for its turn must
// not end it.
RoutingCallback take_registration() noexcept
{
    ::pthread_mutex_lock(&registering);
    const RoutingCallback taken = std::exchange(registration, {});
    ::pthread_mutex_unlock(&registering);
    return taken;
}

bool wants_fresh_connection(std::uint32_t command) noexcept
{
    return command == DC_RSVP_SET_TUNNEL || command == DC_MPLS_GET_TUNNEL_INFO ||
           command == DC_MPLS_GET_TUNNEL_RESOURCE_INFO || command == DC_MPLS_GET_TUNNEL_ARHOP_INFO;
}

// What an earlier command left unread must not pass for the answer to this one. A peer that has closed looks drained:
// it shows when the command is written or its reply read.
void prepare_connection(std::uint32_t command, pid_t process) noexcept
{
    connection.drop_inherited(process);
    if (!connection.is_open()) {
        return;
    }
    connection.drain();
    const int why = errno;
    const bool broken = why != 0 && why != EINTR;
    if (broken) {
        debug_process(DC_DEBUG_CLASS, "%s():%d | Socket closed due to error %d processing function ID %s", sender,
            __LINE__, why, dc_get_cmd_id_name(command));
    }
    if (broken || wants_fresh_connection(command)) {
        connection.close();
    }
}

// Two writes: a peer that is gone answers the first one so that the second one fails, and the command is sent anew.
bool send_command(std::uint32_t command, std::span<const std::uint8_t> payload, pid_t process) noexcept
{
    std::array<std::uint8_t, 12> header;
    store_ordered<std::endian::big>(&header[0], std::uint32_t{DC_FRAME_MAGIC});
    store_ordered<std::endian::big>(&header[4], command);
    store_ordered<std::endian::big>(&header[8], static_cast<std::uint32_t>(payload.size()));
    for (int attempt = 1; !connection.write(header) || !connection.write(payload); ++attempt) {
        connection.close();
        if (attempt == write_attempts || !connection.open(process)) {
            return false;
        }
    }
    return true;
}

int give_up(SendCode code) noexcept
{
    connection.close();
    return code;
}

struct Reply {
    std::uint32_t status = 0;
    std::uint32_t length = 0;
    Malloced<std::uint8_t> data; // with a NUL behind it
};

// 0, or the code that ends the exchange.
int read_reply(Reply &reply) noexcept
{
    std::array<std::uint8_t, 8> header;
    if (!connection.read(header)) {
        debug_process(DC_DEBUG_CLASS, "%s():%d | Timeout during socket message read operation", sender, __LINE__);
        return give_up(no_communication);
    }
    reply.status = load_ordered<std::endian::big, std::uint32_t>(&header[0]);
    reply.length = load_ordered<std::endian::big, std::uint32_t>(&header[4]);
    if (reply.status == DC_STATUS_PROTOCOL_ERROR) {
        debug_process(DC_DEBUG_CLASS, "%s():%d | Error in socket message response", sender, __LINE__);
        return give_up(no_communication);
    }
    if (reply.length == 0) {
        return 0;
    }
    // Where memory is promised freely, an absurd length must fail here and not when the memory is used.
    if (reply.length <= DC_REPLY_LIMIT) {
        reply.data.reset(static_cast<std::uint8_t *>(std::malloc(std::size_t{reply.length} + 1)));
    }
    if (reply.data == nullptr) {
        debug_process(DC_DEBUG_CLASS, "%s():%d | Malloc error to receive socket message", sender, __LINE__);
        return give_up(no_memory);
    }
    if (!connection.read({reply.data.get(), reply.length})) {
        debug_process(DC_DEBUG_CLASS, "%s():%d | Error reading socket message", sender, __LINE__);
        return give_up(no_communication);
    }
    reply.data.get()[reply.length] = 0;
    return 0;
}

void tell(const RoutingCallback &registered, const Reply &reply)
{
    if (registered.callback != nullptr && registered.callback(registered.user_data, reply.data.get()) < 0) {
        debug_process(DC_DEBUG_CLASS, "%s():%d | Invalid callback", sender, __LINE__);
    }
}

int read_replies(const RoutingCallback &registered, Malloced<std::uint8_t> &last_data, std::uint32_t &last_length)
{
    for (;;) {
        Reply reply;
        if (const int failed = read_reply(reply); failed != 0) {
            return failed;
        }
        last_length = reply.length; // the callback looks there
        if (reply.data != nullptr) {
            if (reply.status == DC_STATUS_MORE) {
                tell(registered, reply);
            }
            last_data = std::move(reply.data);
        }
        if (reply.status != DC_STATUS_MORE) {
            return static_cast<int>(reply.status);
        }
    }
}

int exchange(std::uint32_t command, std::span<const std::uint8_t> payload, pid_t process,
    Malloced<std::uint8_t> &last_data, std::uint32_t &last_length)
{
    const RoutingCallback registered = take_registration();
    prepare_connection(command, process);
    if (!connection.is_open() && !connection.open(process)) {
        debug_process(
            DC_DEBUG_CLASS, "%s():%d | Socket connection command %s", sender, __LINE__, dc_get_cmd_id_name(command));
        return no_communication;
    }
    debug_process(DC_DEBUG_CLASS, "%s():%d | Send command: %s (id=%d, length=%d, dcSock=%d)", sender, __LINE__,
        dc_get_cmd_id_name(command), static_cast<int>(command), static_cast<int>(payload.size()),
        connection.descriptor());
    if (!send_command(command, payload, process)) {
        debug_process(DC_DEBUG_CLASS, "%s():%d | Socket writing error", sender, __LINE__);
        return give_up(no_communication);
    }
    return command == DC_CMD_RTM_CTRL_NED_DELAY ? 0 : read_replies(registered, last_data, last_length);
}

} // namespace
} // namespace switchcfg

int dc_register_callback(void *user_data, dc_reply_callback callback) noexcept
{
    using namespace switchcfg;
    ::pthread_mutex_lock(&registering);
    const bool is_free = registration.callback == nullptr;
    if (is_free) {
        registration = {callback, user_data};
    }
    ::pthread_mutex_unlock(&registering);
    return is_free ? 0 : -1;
}

int dc_socket_send(
    std::uint32_t command, const void *payload, std::uint32_t length, void **reply, std::uint32_t *reply_length)
{
    using namespace switchcfg;
    std::uint32_t unwanted = 0;
    std::uint32_t &last_length = reply_length != nullptr ? *reply_length : unwanted;
    last_length = 0;
    if (reply != nullptr) {
        *reply = nullptr;
    }
    if (payload == nullptr && length != 0) {
        (void)take_registration();
        return invalid_parameter;
    }
    const RoutingLock lock{command};
    if (!lock) {
        (void)take_registration();
        return busy;
    }
    Malloced<std::uint8_t> last_data;
    const int result =
        exchange(command, {static_cast<const std::uint8_t *>(payload), length}, lock.process(), last_data, last_length);
    // A failure closes the connection; results of the daemon may have any value.
    if (!connection.is_open()) {
        last_length = 0;
    } else if (reply != nullptr) {
        *reply = last_data.release();
    }
    return result;
}

void cfg_dc_finish_connection() noexcept
{
    using switchcfg::connection;
    connection.drop_inherited(::getpid());
    if (connection.is_open()) {
        connection.drain();
        connection.close();
    }
}

int cfg_dc_cvt_dcl_to_cfg_error_code(int code) noexcept
{
    switch (code) {
    case DC_RESULT_OK:
        return 0;
    case DC_RESULT_INVALID:
    case DC_RESULT_INVALID_VALUE:
        return -7;
    case DC_RESULT_NO_RESOURCES:
        return -2;
    case DC_RESULT_NOT_FOUND:
        return -8;
    default:
        return -1;
    }
}
