// The three kinds of work that vell_soak does. Each returns whether all was as it should be, and
// tells what was not.
#pragma once

#include "console/host/session.h"
#include "tests/soak/scenarios.h"
#include "tests/soak/workplace.h"

#include <chrono>
#include <cstdint>
#include <filesystem>

namespace vell::soak {

struct Work {
    console::PluginHost& host;
    console::Session& session;
    const Workplace& workplace;
    std::filesystem::path texts;     // the folder with the files of calls
    std::filesystem::path reference; // pages of functions
    std::chrono::seconds length;
    std::uint64_t seed;
};

// Scenarios and calls with random parameters from eight threads, until the time is over. What the
// process holds is looked at in pauses in which no call runs, and must not grow.
bool soak_mixed(const Work& work);

// Files of the corpus that were cut off or changed, until the time is over: every reading function
// answers about each of them, in time, and leaves nothing behind.
bool soak_damaged(const Work& work);

// Each call of the scenarios with a failure at its first call of the host, its second one and so
// on: it ends with the code of that failure and leaves nothing behind, and the next call is as
// ever. Ends when all has been done, or with the time.
bool soak_failures(const Work& work);

} // namespace vell::soak
