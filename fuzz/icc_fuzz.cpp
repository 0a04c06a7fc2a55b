// Descriptions of ICC profiles: bounded in length, and well-formed when they are XML.
//
// The first byte chooses what is asked for, the rest is the profile.
#include "fuzz/input.h"
#include "fuzz/xml.h"
#include "src/metadata/icc/icc_profile.h"

#include <string>
#include <vector>

namespace vell::icc_fuzz {

FUZZ_TARGET(icc) {
    using namespace vell::metadata;
    constexpr IccSelector selectors[] = {IccSelector::Description, IccSelector::Description,
                                         IccSelector::Name, IccSelector::LocalizedName};
    if (size == 0)
        return 0;
    MetadataRequest request;
    request.icc = selectors[data[0] & 3];
    request.verbose_icc = (data[0] & 4) != 0;
    request.icc_as_xml = (data[0] & 8) != 0;
    request.first_icc_language = (data[0] & 16) != 0;
    if ((data[0] & 32) != 0)
        request.source = TextEncoding::Utf8;
    // Where it ends so does the block: a read beyond it is a finding.
    const std::vector<char> profile(data + 1, data + size);

    MetadataText text;
    const Result<void> done = describe_icc_profile({profile.data(), profile.size()}, request, text);
    FUZZ_CHECK(text.size() <= 64 * size + 50'000);
    FUZZ_CHECK(done || text.empty());
    if (done && request.icc == IccSelector::Description && request.icc_as_xml) {
        std::string whole;
        for (const MetadataText::Piece& piece : text.pieces())
            whole += piece.bytes;
        FUZZ_CHECK(fuzz::is_well_formed(whole));
    }
    return 0;
}

} // namespace vell::icc_fuzz
