// SPDX-License-Identifier: Apache-2.0
#include "lab/run_command.h"

#include <CLI/CLI.hpp>

#include <map>
#include <string>

namespace switchlab {
namespace {

void add_flash_options(CLI::App &run, FlashRequest &flash)
{
    const std::map<std::string, FlashMechanism> mechanisms{
        {"fuse", FlashMechanism::fuse}, {"preload", FlashMechanism::preload}};
    CLI::Option *const wanted = run.add_flag("--flash", flash.wanted, "Puts a NOR flash partition at /dev/flash_env");
    // What the parser would say of these values in the help is longer than its lines.
    const auto size = [] { return CLI::AsSizeValue(false).description(""); };
    run.add_option("--flash-image", flash.image, "File that holds its content, made when missing")
        ->type_name("FILE")
        ->needs(wanted);
    run.add_option("--flash-size", flash.size, "Bytes (64KiB, or the size of the image)")
        ->transform(size())
        ->type_name("SIZE")
        ->needs(wanted);
    run.add_option("--flash-block", flash.geometry.block, "Bytes of an erase block (16KiB)")
        ->transform(size())
        ->type_name("SIZE")
        ->needs(wanted);
    run.add_option("--flash-page", flash.geometry.page, "Bytes programmed by one operation (256)")
        ->transform(size())
        ->type_name("SIZE")
        ->needs(wanted);
    run.add_option("--flash-via", flash.mechanism, "fuse or preload, instead of what works")
        ->type_name("HOW")
        ->transform(CLI::CheckedTransformer(mechanisms).description(""))
        ->needs(wanted);
}

} // namespace

CLI::App *add_run_command(CLI::App &app, RunRequest &request)
{
    CLI::App *const run = app.add_subcommand(
        "run", "Runs a command in a lab of its own: switchlab run [OPTION]... -- COMMAND [ARGUMENT]...");
    run->add_option("--keep", request.keep, "Folder below /var, /tmp, /mnt or /dev that stays visible (repeatable)")
        ->type_name("FOLDER")
        ->allow_extra_args(false);
    add_flash_options(*run, request.flash);
    run->footer(
        "Examples:\n"
        "  switchlab run -- bash                           a shell on an empty switch\n"
        "  switchlab run --flash -- switchcfg env list     with a flash partition at /dev/flash_env\n"
        "  switchlab run --keep /tmp/work -- /tmp/work/test\n\n"
        "Exit status: the command's own, 128 + N when signal N ended it, 127 when it is not found, 126 when it cannot\n"
        "be executed, 125 when the lab cannot be made.\n");
    return run;
}

} // namespace switchlab
