// SPDX-License-Identifier: Apache-2.0
// What nearly every test needs: the framework and the common part of the library. Compiled once, for all of them.
#ifndef SWITCHCFG_TESTS_SUPPORT_TEST_H
#define SWITCHCFG_TESTS_SUPPORT_TEST_H

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <netinet/in.h>
#include <random>
#include <string>
#include <switchcfg/config_region.h>
#include <switchcfg/error.h>
#include <switchcfg/locks.h>
#include <switchcfg/robust_io.h>
#include <switchcfg/socket.h>
#include <switchcfg/startup.h>
#include <switchcfg/status.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace switchcfg::testing {

// Memory that the library hands over.
struct Free {
    void operator()(void *memory) const { std::free(memory); }
};
template<typename Type>
using Freed = std::unique_ptr<Type, Free>;

} // namespace switchcfg::testing

#endif
