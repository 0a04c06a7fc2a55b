#include "src/windows/documents/poppler_text.h"

#include "src/windows/documents/encoding_data.h"
#include "src/windows/handle.h"
#include "src/windows/storage/path.h"

#include <Error.h>
#include <ErrorCodes.h>
#include <GlobalParams.h>
#include <PDFDoc.h>
#include <Stream.h>
#include <TextOutputDev.h>
#include <goo/Work.h>
#include <goo/gfile.h>

#include <algorithm>
#include <cstdint>
#include <memory>

namespace vell::windows {
namespace {

// What Poppler says of the document that this thread reads; null for nobody to listen.
thread_local std::vector<std::string>* current_notes = nullptr;

void note_error(ErrorCategory, Goffset position, const char* message) {
    constexpr std::size_t most_notes = 20; // a damaged file may have any number
    if (!current_notes || current_notes->size() >= most_notes)
        return;
    std::string note = "PDF: ";
    if (position >= 0)
        note += std::to_string(position) + ": ";
    current_notes->push_back(note + message);
}

class NoteScope {
  public:
    explicit NoteScope(std::vector<std::string>& notes) { current_notes = &notes; }
    NoteScope(const NoteScope&) = delete;
    NoteScope& operator=(const NoteScope&) = delete;
    ~NoteScope() { current_notes = nullptr; }
};

// What all documents of the process share. Poppler locks its tables itself; they are made once.
class SharedPoppler {
  public:
    explicit SharedPoppler(std::vector<std::string>& notes)
        : encoding_data_(provide_encoding_data(notes)) {
        setErrorCallback(note_error);
        globalParams = std::make_unique<GlobalParams>(encoding_data_.c_str());
    }

  private:
    std::string encoding_data_; // Poppler keeps a pointer to it
};

void make_shared_poppler(std::vector<std::string>& notes) {
    static const SharedPoppler shared(notes);
}

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

// Asked now and then between the operators of a page.
bool is_to_end(void*) {
    return Work::isExhausted();
}

ErrorCode code_of(int poppler_error) {
    switch (poppler_error) {
    case errOpenFile:
        return ErrorCode::PdfCannotOpen;
    case errBadCatalog:
        return ErrorCode::PdfWithoutPages;
    case errDamaged:
        return ErrorCode::PdfDamaged;
    case errEncrypted:
        return ErrorCode::PdfPassword;
    case errPermission:
        return ErrorCode::PdfCopyForbidden;
    case errFileIO:
        return ErrorCode::PdfReadFailed;
    default:
        return ErrorCode::PdfFailed;
    }
}

Result<std::unique_ptr<GooFile>> open_file(const files::NativePath& path) {
    std::unique_ptr<GooFile> file = GooFile::open(win32_path(path).c_str());
    if (!file) {
        const ErrorCode code = last_error();
        return Failure{number(code) < 0 ? code : ErrorCode::PdfCannotOpen};
    }
    return file;
}

// The file as Poppler reads it. From a file it reads 256 bytes at a time, over and over, so all but
// the large ones are read at once, into `bytes`.
BaseStream* make_stream(GooFile& file, std::int64_t size, std::string& bytes) {
    constexpr std::int64_t most_in_memory = 64 << 20;
    if (size > 0 && size <= most_in_memory) {
        bytes.resize(static_cast<std::size_t>(size));
        if (file.read(bytes.data(), static_cast<int>(size), 0) == size)
            return new MemStream(bytes.data(), 0, size, Object(objNull));
    }
    return new FileStream(&file, 0, false, size, Object(objNull));
}

Result<void> read_pages(PDFDoc& document, const params::ByteSink& sink) {
    // A page is an object of its own: numbers beyond that are not worth the trying.
    const int pages = std::min(document.getNumPages(), document.getXRef()->getNumObjects());
    if (pages <= 0)
        return Failure{ErrorCode::PdfWithoutPages};
    SinkBuffer buffer(sink);
    TextOutputDev output(take_text, &buffer, false, 0, false);
    output.setTextEOL(eolUnix);
    constexpr double points_per_inch = 72;
    for (int page = 1; page <= pages && !Work::isExhausted(); ++page)
        document.displayPage(&output, page, points_per_inch, points_per_inch, 0, true, false, false,
                             is_to_end, nullptr);
    return buffer.flush();
}

// What the opened document gives out. What is cut short by the limit of work looks like damage, or
// like a shorter text.
Result<void> read_document(PDFDoc& document, const params::ByteSink& sink,
                           std::vector<std::string>& notes) {
    if (!document.isOk())
        return Failure{code_of(document.getErrorCode())};
    if (!document.okToCopy()) {
        notes.push_back("PDF: Copying of text from this document is not allowed.");
        return Failure{ErrorCode::PdfCopyForbidden};
    }
    return read_pages(document, sink);
}

} // namespace

Result<void> read_by_poppler(const files::NativePath& path, const params::ByteSink& sink,
                             std::vector<std::string>& notes) {
    try {
        const std::unique_ptr<GooFile> file = VELL_TRY(open_file(path));
        make_shared_poppler(notes);
        const NoteScope scope(notes);
        const std::int64_t size = file->size();
        Work work(size);
        std::string bytes;
        PDFDoc document(make_stream(*file, size, bytes));
        const Result<void> outcome = read_document(document, sink, notes);
        if (Work::isExhausted() && (outcome || number(outcome.error()) > 0))
            return Failure{ErrorCode::PdfFailed};
        return outcome;
    } catch (...) { // mostly memory that cannot be had, for what a damaged file asks for
        return Failure{ErrorCode::PdfFailed};
    }
}

} // namespace vell::windows
