// Dates and times of real files and folders, through the host.
#include "src/windows/storage/file_times.h"
#include "tests/windows/plugin_fixture.h"

#include <array>
#include <cwchar>

namespace vell::test {
namespace {

using params::CalendarTime;

FILETIME utc(const CalendarTime& time, WORD milliseconds = 0) {
    const SYSTEMTIME parts{static_cast<WORD>(time.year),
                           static_cast<WORD>(time.month),
                           0,
                           static_cast<WORD>(time.day),
                           static_cast<WORD>(time.hour),
                           static_cast<WORD>(time.minute),
                           static_cast<WORD>(time.second),
                           milliseconds};
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

std::u16string date_text(const CalendarTime& time) {
    return Value(console::Date{params::day_number(time)}).as_text();
}
std::u16string time_text(const CalendarTime& time) {
    return Value(console::Time{console::Decimal(params::seconds_of_day(time))}).as_text();
}

class FileTimes : public PluginWithFolder {
  protected:
    // Of a file or a folder; null leaves a time as it is.
    static void set_times(const std::u16string& path, const FILETIME* accessed,
                          const FILETIME* modified) {
        const UniqueFile item(CreateFileW(as_wide(path), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ,
                                          nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS,
                                          nullptr));
        ASSERT_TRUE(item);
        ASSERT_TRUE(SetFileTime(item.get(), nullptr, accessed, modified));
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
            const FILETIME modified = utc(moment, 999);
            const FILETIME accessed = utc(later);
            set_times(item, &accessed, &modified);
            const struct {
                const char16_t* date;
                const char16_t* time;
                const char16_t* stamp;
                FILETIME expected;
            } functions[] = {
                {u"VlFile_GetDateModified", u"VlFile_GetTimeModified",
                 u"VlFile_GetTimestampModified", modified},
                {u"VlFile_GetDateLastAccessed", u"VlFile_GetTimeLastAccessed",
                 u"VlFile_GetTimeStampLastAccessed", accessed},
                {u"VlFile_GetDateCreated", u"VlFile_GetTimeCreated", u"VlFile_GetTimestampCreated",
                 times_of(item).ftCreationTime},
            };
            for (const auto& of : functions) {
                const CalendarTime local = converted_by_windows(of.expected);
                EXPECT_EQ(get(of.date, item), date_text(local));
                EXPECT_EQ(get(of.time, item), time_text(local));
                EXPECT_EQ(get(of.stamp, item), stamp(local).as_text());
            }
        }
}

TEST_F(FileTimes, AreDatesTimesAndTimestampsToTheHost) {
    const std::vector<Value> arguments{u"", folder.file(L"typed.txt", "x")};
    using enum console::ValueType;
    for (const auto& [ids, type] : {std::pair(std::array{4230, 4231, 4291}, Date),
                                    {{4250, 4251, 4292}, Time},
                                    {{4232, 4233, 4293}, Timestamp}})
        for (const int id : ids) {
            const auto* function = host().find_function(static_cast<std::int16_t>(id));
            EXPECT_EQ(host().call(*function, arguments)->type(), type) << id;
        }
}

TEST_F(FileTimes, ReportWhatKeepsThemFromBeingRead) {
    for (const char16_t* function : {u"VlFile_GetDateCreated", u"VlFile_GetTimeModified",
                                     u"VlFile_GetTimeStampLastAccessed"}) {
        EXPECT_EQ(get(function, path(L"none")), u"$$-43");
        EXPECT_EQ(get(function, path(L"none\\none")), u"$$-120");
    }
    EXPECT_EQ(call_id(4230, {u""}), u"$$-50");
    // A file that somebody has open is dated all the same.
    const std::u16string file = folder.file(L"held.txt", "x");
    const UniqueFile held = open_file(file, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ);
    ASSERT_TRUE(held);
    EXPECT_FALSE(get(u"VlFile_GetDateModified", file).starts_with(u"$$"));
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
            EXPECT_EQ(converted_by_windows(times_of(item).ftLastWriteTime), local);
            const FILETIME kept = times_of(item).ftLastAccessTime;
            EXPECT_EQ(CompareFileTime(&accessed, &kept), 0);
        }
    SetFileAttributesW(as_wide(file), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(FileTimes, TheStepsAndTextsWorkAndADateMeansMidnight) {
    const std::u16string file = folder.file(L"step.txt", "x");
    EXPECT_EQ(call_id(7286, {u"", file, stamp({2021, 3, 4, 5, 6, 7})}), u"0");
    EXPECT_EQ(get(u"VlFile_GetTimestampModified", file), u"3/4/2021 5:06:07 AM");
    EXPECT_EQ(call(u"VlFile_SetTimestampModified", {u"", file, u"7/8/2022 13:14:15"}), u"0");
    EXPECT_EQ(get(u"VlFile_GetTimestampModified", file), u"7/8/2022 1:14:15 PM");
    EXPECT_EQ(call(u"VlFile_SetTimestampModified",
                   {u"", file, Value(console::Date{params::day_number({2023, 6, 7, 0, 0, 0})})}),
              u"0");
    EXPECT_EQ(get(u"VlFile_GetTimeModified", file), u"0:00:00");
    EXPECT_EQ(get(u"VlFile_GetDateModified", file), u"6/7/2023");

    // Wine keeps no creation time; what it does keep must not change.
    const FILETIME modified = times_of(file).ftLastWriteTime;
    EXPECT_EQ(call(u"VlFile_SetTimestampCreated", {u"", file, stamp({2020, 1, 2, 3, 4, 5})}), u"0");
    EXPECT_EQ(call_id(7285, {u"", file, stamp({2020, 1, 2, 3, 4, 5})}), u"0");
    EXPECT_EQ(call(u"VlFile_SetTimestampCreated", {u"", path(), stamp({2020, 1, 2, 3, 4, 5})}),
              u"0");
    const FILETIME kept = times_of(file).ftLastWriteTime;
    EXPECT_EQ(CompareFileTime(&modified, &kept), 0);
}

TEST_F(FileTimes, WhatNoFileCanHaveIsRefusedAndChangesNothing) {
    const std::u16string file = folder.file(L"kept.txt", "x");
    const FILETIME before = times_of(file).ftLastWriteTime;
    for (const char16_t* function :
         {u"VlFile_SetTimestampModified", u"VlFile_SetTimestampCreated"}) {
        for (const Value& value :
             {Value(u""), Value(u"yesterday"), Value(u"13:14:15"), stamp({1, 1, 1, 0, 0, 0}),
              stamp({1600, 12, 31, 12, 0, 0}), Value(console::Decimal(-1))})
            EXPECT_EQ(call(function, {u"", file, value}), u"$$-50");
        const Value good = stamp({2020, 1, 2, 3, 4, 5});
        EXPECT_EQ(call(function, {u"", path(L"none"), good}), u"$$-43");
        EXPECT_EQ(call(function, {u"", path(L"none\\none"), good}), u"$$-120");
    }
    EXPECT_EQ(call_id(4286, {u"", file}), u"$$-50");
    const FILETIME after = times_of(file).ftLastWriteTime;
    EXPECT_EQ(CompareFileTime(&before, &after), 0);
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
