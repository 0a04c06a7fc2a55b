#include "src/policy/audit_log.h"

#include "src/base/number_text.h"

#include <deque>
#include <system_error>
#include <utility>

namespace vell::policy {

struct AuditLog::Shared {
    Now now;
    Write write;
    Report report;
    std::chrono::milliseconds pause; // before what could not be written is tried again

    std::mutex mutex;
    std::condition_variable changed;
    // All guarded by the mutex.
    std::deque<std::string> lines;
    std::size_t bytes = 0;
    std::uint64_t lost = 0;
    bool is_running = false;
    bool is_to_end = false;
    bool is_reported = false; // that lines cannot be written

    // While the lock is open.
    void tell(const std::string& words) const {
        try {
            if (report)
                report(words);
        } catch (...) { // there is nobody else to tell
        }
    }
};

AuditLog::AuditLog(Now now, Write write, std::chrono::milliseconds pause)
    : shared_(std::make_shared<Shared>()) {
    shared_->now = std::move(now);
    shared_->write = std::move(write);
    shared_->pause = pause;
}

AuditLog::~AuditLog() {
    static_cast<void>(stop(std::chrono::seconds(1)));
}

void AuditLog::start(Report report) {
    const std::lock_guard lock(shared_->mutex);
    if (thread_.joinable())
        return;
    shared_->report = std::move(report);
    shared_->is_to_end = false;
    shared_->is_running = true;
    try {
        thread_ = std::thread([shared = shared_] { run(*shared); });
    } catch (const std::system_error&) {
        shared_->is_running = false; // without a thread the lines wait
    }
}

void AuditLog::add(std::string line) {
    const std::lock_guard lock(shared_->mutex);
    if (line.size() > queue_limit - shared_->bytes) {
        ++shared_->lost;
        return;
    }
    shared_->bytes += line.size();
    shared_->lines.push_back(std::move(line));
    shared_->changed.notify_all();
}

// Writes what is waiting, or a good part of it, without the lock. False where the disk refuses; the
// lines wait on then, and the queue takes in what it can.
bool AuditLog::write_waiting(Shared& shared, std::unique_lock<std::mutex>& lock) {
    std::string batch;
    std::size_t taken = 0;
    for (; taken < shared.lines.size() && batch.size() < longest_batch; ++taken)
        batch += shared.lines[taken];
    // They were lost behind those that wait.
    const std::uint64_t lost = taken == shared.lines.size() ? shared.lost : 0;
    if (lost > 0)
        batch += lost_line(shared.now(), lost);
    lock.unlock();
    Result<void> written = Failure{ErrorCode::OutOfMemory};
    try {
        written = shared.write(batch);
    } catch (...) { // a lack of memory is one of the disk's
    }
    if (!written && !shared.is_reported)
        shared.tell("The audit log cannot be written, code " +
                    to_text(std::int64_t{number(written.error())}) + "; its lines wait");
    shared.is_reported = !written.has_value();
    lock.lock();
    if (!written)
        return false;
    for (std::size_t i = 0; i < taken; ++i) {
        shared.bytes -= shared.lines.front().size();
        shared.lines.pop_front();
    }
    shared.lost -= lost;
    return true;
}

void AuditLog::run(Shared& shared) {
    std::unique_lock lock(shared.mutex);
    const auto is_waiting = [&] {
        return !shared.lines.empty() || shared.lost > 0;
    };
    while (!shared.is_to_end || is_waiting()) {
        shared.changed.wait(lock, [&] { return shared.is_to_end || is_waiting(); });
        if (!is_waiting() || write_waiting(shared, lock))
            continue;
        if (shared.is_to_end)
            break;
        shared.changed.wait_for(lock, shared.pause, [&] { return shared.is_to_end; });
    }
    if (const std::uint64_t lost = shared.lines.size() + shared.lost; lost > 0) {
        lock.unlock();
        shared.tell(to_text(lost) + " lines of the audit log are lost");
        lock.lock();
    }
    shared.is_running = false;
    shared.changed.notify_all();
}

bool AuditLog::stop(std::chrono::milliseconds longest_wait) {
    if (!thread_.joinable())
        return true;
    std::unique_lock lock(shared_->mutex);
    shared_->is_to_end = true;
    shared_->changed.notify_all();
    const bool has_ended =
        shared_->changed.wait_for(lock, longest_wait, [&] { return !shared_->is_running; });
    lock.unlock();
    if (has_ended)
        thread_.join();
    else
        thread_.detach();
    return has_ended;
}

} // namespace vell::policy
