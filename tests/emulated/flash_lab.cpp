// SPDX-License-Identifier: Apache-2.0
// Makes the flash device of a lab for programs of the target that an emulator runs on a workstation, then becomes the
// command. The workstation's own switchlab cannot: the emulator does not hand the device's requests on to the kernel,
// and the state that the device and its test bench share has the byte order and word size of the programs that map it.
// So the device is the preloaded library, and what makes it is a program of the target itself.
//   flash-lab [FLASH OPTION OF switchlab run]... -- COMMAND [ARGUMENT]...
#include "lab/flash/device.h"
#include "lab/run_command.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iterator>
#include <string>
#include <unistd.h>
#include <vector>

int main(int argc, char **argv)
try {
    char **const end = argv + argc;
    char **const separator = std::find(argv, end, std::string{"--"});
    if (std::distance(separator, end) < 2) {
        throw std::invalid_argument("no command given");
    }
    CLI::App app;
    switchlab::RunRequest request;
    switchlab::add_run_command(app, request);
    std::vector<std::string> words{std::reverse_iterator{separator}, std::reverse_iterator{argv + 1}};
    words.emplace_back("run");
    app.parse(std::move(words)); // takes them from the back
    request.flash.mechanism = switchlab::FlashMechanism::preload;
    switchlab::prepare_flash(request.flash);
    switchlab::start_flash_device(request.flash);
    // Each program's loader puts its own machine's library folder for $LIB; the workstation's programs see bare memory.
    ::setenv("LD_PRELOAD", EMULATED_PRELOAD, 1);
    ::execv(separator[1], separator + 1);
    std::perror(separator[1]);
    return switchlab::exit_not_found;
} catch (const std::exception &why) {
    std::fprintf(stderr, "flash-lab: %s\n", why.what());
    return switchlab::exit_lab_failed;
}
