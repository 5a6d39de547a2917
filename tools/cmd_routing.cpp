// SPDX-License-Identifier: Apache-2.0
// switchcfg routing: commands to the routing stack. What a command's payload means is between the caller and the
// daemon; the routes are in the form that the lab's routing stack has.
#include "tools/attach.h"
#include "tools/command_line/failure.h"
#include "tools/command_line/output.h"
#include "tools/commands.h"
#include "tools/hex_text.h"

#include "features/routing_command_rows.h"
#include "lab/stand-ins/routing/route.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <switchcfg/error.h>
#include <switchcfg/routing.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace switchcfg::tool {
namespace {

using switchlab::routing::Route;
namespace lab = switchlab::routing;

struct FreeReply {
    void operator()(void *data) const { std::free(data); }
};

Bytes bytes_of(const void *data, std::size_t length)
{
    const auto *first = static_cast<const std::uint8_t *>(data);
    return data == nullptr ? Bytes{} : Bytes(first, first + length);
}

struct Answer {
    std::uint32_t length = 0; // where the callback finds that of its part
    std::vector<Bytes> parts{};
    Bytes data{};
    int result = 0;
};

int keep_part(void *answer, void *data)
{
    auto &all = *static_cast<Answer *>(answer);
    all.parts.push_back(bytes_of(data, all.length));
    return 0;
}

Answer send(std::uint32_t id, const std::string &payload)
{
    attach();
    Answer answer;
    void *reply = nullptr;
    (void)dc_register_callback(&answer, keep_part);
    answer.result =
        dc_socket_send(id, payload.data(), static_cast<std::uint32_t>(payload.size()), &reply, &answer.length);
    const std::unique_ptr<void, FreeReply> owner{reply};
    if (answer.length != 0) { // else the data is that of the last part
        answer.data = bytes_of(reply, answer.length);
    }
    return answer;
}

Failure refusal(std::uint32_t id, int result, int code)
{
    std::string text = std::string{dc_get_cmd_id_name(id)} + " (" + std::to_string(id) + "): ";
    if (result >= 0) {
        text += "the routing stack answers " + std::to_string(result) + ": ";
    }
    const char *message = cfg_strerror(code);
    return Failure{text + (message != nullptr ? message : "error") + " (" + std::to_string(code) + ")"};
}

// Throws unless the command succeeded.
void expect_success(std::uint32_t id, int result)
{
    if (result < 0) {
        throw refusal(id, result, result);
    }
    if (id == DC_CMD_RTM_CTRL_NED_DELAY) {
        return; // it has no result
    }
    if (const int code = cfg_dc_cvt_dcl_to_cfg_error_code(result); code != 0) {
        throw refusal(id, result, code);
    }
}

// A number or a name.
std::uint32_t command_of(const std::string &text)
{
    std::uint32_t id = 0;
    const char *const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, id);
    if (error == std::errc{} && stop == end) {
        return id;
    }
    const auto *row = std::ranges::find(routing_command_rows, text, &RoutingCommandRow::name);
    if (row == std::ranges::end(routing_command_rows)) {
        throw Failure{"'" + text + "' is no command; 'switchcfg routing commands' lists them"};
    }
    return row->id;
}

void send_command(const std::string &text, const std::string &hex)
{
    const std::uint32_t id = command_of(text);
    const Bytes payload = bytes_of_hex(hex);
    const Answer answer = send(id, {payload.begin(), payload.end()});
    if (answer.parts.empty() && answer.data.empty()) {
        expect_success(id, answer.result); // else what came is printed first
    }
    Json parts = Json::array();
    for (const Bytes &part : answer.parts) {
        parts.push_back(hex_of(part));
    }
    print({{"command", id}, {"name", dc_get_cmd_id_name(id)}, {"result", answer.result}, {"parts", parts},
              {"data", hex_of(answer.data)}},
        [&] {
            for (std::size_t i = 0; i < answer.parts.size(); ++i) {
                std::cout << "part " << i + 1 << ":\n";
                print_dump(answer.parts[i]);
            }
            print_dump(answer.data);
            std::cout << "result " << answer.result << '\n';
        });
    expect_success(id, answer.result);
}

void list_commands(const std::string &match)
{
    Json json = Json::array();
    Table table{{"id", "name"}};
    for (const RoutingCommandRow &row : routing_command_rows) {
        if (row.name.find(match) != std::string_view::npos) {
            json.push_back({{"id", row.id}, {"name", row.name}});
            table.add({std::to_string(row.id), std::string{row.name}});
        }
    }
    print(json, [&] { table.print(); });
}

// Each part: a count, then so many routes.
std::vector<Route> routes_of(const std::vector<Bytes> &parts)
{
    std::vector<Route> routes;
    for (const Bytes &part : parts) {
        if (part.size() < 4 || part.size() != 4 + std::size_t{lab::word_at(part.data())} * Route::wire_size) {
            throw Failure{"the routing stack's routes do not have the expected form"};
        }
        for (std::size_t place = 4; place < part.size(); place += Route::wire_size) {
            routes.push_back(Route::from_wire(&part[place]));
        }
    }
    return routes;
}

void list_routes()
{
    const Answer answer = send(lab::get_rib, "");
    expect_success(lab::get_rib, answer.result);
    Json json = Json::array();
    Table table{{"prefix", "next hop", "distance"}};
    for (const Route &route : routes_of(answer.parts)) {
        json.push_back({{"prefix", lab::prefix_text(route)}, {"next_hop", lab::address_text(route.next_hop)},
            {"distance", route.distance}});
        table.add({lab::prefix_text(route), lab::address_text(route.next_hop), std::to_string(route.distance)});
    }
    print(json, [&] { table.print(); });
}

// The same routes, as the daemon writes them into result files.
void list_route_files()
{
    attach();
    const auto number = static_cast<std::uint32_t>(::getpid());
    const std::string payload = lab::word_of(number);
    std::string text(std::size_t{16} << 20, '\0');
    std::uint32_t used = 0;
    const int result =
        cfg_dc_read_data_from_file(lab::get_rib, payload.data(), static_cast<std::uint32_t>(payload.size()), number,
            text.data(), static_cast<std::uint32_t>(text.size()), &used);
    if (result != 0) {
        throw refusal(lab::get_rib, result, result);
    }
    text.resize(used);
    print(Json{{"text", text}}, [&] { std::cout << text; });
}

std::uint32_t address_of(const std::string &text)
{
    in_addr address{};
    if (::inet_pton(AF_INET, text.c_str(), &address) != 1) {
        throw Failure{"'" + text + "' is no IPv4 address"};
    }
    return ntohl(address.s_addr);
}

Route route_of(const std::string &prefix, const std::string &next_hop, std::uint32_t distance)
{
    const std::size_t slash = prefix.find('/');
    Route route{address_of(prefix.substr(0, slash)), 33, address_of(next_hop), distance};
    if (slash != std::string::npos) {
        const char *const end = prefix.data() + prefix.size();
        const auto [stop, error] = std::from_chars(prefix.data() + slash + 1, end, route.prefix_length);
        route.prefix_length = error == std::errc{} && stop == end ? route.prefix_length : 33;
    }
    if (route.prefix_length > 32) {
        throw Failure{"'" + prefix + "' is no prefix: ADDRESS/LENGTH"};
    }
    return route;
}

void change_route(std::uint32_t id, const Route &route)
{
    const int result = send(id, route.to_wire()).result;
    expect_success(id, result);
    print({{"result", result}}, [] {});
}

} // namespace

void add_routing_commands(CLI::App &app)
{
    auto *routing = app.add_subcommand("routing", "Commands to the routing stack");
    routing->require_subcommand(1);

    auto *send_one = routing->add_subcommand("send", "Send a command and print its replies");
    auto command = std::make_shared<std::string>();
    auto payload = std::make_shared<std::string>();
    send_one->add_option("command", *command, "Id or name")->required();
    send_one->add_option("--payload", *payload, "In hexadecimal digits");
    send_one->callback([=] { send_command(*command, *payload); });

    auto *commands = routing->add_subcommand("commands", "The commands that have a name");
    auto match = std::make_shared<std::string>();
    commands->add_option("match", *match, "Only names with this text in them, such as OSPFV3");
    commands->callback([=] { list_commands(*match); });

    auto files = std::make_shared<bool>(false);
    auto *routes = routing->add_subcommand("routes", "The routing stack's routes");
    routes->add_flag("--files", *files, "Have them written to result files, and print those");
    routes->callback([=] { *files ? list_route_files() : list_routes(); });
    routes->footer("Routes are in the form of the lab's routing stack.");

    auto prefix = std::make_shared<std::string>();
    auto next_hop = std::make_shared<std::string>();
    auto distance = std::make_shared<std::uint32_t>(1);
    for (const auto &[name, about, id] : {std::tuple{"add", "Add a static route", lab::add_static_route},
             std::tuple{"del", "Delete a static route", lab::delete_static_route}}) {
        auto *change = routing->add_subcommand(name, about);
        change->add_option("prefix", *prefix, "ADDRESS/LENGTH")->required();
        change->add_option("next-hop", *next_hop, "Address")->required();
        change->add_option("--distance", *distance, "1 to 255")->capture_default_str();
        change->footer("The route is in the form of the lab's routing stack.");
        change->callback([=, id = id] { change_route(id, route_of(*prefix, *next_hop, *distance)); });
    }
}

} // namespace switchcfg::tool
