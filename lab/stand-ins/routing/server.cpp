// SPDX-License-Identifier: Apache-2.0
#include "lab/stand-ins/routing/server.h"

#include <switchcfg/robust_io.h>
#include <switchcfg/routing.h>
#include <switchcfg/socket.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <fstream>
#include <poll.h>
#include <string>
#include <string_view>
#include <thread>
#include <unistd.h>
#include <vector>

namespace switchlab::routing {

namespace {

constexpr std::uint32_t patience_s = 5; // for the rest of a command that has begun, and for each reply to be taken
constexpr std::uint32_t largest_payload = 1024 * 1024;
constexpr std::size_t routes_per_part = 64;
constexpr int not_supported = 2; // one of the many results that mean nothing in particular

std::string frame(std::uint32_t status, std::string_view data = {})
{
    std::string bytes = word_of(status) + word_of(static_cast<std::uint32_t>(data.size()));
    return bytes.append(data);
}

struct Request {
    std::uint32_t id = 0;
    std::string payload{};
};

// What a command is answered with: whole frames, or nothing.
using Answer = std::string;

Answer change(RouteTable &table, const Request &command)
{
    if (command.payload.size() != Route::wire_size) {
        return frame(DC_RESULT_INVALID);
    }
    const Route route = Route::from_wire(command.payload.data());
    if (!route.valid()) {
        return frame(DC_RESULT_INVALID_VALUE);
    }
    if (command.id == add_static_route) {
        return frame(table.add(route) ? DC_RESULT_OK : DC_RESULT_NO_RESOURCES);
    }
    return frame(table.remove(route) ? DC_RESULT_OK : DC_RESULT_NOT_FOUND);
}

// Each part tells its own number of routes.
Answer parts(const std::vector<Route> &routes)
{
    Answer answer;
    for (std::size_t first = 0; first < routes.size(); first += routes_per_part) {
        const std::size_t count = std::min(routes_per_part, routes.size() - first);
        std::string data = word_of(static_cast<std::uint32_t>(count));
        for (std::size_t i = first; i < first + count; ++i) {
            data += routes[i].to_wire();
        }
        answer += frame(DC_STATUS_MORE, data);
    }
    return answer + frame(DC_RESULT_OK);
}

// The asking side has made the folder.
Answer files(const std::vector<Route> &routes, std::uint32_t number)
{
    const std::string folder = DC_RESULT_FOLDER + std::to_string(number) + "/" DC_RESULT_FILE ".";
    for (std::size_t first = 0; first < routes.size(); first += routes_per_part) {
        std::ofstream file{folder + std::to_string(first / routes_per_part), std::ios::binary};
        for (std::size_t i = first; i < std::min(first + routes_per_part, routes.size()); ++i) {
            file << prefix_text(routes[i]) << " via " << address_text(routes[i].next_hop) << " distance "
                 << routes[i].distance << '\n';
        }
        if (!file.flush()) {
            return frame(DC_RESULT_NO_RESOURCES);
        }
    }
    return frame(DC_RESULT_OK);
}

Answer best_route(const RouteTable &table, const std::string &payload)
{
    if (payload.size() != 4) {
        return frame(DC_RESULT_INVALID);
    }
    const std::optional<Route> route = table.best_for(word_at(payload.data()));
    return route ? frame(DC_RESULT_OK, route->to_wire()) : frame(DC_RESULT_NOT_FOUND);
}

Answer answer_to(const Request &command, RouteTable &table, Faults &faults)
{
    switch (command.id) {
    case add_static_route:
    case delete_static_route:
        return change(table, command);
    case control_delay:
        return {};
    case debug_set:
        return frame(faults.request(command.payload) ? DC_RESULT_OK : DC_RESULT_INVALID);
    case get_rib:
        if (command.payload.empty()) {
            return parts(table.all());
        }
        return command.payload.size() == 4 ? files(table.all(), word_at(command.payload.data()))
                                           : frame(DC_RESULT_INVALID);
    case get_route:
        return best_route(table, command.payload);
    default:
        return frame(not_supported);
    }
}

// The command's id, then 1, 2, 3 and so on: whoever receives it can tell whether it is whole.
Answer huge_answer(std::uint32_t id, std::uint32_t size)
{
    std::string data = word_of(id);
    data.reserve(std::size_t{size} + 4);
    for (std::uint32_t word = 1; data.size() < size; ++word) {
        data += word_of(word);
    }
    data.resize(size);
    return frame(DC_RESULT_OK, data);
}

bool send_all(int fd, std::string_view bytes)
{
    return bytes.empty() || socket_send(fd, bytes.data(), static_cast<std::int32_t>(bytes.size())) >= 0;
}

// False when the connection is to be closed.
bool send_faulty(int fd, const Request &command, const Answer &answer, const Fault &fault)
{
    switch (fault.kind) {
    case Fault::none:
        break;
    case Fault::stall:
        std::this_thread::sleep_for(std::chrono::milliseconds{fault.argument});
        break;
    case Fault::close:
        return false;
    case Fault::half:
        (void)send_all(fd, std::string_view{answer}.substr(0, answer.size() / 2));
        return false;
    case Fault::protocol_error:
        return send_all(fd, frame(DC_STATUS_PROTOCOL_ERROR));
    case Fault::garbage:
        (void)send_all(fd, "HTTP/1.1 400 Bad Request\r\n\r\n");
        return false;
    case Fault::huge:
        return send_all(fd, huge_answer(command.id, fault.argument));
    case Fault::endless:
        (void)send_all(fd, word_of(DC_RESULT_OK) + word_of(0xFFFFFFFF));
        return false;
    }
    return send_all(fd, answer);
}

// Between commands a client may be silent for as long as it likes.
bool read_command(int fd, Request &command)
{
    pollfd wait{fd, POLLIN, 0};
    while (::poll(&wait, 1, -1) < 0 && errno == EINTR) {
    }
    char header[12];
    if (vx_read_timeout(fd, header, sizeof header, patience_s) != 0) {
        return false;
    }
    command.id = word_at(&header[4]);
    const std::uint32_t length = word_at(&header[8]);
    if (word_at(&header[0]) != DC_FRAME_MAGIC || length > largest_payload) {
        (void)send_all(fd, frame(DC_STATUS_PROTOCOL_ERROR));
        return false;
    }
    command.payload.resize(length);
    return vx_read_timeout(fd, command.payload.data(), length, patience_s) == 0;
}

} // namespace

void serve_connection(int fd, RouteTable &table, Faults &faults)
{
    (void)socket_timeouts_set(fd, patience_s);
    Request command;
    while (read_command(fd, command)) {
        const Fault fault = command.id == debug_set ? Fault{} : faults.next();
        const Answer answer = fault.kind == Fault::close ? Answer{} : answer_to(command, table, faults);
        if (!send_faulty(fd, command, answer, fault)) {
            break;
        }
    }
    ::close(fd);
}

} // namespace switchlab::routing
