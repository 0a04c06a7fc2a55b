// The audit log: lines that a thread of its own writes, so that no call waits for the disk.
#pragma once

#include "src/base/result.h"
#include "src/policy/audit_line.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace vell::policy {

class AuditLog {
  public:
    // Lines that wait for the disk, in bytes; further ones are lost, and counted.
    static constexpr std::size_t queue_limit = 4 * 1024 * 1024;
    static constexpr std::size_t longest_batch = 256 * 1024;

    using Now = std::function<Moment()>;
    // Writes whole lines. Called by the thread alone.
    using Write = std::function<Result<void>(std::string_view lines)>;
    // Tells of lines that cannot be written, once until some are written again, and of those that
    // are lost for good. Called by the thread, which may outlive the log.
    using Report = std::function<void(std::string_view words)>;

    AuditLog(Now now, Write write, std::chrono::milliseconds pause = std::chrono::seconds(1));
    AuditLog(const AuditLog&) = delete;
    AuditLog& operator=(const AuditLog&) = delete;
    ~AuditLog();

    void start(Report report);
    // From any thread; never waits. Lines that come before start wait for it.
    void add(std::string line);
    // Writes what is waiting and ends the thread. False where the disk takes longer: the thread
    // goes on then and needs the code that it runs, but nothing of the log's owner.
    bool stop(std::chrono::milliseconds longest_wait);

  private:
    struct Shared;
    static bool write_waiting(Shared& shared, std::unique_lock<std::mutex>& lock);
    static void run(Shared& shared);

    std::shared_ptr<Shared> shared_; // with the thread, which may outlive the log
    std::thread thread_;
};

} // namespace vell::policy
