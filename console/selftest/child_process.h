// Programs that are run to their end, or to the end of a time limit. Windows only.
#pragma once

#include <windows.h>

#include <chrono>
#include <filesystem>
#include <string>

namespace vell::selftest {

struct ChildCommand {
    std::filesystem::path program;
    std::wstring arguments;
    std::filesystem::path folder; // the current one of the program
    std::filesystem::path output; // a file that takes what it prints; errors go to OUTPUT.err
    std::chrono::seconds limit{};
};

struct ChildEnd {
    DWORD error = 0; // of Windows, when it could not be started
    bool was_stopped = false;
    DWORD exit_code = 0;
    double seconds = 0;
    std::string output;
    std::string errors;
};

// What the program has started ends with it.
ChildEnd run_child(const ChildCommand& command);

// How it ended, for a person.
std::string end_text(const ChildEnd& end, std::chrono::seconds limit);

std::string read_file(const std::filesystem::path& path); // empty when it cannot be read

} // namespace vell::selftest
