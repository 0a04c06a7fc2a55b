// Dates and times of real files and folders, through the host.
#include "src/windows/storage/file_times.h"
#include "tests/windows/plugin_fixture.h"

#include <cwchar>

namespace vell::test {
namespace {

using params::CalendarTime;

FILETIME utc(const CalendarTime& time, WORD milliseconds = 0) {
    const auto word = [](std::int64_t value) {
        return static_cast<WORD>(value);
    };
    const SYSTEMTIME parts{word(time.year),   word(time.month), 0,
                           word(time.day),    word(time.hour),  word(time.minute),
                           word(time.second), milliseconds};
    FILETIME result{};
    EXPECT_TRUE(SystemTimeToFileTime(&parts, &result));
    return result;
}

// What Windows itself makes of it, in this computer's zone.
CalendarTime converted_by_windows(const FILETIME& time) {
    SYSTEMTIME parts;
    SYSTEMTIME local;
    EXPECT_TRUE(FileTimeToSystemTime(&time, &parts));
    EXPECT_TRUE(SystemTimeToTzSpecificLocalTime(nullptr, &parts, &local));
    return {local.wYear, local.wMonth, local.wDay, local.wHour, local.wMinute, local.wSecond};
}

Value stamp(const CalendarTime& time) {
    return Value(console::Timestamp{
        console::Decimal((params::day_number(time) - 1) * 86400 + params::seconds_of_day(time))});
}

class FileTimes : public PluginWithFolder {
  protected:
    // Of a file or a folder.
    static void set_times(const std::u16string& path, const FILETIME& accessed,
                          const FILETIME& modified) {
        const UniqueFile item(CreateFileW(as_wide(path), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ,
                                          nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS,
                                          nullptr));
        ASSERT_TRUE(item);
        ASSERT_TRUE(SetFileTime(item.get(), nullptr, &accessed, &modified));
    }

    static WIN32_FILE_ATTRIBUTE_DATA times_of(const std::u16string& path) {
        WIN32_FILE_ATTRIBUTE_DATA data{};
        EXPECT_TRUE(GetFileAttributesExW(as_wide(path), GetFileExInfoStandard, &data));
        return data;
    }

    std::u16string get(const char16_t* function, const std::u16string& path) {
        return call(function, {u"", path});
    }
};

TEST_F(FileTimes, AreGivenInLocalTimeOfTheirOwnSeason) {
    for (const std::u16string& item :
         {folder.file(L"dated \xD83D\xDE00.txt", "x"), folder.subfolder(L"dated")})
        for (const CalendarTime& moment :
             {CalendarTime{2024, 1, 15, 23, 30, 1}, CalendarTime{2024, 7, 15, 22, 30, 59}}) {
            CalendarTime later = moment;
            later.hour = 12;
            set_times(item, utc(later), utc(moment, 999));
            for (const auto& [function, expected] :
                 {std::pair(u"VlFile_GetTimestampModified", utc(moment)),
                  {u"VlFile_GetTimeStampLastAccessed", utc(later)},
                  {u"VlFile_GetTimestampCreated", times_of(item).ftCreationTime}})
                EXPECT_EQ(get(function, item), stamp(converted_by_windows(expected)).as_text());
        }
}

TEST_F(FileTimes, AreReadWhileSomebodyHasTheFileOpen) {
    const std::u16string file = folder.file(L"held.txt", "x");
    const UniqueFile held = open_file(file, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ);
    ASSERT_TRUE(held);
    EXPECT_FALSE(get(u"VlFile_GetDateModified", file).starts_with(u"$$"));
    EXPECT_EQ(get(u"VlFile_GetDateModified", path(L"none")), u"$$-43");
    EXPECT_EQ(get(u"VlFile_GetDateModified", path(L"none\\none")), u"$$-120");
}

TEST_F(FileTimes, SettingAndGettingAgreeInSummerAndWinter) {
    const std::u16string file = folder.file(L"set.txt", "x");
    ASSERT_TRUE(SetFileAttributesW(as_wide(file), FILE_ATTRIBUTE_READONLY)); // no hindrance
    for (const std::u16string& item : {file, folder.subfolder(L"set")})
        for (const CalendarTime& local :
             {CalendarTime{2024, 2, 29, 12, 34, 56}, CalendarTime{2024, 7, 31, 0, 0, 1},
              CalendarTime{1999, 12, 31, 23, 59, 59}}) {
            const FILETIME accessed = times_of(item).ftLastAccessTime;
            EXPECT_EQ(call(u"VlFile_SetTimestampModified", {u"", item, stamp(local)}), u"0");
            EXPECT_EQ(get(u"VlFile_GetTimestampModified", item), stamp(local).as_text());
            // Wine keeps no creation time; what it does keep must not change.
            EXPECT_EQ(
                call(u"VlFile_SetTimestampCreated", {u"", item, stamp({2020, 1, 2, 3, 4, 5})}),
                u"0");
            EXPECT_EQ(converted_by_windows(times_of(item).ftLastWriteTime), local);
            const FILETIME kept = times_of(item).ftLastAccessTime;
            EXPECT_EQ(CompareFileTime(&accessed, &kept), 0);
        }
    SetFileAttributesW(as_wide(file), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(FileTimes, TextsAreTakenADateMeansMidnightAndOthersAreRefused) {
    const std::u16string file = folder.file(L"set.txt", "x");
    const auto set = [&](const Value& time) {
        return call(u"VlFile_SetTimestampModified", {u"", file, time});
    };
    EXPECT_EQ(set(u"7/8/2022 13:14:15"), u"0");
    EXPECT_EQ(get(u"VlFile_GetTimestampModified", file), u"7/8/2022 1:14:15 PM");
    EXPECT_EQ(set(Value(console::Date{params::day_number({2023, 6, 7, 0, 0, 0})})), u"0");
    for (const Value& value :
         {Value(u""), Value(u"yesterday"), Value(u"13:14:15"), stamp({1, 1, 1, 0, 0, 0}),
          stamp({1600, 12, 31, 12, 0, 0}), Value(console::Decimal(-1))})
        EXPECT_EQ(set(value), u"$$-50");
    EXPECT_EQ(get(u"VlFile_GetTimeModified", file), u"0:00:00");
    EXPECT_EQ(get(u"VlFile_GetDateModified", file), u"6/7/2023");
    EXPECT_EQ(call(u"VlFile_SetTimestampCreated", {u"", path(L"none\\none"), u"6/7/2023"}),
              u"$$-120");
}

// Rules that changed over the years, in zones whose history is known.
TEST(TimeZones, TheRuleOfTheDateCounts) {
    const struct {
        const wchar_t* zone;
        CalendarTime utc;
        CalendarTime local;
    } cases[] = {
        {L"W. Europe Standard Time", {2024, 1, 15, 12, 0, 0}, {2024, 1, 15, 13, 0, 0}},
        {L"W. Europe Standard Time", {2024, 7, 15, 12, 0, 0}, {2024, 7, 15, 14, 0, 0}},
        {L"W. Europe Standard Time", {2024, 3, 31, 0, 59, 59}, {2024, 3, 31, 1, 59, 59}},
        {L"W. Europe Standard Time", {2024, 3, 31, 1, 0, 0}, {2024, 3, 31, 3, 0, 0}},
        {L"Eastern Standard Time", {2006, 3, 20, 12, 0, 0}, {2006, 3, 20, 7, 0, 0}},
        {L"Eastern Standard Time", {2008, 3, 20, 12, 0, 0}, {2008, 3, 20, 8, 0, 0}},
        {L"Eastern Standard Time", {2024, 1, 1, 2, 0, 0}, {2023, 12, 31, 21, 0, 0}},
        {L"Russian Standard Time", {2012, 1, 15, 12, 0, 0}, {2012, 1, 15, 16, 0, 0}},
        {L"Russian Standard Time", {2016, 7, 15, 12, 0, 0}, {2016, 7, 15, 15, 0, 0}},
    };
    for (const auto& c : cases) {
        DYNAMIC_TIME_ZONE_INFORMATION zone{};
        std::wcscpy(zone.TimeZoneKeyName, c.zone);
        const FILETIME time = utc(c.utc);
        const auto local = windows::local_time(time, &zone);
        ASSERT_TRUE(local);
        EXPECT_EQ(*local, c.local) << c.utc.year << '-' << c.utc.month << ' ' << local->hour;
        const auto back = windows::file_time(c.local, &zone);
        ASSERT_TRUE(back);
        EXPECT_EQ(CompareFileTime(&*back, &time), 0) << c.utc.year << '-' << c.utc.month;
    }
}

TEST(TimeZones, OnlyTimesOfTheCalendarAndOfFilesAreTaken) {
    DYNAMIC_TIME_ZONE_INFORMATION greenwich{};
    std::wcscpy(greenwich.TimeZoneKeyName, L"Greenwich Standard Time");
    const auto taken = [&](const CalendarTime& time) {
        const auto result = windows::file_time(time, &greenwich);
        return result ? 0 : number(result.error());
    };
    EXPECT_EQ(taken({1601, 1, 1, 0, 0, 1}), 0);
    EXPECT_EQ(taken({1601, 1, 1, 0, 0, 0}), -50); // would mean "no change"
    EXPECT_EQ(taken({30827, 12, 31, 23, 59, 59}), 0);
    for (const CalendarTime& time :
         {CalendarTime{1600, 12, 31, 23, 59, 59}, CalendarTime{0, 1, 1, 0, 0, 0},
          CalendarTime{-1, 1, 1, 0, 0, 0}, CalendarTime{30828, 1, 1, 0, 0, 0},
          CalendarTime{67137, 1, 1, 0, 0, 0}, CalendarTime{2023, 2, 29, 0, 0, 0},
          CalendarTime{2024, 13, 1, 0, 0, 0}, CalendarTime{2024, 1, 1, 24, 0, 0}})
        EXPECT_EQ(taken(time), -50) << time.year;
}

} // namespace
} // namespace vell::test
