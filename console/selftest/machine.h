// What a report tells of the machine and the user's rights. Windows only.
#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace vell::selftest {

using Facts = std::vector<std::pair<std::string, std::string>>;

std::string file_version(const std::filesystem::path& file);
Facts machine_facts(const std::filesystem::path& temporary_folder);

std::filesystem::path executable_folder();
// As Windows gives it, and in its long form: it may have names like RUNNER~1.
std::filesystem::path temporary_folder();
std::filesystem::path long_form(const std::filesystem::path& path);
std::wstring environment(const wchar_t* name);
bool was_double_clicked();

} // namespace vell::selftest
