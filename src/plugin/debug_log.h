// The debug log: lines collected for whoever asks for them, through VlFile_Control.
#pragma once

#include "src/system/logs.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

namespace vell::plugin {

// Lines are UTF-8, separated by carriage returns. They are held in memory up to a limit, then moved
// to the overflow file, which goes with the process or when the log is taken; where it cannot be
// had, the older half of the lines is dropped, and a line says so. All members may be called from
// any thread.
class DebugLog {
  public:
    static constexpr std::size_t memory_limit = 1024 * 1024;
    static constexpr std::uint64_t file_limit = 64 * 1024 * 1024; // no line is added beyond

    explicit DebugLog(files::Logs& logs) : logs_(logs) {}

    void switch_on(); // adds "Log started."
    void switch_off();
    bool is_on() const { return on_; }

    void add(std::string_view line);        // does nothing while switched off
    void add_always(std::string_view line); // for what happens before anyone can switch it on

    // All that was collected; the log is empty afterwards.
    std::string take();

  private:
    void append(std::string_view line); // under the lock, as the following
    void move_to_file();
    void drop_older_half();

    std::atomic<bool> on_ = false;
    std::mutex mutex_;
    std::string lines_;
    files::Logs& logs_;
    std::unique_ptr<files::OverflowFile> file_; // what came before lines_; null when there is none
    std::uint64_t file_size_ = 0;
};

} // namespace vell::plugin
