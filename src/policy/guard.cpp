#include "src/policy/guard.h"

#include "src/base/number_text.h"
#include "src/policy/audit_file.h"

#include <array>
#include <chrono>
#include <optional>
#include <utility>

namespace vell::policy {
namespace {

constexpr std::chrono::seconds longest_wait_for_log(5);

// The line that tells of a policy, and of what it leaves open.
std::string start_line(const Policy& policy, const Moment& moment) {
    if (policy.allows_nothing)
        return event_line(moment, "start",
                          "The policy allows nothing, for it cannot be read: " + policy.problem);
    const bool has_roots = policy.read_roots || policy.write_roots;
    if (has_roots && !policy.denied.contains("VlFile_ExecuteShell"))
        return event_line(moment, "start",
                          "The roots do not bind commands: VlFile_ExecuteShell is not denied");
    return event_line(moment, "start", "The policy is in force");
}

Result<std::string> read_whole(files::File& file) {
    std::string text;
    std::array<char, 16 * 1024> piece;
    while (text.size() <= longest_policy) {
        const std::size_t size = VELL_TRY(file.read(piece));
        if (size == 0)
            break;
        text.append(piece.data(), size);
    }
    return text;
}

// nullopt where there is no policy.
std::optional<Policy> policy_beside(const PolicyPlace& place, System& system,
                                    std::span<const std::string_view> functions) {
    const files::NativePath path{place.folder + std::u16string(policy_file_name), std::nullopt};
    auto file = system.files().open_shared(path);
    if (!file && file.error() == ErrorCode::NotFound)
        return std::nullopt;
    const auto unreadable = [](ErrorCode code) {
        return policy_that_allows_nothing("the file cannot be opened or read, code " +
                                          to_text(std::int64_t{number(code)}));
    };
    if (!file)
        return unreadable(file.error());
    const auto text = read_whole(**file);
    if (!text)
        return unreadable(text.error());
    auto policy = read_policy(*text, functions);
    return policy ? *std::move(policy) : policy_that_allows_nothing(policy.error());
}

} // namespace

Moment now_of(files::Clock& clock) {
    using namespace std::chrono;
    const auto utc = floor<milliseconds>(system_clock::now());
    const auto local = clock.local_time();
    const sys_seconds wall = sys_days(year(local.year) / local.month / local.day) +
                             hours(local.hour) + minutes(local.minute) + seconds(local.second);
    // Both clocks were read a moment apart; zones differ by quarters of an hour.
    const auto offset = round<duration<int, std::ratio<900>>>(wall - floor<seconds>(utc));
    const int part = static_cast<int>((utc - floor<seconds>(utc)).count());
    return {local, part, static_cast<int>(duration_cast<minutes>(offset).count())};
}

Guard::Guard(Policy policy, System& system, const LogFolder& log_folder)
    : policy_(std::move(policy)), system_(system), guarded_(policy_, system) {
    if (!policy_.audit.is_on)
        return;
    AuditSettings settings = policy_.audit;
    if (settings.folder.empty())
        settings.folder = log_folder();
    const auto file = std::make_shared<AuditFile>(system.files(), settings);
    const auto now = [&system] {
        return now_of(system.clock());
    };
    log_ = std::make_unique<AuditLog>(
        now, [file](std::string_view lines) { return file->append(lines); });
    log_->add(start_line(policy_, now()));
}

bool Guard::denies(std::string_view function) const {
    return policy_.allows_nothing || denies_always(function);
}

void Guard::write(const CallOrigin& origin, std::string_view function, ErrorCode result,
                  const CallScope& scope) {
    if (log_)
        log_->add(line_of({now_of(system_.clock()), origin, function, number(result)}, scope));
}

void Guard::start(AuditLog::Report report) {
    if (log_)
        log_->start(std::move(report));
}

bool Guard::stop() {
    return !log_ || log_->stop(longest_wait_for_log);
}

std::unique_ptr<Guard> guard_of(const PolicyPlace& place, System& system,
                                std::span<const std::string_view> functions) {
    std::optional<Policy> policy = policy_beside(place, system, functions);
    if (!policy)
        return nullptr;
    return std::make_unique<Guard>(*std::move(policy), system, place.log_folder);
}

} // namespace vell::policy
