// Items of files: their values put together from their parts, and the properties of images.
#include "movie_builder.h"
#include "src/formats/isobmff/items.h"

#include <gtest/gtest.h>

namespace vell::formats::isobmff {
namespace {

using namespace vell::test;
using namespace std::string_literals;

struct PlacedItem {
    std::uint16_t id;
    std::uint16_t method;
    std::vector<std::array<std::uint32_t, 3>> extents; // index, offset, length
    std::uint16_t data_reference = 0;
};

// With 4 bytes for each of the three, and none for a base.
std::string places(const std::vector<PlacedItem>& items) {
    std::string all = big16(0x4404) + big16(static_cast<std::uint16_t>(items.size()));
    for (const PlacedItem& item : items) {
        all += big16(item.id) + big16(item.method) + big16(item.data_reference) +
               big16(static_cast<std::uint16_t>(item.extents.size()));
        for (const auto& extent : item.extents)
            for (const std::uint32_t number : extent)
                all += big32(number);
    }
    return full_box("iloc", all, 1);
}
std::string reference(std::string_view type, std::uint16_t from,
                      const std::vector<std::uint16_t>& to) {
    std::string all = big16(from) + big16(static_cast<std::uint16_t>(to.size()));
    for (const std::uint16_t id : to)
        all += big16(id);
    return box(type, all);
}

// The media begin at 32.
std::string file_with(std::string_view boxes) {
    return file_type + box("mdat", "0123456789") + full_box("meta", boxes);
}

std::string damage(Damage damage) {
    return "damage " + to_text(static_cast<std::int64_t>(damage));
}

class Asked {
  public:
    explicit Asked(std::string_view boxes) : bytes_(file_with(boxes)), source_(bytes_) {}

    std::string value(ItemId id, std::uint64_t limit = 100) {
        const auto items = Items::read(Window(source_));
        if (!items)
            return "no items";
        const auto value = items->value_of(id, limit);
        return value ? *value : damage(value.error().damage);
    }
    std::string image(ItemId id) {
        const auto items = Items::read(Window(source_));
        const auto image = items->image(id);
        if (!image)
            return damage(image.error().damage);
        return to_text(image->width) + "x" + to_text(image->height) + " " +
               to_text(std::uint64_t{image->depth}) + " " +
               to_text(std::uint64_t{image->rotation}) + " " + text_of(image->codec);
    }

  private:
    std::string bytes_;
    BytesInMemory source_;
};

TEST(FileItems, AreTakenFromTheFileItsOwnBoxAndOtherItems) {
    Asked read(places({{1, 0, {{0, 32, 3}, {0, 38, 2}}},
                       {2, 1, {{0, 1, 0}}},
                       {3, 2, {{2, 1, 2}, {0, 0, 0}}},
                       {4, 0, {{0, 40, 5}}},
                       {5, 0, {{0, 32, 3}}, 1},
                       {6, 2, {{3, 0, 0}}}}) +
               full_box("iref", reference("iloc", 3, {1, 2}) + reference("iloc", 6, {1})) +
               box("idat", "abcdef"));
    EXPECT_EQ(read.value(1), "01267");
    EXPECT_EQ(read.value(2), "bcdef");
    EXPECT_EQ(read.value(3), "cd01267"); // of the second reference, then all of the first
    EXPECT_EQ(read.value(3, 7), "cd01267");
    EXPECT_EQ(read.value(3, 6), damage(Damage::TooLarge));
    EXPECT_EQ(read.value(1, 4), damage(Damage::TooLarge));
    EXPECT_EQ(read.value(5), damage(Damage::Absent)); // of another file
    EXPECT_EQ(read.value(6), damage(Damage::Absent)); // of a reference that is not there
    EXPECT_EQ(read.value(7), damage(Damage::Absent));
    EXPECT_EQ(Asked(places({{1, 1, {{0, 7, 0}}}}) + box("idat", "abcdef")).value(1),
              damage(Damage::CutOff));
}

TEST(FileItems, EndWhereTheyAreMadeOfOneAnother) {
    EXPECT_EQ(
        Asked(places({{1, 2, {{1, 0, 0}}}}) + full_box("iref", reference("iloc", 1, {1}))).value(1),
        damage(Damage::Corrupt));
    EXPECT_EQ(Asked(places({{1, 2, {{1, 0, 0}}}, {2, 2, {{1, 0, 0}}}}) +
                    full_box("iref", reference("iloc", 1, {2}) + reference("iloc", 2, {1})))
                  .value(1),
              damage(Damage::Corrupt));
    // Each made ten times of the next: 10^8 parts.
    std::vector<PlacedItem> items;
    std::string references;
    for (std::uint16_t id = 1; id <= 8; ++id) {
        items.push_back({id, 2, std::vector(10, std::array<std::uint32_t, 3>{1, 0, 0})});
        references += reference("iloc", id, {static_cast<std::uint16_t>(id + 1)});
    }
    items.push_back({9, 1, {{0, 0, 1}}});
    EXPECT_EQ(Asked(places(items) + full_box("iref", references) + box("idat", "a")).value(1),
              damage(Damage::TooLarge));
    // An image that is derived from itself has the size that it says.
    const std::string sizes = box("iprp", box("ipco", full_box("ispe", big32(6) + big32(4))) +
                                              full_box("ipma", big32(1) + big16(1) + "\1\1"));
    EXPECT_EQ(Asked(full_box("iref", reference("dimg", 1, {1})) + sizes).image(1),
              "6x4 0 0 0x00000000");
}

TEST(FileItems, HaveThePropertiesOfImages) {
    const std::string entries =
        full_box("iinf", big16(2) + full_box("infe", big16(1) + big16(0) + "grid\0"s, 2) +
                             full_box("infe", big16(2) + big16(0) + "hvc1\0"s, 2));
    const std::string properties =
        box("iprp", box("ipco", full_box("ispe", big32(60) + big32(40)) +
                                    full_box("pixi", "\3\x08\x08\x0A"s) + box("irot", "\3") +
                                    full_box("ispe", big32(0) + big32(7))) +
                        full_box("ipma", big32(3) + big16(1) + "\3\x81\2\x83" + big16(2) + "\1\1" +
                                             big16(3) + "\1\4"));
    Asked read(entries + full_box("iref", reference("dimg", 1, {2, 2})) + properties);
    EXPECT_EQ(read.image(1), "40x60 26 270 hvc1"); // the codec of what it is made of
    EXPECT_EQ(read.image(2), "60x40 0 0 hvc1");
    EXPECT_EQ(read.image(3), damage(Damage::Absent));
    EXPECT_EQ(read.image(9), damage(Damage::Absent));
}

// Where "pixi" does not tell them: 8, 10 and 12 bits a sample, and one without colour.
TEST(FileItems, HaveTheBitsOfAv1AsItsConfigurationSays) {
    for (const auto& [flags, bits] : {std::pair{'\0', "24"}, std::pair{'\x40', "30"},
                                      std::pair{'\x60', "36"}, std::pair{'\x50', "10"}}) {
        const std::string properties =
            full_box("ispe", big32(6) + big32(4)) + box("av1C", "\x81\4"s + flags + '\0');
        EXPECT_EQ(Asked(box("iprp", box("ipco", properties) +
                                        full_box("ipma", big32(1) + big16(1) + "\2\1\2")))
                      .image(1),
                  "6x4 "s + bits + " 0 0x00000000");
    }
}

// Counts of 2^32 - 1, items without bytes of their own: as many as there are, or as are taken.
TEST(FileItems, AreBoundedInTheirNumber) {
    const std::string count = big32(~0U);
    Asked none(full_box("iloc", big16(0) + count, 2) + full_box("ipma", count) +
               full_box("pitm", "\0\1"s));
    EXPECT_EQ(none.value(1), damage(Damage::Absent));
    std::string empty = big16(0) + big16(0xFFFF);
    for (std::uint16_t id = 0; id < 5000; ++id)
        empty += big16(id) + big16(0) + big16(0) + big16(0xFFFF); // extents of no bytes
    const std::string bytes = file_with(full_box("iloc", empty, 1));
    BytesInMemory source(bytes);
    const auto items = Items::read(Window(source));
    ASSERT_TRUE(items);
    std::size_t extents = 0;
    for (const auto& [id, item] : items->all())
        extents += item.extents.size();
    EXPECT_LE(extents, most_extents);
}

} // namespace
} // namespace vell::formats::isobmff
