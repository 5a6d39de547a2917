// SPDX-License-Identifier: Apache-2.0
// switchcfg cpu and switchcfg memory: what the CPU monitors of the units have to say.
#include "tools/attach.h"
#include "tools/command_line/failure.h"
#include "tools/command_line/output.h"
#include "tools/commands.h"

#include <arpa/inet.h>
#include <array>
#include <charconv>
#include <cstdio>
#include <iostream>
#include <memory>
#include <net/if.h>
#include <string>
#include <switchcfg/cpumon.h>
#include <switchcfg/error.h>
#include <switchcfg/pager.h>
#include <sys/mman.h>
#include <unistd.h>

namespace switchcfg::tool {
namespace {

// The calls of one kind of figures.
struct Figures {
    const char *name;
    const char *about;
    const char *title;
    int (*local[2])(void) noexcept; // plain, detailed
    int (*unit[2])(int) noexcept;
    int (*standby[2])(void) noexcept;
    int (*html)(std::FILE *, int) noexcept;
};

constexpr Figures cpu_figures{"cpu", "Processor usage of a unit, by process", "Processors",
    {cfg_cpumon_table_cpu_usage_local, cfg_cpumon_table_cpu_usage_detail_local},
    {cfg_cpumon_table_cpu_usage_unit, cfg_cpumon_table_cpu_usage_detail_unit},
    {cfg_cpumon_table_cpu_usage_standby, cfg_cpumon_table_cpu_usage_detail_standby}, cfg_cpumon_get_cpu_table_html};
constexpr Figures memory_figures{"memory", "Memory of a unit, by process", "Memory",
    {cfg_cpumon_table_cpu_memory_local, cfg_cpumon_table_cpu_memory_detail_local},
    {cfg_cpumon_table_cpu_memory_unit, cfg_cpumon_table_cpu_memory_detail_unit},
    {cfg_cpumon_table_cpu_memory_standby, cfg_cpumon_table_cpu_memory_detail_standby}, cfg_cpumon_get_mem_table_html};

struct BoardRequest {
    std::string board = "0";
    bool detail = false;
    std::string html;
    std::string xml;
};

struct Board {
    int unit = 0;
    bool standby = false;
    std::string name() const { return standby ? "standby" : "unit " + std::to_string(unit); }
};

Board board_of(const std::string &text)
{
    Board board;
    if (text == "standby") {
        board.standby = true;
        return board;
    }
    const char *const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, board.unit);
    if (parsed.ec != std::errc{} || parsed.ptr != end) {
        throw Failure{"'" + text + "' is neither a unit, 0 to 7, nor standby"};
    }
    return board;
}

std::string monitor_address(const cpumon_target &target)
{
    std::array<char, INET6_ADDRSTRLEN> text{};
    std::array<char, IF_NAMESIZE> interface {
    };
    (void)::inet_ntop(AF_INET6, target.address, text.data(), text.size());
    const bool scoped = ::if_indextoname(target.scope_id, interface.data()) != nullptr;
    return text.data() + (scoped ? std::string{"%"} + interface.data() : "") + " port " + std::to_string(target.port);
}

void expect_board(int result, const Board &board)
{
    if (result != 0) {
        throw Failure{board.name() + ": " + cfg_strerror(result) + " (" + std::to_string(result) + ")"};
    }
}

Failure no_answer(const Board &board, const cpumon_target &target, const std::string &said)
{
    return Failure{board.name() + ": " + (said.empty() ? "no answer from the CPU monitor" : said) + " (" +
                   monitor_address(target) + ")"};
}

std::string without_line_end(std::string text)
{
    text.erase(text.find_last_not_of('\n') + 1);
    return text;
}

// What a call prints through the library's pager and on standard output, which is not the stream the tool prints on.
template<typename Call>
std::string printed_by(Call call)
{
    (void)std::fflush(stdout);
    const int file = ::memfd_create("output", MFD_CLOEXEC);
    const int kept = ::dup(STDOUT_FILENO);
    if (file < 0 || kept < 0 || ::dup2(file, STDOUT_FILENO) < 0) {
        throw system_failure("standard output", "cannot be held back");
    }
    call();
    pager_finish();
    (void)std::fflush(stdout);
    (void)::dup2(kept, STDOUT_FILENO);
    ::close(kept);
    std::string text(static_cast<std::size_t>(::lseek(file, 0, SEEK_END)), '\0');
    const ssize_t length = ::pread(file, text.data(), text.size(), 0);
    ::close(file);
    text.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    return text;
}

// Calls write(stream) for a file that is there afterwards only if that succeeded.
template<typename Write>
void write_whole_file(const std::string &path, Write write)
{
    std::FILE *const stream = std::fopen(path.c_str(), "w");
    if (stream == nullptr) {
        throw system_failure(path, "open");
    }
    try {
        write(stream);
    } catch (...) {
        (void)std::fclose(stream);
        (void)std::remove(path.c_str());
        throw;
    }
    if (std::fclose(stream) != 0) {
        throw system_failure(path, "write");
    }
}

void write_page(const Figures &figures, const Board &board, const cpumon_target &target, const std::string &path)
{
    if (board.standby) {
        throw Failure{"--html: pages are of units, not of the standby"};
    }
    write_whole_file(path, [&](std::FILE *stream) {
        // People read the page, and to them units count from 1, as in the headings of the text tables.
        const std::string title = figures.title + (" of unit " + std::to_string(board.unit + 1));
        (void)std::fprintf(stream,
            "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>%s</title>\n<style>\n"
            "body { font: 14px sans-serif; margin: 2em; color: #222; }\n"
            "table { border-collapse: collapse; margin-bottom: 2em; }\n"
            "caption { text-align: left; font-weight: bold; padding-bottom: .5em; }\n"
            "th, td { padding: .25em .75em; border-bottom: 1px solid #ddd; text-align: right; white-space: nowrap; }\n"
            "th { border-bottom: 2px solid #888; }\n"
            ".text { text-align: left; }\n"
            "</style>\n</head>\n<body>\n<h1>%s</h1>\n",
            title.c_str(), title.c_str());
        int result = -1;
        const std::string said = printed_by([&] { result = figures.html(stream, board.unit); });
        if (result != 0) {
            throw no_answer(board, target, without_line_end(said));
        }
        (void)std::fputs("</body>\n</html>\n", stream);
    });
}

Json figures_of(const Board &board, const cpumon_target &target)
{
    std::uint32_t usage = 0;
    std::uint32_t kib[2] = {};
    if (cpumon_get_cpu_info(&target, &usage) != 0 || cpumon_get_mem_info(&target, kib) != 0) {
        throw no_answer(board, target, "");
    }
    return {{"unit", board.unit}, {"standby", board.standby}, {"cpu_usage", usage}, {"memory", {kib[0], kib[1]}}};
}

Json lines_of(const std::string &text)
{
    Json lines = Json::array();
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        lines.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return lines;
}

void print_board(const Figures &figures, const Board &board, const cpumon_target &target, bool detail)
{
    const std::size_t which = detail ? 1 : 0;
    int result = -1;
    const std::string text = printed_by([&] {
        result = board.standby     ? figures.standby[which]()
                 : board.unit == 0 ? figures.local[which]()
                                   : figures.unit[which](board.unit);
    });
    if (result != 0) {
        const std::string said = without_line_end(text);
        throw no_answer(board, target, said.substr(said.rfind('\n') + 1)); // below heading and date
    }
    if (json_wanted()) {
        Json json = figures_of(board, target);
        json["lines"] = lines_of(text);
        print_json(json);
    } else {
        std::cout << text;
    }
}

void answer(const Figures &figures, const BoardRequest &request)
{
    const Board board = board_of(request.board);
    attach();
    cpumon_target target{};
    expect_board(cfg_cpumon_get_target(board.unit, board.standby ? 1 : 0, &target), board);
    if (!request.html.empty()) {
        write_page(figures, board, target, request.html);
    }
    if (!request.xml.empty()) {
        write_whole_file(request.xml, [&](std::FILE *stream) {
            if (cpumon_print_xml(stream, &target) != 0) {
                throw no_answer(board, target, "");
            }
        });
    }
    if (request.html.empty() && request.xml.empty()) {
        print_board(figures, board, target, request.detail);
    }
}

} // namespace

void add_cpumon_commands(CLI::App &app)
{
    for (const Figures *const figures : {&cpu_figures, &memory_figures}) {
        auto *command = app.add_subcommand(figures->name, figures->about);
        auto request = std::make_shared<BoardRequest>();
        command->add_option("board", request->board, "Unit, 0 to 7, or standby")->capture_default_str();
        command->add_flag("--detail", request->detail, "With a summary above the processes");
        command->add_option("--html", request->html, "Write a detailed page to FILE instead")->type_name("FILE");
        command->add_option("--xml", request->xml, "Write the monitor's document to FILE instead")->type_name("FILE");
        command->callback([=] { answer(*figures, *request); });
    }
}

} // namespace switchcfg::tool
