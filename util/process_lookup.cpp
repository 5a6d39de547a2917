// SPDX-License-Identifier: Apache-2.0
// Finding processes by name and by command line.
#include <switchcfg/files.h>
#include <switchcfg/process.h>

#include "util/owned.h"
#include "util/process_command_line.h"
#include "util/process_name.h"
#include "util/process_scan.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <regex.h>

namespace switchcfg {

bool read_command_line(int pid, CommandLine &text) noexcept
{
    char path[32];
    (void)std::snprintf(path, sizeof path, "/proc/%d/cmdline", pid);
    const Descriptor file{::open(path, O_RDONLY | O_CLOEXEC)};
    if (!file) {
        return false;
    }
    const ssize_t length = ::read(file.get(), text.data(), command_line_size);
    if (length <= 0) {
        return false;
    }
    // The last byte is the terminator of the last argument, unless the line was cut.
    std::replace(text.data(), text.data() + length - 1, '\0', ' ');
    text[static_cast<std::size_t>(length)] = '\0';
    return true;
}

namespace {

// Every process that `matches`, or an empty list; false when memory is out or /proc cannot be read.
template<typename Matches>
bool list_processes(ProcessList &list, Matches &&matches) noexcept
{
    const int scanned = for_each_process([&](int pid) noexcept { return matches(pid) && !list.add(pid) ? -1 : 0; });
    if (scanned != 0) {
        list.clear();
    }
    return scanned == 0;
}

bool list_by_name(ProcessList &list, const char *name) noexcept
{
    ProcessName found;
    return name != nullptr && list_processes(list, [&](int pid) noexcept {
        return read_process_name(pid, found) && std::strcmp(found.data(), name) == 0;
    });
}

class Expression {
  public:
    explicit Expression(const char *text) noexcept
        : compiled_(text != nullptr && ::regcomp(&expression_, text, REG_EXTENDED | REG_NOSUB) == 0)
    {
    }
    ~Expression()
    {
        if (compiled_) {
            ::regfree(&expression_);
        }
    }
    Expression(const Expression &) = delete;
    Expression &operator=(const Expression &) = delete;

    explicit operator bool() const noexcept { return compiled_; }
    bool matches(const char *text) const noexcept { return ::regexec(&expression_, text, 0, nullptr, 0) == 0; }

  private:
    regex_t expression_{};
    bool compiled_;
};

int has_entries(std::int32_t *list) noexcept
{
    const Malloced<std::int32_t> owned{list};
    return list != nullptr && *list > 0 ? 1 : 0;
}

} // namespace
} // namespace switchcfg

using namespace switchcfg;

char *pid_cmdline(int pid) noexcept
{
    CommandLine text;
    return read_command_line(pid, text) ? ::strdup(text.data()) : nullptr;
}

char *pid_name(int pid) noexcept
{
    ProcessName name;
    return read_process_name(pid, name) ? ::strdup(name.data()) : nullptr;
}

std::int32_t *pid_by_name(const char *name) noexcept
{
    ProcessList list;
    (void)list_by_name(list, name);
    return list.release();
}

std::int32_t *find_pid_by_name(const char *name) noexcept
{
    ProcessList list;
    (void)list_by_name(list, name);
    if (std::int32_t *const found = list.release()) {
        return found;
    }
    auto *const none = static_cast<std::int32_t *>(std::malloc(sizeof(std::int32_t)));
    if (none != nullptr) {
        *none = -1;
    }
    return none;
}

std::int32_t *pid_by_regex(const char *expression) noexcept
{
    const Expression wanted{expression};
    ProcessList list;
    if (wanted) {
        CommandLine text;
        (void)list_processes(
            list, [&](int pid) noexcept { return read_command_line(pid, text) && wanted.matches(text.data()); });
    }
    return list.release();
}

int process_is_running(const char *name) noexcept
{
    return has_entries(pid_by_name(name));
}

int regex_is_running(const char *expression) noexcept
{
    return has_entries(pid_by_regex(expression));
}

int pid_exists(int pid) noexcept
{
    char path[32];
    (void)std::snprintf(path, sizeof path, "/proc/%d/status", pid);
    return file_exists(path);
}

int get_parent_pid(int pid) noexcept
{
    char path[32];
    (void)std::snprintf(path, sizeof path, "/proc/%d/stat", pid);
    const Descriptor file{::open(path, O_RDONLY | O_CLOEXEC)};
    char text[512];
    const ssize_t length = file ? ::read(file.get(), text, sizeof text - 1) : -1;
    if (length <= 0) {
        return -1;
    }
    text[length] = '\0';
    int itself = 0;
    int name_end = 0;
    char state = 0;
    int parent = 0;
    // The name is one word: the part behind the last ")" must follow it at once. A name with a blank fails that also
    // when it was chosen to look like the fields that follow.
    if (std::sscanf(text, "%d %*s%n %c %d", &itself, &name_end, &state, &parent) != 3 || // NOLINT(cert-err34-c)
        std::strrchr(text, ')') != text + name_end - 1) {
        return -1;
    }
    return parent;
}
