// PDF documents made for the tests of what Poppler does.
#pragma once

#include "tests/portable/image_builder.h"
#include "tests/portable/pdf_builder.h"

#include <string>
#include <string_view>
#include <vector>

namespace vell::test {

// A document of objects as they are given; number 1 is the catalogue.
inline std::string pdf(const std::vector<std::string>& objects, const std::string& trailer = "") {
    test::Pdf document;
    for (int number = 1; const std::string& object : objects)
        document.object(number++, object);
    const std::string size = std::to_string(objects.size() + 1);
    return document.finish("/Root 1 0 R /Size " + size + trailer).bytes;
}

inline std::string stream(const std::string& data, const std::string& entries = "") {
    return "<< /Length " + std::to_string(data.size()) + entries + " >>\nstream\n" + data +
           "\nendstream";
}

inline std::string repeated(std::string_view text, int times) {
    std::string result;
    for (int i = 0; i < times; ++i)
        result += text;
    return result;
}

// One page of this content, with a font F and more objects from number 5 on.
inline std::string
page(const std::string& content, std::vector<std::string> more = {},
     const std::string& resources = "", const std::string& catalogue = "",
     const std::string& font = "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>") {
    std::vector<std::string> objects{
        "<< /Type /Catalog /Pages 2 0 R " + catalogue + " >>",
        "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 600 800] /Contents 4 0 R "
        "/Resources << /Font << /F " +
            font + " >> " + resources + " >> >>",
        stream(content)};
    objects.insert(objects.end(), more.begin(), more.end());
    return pdf(objects);
}

inline const std::string some_text = "BT /F 12 Tf 100 700 Td (Some text) Tj ET";

// A stream as small as deflate makes it.
inline std::string small_stream(const std::string& data, const std::string& entries = "") {
    return stream(test::deflated(data), entries + " /Filter /FlateDecode");
}

// A white JPEG picture of this many pixels to a side; a block of it is two bits.
inline std::string white_picture(unsigned side) {
    const auto table = [](char kind) {
        return std::string("\xFF\xC4\0\x14", 4) + kind + '\1' + std::string(16, '\0');
    };
    const std::string size{static_cast<char>(side >> 8), static_cast<char>(side)};
    return "\xFF\xD8" + std::string("\xFF\xDB\0\x43\0", 5) + std::string(64, '\1') +
           std::string("\xFF\xC0\0\x0B\x08", 5) + size + size + std::string("\1\1\x11\0", 4) +
           table('\0') + table('\x10') + std::string("\xFF\xDA\0\x08\1\1\0\0\x3F\0", 10) +
           std::string(side / 8 * (side / 8) / 4, '\0');
}

} // namespace vell::test
