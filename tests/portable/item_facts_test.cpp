// What the system tells of items and of the user, as functions give it.
#include "src/files/contents/contents_dialog.h"
#include "src/files/information/code_signature.h"
#include "src/files/information/file_times.h"
#include "src/files/information/shell_information.h"
#include "tests/portable/answer_of.h"

#include <gtest/gtest.h>

namespace vell::files::item_facts_test {
namespace {

using params::CalendarTime;
using test::answer_of;
using test::FakeCall;

constexpr CalendarTime created{2020, 1, 2, 3, 4, 5};
constexpr CalendarTime accessed{2021, 2, 3, 4, 5, 6};
constexpr CalendarTime modified{2022, 3, 4, 5, 6, 7};

// One item, "item", and a user.
class OneItem : public test::FakeSystem {
  public:
    OneItem() {
        test::FakeItem& item = add(u"item");
        item.created = created;
        item.accessed = accessed;
        item.modified = modified;
    }

    std::u16string asked_type;
    CodeSignature signature;
    std::vector<std::u16string> languages;
    std::u16string selected;
    std::u16string title;

    Result<std::u16string> type_name(const std::u16string& path, std::uint32_t attributes,
                                     TypeBy by) override {
        EXPECT_EQ(attributes, bit(Attribute::Archive));
        asked_type = path;
        return std::u16string(by == TypeBy::Item ? u"by item" : u"by name");
    }
    Result<CodeSignature> code_signature(const NativePath&) override { return signature; }
    Result<std::vector<std::u16string>> preferred_languages() override { return languages; }
    Result<std::vector<std::u16string>> show(const FileDialog& dialog) override {
        title = dialog.title;
        if (selected.empty())
            return Failure{ErrorCode::Cancelled};
        return std::vector{selected};
    }
};

// Gives a time, and tells as which kind of value one is set.
class TimedCall : public FakeCall {
  public:
    using FakeCall::FakeCall;
    std::optional<CalendarTime> given;

    std::optional<CalendarTime> time_stamp(std::size_t) override { return given; }
    void set_date(const CalendarTime& date) override { set("date", date); }
    void set_time(const CalendarTime& time) override { set("time", time); }
    void set_time_stamp(const CalendarTime& stamp) override { set("timestamp", stamp); }

  private:
    void set(const std::string& kind, const CalendarTime& time) {
        set_literal(kind + ' ' + std::to_string(time.year));
    }
};

TEST(FileTimes, EachFunctionGivesItsPartOfItsTime) {
    const struct {
        params::Body body;
        const char* value; // with the year of the time
    } cases[] = {
        {get_date_created, "date 2020"},
        {get_date_accessed, "date 2021"},
        {get_date_modified, "date 2022"},
        {get_time_created, "time 2020"},
        {get_time_accessed, "time 2021"},
        {get_time_modified, "time 2022"},
        {get_time_stamp_created, "timestamp 2020"},
        {get_time_stamp_accessed, "timestamp 2021"},
        {get_time_stamp_modified, "timestamp 2022"},
    };
    OneItem item;
    for (const auto& [body, value] : cases) {
        TimedCall call({u"", u"item"});
        EXPECT_EQ(answer_of(call, body(call, item)), value);
        EXPECT_EQ(answer_of(body, item, {u"", u"none"}), "$$-43");
    }
}

TEST(FileTimes, OnlyTheOneThatIsNamedIsChanged) {
    OneItem item;
    const auto set = [&](params::Body body, std::u16string path,
                         const std::optional<CalendarTime>& time) {
        TimedCall call({u"", std::move(path), u"time"});
        call.given = time;
        return answer_of(call, body(call, item));
    };
    const auto years = [&] {
        const test::FakeItem& changed = *item.find(u"item");
        return std::vector{changed.created.year, changed.accessed.year, changed.modified.year};
    };
    EXPECT_EQ(set(set_time_stamp_created, u"item", test::noon), "0");
    EXPECT_EQ(years(), (std::vector{2024, 2021, 2022}));
    EXPECT_EQ(set(set_time_stamp_modified, u"item", created), "0");
    EXPECT_EQ(years(), (std::vector{2024, 2021, 2020}));
    EXPECT_EQ(set(set_time_stamp_modified, u"none", modified), "$$-43");
    EXPECT_EQ(set(set_time_stamp_modified, u"none", std::nullopt), "$$-50");
}

TEST(FileKind, IsAskedForByNameWhereTheShellTakesNoPath) {
    OneItem item;
    const std::u16string longest = u"C:\\" + std::u16string(252, u'n') + u".txt";
    const std::u16string ending = u"a." + std::u16string(300, u'e');
    for (const std::u16string& path :
         {std::u16string(u"C:\\a\\b.txt"), longest, longest + u"x", ending})
        item.add(path);
    EXPECT_EQ(answer_of(get_file_kind, item, {u"", u"C:/a/b.txt"}), "by item");
    EXPECT_EQ(item.asked_type, u"C:\\a\\b.txt");
    EXPECT_EQ(answer_of(get_file_kind, item, {u"", longest}), "by item");
    EXPECT_EQ(answer_of(get_file_kind, item, {u"", longest + u"x"}), "by name");
    EXPECT_EQ(item.asked_type, u"x.txtx");
    EXPECT_EQ(answer_of(get_file_kind, item, {u"", ending}), "by name");
    EXPECT_EQ(item.asked_type, u"x." + std::u16string(130, u'e'));
    EXPECT_EQ(answer_of(get_file_kind, item, {u"", u"none"}), "$$-43");
}

TEST(PreferredLanguages, AreListedOrTheFirstOfThemIs) {
    OneItem item;
    EXPECT_EQ(answer_of(get_preferred_languages, item, {u""}), "");
    item.languages = {u"en-GB", u"de"};
    EXPECT_EQ(answer_of(get_preferred_languages, item, {u""}), "en-GB\rde");
    EXPECT_EQ(answer_of(get_preferred_languages, item, {u"-GetFirstLanguage"}), "en-GB");
}

TEST(CodeSignature, IsToldInLinesAsFarAsItIsKnown) {
    OneItem item;
    const auto told = [&] {
        return answer_of(get_code_sign_info, item, {u"", u"item"});
    };
    item.signature = {.is_signed = false, .verdict = 0x800B0100};
    EXPECT_EQ(told(), "Signed: 0\rValid: 0");
    item.signature = {.is_signed = true, .verdict = 0x800B0109};
    EXPECT_EQ(told(), "Signed: 1\rValid: 0\rStatus: 0x800B0109");
    item.signature = {.is_signed = true,
                      .verdict = 0,
                      .certificate = Certificate{u"Signer", u"Issuer", created, std::nullopt}};
    EXPECT_EQ(told(), "Signed: 1\rValid: 1\rSigner: Signer\rIssuer: Issuer\r"
                      "ValidFrom: 2020-01-02T03:04:05Z\rValidTo: ");
}

TEST(ContentsDialog, GivesTheContentsOfWhatTheUserSelects) {
    OneItem item;
    item.add(u"C:\\a", "text");
    EXPECT_EQ(answer_of(contents_dialog, item, {u"", u"Which"}), "$$-128");
    EXPECT_EQ(item.title, u"Which");
    item.selected = u"C:\\a";
    EXPECT_EQ(answer_of(contents_dialog, item, {u""}), "text");
    EXPECT_EQ(item.title, u"Select a file.");
    item.selected = u"C:\\gone";
    EXPECT_EQ(answer_of(contents_dialog, item, {u""}), "$$-43");
}

} // namespace
} // namespace vell::files::item_facts_test
