// SPDX-License-Identifier: Apache-2.0
#include "lab/stack/visitor.h"

#include "lab/refusal.h"
#include "lab/stack/events.h"
#include "lab/text_file.h"

#include <cstdlib>
#include <poll.h>

namespace switchlab {
namespace {

using nlohmann::json;
using switchcfg::Descriptor;

Message exchange(const std::string &name, const json &request)
{
    const Descriptor lab = knock(name);
    if (!lab) {
        throw Refusal("no lab '" + name + "' is up here: switchlab up starts one");
    }
    std::optional<Message> reply;
    if (send_message(lab.get(), request)) {
        reply = receive_message(lab.get());
    }
    if (!reply) {
        throw Refusal("lab '" + name + "' does not answer");
    }
    return std::move(*reply);
}

} // namespace

LabPart &LabView::part(const std::string &name)
{
    for (LabPart &part : parts) {
        if (name == part.name || (part.number >= 0 && name == std::to_string(part.number))) {
            return part;
        }
    }
    const auto last = std::to_string(parts.size() - 2);
    throw Refusal("no unit '" + name + "' in this lab: " + (last == "0" ? "0" : "0 to " + last) + ", or station");
}

std::string choose_lab(const std::string &name)
{
    if (!name.empty()) {
        return name;
    }
    const std::vector<std::string> all = labs_here();
    if (all.size() > 1) {
        std::string list;
        for (const std::string &one : all) {
            list += (list.empty() ? "" : ", ") + one;
        }
        throw Refusal("several labs are up, say which with --name: " + list);
    }
    return all.empty() ? usual_lab : all.front();
}

LabView view_lab(const std::string &name)
{
    Message message = exchange(choose_lab(name), {{"request", "describe"}});
    LabView view;
    std::size_t next = 0;
    const auto take = [&] {
        return next < message.descriptors.size() ? std::move(message.descriptors[next++]) : Descriptor{};
    };
    view.process = take();
    for (const json &about : message.body.value("parts", json::array())) {
        LabPart part{about.value("part", 0), about.value("stage", ""), {}, about, {}, {}};
        part.name = part.number == the_station ? "station" : "unit" + std::to_string(part.number);
        if (about.value("has_entrance", false)) {
            part.process = take();
            part.root = take();
        }
        view.parts.push_back(std::move(part));
    }
    message.body.erase("parts");
    view.about = std::move(message.body);
    return view;
}

json ask_lab(const std::string &name, const json &request)
{
    return exchange(choose_lab(name), request).body;
}

int pid_of(const Descriptor &process)
{
    const std::string text = read_file("/proc/self/fdinfo/" + std::to_string(process.get()));
    const std::size_t at = text.find("Pid:");
    return at == std::string::npos ? 0 : std::atoi(text.c_str() + at + 4);
}

} // namespace switchlab
