// SPDX-License-Identifier: Apache-2.0
// switchcfg top: the switch at work, live on a terminal, or as text or JSON, sample by sample, elsewhere.
#include "tools/command_line/failure.h"
#include "tools/command_line/long_output.h"
#include "tools/command_line/output.h"
#include "tools/commands.h"
#include "tools/top_sample.h"

#include <cstdio>
#include <iostream>
#include <memory>
#include <ncurses.h>
#include <thread>
#include <unistd.h>

namespace switchcfg::tool {
namespace {

std::string fixed(double value)
{
    std::array<char, 32> text{};
    (void)std::snprintf(text.data(), text.size(), "%.1f", value);
    return text.data();
}

Json json_of(const Sample &sample)
{
    Json json{{"traps", {{"queued", sample.traps_queued}, {"per_second", sample.traps_per_second}}},
        {"units", Json::array()}, {"locks", Json::array()}, {"processes", Json::array()}};
    for (const UnitSample &unit : sample.units) {
        json["units"].push_back({{"unit", unit.unit}, {"model", unit.model}, {"ports", unit.ports},
            {"plugged", unit.plugged}, {"disabled", unit.disabled}});
    }
    for (const LockSample &lock : sample.locks) {
        json["locks"].push_back({{"lock", lock.lock}, {"holder", lock.holder}, {"waiting", lock.waiting}});
    }
    for (const ProcessSample &process : sample.processes) {
        json["processes"].push_back({{"pid", process.pid}, {"name", process.name}, {"cpu_percent", process.cpu_percent},
            {"resident_kib", process.resident_kib}});
    }
    return json;
}

// One line of the picture; headings stand out on a terminal.
struct Line {
    std::string text;
    bool heading = false;
};

std::string padded(std::string text, std::size_t width)
{
    text.resize(std::max(width, text.size() + 1), ' ');
    return text;
}

std::vector<Line> picture_of(const Sample &sample)
{
    std::vector<Line> lines;
    lines.push_back({"Traps: " + std::to_string(sample.traps_queued) + " queued, " + fixed(sample.traps_per_second) +
                     " per second"});
    lines.push_back({});
    lines.push_back({"UNIT  MODEL                 PORTS  PLUGGED  DISABLED", true});
    for (const UnitSample &unit : sample.units) {
        lines.push_back(
            {padded(std::to_string(unit.unit), 6) + padded(unit.model, 22) + padded(std::to_string(unit.ports), 7) +
                padded(std::to_string(unit.plugged), 9) + std::to_string(unit.disabled)});
    }
    lines.push_back({});
    lines.push_back({"LOCK      WAITING  HELD BY", true});
    for (const LockSample &lock : sample.locks) {
        lines.push_back({padded(lock.lock, 10) + padded(std::to_string(lock.waiting), 9) + lock.holder});
    }
    lines.push_back({});
    lines.push_back({"PID      CPU %   KIB       PROCESS", true});
    for (const ProcessSample &process : sample.processes) {
        lines.push_back({padded(std::to_string(process.pid), 9) + padded(fixed(process.cpu_percent), 8) +
                         padded(std::to_string(process.resident_kib), 10) + process.name});
    }
    return lines;
}

// Gives the terminal back however the picture ends.
class Screen {
  public:
    explicit Screen(double interval_s)
    {
        if (::newterm(nullptr, stdout, stdin) == nullptr) {
            throw Failure{"the terminal cannot be drawn on: TERM says what it is"};
        }
        ::cbreak();
        ::noecho();
        ::curs_set(0);
        ::timeout(static_cast<int>(interval_s * 1000));
    }
    ~Screen() { ::endwin(); }
    Screen(const Screen &) = delete;
    Screen &operator=(const Screen &) = delete;

    // False when the user has had enough.
    bool draw(const std::vector<Line> &lines)
    {
        ::erase();
        int row = 0;
        for (const Line &line : lines) {
            if (row >= LINES - 1) {
                break;
            }
            const auto style = line.heading ? A_REVERSE : A_NORMAL;
            attr_set(static_cast<attr_t>(style), 0, nullptr);
            mvaddnstr(row++, 0, line.text.c_str(), COLS);
        }
        attr_set(static_cast<attr_t>(A_NORMAL), 0, nullptr);
        mvaddnstr(LINES - 1, 0, "q ends", COLS);
        ::refresh();
        const int key = ::getch();
        return key != 'q' && key != 'Q' && key != 3;
    }
};

void run(double interval_s, unsigned count)
{
    Sampler sampler;
    const auto more = [count, taken = 0U]() mutable { return count == 0 || taken++ < count; };
    const bool live = ::isatty(STDOUT_FILENO) == 1 && ::isatty(STDIN_FILENO) == 1 && !json_wanted();
    print_as_it_happens();
    if (live) {
        Screen screen{interval_s};
        for (auto again = more; again() && screen.draw(picture_of(sampler.take()));) {
        }
        return;
    }
    for (auto again = more; again();) {
        const Sample sample = sampler.take();
        if (json_wanted()) {
            std::cout << json_of(sample).dump() << '\n';
        } else {
            for (const Line &line : picture_of(sample)) {
                std::cout << line.text << '\n';
            }
            std::cout << '\n';
        }
        if (!std::cout.flush()) {
            return;
        }
        std::this_thread::sleep_for(std::chrono::duration<double>{interval_s});
    }
}

} // namespace

void add_top_command(CLI::App &app)
{
    auto *top = app.add_subcommand("top", "The switch at work, live: units, traps, locks held, processes");
    auto interval_s = std::make_shared<double>(1);
    auto count = std::make_shared<unsigned>(0);
    top->add_option("--interval", *interval_s, "Seconds between two samples")
        ->check(CLI::Range(0.01, 3600.0))
        ->capture_default_str();
    top->add_option("--count", *count, "End after so many samples");
    top->footer("Where standard output is no terminal, each sample is printed as text, or with --json as one line.");
    top->callback([=] { run(*interval_s, *count); });
}

} // namespace switchcfg::tool
