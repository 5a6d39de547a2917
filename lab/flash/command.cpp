// SPDX-License-Identifier: Apache-2.0
#include "lab/flash/command.h"

#include "lab/flash/files.h"
#include "lab/refusal.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <functional>
#include <memory>
#include <string>

namespace switchlab {
namespace {

struct Arguments {
    unsigned count = 0;
    std::uint32_t offset = 0;
    unsigned bit = 0;
    bool half = false;
    bool json = false;
};

NorFlash device()
{
    std::optional<NorFlash> flash = attach_flash();
    if (!flash) {
        throw refusal(
            "open", flash_state_path, "there is no flash device here: enter a lab with switchlab run --flash");
    }
    return *flash;
}

void print_status(const NorFlash &flash, bool as_json)
{
    const FlashState &state = flash.state();
    const char *const mechanism = state.mechanism == FlashMechanism::fuse ? "fuse" : "preload";
    if (as_json) {
        nlohmann::ordered_json status{{"device", flash_device_path}, {"mechanism", mechanism},
            {"size", state.geometry.size}, {"block", state.geometry.block}, {"page", state.geometry.page},
            {"powered", flash.powered()}, {"erases", state.erases}, {"programs", state.programs},
            {"operations", flash.operations()}};
        status["fail_erase"] = state.erase_fails_in;
        status["fail_program"] = state.program_fails_in;
        if (state.cut_armed != 0) {
            status["cut_after"] = state.cut_after;
        }
        std::puts(status.dump(2).c_str());
        return;
    }
    std::printf("%s: NOR, %u bytes, erase blocks of %u, pages of %u, through %s\n", flash_device_path,
        state.geometry.size, state.geometry.block, state.geometry.page, mechanism);
    std::printf("power %s, %u operations: %u blocks erased, %u pages programmed\n", flash.powered() ? "on" : "off",
        flash.operations(), state.erases, state.programs);
    if (state.erase_fails_in != 0) {
        std::printf("fails: erase %u from now\n", state.erase_fails_in);
    }
    if (state.program_fails_in != 0) {
        std::printf("fails: program %u from now%s\n", state.program_fails_in,
            state.program_stops_half_way != 0 ? ", half-way" : "");
    }
    if (state.cut_armed != 0) {
        std::printf("power goes after %u more operations%s\n", state.cut_after,
            state.cut_half_way != 0 ? ", in the middle of the next" : "");
    }
}

} // namespace

void add_flash_command(CLI::App &app)
{
    CLI::App *const command = app.add_subcommand("flash", "Test bench of the flash device of this lab");
    command->require_subcommand(1);
    command->footer(
        "For use on the switch: in a shell of switchlab run --flash, or of a unit. Examples:\n" // of each
        "  switchlab shell 1 -- switchlab flash status\n"
        "  switchlab shell 1 -- switchlab flash fail-erase 1         the next erase fails\n"
        "  switchlab shell 1 -- switchlab flash fail-program 3 --half\n"
        "  switchlab shell 1 -- switchlab flash cut-after 5          the power goes in the middle of a save\n"
        "  switchlab shell 1 -- switchlab flash power-on             and is back\n"
        "  switchlab shell 1 -- switchlab flash rot 100 3            bit 3 of byte 100 flips\n");
    const auto arguments = std::make_shared<Arguments>();
    const auto add = [&](const char *name, const char *help, std::function<void(NorFlash &)> act) {
        CLI::App *const sub = command->add_subcommand(name, help);
        sub->callback([act = std::move(act), arguments] {
            NorFlash flash = device();
            act(flash);
        });
        return sub;
    };

    add("status", "Geometry, power, operations so far, and the faults that wait", [arguments](NorFlash &flash) {
        print_status(flash, arguments->json);
    })->add_flag("--json", arguments->json, "As JSON");
    add("fail-erase", "The N-th erase of a block from now fails",
        [arguments](NorFlash &flash) { flash.fail_erase(arguments->count); })
        ->add_option("N", arguments->count, "1 is the next, 0 none")
        ->required();
    CLI::App *const program = add("fail-program", "The N-th programming of a page from now fails",
        [arguments](NorFlash &flash) { flash.fail_program(arguments->count, arguments->half); });
    program->add_option("N", arguments->count, "1 is the next, 0 none")->required();
    program->add_flag("--half", arguments->half, "Half of the page is programmed");
    CLI::App *const cut = add("cut-after", "The power goes after N more operations",
        [arguments](NorFlash &flash) { flash.cut_after(arguments->count, arguments->half); });
    cut->add_option("N", arguments->count, "An operation erases a block or programs a page")->required();
    cut->add_flag("--half", arguments->half, "In the middle of the operation that follows");
    add("power-off", "Every call fails from now on", [](NorFlash &flash) { flash.power_off(); });
    add("power-on", "The device answers again; faults that wait are forgotten",
        [](NorFlash &flash) { flash.power_on(); });
    CLI::App *const rot = add("rot", "Flips a bit of the content", [arguments](NorFlash &flash) {
        if (arguments->offset >= flash.geometry().size) {
            throw Refusal("rot: offset " + std::to_string(arguments->offset) + " is outside the device of " +
                          std::to_string(flash.geometry().size) + " bytes");
        }
        flash.rot(arguments->offset, arguments->bit);
    });
    rot->add_option("OFFSET", arguments->offset, "From the start of the device, in bytes")->required();
    rot->add_option("BIT", arguments->bit, "0 is the lowest")->required()->check(CLI::Range(0, 7));
}

} // namespace switchlab
