#include "src/files/information/file_times.h"

#include "src/system/system.h"

namespace vell::files {
namespace {

using params::CalendarTime;
using params::Call;

Result<CalendarTime> time_of(Call& call, System& system, ItemTime which) {
    return system.properties().time(VELL_TRY(call.path(1)), which);
}

Result<void> set_time_stamp(Call& call, System& system,
                            std::optional<CalendarTime> NewTimes::*which) {
    const NativePath path = VELL_TRY(call.path(1));
    NewTimes times;
    times.*which = call.time_stamp(2);
    if (!(times.*which))
        return Failure{ErrorCode::BadParameter};
    VELL_TRY(system.properties().set_times(path, times));
    call.set_done();
    return {};
}

} // namespace

Result<void> get_date_created(Call& call, System& system) {
    call.set_date(VELL_TRY(time_of(call, system, ItemTime::Created)));
    return {};
}
Result<void> get_date_modified(Call& call, System& system) {
    call.set_date(VELL_TRY(time_of(call, system, ItemTime::Modified)));
    return {};
}
Result<void> get_date_accessed(Call& call, System& system) {
    call.set_date(VELL_TRY(time_of(call, system, ItemTime::Accessed)));
    return {};
}
Result<void> get_time_created(Call& call, System& system) {
    call.set_time(VELL_TRY(time_of(call, system, ItemTime::Created)));
    return {};
}
Result<void> get_time_modified(Call& call, System& system) {
    call.set_time(VELL_TRY(time_of(call, system, ItemTime::Modified)));
    return {};
}
Result<void> get_time_accessed(Call& call, System& system) {
    call.set_time(VELL_TRY(time_of(call, system, ItemTime::Accessed)));
    return {};
}
Result<void> get_time_stamp_created(Call& call, System& system) {
    call.set_time_stamp(VELL_TRY(time_of(call, system, ItemTime::Created)));
    return {};
}
Result<void> get_time_stamp_modified(Call& call, System& system) {
    call.set_time_stamp(VELL_TRY(time_of(call, system, ItemTime::Modified)));
    return {};
}
Result<void> get_time_stamp_accessed(Call& call, System& system) {
    call.set_time_stamp(VELL_TRY(time_of(call, system, ItemTime::Accessed)));
    return {};
}

Result<void> set_time_stamp_created(Call& call, System& system) {
    return set_time_stamp(call, system, &NewTimes::created);
}
Result<void> set_time_stamp_modified(Call& call, System& system) {
    return set_time_stamp(call, system, &NewTimes::modified);
}

} // namespace vell::files
