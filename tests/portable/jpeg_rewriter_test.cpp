#include "src/metadata/writing/jpeg_rewriter.h"

#include "tests/portable/image_builder.h"

#include <gtest/gtest.h>

namespace vell::metadata::jpeg_rewriter_test {
namespace {

using namespace vell::test;
using enum SegmentMarker;

const std::string soi = "\xFF\xD8";
const std::string app0 = segment(App0, "JFIF");
const std::string comment = segment(Com, "old");
const std::string frame = segment(Sof0, "frame");
const std::string scan = "\xFF\xDAscan\xFF\xD9trailer";
const std::string rest = segment(Com, "late") + scan;
const std::string packet = segment(App1, "ID\1packet");

const SegmentKind comments{Com, "", false};
const SegmentKind packets{App1, "ID\1", true};

// The file with the segment of that content written; "!" and the code of a failure.
std::string rewritten(const std::string& bytes, const SegmentKind& kind,
                      const std::optional<std::string>& content) {
    const auto from = files::memory_file(bytes);
    auto reader = files::BufferedReader::over(*from);
    auto place = find_segment_place(*reader, kind);
    if (!place)
        return "!" + std::to_string(number(place.error()));
    const auto rewrite = plan_rewrite(kind, std::move(*place), content);
    EXPECT_TRUE(rewrite);
    const auto to = files::memory_file();
    EXPECT_TRUE(from->seek(files::SeekFrom::Start, 0));
    EXPECT_TRUE(copy_with_segment(*from, *to, *rewrite));
    std::string written(static_cast<std::size_t>(*to->size()), '\0');
    EXPECT_TRUE(to->seek(files::SeekFrom::Start, 0));
    EXPECT_EQ(*to->read(written), written.size());
    return written;
}

TEST(JpegRewriter, ReplacesOrAddsOneSegmentAndCopiesTheRest) {
    const std::string added = segment(Com, "new");
    const std::string packed = segment(App1, "ID\1new");
    const std::string another = segment(App1, "IDx");
    const std::string damaged = segment(App0, "", 1);
    const std::string garbage = std::string("gar\0bage", 8);
    // A file, and it with a comment and with a packet.
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {soi + app0 + frame + rest, soi + app0 + added + frame + scan,
         soi + app0 + packed + frame + rest},
        {soi + comment + app0 + comment + garbage + comment + frame + rest,
         soi + app0 + garbage + added + frame + scan,
         soi + comment + app0 + comment + garbage + comment + packed + frame + rest},
        {soi + another + packet + packet + frame + packet + rest,
         soi + another + packet + packet + added + frame + packet + scan,
         soi + another + packed + packet + frame + packet + rest},
        // Readers go on to the scan, and so does what is replaced. Damage before it ends the walk.
        {soi + app0 + frame + packet + packet + rest,
         soi + app0 + added + frame + packet + packet + scan,
         soi + app0 + frame + packed + packet + rest},
        {soi + app0 + frame + damaged + packet + rest,
         soi + app0 + added + frame + damaged + packet + rest,
         soi + app0 + packed + frame + damaged + packet + rest},
        // Fill bytes belong to the marker behind them; RST stands alone; a frame may be cut off.
        {soi + app0 + "\xFF\xFF" + frame, soi + app0 + added + "\xFF\xFF" + frame,
         soi + app0 + packed + "\xFF\xFF" + frame},
        {soi + "\xFF\xD0" + app0 + "\xFF\xC2", soi + "\xFF\xD0" + app0 + added + "\xFF\xC2",
         soi + "\xFF\xD0" + app0 + packed + "\xFF\xC2"},
        // An image that ends before any frame gets nothing new.
        {soi + comment + app0 + "\xFF\xD9" + rest, soi + app0 + "\xFF\xD9" + rest,
         soi + comment + app0 + "\xFF\xD9" + rest},
        {soi + packet + "\xFF\xD9", soi + packet + "\xFF\xD9", soi + packed + "\xFF\xD9"},
        {soi + app0 + "\xFF\xDA" + rest, "!-4247", "!-4247"},
        {soi + packet + "\xFF\xDA" + rest, "!-4247", soi + packed + "\xFF\xDA" + rest},
        {"", "!-71", "!-71"},
        {"\xFF\xD9" + frame, "!-71", "!-71"},
        {soi + app0, "!-39", "!-39"},
        {soi + app0.substr(0, 6) + "cut", "!-39", "!-39"},
        {soi + damaged + frame, "!-92", "!-92"},
    };
    for (const auto& [file, with_comment, with_packet] : cases) {
        EXPECT_EQ(rewritten(file, comments, "new"), with_comment);
        EXPECT_EQ(rewritten(file, packets, "new"), with_packet);
    }
    EXPECT_EQ(rewritten(soi + comment + frame + rest, comments, {}), soi + frame + scan);
    EXPECT_EQ(rewritten(soi + packet + frame + rest, packets, {}), soi + frame + rest);
    const std::string longest(formats::jpeg::longest_payload, 'x');
    EXPECT_EQ(rewritten(soi + frame, comments, longest), soi + segment(Com, longest) + frame);
}

// Files that go on for long: one without a marker, one of nothing but tiny gaps and segments.
TEST(JpegRewriter, LongFilesTakeLittleMemoryAndNoMoreThanTwoReadings) {
    constexpr std::uint64_t size = 20'000'000;
    for (const std::string& pattern : {std::string("nothing "), ".." + segment(App2, "")}) {
        EndlessFile file(soi, pattern, size);
        auto reader = files::BufferedReader::over(file);
        EXPECT_EQ(find_segment_place(*reader, comments).error(), ErrorCode::EndOfFile);
        EXPECT_LE(file.longest_read(), 1'000'000U);
        EXPECT_LE(file.bytes_read(), 2 * size + 1'000'000);
    }
}

} // namespace
} // namespace vell::metadata::jpeg_rewriter_test
