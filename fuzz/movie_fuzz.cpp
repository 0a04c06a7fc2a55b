// Movies: every question on them has an answer or one of two codes, XML is well-formed, and neither
// texts nor reads grow faster than the file.
//
// The first byte chooses what is asked, the rest is the file.
#include "fuzz/input.h"
#include "fuzz/xml.h"
#include "src/movies/movies.h"

#include <string>
#include <vector>

namespace vell::movie_fuzz {
namespace {

using movies::MovieRequest;
using movies::MovieSelector;

constexpr MovieSelector selectors[] = {
    MovieSelector::None,          MovieSelector::AllMetadata,  MovieSelector::AllMetadata,
    MovieSelector::Gps,           MovieSelector::CreationDate, MovieSelector::Title,
    MovieSelector::Software,      MovieSelector::Year,         MovieSelector::LoopVariation,
    MovieSelector::TimeCodeBegin, MovieSelector::TimeCodeEnd,  MovieSelector::Duration,
    MovieSelector::Width,         MovieSelector::Rotation,     MovieSelector::FrameCount,
    MovieSelector::IsValid,
};

class CountingSource final : public ByteSource {
  public:
    explicit CountingSource(std::string_view bytes) : memory_(bytes) {}

    std::size_t reads = 0;

    std::uint64_t size() const override { return memory_.size(); }
    Result<std::size_t> read_at(std::uint64_t position, std::span<char> bytes) override {
        ++reads;
        return memory_.read_at(position, bytes);
    }

  private:
    BytesInMemory memory_;
};

MovieRequest request_of(std::uint8_t choice) {
    MovieRequest request;
    request.selector = selectors[choice & 15];
    request.description = request.selector == MovieSelector::None;
    request.as_xml = (choice & 16) != 0;
    request.verbose = (choice & 32) != 0;
    request.position = movies::PositionFormat{static_cast<std::uint8_t>(choice >> 6 & 1)};
    if ((choice & 128) != 0)
        request.position = movies::PositionFormat::DegMinSecs;
    return request;
}

} // namespace

FUZZ_TARGET(movie) {
    if (size == 0)
        return 0;
    const MovieRequest request = request_of(data[0]);
    // Where it ends so does the block: a read beyond it is a finding.
    const std::vector<char> file(data + 1, data + size);
    const std::string_view bytes(file.data(), file.size());
    CountingSource source(bytes);
    params::ComposedText text;
    const Result<void> done = movies::read_movie(source, request, text);
    if (!done) {
        FUZZ_CHECK(done.error() == ErrorCode::NotAMovie || done.error() == ErrorCode::NothingFound);
        return 0;
    }
    std::string all;
    for (const params::ComposedText::Piece& piece : text.pieces())
        all += piece.bytes;
    FUZZ_CHECK(all.starts_with('\r'));
    if (bytes.find("cmov") == std::string_view::npos) {
        const std::size_t boxes = size / 8 + 1;
        FUZZ_CHECK(source.reads <= 100 + 32 * boxes);
        // Each box may repeat a name of a key twice, each of its characters an entity.
        FUZZ_CHECK(all.size() <= 1000 + boxes * (500 + 12 * size));
    }
    if (request.as_xml && request.selector == MovieSelector::AllMetadata)
        FUZZ_CHECK(fuzz::is_well_formed(all));
    if (request.selector == MovieSelector::Duration) {
        FUZZ_CHECK(all.find("inf") == std::string::npos && all.find("nan") == std::string::npos);
        FUZZ_CHECK(all[1] >= '0' && all[1] <= '9');
    }
    return 0;
}

} // namespace vell::movie_fuzz
