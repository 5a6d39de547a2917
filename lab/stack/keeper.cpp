// SPDX-License-Identifier: Apache-2.0
#include "lab/stack/keeper.h"

#include "lab/refusal.h"
#include "lab/sandbox/namespaces.h"
#include "lab/sandbox/sandbox.h"
#include "lab/stack/lab.h"

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace switchlab {

using nlohmann::json;
using switchcfg::Descriptor;

Keeper::Keeper(LabPlan plan) : plan_(std::move(plan)), door_(open_door(plan_.name))
{
    sigset_t ending;
    ::sigemptyset(&ending);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        ::sigaddset(&ending, number);
    }
    ::sigprocmask(SIG_BLOCK, &ending, &old_mask_);
    signals_.reset(::signalfd(-1, &ending, SFD_CLOEXEC));
    if (!signals_) {
        throw refusal("signalfd", "");
    }
    parts_[the_station];
    for (const UnitPlan &unit : plan_.units) {
        parts_[unit.number];
    }
}

Keeper::~Keeper()
{
    end();
    ::sigprocmask(SIG_SETMASK, &old_mask_, nullptr);
}

void Keeper::start()
{
    auto [events_here, events_there] = make_channel();
    auto [commands_here, commands_there] = make_channel();
    Inside inside{plan_.keep};
    const Maker maker = Maker::myself();
    const int hears = commands_there.get();
    const Events events{events_there.get()};
    // The process inherits all there is, its keeper's end of the channels too, which it must not hold open.
    lab_ = start_in_namespaces(lab_namespaces, [&, &near = commands_here, &door = door_](bool own_user_namespace) {
        near.reset();
        door.reset();
        if (own_user_namespace) {
            become_root_inside(maker);
        }
        return run_lab(plan_, inside, events, hears);
    });
    events_ = std::move(events_here);
    commands_ = std::move(commands_here);
    process_ = process_handle(lab_);
}

int Keeper::run(Watcher &watcher)
{
    start();
    bool failed = false;
    while (!asked_to_end_ && !failed) {
        pollfd awaited[] = {{events_.get(), POLLIN, 0}, {door_.get(), POLLIN, 0}, {signals_.get(), POLLIN, 0},
            {process_.get(), POLLIN, 0}};
        if (::poll(awaited, std::size(awaited), -1) < 0 && errno != EINTR) {
            throw refusal("poll", "");
        }
        if ((awaited[0].revents & POLLIN) != 0 && hear(watcher)) {
            failed = ready_after_.count() < 0 && some_part_failed();
            continue; // what was said comes before what happened
        }
        if (awaited[1].revents != 0) {
            serve_visitor();
        }
        if (awaited[2].revents != 0) {
            signalfd_siginfo taken{};
            (void)!::read(signals_.get(), &taken, sizeof taken);
            asked_to_end_ = true;
        }
        failed = awaited[3].revents != 0;
    }
    end();
    if (last_visitor_) {
        send_message(last_visitor_.get(), {{"down", true}});
    }
    if (failed) {
        watcher.trouble(the_station, ready_after_.count() < 0 ? "could not be brought up" : "has ended by itself");
    }
    return failed ? exit_lab_failed : 0;
}

bool Keeper::hear(Watcher &watcher)
{
    std::optional<Message> message = receive_message(events_.get());
    if (!message) {
        return false;
    }
    const json &body = message->body;
    const int number = body.value("part", 0);
    Part &part = parts_[number];
    const std::string event = body.value("event", "");
    if (event == "entrance" && message->descriptors.size() == 2) {
        part.process = std::move(message->descriptors[0]);
        part.root = std::move(message->descriptors[1]);
        part.environment = body["environment"];
        part.daemons = body["daemons"];
    } else if (event == "stage") {
        part.stage = body.value("stage", "");
        if (part.stage == "off" || part.stage == "failed") {
            part.process.reset();
            part.root.reset();
        }
        watcher.stage(number, part.stage);
        look_whether_ready(watcher);
    } else if (event == "trouble") {
        watcher.trouble(number, body.value("text", ""));
    }
    return true;
}

bool Keeper::some_part_failed() const
{
    return std::ranges::any_of(parts_, [](const auto &part) { return part.second.stage == "failed"; });
}

void Keeper::look_whether_ready(Watcher &watcher)
{
    const auto is_up = [](const auto &part) {
        return part.second.stage == "ready" || part.second.stage == "incomplete";
    };
    if (ready_after_.count() < 0 && std::ranges::all_of(parts_, is_up)) {
        ready_after_ = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin_);
        const bool complete =
            std::ranges::none_of(parts_, [](const auto &part) { return part.second.stage == "incomplete"; });
        watcher.up(ready_after_, complete);
    }
}

void Keeper::serve_visitor()
{
    Descriptor visitor = admit(door_.get());
    const std::optional<Message> request = visitor ? receive_message(visitor.get()) : std::nullopt;
    if (!request) {
        return;
    }
    const std::string wish = request->body.value("request", "");
    if (wish == "describe") {
        describe(visitor.get());
    } else if (wish == "power") {
        const int unit = request->body.value("unit", -1);
        const std::string state = request->body.value("power", "");
        // Whoever waits for the unit to be ready must not see that it was before.
        if (state != "on" && unit >= 0 && parts_.contains(unit) && parts_[unit].stage != "off") {
            parts_[unit].stage = "going off";
        }
        send_message(commands_.get(), {{"power", state}, {"unit", unit}});
        send_message(visitor.get(), {{"done", true}});
    } else if (wish == "down") {
        asked_to_end_ = true;
        last_visitor_ = std::move(visitor);
    } else {
        send_message(visitor.get(), {{"error", "unknown request"}});
    }
}

// With the lab's own process, and process and root folder of each part that says so.
void Keeper::describe(int visitor)
{
    json body = description();
    std::vector<int> descriptors{process_.get()};
    for (json &part : body["parts"]) {
        const Part &source = parts_[part["part"].get<int>()];
        part["has_entrance"] = static_cast<bool>(source.process);
        if (source.process) {
            descriptors.push_back(source.process.get());
            descriptors.push_back(source.root.get());
        }
    }
    send_message(visitor, body, descriptors);
}

json Keeper::description() const
{
    const auto age = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin_);
    json body{{"name", plan_.name}, {"age_ms", age.count()}, {"ready_ms", ready_after_.count()}, {"keeper", ::getpid()},
        {"parts", json::array()}};
    for (const auto &[number, part] : parts_) {
        json entry{
            {"part", number}, {"stage", part.stage}, {"environment", part.environment}, {"daemons", part.daemons}};
        if (number == the_station) {
            entry["management"] = station_address;
        } else {
            const UnitPlan &unit = plan_.units[static_cast<std::size_t>(number)];
            entry.update({{"model", unit.model}, {"model_name", unit.model_name}, {"management", unit.management},
                {"control", unit.control}, {"stacking", unit.stacking}});
        }
        body["parts"].push_back(entry);
    }
    return body;
}

void Keeper::end()
{
    if (lab_ > 0) {
        ::kill(lab_, SIGKILL);
        while (::waitpid(lab_, nullptr, 0) < 0 && errno == EINTR) {
        }
        lab_ = 0;
    }
    door_.reset();
}

} // namespace switchlab
