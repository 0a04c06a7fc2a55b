// How much memory a piece of code holds at most, as the sanitizer of addresses counts it; builds
// without it cannot tell.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VELL_COUNTS_MEMORY 1
#endif
#endif

#ifdef VELL_COUNTS_MEMORY
#include <sanitizer/allocator_interface.h>
#endif

namespace vell::test {

#ifdef VELL_COUNTS_MEMORY

// Of one thread, which is the only one that works meanwhile.
struct MemoryCount {
    struct Piece {
        const volatile void* place;
        std::size_t size;
    };
    // Smaller ones do not count.
    static constexpr std::size_t least_size = 1U << 14U;

    bool is_counting = false;
    std::array<Piece, 4096> pieces{};
    std::size_t held = 0;
    std::size_t most = 0;
};
inline MemoryCount memory_count;

inline void note_taken(const volatile void* place, std::size_t size) {
    MemoryCount& count = memory_count;
    if (!count.is_counting || size < MemoryCount::least_size)
        return;
    for (MemoryCount::Piece& piece : count.pieces)
        if (piece.place == nullptr) {
            piece = {place, size};
            break;
        }
    count.held += size;
    count.most = std::max(count.most, count.held);
}
// The size cannot be asked for any more then.
inline void note_given_back(const volatile void* place) {
    if (!memory_count.is_counting || place == nullptr)
        return;
    for (MemoryCount::Piece& piece : memory_count.pieces)
        if (piece.place == place) {
            memory_count.held -= piece.size;
            piece = {};
            return;
        }
}

// Once for all actions: hooks that are installed again count everything twice.
inline void install_hooks() {
    static const int hooks = __sanitizer_install_malloc_and_free_hooks(note_taken, note_given_back);
    static_cast<void>(hooks);
}

#endif

// The most bytes that are held at one time beyond those held before; nullopt where nobody counts.
template <typename Action>
std::optional<std::size_t> most_memory_held(Action action) {
#ifdef VELL_COUNTS_MEMORY
    install_hooks();
    memory_count = {};
    memory_count.is_counting = true;
    action();
    memory_count.is_counting = false;
    return memory_count.most;
#else
    action();
    return std::nullopt;
#endif
}

} // namespace vell::test
