// SPDX-License-Identifier: Apache-2.0
#include "tools/env_access.h"

#include "tools/attach.h"
#include "tools/command_line/failure.h"
#include "tools/lock_hold.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <switchcfg/bootenv.h>
#include <switchcfg/error.h>
#include <switchcfg/robust_io.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace switchcfg::tool {
namespace {

namespace fs = std::filesystem;

constexpr char partition[] = "/dev/flash_env";

void check_name(const std::string &name)
{
    if (name.empty() || name.find('=') != std::string::npos) {
        throw Failure{"'" + name + "' cannot be the name of a variable"};
    }
}

class Shadow : public EnvironmentAccess {
  public:
    Shadow() { attach(); }

    Variables variables() override
    {
        if (bootenv_init() != 0) {
            throw Failure{std::string{partition} + ": it cannot be read, or holds no environment"};
        }
        return listed();
    }

    void change(const std::vector<Change> &changes) override
    {
        const LockHold hold{cfg_lock_table[CFG_LOCK_CFG]};
        const Variables before = listed();
        const Variables after = changed(before, changes);
        (void)put_together(after); // all of them fit together
        // What shrinks goes first, so that they also fit one after the other.
        for (const bool shrinking : {true, false}) {
            for (const std::string &name : names_of(changes)) {
                const auto value = value_in(after, name);
                if (shrinking == (!value || value->size() < value_in(before, name).value_or("").size())) {
                    expect_done(bootenv_set(name.c_str(), value ? value->c_str() : nullptr), name,
                        "the variable cannot be changed");
                }
            }
        }
    }

  private:
    // Each once, in the order of their last change.
    static std::vector<std::string> names_of(const std::vector<Change> &changes)
    {
        std::vector<std::string> names;
        for (const Change &change : changes) {
            std::erase(names, change.name);
            names.push_back(change.name);
        }
        return names;
    }

    static Variables listed()
    {
        char **list = nullptr;
        int count = 0;
        expect_done(bootenv_get_all(&list, &count), "the boot environment", "cannot be listed");
        Variables variables;
        for (int i = 0; i < count; ++i) {
            const std::string text = list[i];
            variables.push_back({text.substr(0, text.find('=')), text.substr(text.find('=') + 1)});
            std::free(list[i]);
        }
        std::free(list);
        return variables;
    }
};

class ImageFile : public EnvironmentAccess {
  public:
    ImageFile(std::string path, bool may_be_missing) : path_(std::move(path)), may_be_missing_(may_be_missing) {}

    Variables variables() override
    {
        if (may_be_missing_ && !fs::exists(path_)) {
            return {};
        }
        errno = 0;
        int size = 0;
        const std::unique_ptr<std::uint8_t, decltype(&std::free)> bytes{
            bootenv_read_env(path_.c_str(), &size, 0), &std::free};
        if (!bytes) {
            throw errno != 0 ? system_failure(path_, "cannot read the image") : Failure{path_ + ": it is empty"};
        }
        ImageContent content = take_apart({bytes.get(), static_cast<std::size_t>(size)});
        if (!content.has_end) {
            throw Failure{path_ + ": no environment image: its end is missing"};
        }
        return std::move(content.variables);
    }

    void change(const std::vector<Change> &changes) override
    {
        const std::vector<std::uint8_t> image = put_together(changed(variables(), changes));
        // A new file takes the place of the old one, so that a failure leaves the old one whole.
        const fs::path file = fs::exists(path_) ? fs::canonical(path_) : fs::path{path_};
        std::string scratch = file.string() + ".XXXXXX";
        const int fd = ::mkstemp(scratch.data());
        if (fd < 0) {
            throw system_failure(scratch, "cannot make the new image");
        }
        const bool written = ::fchmod(fd, mode_of(file)) == 0 &&
                             vx_write(fd, image.data(), static_cast<std::uint32_t>(image.size())) == 0 &&
                             ::fsync(fd) == 0;
        const int why = errno;
        ::close(fd);
        if (!written || ::rename(scratch.c_str(), file.c_str()) != 0) {
            errno = written ? errno : why;
            const Failure failure = system_failure(path_, "cannot write the image");
            ::unlink(scratch.c_str());
            throw failure;
        }
    }

  private:
    static mode_t mode_of(const fs::path &file)
    {
        struct stat info {};
        return ::stat(file.c_str(), &info) == 0 ? info.st_mode & 07777 : 0644;
    }

    std::string path_;
    bool may_be_missing_;
};

} // namespace

Variables changed(Variables variables, const std::vector<Change> &changes)
{
    for (const Change &change : changes) {
        check_name(change.name);
        std::erase_if(variables, [&](const Variable &variable) { return variable.name == change.name; });
        if (change.value) {
            variables.push_back({change.name, *change.value});
        }
    }
    return variables;
}

std::unique_ptr<EnvironmentAccess> shadow_access()
{
    return std::make_unique<Shadow>();
}

std::unique_ptr<EnvironmentAccess> image_access(const std::string &path, bool may_be_missing)
{
    return std::make_unique<ImageFile>(path, may_be_missing);
}

void save_environment()
{
    attach();
    const LockHold hold{cfg_lock_table[CFG_LOCK_CFG]};
    // An unloaded shadow may lack its first variable; it must not become the environment.
    if (bootenv_init() != 0) {
        throw Failure{std::string{partition} + ": nothing to save: no environment is loaded, and none can be"};
    }
    expect_done(bootenv_grava(), partition, "saving failed; switchcfg env check tells what flash and backup hold");
}

void expect_done(int result, const std::string &object, const std::string &what)
{
    if (result != 0) {
        throw Failure{object + ": " + what + ": " + cfg_strerror(result) + " (" + std::to_string(result) + ")"};
    }
}

} // namespace switchcfg::tool
