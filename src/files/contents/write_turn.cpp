#include "src/files/contents/write_turn.h"

#include "src/base/ascii.h"
#include "src/files/tree/item_names.h"

#include <algorithm>
#include <mutex>
#include <set>

namespace vell::files {
namespace {

struct Taken {
    std::mutex mutex;
    std::set<std::u16string> keys;
};

Taken& taken() {
    static Taken turns;
    return turns;
}

} // namespace

Result<WriteTurn> WriteTurn::take(const NativePath& path) {
    std::u16string key = path_as_cut(path.wide);
    std::ranges::transform(key, key.begin(),
                           [](char16_t c) { return c == u'/' ? u'\\' : fold_ascii(c); });
    Taken& turns = taken();
    const std::lock_guard lock(turns.mutex);
    if (!turns.keys.insert(key).second)
        return Failure{ErrorCode::Busy};
    return WriteTurn(std::move(key));
}

WriteTurn::~WriteTurn() {
    if (key_.empty())
        return;
    Taken& turns = taken();
    const std::lock_guard lock(turns.mutex);
    turns.keys.erase(key_);
}

} // namespace vell::files
