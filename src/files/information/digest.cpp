#include "src/files/information/digest.h"

#include "src/system/system.h"

namespace vell::files {
namespace {

using params::Call;
using params::SwitchSet;

constexpr std::size_t buffer_size = 65'545;
constexpr std::size_t read_size = 65'535;

DigestAlgorithm algorithm_of(const SwitchSet& switches) {
    if (switches.has("-SHA1") || switches.has("-Hash_SHA1"))
        return DigestAlgorithm::Sha1;
    if (switches.has("-SHA256"))
        return DigestAlgorithm::Sha256;
    return switches.has("-SHA512") ? DigestAlgorithm::Sha512 : DigestAlgorithm::Md5;
}

Result<void> add_file(File& file, Digest& digest, std::span<char> buffer) {
    for (;;) {
        const std::size_t count = VELL_TRY(file.read(buffer));
        if (count == 0)
            return {};
        VELL_TRY(digest.add(buffer.first(count)));
    }
}

std::string hexadecimal(std::span<const std::uint8_t> bytes, bool colons) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const std::uint8_t byte : bytes) {
        if (colons && !text.empty())
            text += ':';
        text += digits[byte >> 4];
        text += digits[byte & 0xF];
    }
    return text;
}

} // namespace

Result<void> get_file_hash(Call& call, System& system) {
    std::vector<char> buffer(buffer_size);
    const NativePath path = VELL_TRY(call.path(1));
    const SwitchSet switches = call.switches();
    const auto digest = VELL_TRY(system.new_digest(algorithm_of(switches)));
    const auto file = VELL_TRY(system.files().open(path, Permission::Read));
    VELL_TRY(add_file(*file, *digest, std::span(buffer).first(read_size)));
    const std::vector<std::uint8_t> checksum = VELL_TRY(digest->finish());
    call.set_literal(hexadecimal(checksum, switches.has("-Colons")));
    return {};
}

} // namespace vell::files
