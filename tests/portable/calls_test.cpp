// Calls of functions in the tables `calls_*.txt`: what is there before, the call, its result, and
// what is different afterwards.
//
// Items have ";" between them, and a file's bytes stand behind "=". Behind the name of an item may
// stand "{r}" for a read-only, "{h}" for a hidden one and "{l}" for a link. "[3=1]" in a call is an
// option of a step. What is gone afterwards has a "-" before its path.
#include "src/archive/zip_functions.h"
#include "src/files/contents/contents.h"
#include "src/files/contents/edit_contents.h"
#include "src/files/contents/export_to_file.h"
#include "src/files/contents/write_contents.h"
#include "src/files/information/attributes.h"
#include "src/files/information/information.h"
#include "src/files/information/mac_properties.h"
#include "src/files/listing/listing.h"
#include "src/files/tree/folder_operations.h"
#include "src/files/tree/tree.h"
#include "tests/portable/answer_of.h"
#include "tests/portable/table_text.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace vell::files {
namespace {

using test::cell_text;
using test::FakeItem;

const std::map<std::string, params::Body> functions{
    {"AppendToFile", append_to_file},
    {"CopyFile", copy_file},
    {"CopyFolder", copy_folder},
    {"CreateFile", create_file},
    {"CreateFolder", create_folder},
    {"CreateZip", archive::create_zip},
    {"DeleteFile", delete_file},
    {"DeleteFolder", delete_folder},
    {"ExchangeFiles", exchange_files},
    {"ExportToFile", export_to_file},
    {"GetContents", get_contents},
    {"GetFileAttribute", get_file_attribute},
    {"GetFileType", get_file_type},
    {"GetFolderSize", get_folder_size},
    {"GetTypeOfItem", get_type_of_item},
    {"GetZipInfo", archive::get_zip_info},
    {"InsertContents", insert_contents},
    {"ListFolder", list_folder},
    {"MoveFile", move_file},
    {"MoveFolder", move_folder},
    {"SetContentsOfFile", set_contents_of_file},
    {"SetFileAttribute", set_file_attribute},
    {"Substitute", substitute},
    {"UnZip", archive::unzip},
};

class SystemWithShell : public test::FakeSystem {
  public:
    bool has_shell_operations() override { return true; }
};

std::vector<std::string> parts_of(std::string_view text) {
    std::vector<std::string> parts;
    for (std::size_t at = 0, end = 0; end != text.npos && !text.empty(); at = end + 1) {
        end = text.find(';', at);
        parts.push_back(cell_text(text.substr(at, end - at)));
    }
    return parts;
}

// Bytes that are no UTF-8 as "\xE9".
std::string shown_bytes(const std::string& bytes) {
    std::string shown;
    for (const char byte : bytes) {
        char escape[5];
        std::snprintf(escape, sizeof escape, "\\x%02X", static_cast<unsigned char>(byte));
        shown += (byte & 0x80) != 0 && !is_valid_utf8(bytes) ? escape : std::string(1, byte);
    }
    return shown;
}
void add_item(test::FakeSystem& system, std::string text) {
    const std::size_t end = std::min(text.find('='), text.size());
    std::string path = text.substr(0, end);
    std::string marks;
    for (std::size_t at; (at = path.find('{')) != path.npos; path.erase(at, 3))
        marks += path[at + 1];
    FakeItem& item = path.ends_with('\\') ? system.add_folder(utf16_from_utf8(path))
                                          : system.add(utf16_from_utf8(path));
    if (end < text.size())
        item.bytes = test::bytes_of_text(text.substr(end + 1));
    if (marks.find('r') != marks.npos)
        item.attributes |= bit(Attribute::ReadOnly);
    if (marks.find('h') != marks.npos)
        item.attributes |= bit(Attribute::Hidden);
    if (marks.find('l') != marks.npos)
        item.link = u"elsewhere";
}

// "Name( first ; second [option=value] )"
std::string answer(test::FakeSystem& system, std::string text) {
    std::map<std::size_t, std::int32_t> options;
    for (std::size_t at; (at = text.find('[')) != text.npos;
         text.erase(at, text.find(']') + 1 - at))
        options[std::stoul(text.substr(at + 1))] = std::stoi(text.substr(text.find('=', at) + 1));
    const std::size_t open = text.find('(');
    std::vector<std::u16string> parameters;
    for (const std::string& part :
         parts_of(std::string_view(text).substr(open + 1, text.rfind(')') - open - 1)))
        parameters.push_back(utf16_from_utf8(part));
    test::FakeCall call(std::move(parameters));
    for (const auto& [option, value] : options)
        call.set_step_option(option, value);
    const std::string result = answer_of(call, functions.at(text.substr(0, open))(call, system));
    EXPECT_EQ(system.open_files() + system.open_folders(), 0);
    return result;
}

std::string changes(const test::FakeItems::Contents& before,
                    const test::FakeItems::Contents& after) {
    std::string text;
    for (const auto& [path, bytes] : before)
        if (!after.contains(path))
            text += " ; -" + utf8_from_utf16(path);
    for (const auto& [path, bytes] : after)
        if (const auto old = before.find(path); old == before.end() || old->second != bytes)
            text += " ; " + utf8_from_utf16(path) +
                    (path.ends_with(u'\\') ? "" : "=" + shown_bytes(bytes));
    return text.empty() ? text : text.substr(3);
}

TEST(Calls, DoWhatTheTablesSay) {
    for (const char* table : {"calls_tree.txt", "calls_contents.txt", "calls_archive.txt",
                              "calls_listing.txt", "calls_information.txt"})
        for (const auto& row : test::table(table, 4)) {
            SCOPED_TRACE(std::string(table) + ": " + row[0] + " | " + row[1]);
            SystemWithShell system;
            for (const std::string& item : parts_of(row[0]))
                add_item(system, item);
            const auto before = system.all();
            EXPECT_EQ(answer(system, row[1]), row[2]);
            EXPECT_EQ(changes(before, system.all()), row[3]);
        }
}

} // namespace
} // namespace vell::files
