// Texts of PDF files by Poppler, natively, with the patch of the plug-in: whatever the file holds,
// the text comes or a code, within the time and the memory that docs/decisions/documents.md tells,
// and the same one a second time.
#include "fuzz/input.h"
#include "src/windows/documents/encoding_folder.h"
#include "src/windows/documents/poppler_text.h"

#include <sanitizer/allocator_interface.h>

#include <algorithm>
#include <atomic>
#include <ctime>
#include <string>
#include <vector>

// What stands for the archive that the plug-in unpacks on the user's disk.
const std::string& vell::windows::encoding_folder(std::vector<std::string>&) {
    static const std::string folder = "/usr/share/poppler";
    return folder;
}

namespace vell::pdf_text_fuzz {
namespace {

// Three seconds for small files; the sanitizers take ten times as long.
constexpr double longest_seconds = 3 * 10;

// Counted are 128 MiB and 16 bytes for each byte of the file, and all but small things are.
std::int64_t most_memory(std::size_t file_size) {
    return 2 * ((std::int64_t{128} << 20) + 16 * static_cast<std::int64_t>(file_size));
}

// What is allocated now, and was at most.
std::atomic<std::int64_t> held = 0;
std::atomic<std::int64_t> most_held = 0;

void note_allocation(const volatile void*, std::size_t size) {
    const std::int64_t now = held += static_cast<std::int64_t>(size);
    std::int64_t most = most_held;
    while (now > most && !most_held.compare_exchange_weak(most, now)) {
    }
}

void note_release(const volatile void* place) {
    if (place)
        held -= static_cast<std::int64_t>(
            __sanitizer_get_allocated_size(const_cast<const void*>(place)));
}

[[maybe_unused]] const bool counts_allocations =
    __sanitizer_install_malloc_and_free_hooks(note_allocation, note_release) != 0;

double processor_seconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

struct Outcome {
    int code = 0;
    std::string text;
    bool operator==(const Outcome&) const = default;
};

Outcome read(std::string_view bytes) {
    BytesInMemory source(bytes);
    std::vector<std::string> notes;
    Outcome outcome;
    const std::int64_t before = held;
    most_held = before;
    const double start = processor_seconds();
    const Result<void> done = windows::read_by_poppler(
        source,
        [&](std::string_view piece) {
            outcome.text += piece;
            return Result<void>();
        },
        notes);
    FUZZ_CHECK(processor_seconds() - start <= longest_seconds);
    FUZZ_CHECK(most_held - before <= most_memory(bytes.size()));
    if (!done) {
        outcome.code = number(done.error());
        outcome.text.clear(); // what came before the failure
    }
    return outcome;
}

} // namespace

FUZZ_TARGET(pdf_text) {
    const std::string_view bytes = fuzz::as_text(data, size);
    const Outcome outcome = read(bytes);
    FUZZ_CHECK(outcome.code >= 0 && outcome.code <= number(ErrorCode::PdfFailed));
    FUZZ_CHECK(outcome == read(bytes));
    return 0;
}

} // namespace vell::pdf_text_fuzz
