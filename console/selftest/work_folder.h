// The folder that the checks write to. Windows only.
#pragma once

#include <filesystem>

namespace vell::selftest {

// Made anew, and removed with everything in it; what links in it lead to stays.
class WorkFolder {
  public:
    explicit WorkFolder(const std::filesystem::path& above);
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;
    ~WorkFolder();

    const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

} // namespace vell::selftest
