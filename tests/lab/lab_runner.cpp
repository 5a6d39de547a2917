// SPDX-License-Identifier: Apache-2.0
#include "lab/lab_runner.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/wait.h>
#include <unistd.h>

namespace switchcfg::testing {

Program::Program(const Words &words)
{
    std::vector<char *> arguments;
    for (const std::string &word : words) {
        arguments.push_back(const_cast<char *>(word.c_str()));
    }
    arguments.push_back(nullptr);
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        std::abort();
    }
    peer_ = std::make_unique<Peer>([&](Link &) {
        ::dup2(ends[1], STDOUT_FILENO);
        ::dup2(ends[1], STDERR_FILENO);
        ::execvp(arguments[0], arguments.data());
        ::_exit(99);
    });
    ::close(ends[1]);
    output_ = ends[0];
}

Program::~Program()
{
    ::close(output_);
}

std::string Program::line() const
{
    std::string text;
    char byte = 0;
    while (::read(output_, &byte, 1) == 1 && byte != '\n') {
        text.push_back(byte);
    }
    return text;
}

std::string Program::rest() const
{
    std::string text;
    char chunk[4096];
    for (ssize_t got = 0; (got = ::read(output_, chunk, sizeof chunk)) > 0;) {
        text.append(chunk, static_cast<std::size_t>(got));
    }
    return text;
}

int Program::exit_status()
{
    const int status = peer_->join();
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

int Program::send(int signal) const
{
    return ::kill(pid(), signal);
}

Outcome run(const Words &words)
{
    Program program{words};
    std::string output = program.rest();
    return {program.exit_status(), std::move(output)};
}

Words lab_words(const std::string &script, const Words &options)
{
    Words words{SWITCHLAB, "run"};
    words.insert(words.end(), options.begin(), options.end());
    words.insert(words.end(), {"--", "sh", "-c", script});
    return words;
}

Outcome lab(const std::string &script, const Words &options)
{
    return run(lab_words(script, options));
}

bool makes_user_namespaces()
{
    return run({"unshare", "--user", "true"}).status == 0;
}

Words plain_user(const Words &programs)
{
    std::filesystem::create_directory("/tmp/user");
    for (const std::string &program : programs) {
        std::filesystem::copy(program, "/tmp/user");
    }
    std::filesystem::permissions("/tmp/user", std::filesystem::perms::all);
    unsigned long numbers[3] = {};
    std::ifstream{"/proc/self/uid_map"} >> numbers[0] >> numbers[1] >> numbers[2];
    return numbers[2] > 65534 ? Words{"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"} : Words{};
}

} // namespace switchcfg::testing
