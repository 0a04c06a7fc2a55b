// Checksums over files in memory, with digests that only remember or fail.
#include "src/files/information/digest.h"
#include "tests/portable/answer_of.h"

#include <gtest/gtest.h>

namespace vell::files {
namespace {

using test::FakeItem;

// What a digest was asked for, and when it fails.
struct DigestLog {
    std::string added; // the beginning
    std::uint64_t count = 0;
    std::optional<DigestAlgorithm> algorithm;
    int operations = 0;
    int failing_operation = 0; // making, each addition, finishing

    Result<void> count_operation() {
        if (++operations == failing_operation)
            return Failure{ErrorCode::OutOfMemory};
        return {};
    }
};

class LoggingDigest : public Digest {
  public:
    explicit LoggingDigest(DigestLog& log) : log_(log) {}

    Result<void> add(std::span<const char> bytes) override {
        VELL_TRY(log_.count_operation());
        log_.count += bytes.size();
        if (log_.count <= 1'000'000)
            log_.added.append(bytes.data(), bytes.size());
        return {};
    }
    Result<std::vector<std::uint8_t>> finish() override {
        VELL_TRY(log_.count_operation());
        return std::vector<std::uint8_t>{0x00, 0x0F, 0xA0, 0xFF};
    }

  private:
    DigestLog& log_;
};

class WithDigests : public test::FakeSystem {
  public:
    Result<std::unique_ptr<Digest>> new_digest(DigestAlgorithm algorithm) override {
        log.algorithm = algorithm;
        VELL_TRY(log.count_operation());
        return std::unique_ptr<Digest>(std::make_unique<LoggingDigest>(log));
    }
    DigestLog log; // of the last function
};

std::string hash(WithDigests& files, std::vector<std::u16string> parameters,
                 int failing_operation = 0) {
    files.log = {};
    files.log.failing_operation = failing_operation;
    const std::string answer = answer_of(get_file_hash, files, std::move(parameters));
    EXPECT_EQ(files.open_files(), 0);
    return answer;
}

TEST(FileHash, TakesEveryByteInOrderWhateverTheReadsBring) {
    std::string bytes;
    for (std::size_t i = 0; i < 200'000; ++i)
        bytes += static_cast<char>('a' + i * i % 23);
    for (const std::size_t longest_read : {bytes.size(), std::size_t{65'534}, std::size_t{1'001}}) {
        WithDigests files;
        files.add(u"file", FakeItem::device(bytes, longest_read));
        EXPECT_EQ(hash(files, {u"", u"file"}), "000fa0ff");
        EXPECT_EQ(files.log.added, bytes);
        EXPECT_EQ(files.longest_request(), 65'535U);
    }
}

TEST(FileHash, SwitchesChooseAlgorithmAndForm) {
    const struct {
        const char16_t* switches;
        DigestAlgorithm algorithm;
        const char* expected;
    } cases[] = {
        {u"", DigestAlgorithm::Md5, "000fa0ff"},
        {u"SHA1", DigestAlgorithm::Md5, "000fa0ff"},
        {u"-SHA1", DigestAlgorithm::Sha1, "000fa0ff"},
        {u"-MD5 -sha1", DigestAlgorithm::Sha1, "000fa0ff"},
        {u"-Hash_SHA1-Colons", DigestAlgorithm::Sha1, "00:0f:a0:ff"},
        {u"-SHA256 -Colons", DigestAlgorithm::Sha256, "00:0f:a0:ff"},
        {u"-sha512", DigestAlgorithm::Sha512, "000fa0ff"},
        {u"-SHA512 -SHA256 -SHA1", DigestAlgorithm::Sha1, "000fa0ff"},
        {u"-colons", DigestAlgorithm::Md5, "00:0f:a0:ff"},
    };
    WithDigests files;
    files.add(u"file", "x");
    for (const auto& [switches, algorithm, expected] : cases) {
        SCOPED_TRACE(utf8_from_utf16(switches));
        EXPECT_EQ(hash(files, {switches, u"file"}), expected);
        EXPECT_EQ(files.log.algorithm, algorithm);
    }
}

// A checksum of a part of the file would be taken for that of the whole.
TEST(FileHash, NoFailureIsTakenForTheEnd) {
    WithDigests files;
    files.add(u"file", std::string(150'000, 'x'));
    ASSERT_EQ(hash(files, {u"", u"file"}), "000fa0ff");
    EXPECT_EQ(files.operations(), 5);   // opening, three reads and the one that finds the end
    EXPECT_EQ(files.log.operations, 5); // making, three additions, finishing
    for (int failing = 1; failing <= 5; ++failing) {
        SCOPED_TRACE(failing);
        files.fail(failing, ErrorCode::Busy);
        EXPECT_EQ(hash(files, {u"", u"file"}), "$$-47");
        files.fail(failing, static_cast<ErrorCode>(23));
        EXPECT_EQ(hash(files, {u"", u"file"}), "$$23");
        files.fail(0, ErrorCode::Ok);
        EXPECT_EQ(hash(files, {u"", u"file"}, failing), "$$-108");
    }
    EXPECT_EQ(hash(files, {u"-SHA1"}), "$$-50");
    EXPECT_EQ(hash(files, {u"", u"$$-43"}), "$$-4299");
    EXPECT_EQ(hash(files, {u"", u"none"}), "$$-43");
}

TEST(FileHash, FilesBeyondFourGibibytesAreTakenToTheirEnd) {
    constexpr std::uint64_t length = (4ULL << 30) + 200'000;
    WithDigests files;
    files.add(u"long", FakeItem{.length = length});
    EXPECT_EQ(hash(files, {u"", u"long"}), "000fa0ff");
    EXPECT_EQ(files.log.count, length);
}

} // namespace
} // namespace vell::files
