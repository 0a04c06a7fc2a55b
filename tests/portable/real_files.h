// The files of the folder that the variable VELL_CORPUS names.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <string>
#include <vector>

namespace vell::test {

// Those in some of its folders; none where there is no such folder, which tests that skip say so.
inline constexpr const char* no_real_files = "no corpus of real files (VELL_CORPUS)";
inline std::vector<std::filesystem::path> real_files(std::initializer_list<const char*> folders) {
    std::vector<std::filesystem::path> files;
    const char* const corpus = std::getenv("VELL_CORPUS");
    if (!corpus || !std::filesystem::is_directory(corpus))
        return files;
    for (const char* folder : folders)
        for (const auto& entry :
             std::filesystem::directory_iterator(std::filesystem::path(corpus) / folder))
            files.push_back(entry.path());
    return files;
}
inline std::string bytes_of(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

} // namespace vell::test
