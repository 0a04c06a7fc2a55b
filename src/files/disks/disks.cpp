#include "src/files/disks/disks.h"

#include "src/base/json_writer.h"
#include "src/base/utf8.h"
#include "src/files/disks/disk_names.h"
#include "src/params/path_form.h"
#include "src/system/system.h"

#include <algorithm>
#include <string>
#include <variant>
#include <vector>

namespace vell::files {
namespace {

using params::Call;
using params::SwitchSet;

constexpr char16_t line_end = 13;

// The word for a type, which is the switch for it as well.
struct TypeRow {
    DiskType type;
    std::string_view word;
};
constexpr TypeRow types[] = {
    {DiskType::Fixed, "Fixed"},     {DiskType::Removable, "Removable"},
    {DiskType::Optical, "Optical"}, {DiskType::Network, "Network"},
    {DiskType::Ram, "Ram"},         {DiskType::Unknown, "Unknown"},
};

std::string_view word_of(DiskType type) {
    const auto row = std::ranges::find(types, type, &TypeRow::type);
    return row == std::end(types) ? "Unknown" : row->word;
}

bool has_switch(const SwitchSet& switches, std::string_view name) {
    return switches.has("-" + std::string(name));
}

// Whether a disk of this type is wanted; every one without a switch for types.
class WantedTypes {
  public:
    explicit WantedTypes(const SwitchSet& switches) {
        const bool local = switches.has("-Local");
        for (const TypeRow& row : types)
            if (has_switch(switches, row.word) || (local && row.type != DiskType::Network))
                wanted_.push_back(row.type);
    }
    bool includes(DiskType type) const {
        return wanted_.empty() || std::ranges::find(wanted_, type) != wanted_.end();
    }

  private:
    std::vector<DiskType> wanted_;
};

void append_line(std::u16string& text, std::u16string_view line) {
    if (!text.empty())
        text += line_end;
    text += line;
}

std::u16string wide(std::string_view ascii) {
    return {ascii.begin(), ascii.end()};
}

using Value = std::variant<std::u16string, std::uint64_t, bool>;

std::uint64_t as_number(const Value& value) {
    const auto* number = std::get_if<std::uint64_t>(&value);
    return number ? *number : std::uint64_t{std::get<bool>(value)};
}

std::u16string as_text(const Value& value) {
    if (const auto* text = std::get_if<std::u16string>(&value))
        return *text;
    return wide(std::to_string(as_number(value)));
}

struct Facts {
    std::u16string path;
    std::u16string share;
    DiskType type = DiskType::Unknown;
    VolumeInformation volume;
    DiskSpace space;
};

enum class Source : std::uint8_t { Known, Volume, Space };

struct InfoRow {
    std::string_view name;
    Source source;
    Value (*value)(const Facts&);
};

// As the system's own tools show it.
std::u16string serial_text(std::uint32_t serial) {
    constexpr std::u16string_view digits = u"0123456789ABCDEF";
    std::u16string text;
    for (int shift = 28; shift >= 0; shift -= 4) {
        if (shift == 12)
            text += u'-';
        text += digits[serial >> shift & 0xF];
    }
    return text;
}

constexpr InfoRow info_rows[] = {
    {"DiskPath", Source::Known,
     [](const Facts& facts) {
         return Value(facts.path);
     }},
    {"Type", Source::Known,
     [](const Facts& facts) {
         return Value(wide(word_of(facts.type)));
     }},
    {"ShareName", Source::Known,
     [](const Facts& facts) {
         return Value(facts.share);
     }},
    {"VolumeName", Source::Volume,
     [](const Facts& facts) {
         return Value(facts.volume.name);
     }},
    {"FileSystem", Source::Volume,
     [](const Facts& facts) {
         return Value(facts.volume.file_system);
     }},
    {"SerialNumber", Source::Volume,
     [](const Facts& facts) {
         return Value(serial_text(facts.volume.serial_number));
     }},
    {"ReadOnly", Source::Volume,
     [](const Facts& facts) {
         return Value(facts.volume.is_read_only);
     }},
    {"TotalSpace", Source::Space,
     [](const Facts& facts) {
         return Value(facts.space.total);
     }},
    {"FreeSpace", Source::Space,
     [](const Facts& facts) {
         return Value(facts.space.free);
     }},
    {"UsedSpace", Source::Space,
     [](const Facts& facts) {
         return Value(facts.space.total - std::min(facts.space.free, facts.space.total));
     }},
};

Result<Facts> collect(System& system, const Disk& disk, const SwitchSet& switches,
                      const std::vector<const InfoRow*>& rows) {
    const auto needs = [&](Source source) {
        return std::ranges::any_of(rows, [&](const InfoRow* row) { return row->source == source; });
    };
    const std::u16string root = disk.root();
    Facts facts;
    facts.path = params::path_result(switches, root);
    facts.share = disk.share;
    facts.type = disk.letter ? system.disks().type_of(root) : DiskType::Network;
    if (needs(Source::Volume))
        facts.volume = VELL_TRY(system.disks().information(root));
    if (needs(Source::Space))
        facts.space = VELL_TRY(system.disks().space(root));
    return facts;
}

std::u16string as_json(const Facts& facts, const std::vector<const InfoRow*>& rows) {
    JsonWriter json;
    json.begin_object();
    for (const InfoRow* row : rows) {
        const Value value = row->value(facts);
        if (const auto* text = std::get_if<std::u16string>(&value))
            json.member(row->name, *text);
        else if (const auto* is_true = std::get_if<bool>(&value))
            json.member_boolean(row->name, *is_true);
        else
            json.member_number(row->name, as_number(value));
    }
    json.end_object();
    return utf16_from_utf8(json.take());
}

} // namespace

Result<void> list_disks(Call& call, System& system) {
    const SwitchSet switches = call.switches();
    const WantedTypes wanted(switches);
    const bool ready_only = switches.has("-ReadyOnly");
    const bool names = switches.has("-VolumeNames");
    const bool shares = switches.has("-ShareNames");
    const std::uint32_t letters = system.disks().letters();
    std::u16string text;
    for (char16_t letter = u'A'; letter <= u'Z'; ++letter) {
        const std::u16string root = drive_root(letter);
        if (!is_used(letters, letter) || !wanted.includes(system.disks().type_of(root)))
            continue;
        std::u16string shown = params::path_result(switches, root);
        if (ready_only || names) {
            const auto information = system.disks().information(root);
            if (ready_only && !information)
                continue;
            if (names && information && !information.value().name.empty())
                shown = information.value().name;
        }
        if (shares)
            if (const std::u16string share = system.disks().share_of(letter); !share.empty())
                shown = params::path_result(switches, share);
        append_line(text, shown);
    }
    call.set_text(text);
    return {};
}

Result<void> disk_info(Call& call, System& system) {
    const SwitchSet switches = call.switches();
    const Disk disk = VELL_TRY(find_disk(system, call.text(1), Below::Accepted));
    if (switches.has("-NumberOfFiles"))
        return Failure{ErrorCode::NotSupported};
    std::vector<const InfoRow*> rows;
    for (const InfoRow& row : info_rows)
        if (has_switch(switches, row.name))
            rows.push_back(&row);
    const bool alone = rows.size() == 1;
    if (rows.empty())
        for (const InfoRow& row : info_rows)
            rows.push_back(&row);
    const Facts facts = VELL_TRY(collect(system, disk, switches, rows));
    if (switches.has("-Format=JSON")) {
        call.set_text(as_json(facts, rows));
        return {};
    }
    if (alone) {
        const Value value = rows.front()->value(facts);
        if (const auto* text = std::get_if<std::u16string>(&value))
            call.set_text(*text);
        else
            call.set_number(static_cast<std::int64_t>(as_number(value)));
        return {};
    }
    std::u16string text;
    for (const InfoRow* row : rows)
        append_line(text, wide(row->name) + u": " + as_text(row->value(facts)));
    call.set_text(text);
    return {};
}

} // namespace vell::files
