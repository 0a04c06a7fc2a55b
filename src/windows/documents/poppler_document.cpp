#include "src/windows/documents/poppler_document.h"

#include "src/windows/documents/encoding_folder.h"

#include <Error.h>
#include <ErrorCodes.h>
#include <GlobalParams.h>
#include <PDFDoc.h>
#include <Stream.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <mutex>

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
    explicit SharedPoppler(std::vector<std::string>& notes) {
        const std::string& folder = encoding_folder(notes); // Poppler keeps a pointer to it
        setErrorCallback(note_error);
        globalParams = std::make_unique<GlobalParams>(folder.c_str());
    }
};

void make_shared_poppler(std::vector<std::string>& notes) {
    static const SharedPoppler shared(notes);
}

// The fonts of the system, for documents that name theirs only. Which of them the system does not
// have is nothing that a document is to blame for, so it is not noted.
void find_system_fonts() {
    static std::once_flag once;
    std::call_once(once, [] { globalParams->setupBaseFonts(nullptr); });
}

// A document that is not held in memory.
class SourceStream final : public BaseSeekInputStream {
  public:
    SourceStream(ByteSource& source, Goffset start_, bool limited_, Goffset length_,
                 Object&& dictionary)
        : BaseSeekInputStream(start_, limited_, length_, std::move(dictionary)), source_(source) {}
    ~SourceStream() override { SourceStream::close(); }

    StreamKind getKind() const override { return strFile; }
    BaseStream* copy() override {
        return new SourceStream(source_, start, limited, length, dict.copy());
    }
    Stream* makeSubStream(Goffset start_, bool limited_, Goffset length_,
                          Object&& dictionary) override {
        return new SourceStream(source_, start_, limited_, length_, std::move(dictionary));
    }

  private:
    Goffset currentPos() const override { return position_; }
    void setCurrentPos(Goffset offset) override { position_ = offset; }
    // What cannot be read ends the stream.
    Goffset read(char* bytes, Goffset size) override {
        if (position_ < 0 || size <= 0)
            return 0;
        const auto done = source_.read_at(static_cast<std::uint64_t>(position_),
                                          {bytes, static_cast<std::size_t>(size)});
        if (!done)
            return 0;
        position_ += static_cast<Goffset>(*done);
        return static_cast<Goffset>(*done);
    }

    ByteSource& source_;
    Goffset position_ = 0;
};

// The file as Poppler reads it: a thousand bytes at a time, over and over, so all but the large
// ones are read at once, into `bytes`.
BaseStream* make_stream(ByteSource& file, Work::Purpose purpose, std::string& bytes) {
    const std::uint64_t most_in_memory = purpose == Work::Purpose::Text ? 64 << 20 : 16 << 20;
    const std::uint64_t size = file.size();
    if (size > 0 && size <= most_in_memory) {
        bytes.resize(static_cast<std::size_t>(size));
        const auto done = file.read_at(0, bytes);
        if (done && *done == size)
            return new MemStream(bytes.data(), 0, static_cast<Goffset>(size), Object(objNull));
    }
    return new SourceStream(file, 0, false, static_cast<Goffset>(size), Object(objNull));
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

} // namespace

Result<void> with_poppler_document(ByteSource& file, Work::Purpose purpose,
                                   std::vector<std::string>& notes,
                                   const std::function<Result<void>(PDFDoc&)>& use) {
    try {
        make_shared_poppler(notes);
        if (purpose == Work::Purpose::Draw)
            find_system_fonts();
        const NoteScope scope(notes);
        Work work(static_cast<long long>(file.size()), purpose);
        std::string bytes;
        PDFDoc document(make_stream(file, purpose, bytes));
        const Result<void> outcome =
            document.isOk() ? use(document) : Failure{code_of(document.getErrorCode())};
        // What is cut short by the limit of work looks like damage, or like a shorter result.
        if (Work::isExhausted() && (outcome || number(outcome.error()) > 0))
            return Failure{ErrorCode::PdfFailed};
        return outcome;
    } catch (...) { // mostly memory that cannot be had, for what a damaged file asks for
        return Failure{ErrorCode::PdfFailed};
    }
}

Result<int> page_count(PDFDoc& document) {
    const int pages = std::min(document.getNumPages(), document.getXRef()->getNumObjects());
    if (pages <= 0)
        return Failure{ErrorCode::PdfWithoutPages};
    return pages;
}

bool is_to_end(void*) {
    return Work::isExhausted();
}

} // namespace vell::windows
