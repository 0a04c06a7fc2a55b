#include "src/archive/dos_time.h"

#include <chrono>

namespace vell::archive {
namespace {

constexpr std::int32_t first_year = 1980;
constexpr std::int32_t last_year = first_year + 127;

} // namespace

DosTime dos_time(const params::CalendarTime& local) {
    if (local.year < first_year || local.year > last_year)
        return {};
    const std::int32_t date = (local.year - first_year) * 512 + local.month * 32 + local.day;
    const std::int32_t time = local.hour * 2048 + local.minute * 32 + local.second / 2;
    return {static_cast<std::uint16_t>(date), static_cast<std::uint16_t>(time)};
}

params::CalendarTime calendar_time(DosTime dos) {
    using namespace std::chrono;
    const int month_index = (dos.date >> 5 & 0xF) - 1; // -1 to 14
    const sys_days first_of_month =
        year_month(year(first_year + (dos.date >> 9)), January) / 1 + months(month_index);
    const sys_seconds moment = first_of_month + days((dos.date & 0x1F) - 1) +
                               hours(dos.time >> 11) + minutes(dos.time >> 5 & 0x3F) +
                               seconds((dos.time & 0x1F) * 2);
    const sys_days day = floor<days>(moment);
    const year_month_day date(day);
    const hh_mm_ss time(moment - day);
    return {static_cast<int>(date.year()),
            static_cast<std::int32_t>(static_cast<unsigned>(date.month())),
            static_cast<std::int32_t>(static_cast<unsigned>(date.day())),
            static_cast<std::int32_t>(time.hours().count()),
            static_cast<std::int32_t>(time.minutes().count()),
            static_cast<std::int32_t>(time.seconds().count())};
}

} // namespace vell::archive
