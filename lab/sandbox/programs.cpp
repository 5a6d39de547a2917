// SPDX-License-Identifier: Apache-2.0
#include "lab/sandbox/programs.h"

#include "lab/sandbox/namespaces.h"
#include "lab/sandbox/sandbox.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <unistd.h>

namespace switchlab {
namespace {

namespace fs = std::filesystem;

// From switchlab's own folder: installed, all are in one; in a build folder each kind has its own.
constexpr std::array companions{".", "stand-ins", "../tools"};

} // namespace

std::string find_command(const std::string &name)
{
    if (name.find('/') != std::string::npos) {
        return name;
    }
    const char *path = std::getenv("PATH");
    std::string_view rest = path != nullptr ? path : "/bin:/usr/bin";
    for (;;) {
        const std::size_t colon = rest.find(':');
        const std::string_view folder = rest.substr(0, colon);
        std::string candidate = (folder.empty() ? "." : std::string{folder}) + "/" + name;
        if (::access(candidate.c_str(), X_OK) == 0) {
            return candidate;
        }
        if (colon == std::string_view::npos) {
            return {};
        }
        rest.remove_prefix(colon + 1);
    }
}

void execute(char *const command[])
{
    ::execvp(command[0], command);
    // A folder of PATH that may not be searched is no reason to call a missing command forbidden.
    const int why = find_command(command[0]).empty() ? ENOENT : errno;
    ::_exit(complain(
        std::string{command[0]} + ": " + std::strerror(why), why == ENOENT ? exit_not_found : exit_not_executable));
}

fs::path own_folder()
{
    // Asked for the first time outside of any lab.
    static const fs::path folder = [] {
        std::error_code ignored;
        return fs::read_symlink("/proc/self/exe", ignored).parent_path();
    }();
    return folder;
}

std::string find_companion(const std::string &name)
{
    for (const char *folder : companions) {
        const fs::path path = (own_folder() / folder / name).lexically_normal();
        if (::access(path.c_str(), X_OK) == 0) {
            return path.string();
        }
    }
    return {};
}

std::string companion_folders()
{
    std::string all;
    std::error_code ignored;
    for (const char *folder : companions) {
        const fs::path path = (own_folder() / folder).lexically_normal();
        if (fs::is_directory(path, ignored)) {
            all += (all.empty() ? "" : ":") + path.string();
        }
    }
    return all;
}

void keep_program(KeptPlaces &kept, const fs::path &program)
{
    std::error_code ignored;
    for (const fs::path &path : {program, fs::canonical(program, ignored)}) {
        if (!path.empty() && !kept.keep_if_possible(fs::absolute(path).parent_path().string())) {
            kept.keep_if_possible(path.string()); // it lies directly in /tmp: the file alone
        }
    }
}

} // namespace switchlab
