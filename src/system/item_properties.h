// What the system keeps about a file or folder beside its contents.
#pragma once

#include "src/params/calendar_time.h"
#include "src/system/file_access.h"
#include "src/system/folder_reader.h"

#include <cstdint>
#include <optional>
#include <string>

namespace vell::files {

// Bits of a file's attributes, by the names and values of Windows.
enum class Attribute : std::uint32_t {
    ReadOnly = 0x1,
    Hidden = 0x2,
    Folder = 0x10,
    Archive = 0x20,
    Device = 0x40,
    Compressed = 0x800, // of a folder: what is made in it is
};

constexpr std::uint32_t bit(Attribute attribute) {
    return static_cast<std::uint32_t>(attribute);
}

enum class ItemTime : std::uint8_t { Created, Accessed, Modified };

struct NewTimes {
    std::optional<params::CalendarTime> created = {};
    std::optional<params::CalendarTime> accessed = {};
    std::optional<params::CalendarTime> modified = {};
};

enum class TypeBy : std::uint8_t { Item, Name };

struct Certificate {
    std::u16string signer;
    std::u16string issuer;
    std::optional<params::CalendarTime> valid_from; // UTC; none for what is no date
    std::optional<params::CalendarTime> valid_to;
};

struct CodeSignature {
    bool is_signed = false;
    std::uint32_t verdict = 0; // the system's number for why it does not trust the file; 0: it does
    std::optional<Certificate> certificate = {};
};

class ItemProperties {
  public:
    virtual ~ItemProperties() = default;

    // A set of bits; others than those above may be in it.
    virtual Result<std::uint32_t> attributes(const NativePath& path) = 0;
    virtual Result<void> set_attributes(const NativePath& path, std::uint32_t attributes) = 0;
    // Length of a file in bytes, whoever has it open. Busy for a folder.
    virtual Result<std::uint64_t> size(const NativePath& path) = 0;
    // Whether nobody else has the file or folder open, however shared: opens it for a moment. Busy
    // when it may not be opened so, whoever else has it open.
    virtual Result<bool> is_unused(const NativePath& path, Permission permission) = 0;

    // Times are local ones, by the rule in force on their date; fractions of a second are cut off.
    // Of a file whoever has it open.
    virtual Result<params::CalendarTime> time(const NativePath& path, ItemTime which) = 0;
    virtual Result<params::CalendarTime> local_time_of(FileTime time) = 0;
    // Changes those that are given. BadParameter for a time that does not exist in the calendar or
    // that no file can have.
    virtual Result<void> set_times(const NativePath& path, const NewTimes& times) = 0;

    // The description of a file's type as the shell shows it: of what is at the path, or by the
    // name alone. NotAvailable when the shell has none.
    virtual Result<std::u16string> type_name(const std::u16string& path, std::uint32_t attributes,
                                             TypeBy by) = 0;
    // What is known of the signature in a program file.
    virtual Result<CodeSignature> code_signature(const NativePath& path) = 0;
};

} // namespace vell::files
