#include "src/host/vocabulary/pdf_functions.h"

#include "src/documents/plain_text.h"
#include "src/files/contents/contents.h"
#include "src/host/lifecycle/large_stack.h"
#include "src/windows/documents/poppler_text.h"

namespace vell::host {
namespace {

Result<void> read(const files::NativePath& path, const params::ByteSink& sink,
                  std::vector<std::string>& notes) {
    Result<void> outcome;
    run_on_large_stack([&] { outcome = windows::read_by_poppler(path, sink, notes); });
    return outcome;
}

} // namespace

Result<void> get_as_plain_text(params::Call& call, System&) {
    return documents::get_as_plain_text(call, read);
}

Result<void> get_contents(params::Call& call, System& system) {
    if (call.switches().has("-ExperimentalPDFToPlainText"))
        return get_as_plain_text(call, system);
    return files::get_contents(call, system);
}

} // namespace vell::host
