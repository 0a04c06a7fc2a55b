// Checksums by the cryptography of Windows.
#include "src/windows/handle.h"
#include "src/windows/parts.h"

#include <bcrypt.h>

#include <algorithm>

namespace vell::windows {

using namespace files;

namespace {

struct HashKind {
    using Type = BCRYPT_HASH_HANDLE;
    static Type empty() { return nullptr; }
    static void close(Type hash) { BCryptDestroyHash(hash); }
};
struct AlgorithmKind {
    using Type = BCRYPT_ALG_HANDLE;
    static Type empty() { return nullptr; }
    static void close(Type algorithm) { BCryptCloseAlgorithmProvider(algorithm, 0); }
};
using UniqueHash = UniqueResource<HashKind>;
using UniqueAlgorithm = UniqueResource<AlgorithmKind>;

// Only a lack of memory is to be expected; an algorithm may be forbidden on a computer.
ErrorCode error_of(NTSTATUS status) {
    constexpr auto no_memory = static_cast<NTSTATUS>(0xC0000017);
    return status == no_memory ? ErrorCode::OutOfMemory : ErrorCode::NotAvailable;
}

class SystemDigest : public Digest {
  public:
    SystemDigest(UniqueAlgorithm algorithm, UniqueHash hash, std::size_t size)
        : algorithm_(std::move(algorithm)), hash_(std::move(hash)), size_(size) {}

    Result<void> add(std::span<const char> bytes) override {
        auto* const data = reinterpret_cast<PUCHAR>(const_cast<char*>(bytes.data())); // read only
        const NTSTATUS status =
            BCryptHashData(hash_.get(), data, static_cast<ULONG>(bytes.size()), 0);
        if (!BCRYPT_SUCCESS(status))
            return Failure{error_of(status)};
        return {};
    }

    Result<std::vector<std::uint8_t>> finish() override {
        std::vector<std::uint8_t> checksum(size_);
        const NTSTATUS status =
            BCryptFinishHash(hash_.get(), checksum.data(), static_cast<ULONG>(checksum.size()), 0);
        if (!BCRYPT_SUCCESS(status))
            return Failure{error_of(status)};
        return checksum;
    }

  private:
    UniqueAlgorithm algorithm_; // outlives the hash
    UniqueHash hash_;
    std::size_t size_;
};

struct AlgorithmRow {
    DigestAlgorithm algorithm;
    const wchar_t* id;
    std::size_t size; // of the checksum, in bytes
};
constexpr AlgorithmRow algorithms[] = {
    {DigestAlgorithm::Md5, BCRYPT_MD5_ALGORITHM, 16},
    {DigestAlgorithm::Sha1, BCRYPT_SHA1_ALGORITHM, 20},
    {DigestAlgorithm::Sha256, BCRYPT_SHA256_ALGORITHM, 32},
    {DigestAlgorithm::Sha512, BCRYPT_SHA512_ALGORITHM, 64},
};

} // namespace

Result<std::unique_ptr<Digest>> new_digest(DigestAlgorithm algorithm) {
    const AlgorithmRow& row = *std::ranges::find(algorithms, algorithm, &AlgorithmRow::algorithm);
    BCRYPT_ALG_HANDLE provider = nullptr;
    NTSTATUS status = BCryptOpenAlgorithmProvider(&provider, row.id, nullptr, 0);
    if (!BCRYPT_SUCCESS(status))
        return Failure{error_of(status)};
    UniqueAlgorithm owned_provider(provider);

    BCRYPT_HASH_HANDLE hash = nullptr;
    status = BCryptCreateHash(provider, &hash, nullptr, 0, nullptr, 0, 0);
    if (!BCRYPT_SUCCESS(status))
        return Failure{error_of(status)};
    UniqueHash owned_hash(hash);
    return std::make_unique<SystemDigest>(std::move(owned_provider), std::move(owned_hash),
                                          row.size);
}

} // namespace vell::windows
