// What libFuzzer calls. A program of one target runs that one; the program that has them all, for
// their seeds, the one that VELL_FUZZ_TARGET names.
#include "fuzz/input.h"

namespace {

const vell::fuzz::Target& chosen_target() {
    const char* name = std::getenv("VELL_FUZZ_TARGET");
    const vell::fuzz::Target* target = vell::fuzz::Target::newest;
    while (name && target && std::string_view(target->name) != name)
        target = target->next;
    if (!target || (!name && target->next)) {
        std::fprintf(stderr, "VELL_FUZZ_TARGET names none of the targets\n");
        std::exit(2);
    }
    return *target;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const vell::fuzz::Target& target = chosen_target();
    return target.run(data, size);
}
