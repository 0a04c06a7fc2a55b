// Checksums over files in memory, with digests that only remember or fail.
#include "src/files/digest.h"
#include "tests/portable/fake_call.h"
#include "tests/portable/fake_files.h"

#include <gtest/gtest.h>

namespace vell::files {
namespace {

using testing::FakeCall;
using testing::FakeContents;
using testing::FakeFiles;

// What a digest was asked for, and when it fails.
struct DigestLog {
    std::string added;
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

std::string hash(FakeFiles& files, DigestLog& log, std::vector<std::u16string> parameters) {
    FakeCall call(std::move(parameters));
    const DigestMaker maker = [&](DigestAlgorithm algorithm) -> Result<std::unique_ptr<Digest>> {
        log.algorithm = algorithm;
        VELL_TRY(log.count_operation());
        return std::unique_ptr<Digest>(std::make_unique<LoggingDigest>(log));
    };
    const auto done = get_file_hash(call, files, maker);
    EXPECT_EQ(files.open_files(), 0);
    EXPECT_EQ(call.result().has_value(), done.has_value());
    return done ? utf8_from_utf16(call.result().value_or(u"<no result>"))
                : "$$" + std::to_string(number(done.error()));
}

std::string some_bytes(std::size_t count) {
    std::string bytes;
    for (std::size_t i = 0; i < count; ++i)
        bytes += static_cast<char>(i * i % 251);
    return bytes;
}

TEST(FileHash, TakesEveryByteInOrderWhateverTheReadsBring) {
    const std::string bytes = some_bytes(200'000);
    for (const std::size_t longest_read : {bytes.size(), std::size_t{65'534}, std::size_t{1'001}}) {
        FakeFiles files;
        files.add(u"file", FakeContents::device(bytes, longest_read));
        DigestLog log;
        EXPECT_EQ(hash(files, log, {u"", u"file"}), "000fa0ff");
        EXPECT_EQ(log.added, bytes);
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
        {u"-MD5", DigestAlgorithm::Md5, "000fa0ff"},
        {u"SHA1", DigestAlgorithm::Md5, "000fa0ff"},
        {u"-SHA1", DigestAlgorithm::Sha1, "000fa0ff"},
        {u"-MD5 -sha1", DigestAlgorithm::Sha1, "000fa0ff"},
        {u"-Hash_SHA1-Colons", DigestAlgorithm::Sha1, "00:0f:a0:ff"},
        {u"-colons", DigestAlgorithm::Md5, "00:0f:a0:ff"},
    };
    FakeFiles files;
    files.add(u"file", FakeContents::of("x"));
    for (const auto& c : cases) {
        DigestLog log;
        EXPECT_EQ(hash(files, log, {c.switches, u"file"}), c.expected)
            << utf8_from_utf16(c.switches);
        EXPECT_EQ(log.algorithm, c.algorithm) << utf8_from_utf16(c.switches);
    }
}

// A checksum of a part of the file would be taken for that of the whole.
TEST(FileHash, NoFailureIsTakenForTheEnd) {
    FakeFiles files;
    files.add(u"file", FakeContents::of(some_bytes(150'000)));
    DigestLog unhurt;
    ASSERT_EQ(hash(files, unhurt, {u"", u"file"}), "000fa0ff");
    const int file_operations = files.operations();
    EXPECT_EQ(file_operations, 5); // opening, three reads and the one that finds the end
    for (const ErrorCode code : {ErrorCode::Busy, static_cast<ErrorCode>(23)})
        for (int i = 1; i <= file_operations; ++i) {
            files.fail(i, code);
            DigestLog log;
            EXPECT_EQ(hash(files, log, {u"", u"file"}), "$$" + std::to_string(number(code))) << i;
        }
    files.fail(0, ErrorCode::Ok);
    EXPECT_EQ(unhurt.operations, 5); // making, three additions, finishing
    for (int i = 1; i <= unhurt.operations; ++i) {
        DigestLog log;
        log.failing_operation = i;
        EXPECT_EQ(hash(files, log, {u"", u"file"}), "$$-108") << i;
    }
    DigestLog log;
    EXPECT_EQ(hash(files, log, {u"-SHA1"}), "$$-50");
    EXPECT_EQ(hash(files, log, {u"", u""}), "$$-50");
    EXPECT_EQ(hash(files, log, {u"", u"$$-43"}), "$$-4299");
    EXPECT_EQ(hash(files, log, {u"", u"none"}), "$$-43");
}

// A file whose bytes nobody looks at, so that its length costs nothing.
class LongFile : public File {
  public:
    explicit LongFile(std::uint64_t length) : left_(length) {}

    Result<std::size_t> read(std::span<char> buffer) override {
        const auto count = std::min<std::uint64_t>(buffer.size(), left_);
        left_ -= count;
        return static_cast<std::size_t>(count);
    }
    Result<std::uint64_t> size() override { return left_; }
    Result<void> seek(SeekFrom, std::int64_t) override { return Failure{ErrorCode::DiskError}; }
    Result<void> write(std::string_view) override { return Failure{ErrorCode::DiskError}; }
    Result<void> set_end_of_file() override { return Failure{ErrorCode::DiskError}; }
    Result<void> close() override { return {}; }

  private:
    std::uint64_t left_;
};

class LongFiles : public FakeFiles {
  public:
    Result<std::unique_ptr<File>> open(const NativePath&, Permission) override {
        return std::unique_ptr<File>(std::make_unique<LongFile>((5ULL << 30) + 1));
    }
};

class CountingDigest : public Digest {
  public:
    explicit CountingDigest(std::uint64_t& count) : count_(count) {}

    Result<void> add(std::span<const char> bytes) override {
        count_ += bytes.size();
        return {};
    }
    Result<std::vector<std::uint8_t>> finish() override { return std::vector<std::uint8_t>{1}; }

  private:
    std::uint64_t& count_;
};

TEST(FileHash, FilesBeyondFourGibibytesAreTakenToTheirEnd) {
    LongFiles files;
    std::uint64_t count = 0;
    FakeCall call({u"", u"long"});
    const auto done = get_file_hash(call, files, [&](DigestAlgorithm) {
        return Result<std::unique_ptr<Digest>>(std::make_unique<CountingDigest>(count));
    });
    ASSERT_TRUE(done);
    EXPECT_EQ(call.result(), u"01");
    EXPECT_EQ(count, (5ULL << 30) + 1);
}

} // namespace
} // namespace vell::files
