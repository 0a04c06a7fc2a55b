// XMP packets and the segments that hold them (ISO 16684-1, section 7.3; XMP part 3).
#pragma once

#include <string_view>

namespace vell::formats::xmp {

// What the identifiers of all XMP segments of a JPEG file begin with, and that of packets.
inline constexpr std::string_view identifier_start = "http://ns.adobe.com/";
inline constexpr std::string_view packet_identifier = "http://ns.adobe.com/xap/1.0/";
// With its end; and that of the segments of an extended packet (1.1.3.1), which have the name of
// the packet, its length and their offset in it before their part of it.
inline constexpr std::string_view packet_segment{"http://ns.adobe.com/xap/1.0/\0", 29};
inline constexpr std::string_view extension_segment{"http://ns.adobe.com/xmp/extension/\0", 35};
// The keyword of a packet's text chunk in a PNG file, with its end.
inline constexpr std::string_view png_keyword{"XML:com.adobe.xmp\0", 18};

// A packet stands between two instructions, one with "begin=" and one with "end=".
inline constexpr std::string_view instruction = "<?xpacket ";
inline constexpr std::string_view instruction_begin = "begin=";
inline constexpr std::string_view instruction_end = "end=";
inline constexpr std::string_view instruction_close = "?>";

// The value of "begin=": a mark that tells the byte order, which is UTF-8 in files.
inline constexpr std::string_view byte_order_mark = "\"\xEF\xBB\xBF\"";
inline constexpr std::string_view header =
    "<?xpacket begin=\"\xEF\xBB\xBF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>\n";
inline constexpr std::string_view trailer = "<?xpacket end=\"w\"?>";

} // namespace vell::formats::xmp
