// SPDX-License-Identifier: Apache-2.0
#include "lab/stack/progress.h"

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace switchlab {

bool colour_wanted(int descriptor)
{
    const char *const refused = std::getenv("NO_COLOR");
    return ::isatty(descriptor) != 0 && (refused == nullptr || *refused == '\0');
}

Progress::Progress(const LabPlan &plan) : plan_(plan), terminal_(::isatty(STDOUT_FILENO) != 0) {}

std::string Progress::name_of(int part) const
{
    if (part == the_station) {
        return "station";
    }
    return "unit " + std::to_string(part) + "  " + plan_.units[static_cast<std::size_t>(part)].model_name;
}

void Progress::line(const std::string &text) const
{
    if (quiet_) {
        return;
    }
    std::printf("%s%s\n", terminal_ ? "\r\033[K" : "", text.c_str());
    (void)std::fflush(stdout);
}

// What is still on its way, in one line that changes.
void Progress::draw()
{
    if (!terminal_ || up_ || quiet_) {
        return;
    }
    std::string text;
    for (const auto &[part, stage] : stages_) {
        if (stage != "ready" && part >= 0) {
            text += (text.empty() ? "" : ", ") + ("unit " + std::to_string(part) + ": ") + stage;
        }
    }
    std::printf("\r\033[K  %.76s", text.c_str());
    (void)std::fflush(stdout);
}

void Progress::stage(int part, const std::string &stage)
{
    stages_[part] = stage;
    if (stage == "ready" || up_) {
        const std::chrono::duration<double> after = std::chrono::steady_clock::now() - begin_;
        char time[16];
        (void)std::snprintf(time, sizeof time, "%6.2f s", after.count());
        const bool green = stage == "ready" && colour_wanted(STDOUT_FILENO);
        if (!up_ || stage == "ready" || stage == "off") {
            line(std::string{time} + "  " + (green ? "\033[32m" : "") + stage + (green ? "\033[0m" : "") + "  " +
                 name_of(part));
        }
    }
    draw();
}

void Progress::trouble(int part, const std::string &text)
{
    std::fprintf(stderr, "%sswitchlab: %s: %s\n", terminal_ ? "\r\033[K" : "",
        part == the_station ? "lab" : ("unit " + std::to_string(part)).c_str(), text.c_str());
}

void Progress::up(std::chrono::milliseconds after, bool complete)
{
    up_ = true;
    char text[200];
    (void)std::snprintf(text, sizeof text, "lab '%s' is up: %zu unit%s, %s after %.2f s", plan_.name.c_str(),
        plan_.units.size(), plan_.units.size() == 1 ? "" : "s", complete ? "ready" : "not complete",
        static_cast<double>(after.count()) / 1000);
    line(text);
    if (when_up_) {
        when_up_(complete);
    }
}

} // namespace switchlab
