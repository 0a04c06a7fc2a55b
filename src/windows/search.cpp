#include "src/files/listing/search.h"
#include "src/system/tree_system.h"

#include <windows.h>

#include <array>
#include <cstddef>
#include <memory>

namespace vell::files {
namespace {

constexpr std::size_t unit_count = 0x10000;
using CaseTable = std::array<wchar_t, unit_count>;

// The capital of every character. Without linguistic casing the system maps by the rules of its
// file systems, unit by unit.
std::unique_ptr<const CaseTable> make_case_table() {
    const auto every = std::make_unique<CaseTable>();
    for (std::size_t i = 0; i < unit_count; ++i)
        (*every)[i] = static_cast<wchar_t>(i);
    auto table = std::make_unique<CaseTable>(*every);
    constexpr int count = unit_count;
    // Nothing but a lack of memory keeps it from that; names are compared as they stand then.
    if (LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_UPPERCASE, every->data(), count, table->data(),
                      count, nullptr, nullptr, 0) != count)
        *table = *every;
    return table;
}

class Win32Search : public SearchSystem {
  public:
    Result<NativePath> full_path(const NativePath& path) override {
        return system_tree().full_path(path);
    }

    void fold_case(std::u16string& name) override {
        static const std::unique_ptr<const CaseTable> capitals = make_case_table();
        for (char16_t& unit : name)
            unit = static_cast<char16_t>((*capitals)[unit]);
    }

    std::uint64_t milliseconds() override { return GetTickCount64(); }
};

} // namespace

SearchSystem& system_search() {
    static Win32Search search;
    return search;
}

} // namespace vell::files
