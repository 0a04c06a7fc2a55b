// Boxes, one behind the other, and what sample tables and sample entries make of their contents.
#include "fuzz/input.h"
#include "src/formats/isobmff/sample_entry.h"
#include "src/formats/isobmff/sample_tables.h"

#include <cmath>
#include <vector>

namespace vell::boxes_fuzz {
namespace {

using namespace vell::formats;
using namespace vell::formats::isobmff;

template <typename T>
void check_source(const Read<T>& read) {
    FUZZ_CHECK(read || read.error().damage != Damage::Unreadable); // memory does not fail
}

// What the tables hold in bytes is no more than there are; only all samples of one size are more.
void check_tables(const Window& content) {
    check_source(read_time_to_sample(content));
    for (const FourCc type : {"stsz"_4cc, "stz2"_4cc})
        if (const auto sizes = read_sample_sizes(content, type))
            FUZZ_CHECK(sizes->samples <= 0xFFFFFFFF && sizes->bytes <= 0xFFFFFFFFULL * 0xFFFFFFFF);
    for (const FourCc type : {"stco"_4cc, "co64"_4cc})
        check_source(read_first_chunk(content, type));
    const auto header = read_fragment_header(content);
    const SampleDefaults defaults{header ? header->default_duration.value_or(1) : ~0U, ~0U};
    if (const auto run = read_track_run(content, defaults))
        FUZZ_CHECK(run->samples <= 0xFFFFFFFF);
}

void check_entries(const Window& content) {
    for (const FourCc handler : {"vide"_4cc, "soun"_4cc, "tmcd"_4cc, "text"_4cc}) {
        const auto entry = read_sample_entry(content, handler);
        if (!entry)
            continue;
        FUZZ_CHECK(!entry->picture || handler == "vide"_4cc);
        FUZZ_CHECK(!entry->sound || handler == "soun"_4cc);
        if (entry->sound)
            FUZZ_CHECK(std::isfinite(entry->sound->sample_rate) && entry->sound->sample_rate >= 0);
        if (entry->picture)
            FUZZ_CHECK(entry->picture->compressor_name.size() < 32);
    }
    for (const auto kind : {EntryKind::Picture, EntryKind::Sound})
        if (const auto boxes = boxes_of_entry(content, kind))
            FUZZ_CHECK(boxes->size() <= content.size());
}

} // namespace

FUZZ_TARGET(boxes) {
    const std::vector<char> file(data, data + size);
    BytesInMemory source({file.data(), file.size()});
    const Window all(source);
    BoxWalk walk(all);
    std::uint64_t end = 0;
    for (;;) {
        const auto box = walk.next();
        if (!box || !*box)
            break;
        FUZZ_CHECK((*box)->start == end);
        FUZZ_CHECK((*box)->content.start() + (*box)->content.size() <= size);
        FUZZ_CHECK((*box)->content.size() <= (*box)->content.announced());
        end = (*box)->start + (*box)->size();
        check_tables((*box)->content);
        check_entries((*box)->content);
        FUZZ_CHECK(!text_of((*box)->type).empty());
    }
    return 0;
}

} // namespace vell::boxes_fuzz
