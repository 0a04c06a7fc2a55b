#include "src/documents/win32_poppler_text.h"

#include "src/base/win32_handle.h"
#include "src/documents/encoding_data.h"
#include "src/files/win32_path.h"

#include <Error.h>
#include <ErrorCodes.h>
#include <GlobalParams.h>
#include <PDFDoc.h>
#include <Stream.h>
#include <TextOutputDev.h>
#include <goo/gfile.h>

#include <algorithm>
#include <cstdint>
#include <memory>

namespace vell::documents {
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

// Bounds what a small file can make of itself by drawing the same things again and again: the steps
// of its drawing, and the characters of a page, which are sorted all together.
class Workload {
  public:
    explicit Workload(std::int64_t file_size)
        : steps_left_(50'000'000 + 64 * std::min<std::int64_t>(file_size, largest_file)) {}

    void begin_page() { characters_left_ = 2'000'000; }
    void spend(std::int64_t steps) { steps_left_ -= steps; }
    void spend_character() {
        --steps_left_;
        --characters_left_;
    }
    void give_up() { steps_left_ = -1; }
    bool is_exhausted() const {
        return steps_left_ < 0 || characters_left_ < 0 || FilterStream::isOutputExhausted();
    }

    static constexpr std::int64_t largest_file = std::int64_t{1} << 40;

  private:
    std::int64_t steps_left_;
    std::int64_t characters_left_ = 0;
};

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

class TextPages : public TextOutputDev {
  public:
    TextPages(SinkBuffer& sink, Workload& workload)
        : TextOutputDev(take, this, false, 0, false), sink_(sink), workload_(workload) {
        setTextEOL(eolUnix);
    }

    void startPage(int page, GfxState* state, XRef* xref) override {
        workload_.begin_page();
        TextOutputDev::startPage(page, state, xref);
    }
    void drawChar(GfxState* state, double x, double y, double dx, double dy, double origin_x,
                  double origin_y, CharCode code, int bytes, const Unicode* unicode,
                  int length) override {
        workload_.spend_character();
        if (!workload_.is_exhausted())
            TextOutputDev::drawChar(state, x, y, dx, dy, origin_x, origin_y, code, bytes, unicode,
                                    length);
    }
    // Poppler follows a form only when the device does not draw it, and asks just before.
    bool useDrawForm() override {
        constexpr int steps_of_a_form = 500;
        workload_.spend(steps_of_a_form);
        return workload_.is_exhausted();
    }

  private:
    // C++ exceptions must not be thrown through it: Poppler holds locks and memory.
    static void take(void* self, const char* text, int length) noexcept {
        auto& pages = *static_cast<TextPages*>(self);
        try {
            if (!pages.sink_.append({text, static_cast<std::size_t>(length)}))
                pages.workload_.give_up();
        } catch (...) {
            pages.workload_.give_up();
        }
    }

    SinkBuffer& sink_;
    Workload& workload_;
};

// Asked between the operators of a page, behind every eleventh.
bool is_to_end(void* workload) {
    constexpr int operators_between = 11;
    auto& load = *static_cast<Workload*>(workload);
    load.spend(operators_between);
    return load.is_exhausted();
}

// For the document that this thread reads: enough to expand every byte of the file as far as it
// goes.
void limit_expansion(std::int64_t file_size) {
    constexpr std::int64_t least = std::int64_t{128} << 20;
    constexpr std::int64_t largest_ratio = 1032; // of deflate
    FilterStream::limitOutput(least + largest_ratio * std::min(file_size, Workload::largest_file));
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
    std::unique_ptr<GooFile> file = GooFile::open(files::win32_path(path).c_str());
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

Result<void> read_pages(PDFDoc& document, std::int64_t file_size, const params::ByteSink& sink) {
    // A page is an object of its own: numbers beyond that are not worth the trying.
    const int pages = std::min(document.getNumPages(), document.getXRef()->getNumObjects());
    if (pages <= 0)
        return Failure{ErrorCode::PdfWithoutPages};
    SinkBuffer buffer(sink);
    Workload workload(file_size);
    TextPages output(buffer, workload);
    constexpr double points_per_inch = 72;
    for (int page = 1; page <= pages && !workload.is_exhausted(); ++page)
        document.displayPage(&output, page, points_per_inch, points_per_inch, 0, true, false, false,
                             is_to_end, &workload);
    VELL_TRY(buffer.flush());
    // Half a text would pass for a whole one.
    if (workload.is_exhausted())
        return Failure{ErrorCode::PdfFailed};
    return {};
}

} // namespace

Result<void> read_by_poppler(const files::NativePath& path, const params::ByteSink& sink,
                             std::vector<std::string>& notes) {
    try {
        const std::unique_ptr<GooFile> file = VELL_TRY(open_file(path));
        make_shared_poppler(notes);
        const NoteScope scope(notes);
        const std::int64_t size = file->size();
        limit_expansion(size);
        std::string bytes;
        PDFDoc document(make_stream(*file, size, bytes));
        if (!document.isOk())
            return Failure{code_of(document.getErrorCode())};
        if (!document.okToCopy()) {
            notes.push_back("PDF: Copying of text from this document is not allowed.");
            return Failure{ErrorCode::PdfCopyForbidden};
        }
        return read_pages(document, size, sink);
    } catch (...) { // mostly memory that cannot be had, for what a damaged file asks for
        return Failure{ErrorCode::PdfFailed};
    }
}

} // namespace vell::documents
