#include "src/windows/documents/poppler_text.h"

#include "src/windows/documents/poppler_document.h"

#include <PDFDoc.h>
#include <TextOutputDev.h>

namespace vell::windows {
namespace {

// Gathers Poppler's small pieces, and keeps what the sink reports.
class SinkBuffer {
  public:
    explicit SinkBuffer(const params::ByteSink& sink) : sink_(sink) {}

    Result<void> append(std::string_view bytes) {
        constexpr std::size_t bytes_at_once = 64 * 1024;
        if (!outcome_)
            return outcome_;
        pending_ += bytes;
        return pending_.size() < bytes_at_once ? outcome_ : flush();
    }
    Result<void> flush() {
        if (outcome_)
            outcome_ = sink_(pending_);
        pending_.clear();
        return outcome_;
    }

  private:
    const params::ByteSink& sink_;
    std::string pending_;
    Result<void> outcome_;
};

// Takes the text of a page. C++ exceptions must not be thrown through Poppler, which holds memory.
void take_text(void* buffer, const char* text, int length) noexcept {
    try {
        if (!static_cast<SinkBuffer*>(buffer)->append({text, static_cast<std::size_t>(length)}))
            Work::giveUp();
    } catch (...) {
        Work::giveUp();
    }
}

Result<void> read_pages(PDFDoc& document, const params::ByteSink& sink) {
    const int pages = VELL_TRY(page_count(document));
    SinkBuffer buffer(sink);
    TextOutputDev output(take_text, &buffer, false, 0, false);
    output.setTextEOL(eolUnix);
    for (int page = 1; page <= pages && !Work::isExhausted(); ++page)
        document.displayPage(&output, page, points_per_inch, points_per_inch, 0, true, false, false,
                             is_to_end, nullptr);
    return buffer.flush();
}

} // namespace

Result<void> read_by_poppler(ByteSource& file, const params::ByteSink& sink,
                             std::vector<std::string>& notes) {
    return with_poppler_document(
        file, Work::Purpose::Text, notes, [&](PDFDoc& document) -> Result<void> {
            if (!document.okToCopy()) {
                notes.push_back("PDF: Copying of text from this document is not allowed.");
                return Failure{ErrorCode::PdfCopyForbidden};
            }
            return read_pages(document, sink);
        });
}

} // namespace vell::windows
