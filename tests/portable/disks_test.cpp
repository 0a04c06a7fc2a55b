// Functions on disks and special folders that exist only here.
#include "src/files/disks/disk_names.h"
#include "src/files/disks/disks.h"
#include "src/files/paths/special_folders.h"
#include "tests/portable/answer_of.h"
#include "tests/portable/table_text.h"

#include <gtest/gtest.h>

#include <set>

namespace vell::files {
namespace {

struct FakeDisk {
    DiskType type = DiskType::Fixed;
    const char16_t* name = nullptr; // none: no medium
    const char16_t* share = u"";
};

// Notes what was done with the disks.
class FakeDisks : public test::FakeSystem {
  public:
    std::map<char16_t, FakeDisk> disks{
        {u'C', {DiskType::Fixed, u"Windows"}},
        {u'D', {DiskType::Fixed, u"Data"}},
        {u'E', {DiskType::Optical}},
        {u'F', {DiskType::Removable, u"STICK"}},
        {u'G', {DiskType::Removable, u"TWIN"}},
        {u'H', {DiskType::Removable, u"TWIN"}},
        {u'Y', {DiskType::Network, u"", u"\\\\server\\Sales"}},
    };
    std::set<char16_t> remembered; // letters of connections that are not there
    std::u16string done;
    ErrorCode failure = ErrorCode::Ok;

    std::uint32_t letters() override {
        std::uint32_t bits = 0;
        for (const auto& [letter, disk] : disks)
            bits |= 1u << (letter - u'A');
        return bits;
    }
    DiskType type_of(const std::u16string& root) override {
        const auto found = disks.find(root[0]);
        return found == disks.end() ? DiskType::None : found->second.type;
    }
    Result<VolumeInformation> information(const std::u16string& root) override {
        VolumeInformation information{u"", u"NTFS", 0x1A2B003C, true};
        if (root[1] == u':') {
            if (!disks.at(root[0]).name)
                return Failure{ErrorCode::VolumeOffline};
            information.name = disks.at(root[0]).name;
        }
        return information;
    }
    Result<DiskSpace> space(const std::u16string&) override {
        return DiskSpace{5'000'000'000'000, 4'999'999'999'999};
    }
    std::u16string share_of(char16_t letter) override { return disks.at(letter).share; }
    Result<void> connect(const ShareConnection& connection) override {
        if (!connection.drive.empty() && remembered.contains(connection.drive[0]))
            return Failure{ErrorCode::VolumeOnline};
        return note(u"connect " + connection.drive + u' ' + connection.share + u' ' +
                    connection.user + u' ' + connection.password +
                    (connection.is_kept ? u" kept" : u""));
    }
    Result<void> disconnect(const std::u16string& name, OpenFiles open_files) override {
        return note(u"disconnect " + name + forced(open_files));
    }
    Result<void> eject(char16_t letter, OpenFiles open_files) override {
        return note(u"eject " + std::u16string(1, letter) + forced(open_files));
    }

  private:
    static const char16_t* forced(OpenFiles open_files) {
        return open_files == OpenFiles::CutOff ? u" forced" : u"";
    }
    Result<void> note(std::u16string what) {
        if (failure != ErrorCode::Ok)
            return Failure{failure};
        done = std::move(what);
        return {};
    }
};

class Disks : public ::testing::Test {
  protected:
    // ";" for the ends of lines.
    std::string result(params::Body function, std::vector<std::u16string> parameters) {
        system.done.clear();
        std::string text = test::answer_of(function, system, std::move(parameters));
        std::ranges::replace(text, '\r', ';');
        return text;
    }
    std::string mounted(std::u16string switches, std::u16string server, std::u16string disk) {
        const std::string text =
            result(mount_disk, {std::move(switches), u"zone", std::move(server), std::move(disk)});
        return system.done.empty() ? text : text + " " + utf8_from_utf16(system.done);
    }

    FakeDisks system;
};

TEST_F(Disks, AreListedByType) {
    for (const auto& row : test::wide_table("disk_lists.txt", 2))
        EXPECT_EQ(result(list_disks, {row[0]}), utf8_from_utf16(row[1])) << utf8_from_utf16(row[0]);
}

TEST_F(Disks, TellOfThemselvesByAnyName) {
    for (const auto& row : test::wide_table("disk_information.txt", 3))
        EXPECT_EQ(result(disk_info, {row[0], row[1]}), utf8_from_utf16(row[2]))
            << utf8_from_utf16(row[1]);
    system.disks[u'Z'] = {DiskType::Fixed, u"Last"};
    EXPECT_EQ(result(disk_info, {u"-DiskPath", u"last"}), "Z:\\");
}

TEST_F(Disks, AreMountedOnFreeLetters) {
    for (const auto& row : test::wide_table("disk_mounts.txt", 4))
        EXPECT_EQ(mounted(row[0], row[1], row[2]), utf8_from_utf16(row[3]))
            << utf8_from_utf16(row[0] + u" | " + row[1] + u" | " + row[2]);
    system.remembered = {u'Z', u'X'};
    EXPECT_EQ(mounted(u"", u"srv", u"pub"), "0 connect W: \\\\srv\\pub  ");
    for (char16_t letter = u'D'; letter <= u'W'; ++letter)
        system.disks.try_emplace(letter);
    EXPECT_EQ(mounted(u"", u"srv", u"pub"), "$$1248");
}

TEST_F(Disks, ReuseALetterWhenTheStepSaysSo) {
    test::FakeCall step({u"", u"", u"server", u"sales", u"me", u"secret", u"1"});
    step.set_step_option(6, 1);
    EXPECT_TRUE(mount_disk(step, system));
    step.set_step_option(6, 0);
    EXPECT_EQ(number(mount_disk(step, system).error()), -55);
    system.disks.erase(u'Y');
    EXPECT_TRUE(mount_disk(step, system));
    EXPECT_EQ(system.done, u"connect Z: \\\\server\\sales me secret");
    system.failure = static_cast<ErrorCode>(1326);
    EXPECT_EQ(number(mount_disk(step, system).error()), 1326);
}

TEST_F(Disks, AreUnmountedByTheirKind) {
    for (const auto& row : test::wide_table("disk_unmounts.txt", 3)) {
        EXPECT_EQ(result(unmount_disk, {u"", row[0]}), utf8_from_utf16(row[1]))
            << utf8_from_utf16(row[0]);
        EXPECT_EQ(system.done, row[2]) << utf8_from_utf16(row[0]);
    }
    EXPECT_EQ(result(unmount_disk, {u"-Force", u"F"}), "0");
    EXPECT_EQ(system.done, u"eject F forced");
    system.failure = ErrorCode::Busy;
    EXPECT_EQ(result(unmount_disk, {u"", u"Y"}), "$$-47");
}

class NotedPlaces : public test::FakeSystem {
  public:
    SpecialFolder asked{};
    MakeFolder made{};
    Result<std::u16string> special_folder(SpecialFolder folder, MakeFolder make) override {
        asked = folder;
        made = make;
        return std::u16string(u"C:\\x");
    }
};

TEST(FindFolder, TakesTheLongestWord) {
    NotedPlaces system;
    const auto found = [&](std::u16string switches) {
        return test::answer_of(find_folder, system, {std::move(switches)});
    };
    for (const auto& [word, folder] : special_folder_words()) {
        EXPECT_EQ(found(u"-" + utf16_from_utf8(word) + u"Folder -CreateFolder"), "C:\\x\\");
        EXPECT_EQ(system.asked, folder) << word;
        EXPECT_EQ(system.made, MakeFolder::Yes);
    }
    EXPECT_EQ(found(u"-FileMakerPathFormat desktop"), "filewin:/C:/x/");
    EXPECT_EQ(system.made, MakeFolder::No);
    EXPECT_EQ(found(u"-Desktop,-PublicDesktopFolder"), "C:\\x\\");
    EXPECT_EQ(system.asked, SpecialFolder::PublicDesktop);
    for (const char16_t* switches :
         {u"", u"-CreateFolder -FileMakerPathFormat", u"-DesktopX", u"-Documentation",
          u"-SystemFontsFolder", u"-DesktopFolders", u"-XDesktop", u"-Desktop2", u"Musicl\u00E4"})
        EXPECT_EQ(found(switches), "$$-50");
}

} // namespace
} // namespace vell::files
