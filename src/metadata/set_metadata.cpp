#include "src/metadata/set_metadata.h"

#include "src/base/utf8.h"
#include "src/files/contents/rewriting.h"
#include "src/formats/xmp.h"
#include "src/metadata/writing/exif_writer.h"
#include "src/metadata/writing/iptc_writer.h"
#include "src/metadata/writing/jpeg_rewriter.h"
#include "src/metadata/writing/photoshop_block.h"
#include "src/metadata/writing/tagged_text.h"
#include "src/metadata/writing/text_store.h"
#include "src/metadata/writing/xmp_writer.h"
#include "src/system/system.h"

#include <algorithm>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vell::metadata {
namespace {

namespace jpeg = formats::jpeg;
using files::File;
using params::Call;
using params::SwitchSet;

// In the order of the step's list of actions.
enum class Target : std::uint8_t { Iptc, Exif, Xmp, ImageUrl, Comment };
constexpr std::int32_t number_of_targets = 5;

struct TargetSwitch {
    std::string_view name;
    Target target;
};
constexpr TargetSwitch target_switches[] = {{"-SetIPTC", Target::Iptc},
                                            {"-SetExif", Target::Exif},
                                            {"-SetXMP", Target::Xmp},
                                            {"-SetImageURL", Target::ImageUrl}};
// Not for image files.
constexpr std::string_view movie_switches[] = {"-SetWithXML", "-SetTitle", "-SetDescription",
                                               "-SetCreationDate", "-SetGPS"};

constexpr std::size_t longest_comment = 2000;

struct WriteRequest {
    Target target;
    std::optional<TextEncoding> encoding;
    MakerNote maker_note;
    IptcWriting iptc;
    std::u16string text;
};

bool has_movie_switch(const SwitchSet& switches) {
    return std::ranges::any_of(movie_switches,
                               [&](std::string_view name) { return switches.has(name); });
}

Result<Target> target_of(const SwitchSet& switches) {
    if (has_movie_switch(switches))
        return Failure{ErrorCode::NotSupported};
    if (switches.has("JPEGComment"))
        return Target::Comment;
    std::optional<Target> target;
    for (const TargetSwitch& entry : target_switches) {
        if (!switches.has(entry.name))
            continue;
        if (target)
            return Failure{ErrorCode::BadParameter};
        target = entry.target;
    }
    if (!target)
        return Failure{ErrorCode::BadParameter};
    return *target;
}

std::optional<TextEncoding> encoding_in(const SwitchSet& switches) {
    if (switches.has("-UTF8Charset"))
        return TextEncoding::Utf8;
    if (switches.has("-MacCharset"))
        return TextEncoding::AsciiMac;
    if (switches.has("-WinCharset"))
        return TextEncoding::Native;
    constexpr auto none = TextEncoding::BytesOnly; // no name stands for it
    const TextEncoding named = params::encoding_of(switches, none);
    return named == none ? std::nullopt : std::optional(named);
}

// The native encoding is what the step's list begins with, so that choosing it and choosing nothing
// are the same.
std::optional<TextEncoding> encoding_in_step(std::int32_t list_value) {
    if (list_value == Call::not_given || list_value == static_cast<int>(TextEncoding::Native))
        return std::nullopt;
    return static_cast<TextEncoding>(list_value);
}

Result<WriteRequest> request_of(Call& call) {
    const SwitchSet switches = call.switches();
    const IptcWriting iptc{.detect_utf8 = !switches.has("-DontUseAutoUTF8Detection"),
                           .keep_others = switches.has("-KeepOtherDatasets")};
    if (!call.is_step()) {
        const auto maker_note =
            switches.has("-AddExifMakerNote") ? MakerNote::Keep : MakerNote::Remove;
        const Target target = VELL_TRY(target_of(switches));
        return WriteRequest{target, encoding_in(switches), maker_note, iptc, call.text(3)};
    }
    const std::int32_t action = call.step_option(3);
    if (action < 0 || action >= number_of_targets)
        return Failure{ErrorCode::BadParameter};
    return WriteRequest{static_cast<Target>(action), encoding_in_step(call.step_option(5)),
                        MakerNote::Remove, iptc, call.text(4)};
}

SegmentKind segment_of(Target target, std::string_view text) {
    switch (target) {
    case Target::Exif:
        return {jpeg::SegmentMarker::App1, std::string(jpeg::exif_identifier), true};
    case Target::Xmp:
        if (is_blank_xmp(text)) // extended XMP that would be left belongs to no packet
            return {jpeg::SegmentMarker::App1, std::string(formats::xmp::identifier_start), false};
        return {jpeg::SegmentMarker::App1, std::string(split_xmp_text(text).identifier) + '\0',
                true};
    case Target::Comment:
        return {jpeg::SegmentMarker::Com, "", false};
    case Target::Iptc:
    case Target::ImageUrl:
        break;
    }
    return {jpeg::SegmentMarker::App13, std::string(jpeg::photoshop_identifier), true};
}

// A comment as it was read stands in sections, of which the last is the one of the COM segment.
Result<std::string> comment_bytes(std::string_view text, const TextStore& store) {
    if (const auto sections = parse_tagged_text(text); sections && !sections->empty()) {
        const auto last =
            std::find_if(sections->rbegin(), sections->rend(), [](const TaggedSection& section) {
                return section.kind == SectionKind::Comment;
            });
        if (last != sections->rend())
            text = last->value;
    }
    return store.store_beginning(text, longest_comment);
}

// The segment's content behind its identifier; empty for none.
struct NewContent {
    std::string bytes;
    bool only_removes; // the text asks for nothing else
};

bool has_values(std::span<const TaggedSection> sections, Target target, bool empty_ones_count) {
    return std::ranges::any_of(sections, [&](const TaggedSection& section) {
        const bool is_iptc = section.kind == SectionKind::Iptc;
        return section.kind != SectionKind::Comment && is_iptc == (target == Target::Iptc) &&
               (empty_ones_count || !section.value.empty());
    });
}

Result<NewContent> new_content(const WriteRequest& request, std::string_view text,
                               std::string_view existing, std::size_t room,
                               const TextStore& store) {
    switch (request.target) {
    case Target::Iptc: {
        const auto sections = VELL_TRY(parse_tagged_text(text));
        const std::string datasets = VELL_TRY(write_iptc(
            find_resource(existing, photoshop::ResourceId::Iptc), sections, request.iptc, store));
        std::string block =
            VELL_TRY(with_resource(existing, photoshop::ResourceId::Iptc, datasets));
        const bool is_empty_dataset_written = !request.iptc.keep_others;
        return NewContent{std::move(block),
                          !has_values(sections, request.target, is_empty_dataset_written)};
    }
    case Target::Exif: {
        const auto sections = VELL_TRY(parse_tagged_text(text));
        std::string block =
            VELL_TRY(write_exif(existing, sections, request.maker_note, store, room));
        return NewContent{std::move(block), !has_values(sections, request.target, false)};
    }
    case Target::Xmp: {
        std::string packet = VELL_TRY(write_xmp(split_xmp_text(text), existing, store, room));
        const bool is_empty = packet.empty();
        return NewContent{std::move(packet), is_empty};
    }
    case Target::ImageUrl: {
        const std::string url = VELL_TRY(store.store(text));
        std::string block = VELL_TRY(with_resource(existing, photoshop::ResourceId::ImageUrl, url));
        return NewContent{std::move(block), url.empty()};
    }
    case Target::Comment:
        break;
    }
    std::string comment = VELL_TRY(comment_bytes(text, store));
    const bool is_empty = comment.empty();
    return NewContent{std::move(comment), is_empty};
}

// What the call is to write. NothingFound when there is nothing of what it is to remove.
Result<SegmentRewrite> rewrite_of(Call& call, const WriteRequest& request, files::FileSystem& files,
                                  const files::NativePath& path) {
    const std::string text = utf8_from_utf16(request.text);
    SegmentKind kind = segment_of(request.target, text);
    if (kind.identifier.size() > jpeg::longest_payload)
        return Failure{ErrorCode::ResourceTooLarge};
    const std::size_t room = jpeg::longest_payload - kind.identifier.size();
    const auto source = VELL_TRY(files.open(path, files::Permission::Read));
    SegmentPlace place = VELL_TRY(find_segment_place(*source, kind));
    const TextStore store(call, request.encoding);
    NewContent content = VELL_TRY(new_content(request, text, place.content, room, store));
    const bool is_unchanged = !content.bytes.empty() && content.bytes == place.content;
    if (content.only_removes && (is_unchanged || !place.is_there()))
        return Failure{ErrorCode::NothingFound};
    if (content.bytes.size() > room)
        return Failure{ErrorCode::ResourceTooLarge};
    auto segment = content.bytes.empty() ? std::nullopt : std::optional(std::move(content.bytes));
    return plan_rewrite(std::move(kind), std::move(place), std::move(segment));
}

} // namespace

Result<void> set_metadata(Call& call, System& system) {
    const WriteRequest request = VELL_TRY(request_of(call));
    files::RewrittenFile file = VELL_TRY(files::rewritten_file(call, system.files(), 1, 2));
    if (file.destination && system.files().is_same_file(*file.destination, file.source))
        file.destination.reset(); // the source's own place, written in another way
    const SegmentRewrite rewrite = VELL_TRY(rewrite_of(call, request, system.files(), file.source));
    VELL_TRY(files::rewrite(call, system.files(), file, [&](File& from, File& to) {
        return copy_with_segment(from, to, rewrite);
    }));
    call.set_done();
    return {};
}

Result<void> set_movie_metadata(Call& call, System&) {
    const bool names_what = call.is_step() || has_movie_switch(call.switches());
    return Failure{names_what ? ErrorCode::NotSupported : ErrorCode::BadParameter};
}

} // namespace vell::metadata
