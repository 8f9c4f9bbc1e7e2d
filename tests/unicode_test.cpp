// The UTF-8 and UTF-16 helpers, on the cases that decide each encoding
// length, surrogates, and the whole-string converters.
#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "utilities/UTL_unicode.h"

namespace {

using Units = std::vector<int>;

TEST(Unicode, EncodersWriteEachLengthUpToItsBoundaryAndNothingMore) {
  // Code point, its UTF-8 bytes, its UTF-16 units.
  const std::vector<std::tuple<UTF32, Units, Units>> cases = {
      {0x00, {0x00}, {0x00}},
      {0x7F, {0x7F}, {0x7F}},
      {0x80, {0xC2, 0x80}, {0x80}},
      {0x7FF, {0xDF, 0xBF}, {0x7FF}},
      {0x800, {0xE0, 0xA0, 0x80}, {0x800}},
      {0xD800, {0xED, 0xA0, 0x80}, {0xD800}},  // surrogates pass as any other
      {0xFFFF, {0xEF, 0xBF, 0xBF}, {0xFFFF}},
      {0x10000, {0xF0, 0x90, 0x80, 0x80}, {0xD800, 0xDC00}},
      {0x1F600, {0xF0, 0x9F, 0x98, 0x80}, {0xD83D, 0xDE00}},
      {0x10FFFF, {0xF4, 0x8F, 0xBF, 0xBF}, {0xDBFF, 0xDFFF}},
  };
  for (const auto& [c, bytes, units] : cases) {
    UTF8 out8[5] = {0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
    UTF16 out16[3] = {0xEEEE, 0xEEEE, 0xEEEE};
    EXPECT_EQ(bytes, Units(out8, out8 + UTF8_encode(c, out8))) << std::hex << c;
    EXPECT_EQ(0xEE, out8[bytes.size()]) << std::hex << c;
    EXPECT_EQ(units, Units(out16, out16 + UTF16_encode(c, out16))) << std::hex << c;
    EXPECT_EQ(0xEEEE, out16[units.size()]) << std::hex << c;
    // Decoding gives the code point back, reading only its own bytes.
    std::vector<UTF8> encoded(bytes.begin(), bytes.end());
    encoded.resize(encoded.size() + 4, 0xBF);
    EXPECT_EQ(c, UTF8_decode(encoded.data())) << std::hex << c;
  }
  // UTF-16 has no range check: the bits above the 20 a pair holds are dropped.
  UTF16 pair[2];
  ASSERT_EQ(2, UTF16_encode(0x110001, pair));
  EXPECT_EQ((Units{0xD800, 0xDC01}), Units(pair, pair + 2));
}

TEST(UnicodeDeathTest, Utf8RefusesCodePointsBeyondUnicode) {
  UTF8 out[4];
  EXPECT_DEATH(UTF8_encode(0x110000, out), "out of range unicode\\.");
}

TEST(Unicode, Utf8DecodesByLeadByteAndTakesFollowingBytesOnTrust) {
  const std::vector<std::pair<std::vector<UTF8>, UTF32>> cases = {
      {{0x80, 0x80}, 0},                     // bytes that cannot start a character
      {{0xBF, 0x80}, 0},
      {{0xF8, 0x80, 0x80, 0x80, 0x80}, 0},
      {{0xFF, 0x80}, 0},
      {{0xC0, 0xAF}, 0x2F},                  // overlong forms are taken as they come,
      {{0xC1, 0x41}, 0x41},                  // and so are followers that do not continue
      {{0xE2, 0x82, 0xAC}, 0x20AC},
  };
  for (const auto& [bytes, c] : cases) EXPECT_EQ(c, UTF8_decode(bytes.data())) << std::hex << c;
}

TEST(Unicode, Utf8AlignAndNextFindCharacterStarts) {
  const UTF8 text[] = {'a', 0xE2, 0x82, 0xAC, 0xF0, 0x9F, 0x98, 0x80, 'b', 0, 'c'};
  for (int i = 1; i <= 7; ++i) {
    EXPECT_EQ(text + (i < 4 ? 1 : 4), UTF8_align(text + i)) << i;
    EXPECT_EQ(text + (i < 4 ? 4 : 8), UTF8_next(text + i)) << i;
  }
  EXPECT_EQ(text, UTF8_align(text));
  EXPECT_EQ(text + 1, UTF8_next(text));
  EXPECT_EQ(text + 9, UTF8_next(text + 8));
  EXPECT_EQ(text + 10, UTF8_next(text + 9));  // steps past the terminator
}

TEST(Unicode, Utf16DecodesEveryPairToOneOfTwoCodePoints) {
  struct Case {
    UTF16 units[2];
    UTF32 codePoint;
    int consumed;
  } cases[] = {
      {{0x0041, 0xD83D}, 0x41, 1},    {{0xD7FF, 0xDC00}, 0xD7FF, 1},
      {{0xDC00, 0xDC00}, 0xDC00, 1},  // a lone low surrogate stands for itself
      {{0xDFFF, 0xDC00}, 0xDFFF, 1},  {{0xE000, 0xDC00}, 0xE000, 1},
      {{0xD800, 0xDC00}, 0x10000, 2},  // both halves zero
      {{0xD83D, 0xDE00}, 0x10001, 2},  // anything else
      {{0xD800, 0xDC01}, 0x10001, 2}, {{0xDBFF, 0xDC00}, 0x10001, 2},
      {{0xDBFF, 0x0041}, 0x10001, 2},  // the second unit is taken whatever it is
  };
  for (const Case& c : cases) {
    UTF32 codePoint = 0xDEADBEEF;
    EXPECT_EQ(c.units + c.consumed, UTF16_decode(c.units, codePoint)) << std::hex << c.units[0];
    EXPECT_EQ(c.codePoint, codePoint) << std::hex << c.units[0] << " " << c.units[1];
  }
}

TEST(Unicode, StringsConvertWholeWithinTheirInput) {
  const std::string utf8("a\xC3\xA9\0\xE2\x82\xAC\xF0\x9F\x98\x80z", 12);
  string_utf16 utf16 = u"stale";
  string_utf_8_to_16(utf8, utf16);
  EXPECT_EQ((std::u16string{u'a', 0xE9, 0, 0x20AC, 0xD83D, 0xDE00, u'z'}), utf16);
  std::string back = "stale";
  string_utf_16_to_8(utf16, back);
  // The pair comes back as U+10001, not U+1F600.
  EXPECT_EQ(std::string("a\xC3\xA9\0\xE2\x82\xAC\xF0\x90\x80\x81z", 12), back);

  // Basic-plane text makes the round trip unchanged.
  const std::string plain = "Z\xC3\xBCrich \xE2\x86\x92 \xE5\x8C\x97\xE4\xBA\xAC";
  string_utf_8_to_16(plain, utf16);
  string_utf_16_to_8(utf16, back);
  EXPECT_EQ(plain, back);
  string_utf_8_to_16("", utf16);
  string_utf_16_to_8(u"", back);
  EXPECT_TRUE(utf16.empty() && back.empty());

  // Cut off, or starting mid-character, they still stop at the input's end.
  string_utf_8_to_16(std::string("x\xF0\x9F", 3), utf16);  // F0 9F 00 00 is U+1F000
  EXPECT_EQ((std::u16string{u'x', 0xD83C, 0xDC00}), utf16);
  string_utf_8_to_16(std::string("\x82\xAC" "b", 3), utf16);
  EXPECT_EQ((std::u16string{0, u'b'}), utf16);
  string_utf_16_to_8(std::u16string{u'q', 0xD83D}, back);  // a high surrogate at the end
  EXPECT_EQ("q\xF0\x90\x80\x81", back);
}

}  // namespace
