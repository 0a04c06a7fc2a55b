// Image files made for tests, sound or not, and what their metadata read as.
#pragma once

#include "src/formats/jpeg/segments.h"
#include "src/metadata/get_metadata.h"
#include "tests/portable/integers.h"

#include <zlib.h>

#include <algorithm>
#include <initializer_list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vell::test {

using formats::jpeg::SegmentMarker;

// Of offsets and lengths.
inline std::string big_size(std::size_t size) {
    return big32(static_cast<std::uint32_t>(size));
}
inline std::string little_size(std::size_t size) {
    return little32(static_cast<std::uint32_t>(size));
}

// A segment may lie about its length.
inline std::string segment(SegmentMarker marker, const std::string& payload,
                           std::optional<std::uint16_t> length = {}) {
    const auto true_length = static_cast<std::uint16_t>(payload.size() + 2);
    return std::string{'\xFF', static_cast<char>(marker)} + big16(length.value_or(true_length)) +
           payload;
}
// Segments between SOI and a scan.
inline std::string jpeg(std::initializer_list<std::string> segments) {
    std::string bytes = "\xFF\xD8";
    for (const std::string& each : segments)
        bytes += each;
    return bytes + segment(SegmentMarker::Sos, std::string(10, '\1')) + "scan\xFF\xD9";
}
inline std::string exif_segment(const std::string& block) {
    return segment(SegmentMarker::App1, std::string("Exif\0\0", 6) + block);
}

inline const std::string packet_identifier("http://ns.adobe.com/xap/1.0/\0", 29);
inline std::string packet_segment(const std::string& packet) {
    return segment(SegmentMarker::App1, packet_identifier + packet);
}
inline std::string profile_segment(std::size_t number, std::size_t count, const std::string& part) {
    return segment(SegmentMarker::App2, std::string("ICC_PROFILE\0", 12) +
                                            static_cast<char>(number) + static_cast<char>(count) +
                                            part);
}

inline std::string png_chunk(const std::string& type, const std::string& data,
                             std::optional<std::uint32_t> length = {}) {
    return big32(length.value_or(static_cast<std::uint32_t>(data.size()))) + type + data + "sum.";
}
inline std::string png(std::initializer_list<std::string> chunks) {
    std::string bytes = "\x89PNG\r\n\x1A\n" + png_chunk("IHDR", std::string(13, '\1'));
    for (const std::string& each : chunks)
        bytes += each;
    return bytes + png_chunk("IEND", "");
}

inline std::string resource(std::uint16_t id, const std::string& data, const std::string& name = "",
                            std::optional<std::uint32_t> size = {}) {
    std::string bytes = "8BIM" + big16(id) + static_cast<char>(name.size()) + name +
                        (name.size() % 2 == 0 ? std::string(1, '\0') : "");
    return bytes + big32(size.value_or(static_cast<std::uint32_t>(data.size()))) + data;
}
inline std::string dataset(char record, char number, const std::string& value) {
    return std::string{'\x1C', record, number} + big16(static_cast<std::uint16_t>(value.size())) +
           value;
}

inline std::string photoshop(const std::string& resources) {
    return segment(SegmentMarker::App13, std::string("Photoshop 3.0\0", 14) + resources);
}

inline std::string deflated(const std::string& bytes) {
    uLongf size = compressBound(static_cast<uLong>(bytes.size()));
    std::string result(size, '\0');
    compress(reinterpret_cast<Bytef*>(result.data()), &size,
             reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uLong>(bytes.size()));
    result.resize(size);
    return result;
}

// The text with "|" for carriage returns; "<5:…>" stands around what is in encoding 5, "<bold:…>"
// around what has a style.
inline std::string shown(const metadata::MetadataText& text) {
    std::string all;
    for (const auto& [bytes, encoding, style] : text.pieces()) {
        const bool is_utf8 = encoding == params::TextEncoding::Utf8;
        const std::string number = is_utf8 ? "" : std::to_string(static_cast<int>(encoding));
        const std::string kind = style.empty() ? number : std::string(style);
        all += kind.empty() ? bytes : "<" + kind + ":" + bytes + ">";
    }
    std::ranges::replace(all, '\r', '|');
    return all;
}

inline std::string code_text(ErrorCode code) {
    return "!" + std::to_string(number(code));
}
// The text, and the code of a failure behind it.
inline std::string shown(const metadata::MetadataText& text, const Result<void>& done) {
    return shown(text) + (done ? "" : code_text(done.error()));
}
// A section of tagged text: its word and number, and the value.
inline std::string section(const std::string& tag, const std::string& value) {
    return "|##" + tag + "|" + value + "|##END" + tag.substr(tag.find(' '));
}
// Sections, from "EXIF 271=Maker; GPS 5=0".
inline std::string tagged(std::string_view sections) {
    std::string all;
    for (std::size_t at = 0, end = 0; end != sections.npos; at = end + 2) {
        end = sections.find("; ", at);
        const std::string one(sections.substr(at, end - at));
        all += section(one.substr(0, one.find('=')), one.substr(one.find('=') + 1));
    }
    return all;
}

// What the switches read of a file, behind it "!" and the code of a failure.
inline std::string metadata_of(std::string_view switches, files::File& file) {
    const auto request = metadata::metadata_request_of(params::SwitchSet(switches));
    if (!request)
        return code_text(request.error());
    auto reader = files::BufferedReader::over(file);
    if (!reader)
        return code_text(reader.error());
    metadata::MetadataText text;
    const Result<void> done = metadata::read_image_metadata(*reader, *request, text);
    return shown(text, done);
}
inline std::string metadata_of(std::string_view switches, std::string bytes) {
    const auto file = files::memory_file(std::move(bytes));
    return metadata_of(switches, *file);
}

// A file that begins with `start` and goes on with one pattern again and again. It counts the bytes
// that are read of it.
class EndlessFile : public files::File {
  public:
    EndlessFile(std::string start, std::string pattern, std::uint64_t size)
        : start_(std::move(start)), pattern_(std::move(pattern)), size_(size) {
        while (block_.size() < (2 << 20))
            block_ += pattern_;
    }
    std::uint64_t bytes_read() const { return bytes_read_; }
    std::size_t longest_read() const { return longest_read_; }

    Result<std::uint64_t> size() override { return size_; }
    Result<void> seek(files::SeekFrom, std::int64_t offset) override {
        position_ = static_cast<std::uint64_t>(offset);
        return {};
    }
    Result<std::size_t> read(std::span<char> buffer) override {
        std::size_t count = static_cast<std::size_t>(
            std::min<std::uint64_t>(buffer.size(), size_ - std::min(position_, size_)));
        if (position_ < start_.size()) {
            count = start_.copy(buffer.data(), count, static_cast<std::size_t>(position_));
        } else {
            const auto phase =
                static_cast<std::size_t>((position_ - start_.size()) % pattern_.size());
            count = block_.copy(buffer.data(), count, phase);
        }
        position_ += count;
        bytes_read_ += count;
        longest_read_ = std::max(longest_read_, buffer.size());
        return count;
    }
    Result<void> write(std::string_view) override { return Failure{ErrorCode::Busy}; }
    Result<void> set_end_of_file() override { return Failure{ErrorCode::Busy}; }
    Result<void> close() override { return {}; }

  private:
    std::string start_;
    std::string pattern_;
    std::string block_;
    std::uint64_t size_;
    std::uint64_t position_ = 0;
    std::uint64_t bytes_read_ = 0;
    std::size_t longest_read_ = 0;
};

} // namespace vell::test
