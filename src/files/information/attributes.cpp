#include "src/files/information/attributes.h"

#include "src/system/system.h"

#include <array>
#include <optional>

namespace vell::files {
namespace {

using params::Call;
using params::SwitchSet;

enum class Question : std::uint8_t { Bit, Zero, EmptyText, IsFree, NotAvailable };

struct QuestionSwitch {
    std::string_view name;
    Question question;
    Attribute attribute = Attribute::ReadOnly; // of a Bit
};

// No name is part of another.
constexpr QuestionSwitch question_switches[] = {
    {"-lockAttr", Question::Bit, Attribute::ReadOnly},
    {"-archiveAttr", Question::Bit, Attribute::Archive},
    {"-hiddenAttr", Question::Bit, Attribute::Hidden},
    {"-labelNumAttr", Question::Zero},
    {"-findercommentAttr", Question::EmptyText},
    {"-PackageFolderAttr", Question::Zero},
    {"-IsFree", Question::IsFree},
    {"-iCloudStatus", Question::NotAvailable},
};

Result<QuestionSwitch> question_of(const SwitchSet& switches) {
    std::optional<QuestionSwitch> found;
    for (const QuestionSwitch& candidate : question_switches) {
        if (!switches.has(candidate.name))
            continue;
        if (found)
            return Failure{ErrorCode::BadParameter};
        found = candidate;
    }
    if (!found)
        return Failure{ErrorCode::BadParameter};
    return *found;
}

// What is missing is so whether or not there is the folder that would hold it.
Result<bool> about_an_item(Result<bool> answer) {
    if (!answer && answer.error() == ErrorCode::FolderNotFound)
        return Failure{ErrorCode::NotFound};
    return answer;
}

Result<bool> can_be_changed(ItemProperties& properties, const NativePath& path) {
    if (VELL_TRY(properties.attributes(path)) & bit(Attribute::ReadOnly))
        return false;
    return properties.is_unused(path, Permission::Write);
}

// A bit that switches or a step's list turn on or off.
struct Setting {
    Attribute attribute;
    std::string_view on;
    std::string_view off;
    std::size_t step_index;
};

// The names hold their "-": the ones that turn off contain the others without it.
constexpr Setting settings[] = {
    {Attribute::ReadOnly, "-lock", "-unlock", 2},
    {Attribute::Hidden, "-hide", "-unhide", 3},
    {Attribute::Archive, "-SetArchive", "-ResetArchive", 4},
};

struct AttributeChange {
    std::uint32_t on = 0;
    std::uint32_t off = 0;

    std::uint32_t applied_to(std::uint32_t attributes) const { return (attributes | on) & ~off; }
};

Result<AttributeChange> change_of_switches(const SwitchSet& switches) {
    AttributeChange change;
    for (const Setting& setting : settings) {
        if (switches.has(setting.on))
            change.on |= bit(setting.attribute);
        if (switches.has(setting.off))
            change.off |= bit(setting.attribute);
    }
    if (change.on & change.off)
        return Failure{ErrorCode::BadParameter};
    return change;
}

Result<AttributeChange> change_of_step(Call& call) {
    enum : std::int32_t { Unchanged = 0, Off = 1, On = 2 }; // values of the three lists
    AttributeChange change;
    for (const Setting& setting : settings) {
        switch (call.step_option(setting.step_index)) {
        case Call::not_given:
        case Unchanged:
            break;
        case Off:
            change.off |= bit(setting.attribute);
            break;
        case On:
            change.on |= bit(setting.attribute);
            break;
        default:
            return Failure{ErrorCode::BadParameter};
        }
    }
    return change;
}

} // namespace

Result<void> get_file_attribute(Call& call, System& system) {
    const QuestionSwitch asked = VELL_TRY(question_of(call.switches()));
    const NativePath path = VELL_TRY(call.path(1));
    switch (asked.question) {
    case Question::Bit: {
        const std::uint32_t attributes = VELL_TRY(system.properties().attributes(path));
        call.set_number((attributes & bit(asked.attribute)) != 0);
        return {};
    }
    case Question::IsFree:
        call.set_number(
            VELL_TRY(about_an_item(system.properties().is_unused(path, Permission::Read))));
        return {};
    case Question::Zero:
        call.set_number(0);
        return {};
    case Question::EmptyText:
        call.set_text(u"");
        return {};
    default:
        return Failure{ErrorCode::NotAvailable};
    }
}

Result<void> set_file_attribute(Call& call, System& system) {
    const AttributeChange change =
        VELL_TRY(call.is_step() ? change_of_step(call) : change_of_switches(call.switches()));
    const NativePath path = VELL_TRY(call.path(1));
    const std::uint32_t before = VELL_TRY(system.properties().attributes(path));
    const std::uint32_t after = change.applied_to(before);
    if (after != before)
        VELL_TRY(system.properties().set_attributes(path, after));
    call.set_done();
    return {};
}

Result<void> is_free(Call& call, System& system) {
    const NativePath path = VELL_TRY(call.path(1));
    Result<bool> free = can_be_changed(system.properties(), path);
    if (!free && free.error() == ErrorCode::Busy)
        free = false;
    call.set_number(VELL_TRY(about_an_item(free)));
    return {};
}

} // namespace vell::files
