#include "src/metadata/set_metadata.h"

#include "src/base/utf8.h"
#include "src/files/contents/rewriting.h"
#include "src/metadata/writing/block_place.h"
#include "src/metadata/writing/exif_writer.h"
#include "src/metadata/writing/iptc_writer.h"
#include "src/metadata/writing/photoshop_block.h"
#include "src/metadata/writing/sidecar.h"
#include "src/metadata/writing/tagged_text.h"
#include "src/metadata/writing/text_store.h"
#include "src/metadata/writing/xmp_writer.h"
#include "src/system/system.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vell::metadata {
namespace {

using files::File;
using params::Call;
using params::SwitchSet;

using Target = BlockKind;
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

// A comment as it was read stands in sections, of which the last is the one of the COM segment.
std::string_view comment_of(std::string_view text) {
    const auto sections = parse_tagged_text(text);
    if (!sections)
        return text;
    const auto last =
        std::find_if(sections->rbegin(), sections->rend(), [](const TaggedSection& section) {
            return section.kind == SectionKind::Comment;
        });
    return last == sections->rend() ? text : last->value;
}

Result<std::string> comment_bytes(std::string_view text, const BlockRules& rules,
                                  const TextStore& store) {
    const std::string_view comment = comment_of(text);
    if (rules.is_utf8)
        return std::string(comment);
    return store.store_beginning(comment, rules.most_of_comment);
}

bool has_values(std::span<const TaggedSection> sections, Target target, bool empty_ones_count) {
    return std::ranges::any_of(sections, [&](const TaggedSection& section) {
        const bool is_iptc = section.kind == SectionKind::Iptc;
        return section.kind != SectionKind::Comment && is_iptc == (target == Target::Iptc) &&
               (empty_ones_count || !section.value.empty());
    });
}

// The block for a place; empty for none.
struct NewContent {
    std::string bytes;
    bool only_removes; // the text asks for nothing else
};

Result<NewContent> new_datasets(const WriteRequest& request, std::string_view text,
                                const BlockPlace& place, const TextStore& store) {
    constexpr auto resource = photoshop::ResourceId::Iptc;
    const auto sections = VELL_TRY(parse_tagged_text(text));
    const bool in_resources = place.rules().in_resources;
    const std::string_view existing =
        in_resources ? find_resource(place.content(), resource) : place.content();
    std::string datasets = VELL_TRY(write_iptc(existing, sections, request.iptc, store));
    const bool is_empty_dataset_written = !request.iptc.keep_others;
    const bool only_removes = !has_values(sections, request.target, is_empty_dataset_written);
    if (!in_resources)
        return NewContent{std::move(datasets), only_removes};
    std::string block = VELL_TRY(with_resource(place.content(), resource, datasets));
    return NewContent{std::move(block), only_removes};
}

Result<NewContent> new_content(const WriteRequest& request, std::string_view text,
                               const BlockPlace& place, const TextStore& store) {
    switch (request.target) {
    case Target::Iptc:
        return new_datasets(request, text, place, store);
    case Target::Xmp: {
        std::string packet = VELL_TRY(
            write_xmp(split_xmp_text(text), place.content(), store, place.rules().most_bytes));
        const bool is_empty = packet.empty();
        return NewContent{std::move(packet), is_empty};
    }
    case Target::ImageUrl: {
        const std::string url = VELL_TRY(store.store(text));
        std::string block =
            VELL_TRY(with_resource(place.content(), photoshop::ResourceId::ImageUrl, url));
        return NewContent{std::move(block), url.empty()};
    }
    case Target::Exif: // written into the place itself
    case Target::Comment:
        break;
    }
    std::string comment = VELL_TRY(comment_bytes(text, place.rules(), store));
    const bool is_empty = comment.empty();
    return NewContent{std::move(comment), is_empty};
}

Result<void> put_tags(BlockPlace& place, files::BufferedReader& file, const WriteRequest& request,
                      std::string_view text, const TextStore& store) {
    const auto sections = VELL_TRY(parse_tagged_text(text));
    const bool was_there = place.is_there();
    const bool is_changed = VELL_TRY(place.put_tags(file, sections, request.maker_note, store));
    if (!has_values(sections, request.target, false) && (!is_changed || !was_there))
        return Failure{ErrorCode::NothingFound};
    return {};
}

Result<void> put_block(BlockPlace& place, const WriteRequest& request, std::string_view text,
                       const TextStore& store) {
    NewContent content = VELL_TRY(new_content(request, text, place, store));
    const bool is_unchanged = !content.bytes.empty() && content.bytes == place.content();
    if (content.only_removes && (is_unchanged || !place.is_there()))
        return Failure{ErrorCode::NothingFound};
    if (content.bytes.size() > place.rules().most_bytes)
        return Failure{ErrorCode::ResourceTooLarge};
    return place.put(std::move(content.bytes));
}

// Plans what the call is to write. NothingFound when there is nothing of what it is to remove.
Result<std::unique_ptr<BlockPlace>> planned_place(Call& call, const WriteRequest& request,
                                                  files::FileSystem& files,
                                                  const files::NativePath& path) {
    const std::string text = utf8_from_utf16(request.text);
    const auto source = VELL_TRY(files.open(path, files::Permission::Read));
    auto reader = VELL_TRY(files::BufferedReader::over(*source));
    auto place = VELL_TRY(find_block_place(reader, {request.target, text, path.wide}));
    const TextStore store(call, request.encoding);
    VELL_TRY(request.target == Target::Exif ? put_tags(*place, reader, request, text, store)
                                            : put_block(*place, request, text, store));
    return place;
}

Result<void> put_sidecar(Call& call, files::FileSystem& files, const WriteRequest& request,
                         const files::RewrittenFile& file) {
    if (request.target != Target::Xmp)
        return Failure{ErrorCode::NotSupported};
    const Sidecar sidecar{file.source, file.destination.value_or(file.source)};
    const std::string text = utf8_from_utf16(request.text);
    VELL_TRY(write_sidecar(call, files, sidecar, text, TextStore(call, request.encoding)));
    call.set_done();
    return {};
}

} // namespace

Result<void> set_metadata(Call& call, System& system) {
    const WriteRequest request = VELL_TRY(request_of(call));
    files::RewrittenFile file = VELL_TRY(files::rewritten_file(call, system.files(), 1, 2));
    if (file.destination && system.files().is_same_file(*file.destination, file.source))
        file.destination.reset(); // the source's own place, written in another way
    if (is_sidecar(file.destination.value_or(file.source)))
        return put_sidecar(call, system.files(), request, file);
    const auto place = VELL_TRY(planned_place(call, request, system.files(), file.source));
    VELL_TRY(files::rewrite(call, system.files(), file,
                            [&](File& from, File& to) { return place->copy(from, to); }));
    call.set_done();
    return {};
}

Result<void> set_movie_metadata(Call& call, System&) {
    const bool names_what = call.is_step() || has_movie_switch(call.switches());
    return Failure{names_what ? ErrorCode::NotSupported : ErrorCode::BadParameter};
}

} // namespace vell::metadata
