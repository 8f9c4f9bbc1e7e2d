// The UTF-8 and UTF-16 helpers, on the cases that decide each encoding
// length, surrogates, and the whole-string converters.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "utilities/UTL_unicode.h"

namespace {

std::vector<int> Encode8(UTF32 c) {
  UTF8 out[4] = {0xEE, 0xEE, 0xEE, 0xEE};
  int count = UTF8_encode(c, out);
  std::vector<int> bytes(out, out + count);
  for (int i = count; i < 4; ++i) EXPECT_EQ(0xEE, out[i]) << "wrote past its bytes for " << c;
  return bytes;
}

std::vector<int> Encode16(UTF32 c) {
  UTF16 out[2] = {0xEEEE, 0xEEEE};
  int count = UTF16_encode(c, out);
  std::vector<int> units(out, out + count);
  if (count == 1) {
    EXPECT_EQ(0xEEEE, out[1]) << "wrote past its unit for " << c;
  }
  return units;
}

UTF32 Decode8(std::vector<UTF8> bytes) {
  bytes.resize(bytes.size() + 4, 0xBF);  // continuation bytes that must not be read
  return UTF8_decode(bytes.data());
}

TEST(Unicode, Utf8EncodesEachLengthUpToItsBoundary) {
  EXPECT_EQ((std::vector<int>{0x00}), Encode8(0x00));
  EXPECT_EQ((std::vector<int>{0x7F}), Encode8(0x7F));
  EXPECT_EQ((std::vector<int>{0xC2, 0x80}), Encode8(0x80));
  EXPECT_EQ((std::vector<int>{0xDF, 0xBF}), Encode8(0x7FF));
  EXPECT_EQ((std::vector<int>{0xE0, 0xA0, 0x80}), Encode8(0x800));
  EXPECT_EQ((std::vector<int>{0xE2, 0x82, 0xAC}), Encode8(0x20AC));
  EXPECT_EQ((std::vector<int>{0xED, 0xA0, 0x80}), Encode8(0xD800));  // surrogates too
  EXPECT_EQ((std::vector<int>{0xEF, 0xBF, 0xBF}), Encode8(0xFFFF));
  EXPECT_EQ((std::vector<int>{0xF0, 0x90, 0x80, 0x80}), Encode8(0x10000));
  EXPECT_EQ((std::vector<int>{0xF0, 0x9F, 0x98, 0x80}), Encode8(0x1F600));
  EXPECT_EQ((std::vector<int>{0xF4, 0x8F, 0xBF, 0xBF}), Encode8(0x10FFFF));
}

TEST(UnicodeDeathTest, Utf8RefusesCodePointsBeyondUnicode) {
  UTF8 out[4];
  EXPECT_DEATH(UTF8_encode(0x110000, out), "out of range unicode\\.");
}

TEST(Unicode, Utf8DecodesByLeadByteAndTakesFollowingBytesOnTrust) {
  for (UTF32 c : {0x0u, 0x7Fu, 0x80u, 0x7FFu, 0x800u, 0xD800u, 0xFFFFu, 0x10000u, 0x10FFFFu}) {
    UTF8 bytes[4];
    std::vector<UTF8> encoded(bytes, bytes + UTF8_encode(c, bytes));
    EXPECT_EQ(c, Decode8(encoded)) << std::hex << c;
  }
  // Bytes that cannot start a character decode to 0.
  EXPECT_EQ(0u, Decode8({0x80}));
  EXPECT_EQ(0u, Decode8({0xBF}));
  EXPECT_EQ(0u, Decode8({0xF8, 0x80, 0x80, 0x80}));
  EXPECT_EQ(0u, Decode8({0xFF}));
  // Overlong forms and non-continuation followers are taken as they come.
  EXPECT_EQ(0x2Fu, Decode8({0xC0, 0xAF}));
  EXPECT_EQ(0x41u, Decode8({0xC1, 0x41}));  // (0x01 << 6) | (0x41 & 0x3F)
}

TEST(Unicode, Utf8AlignAndNextFindCharacterStarts) {
  const UTF8 text[] = {'a', 0xE2, 0x82, 0xAC, 0xF0, 0x9F, 0x98, 0x80, 'b', 0, 'c'};
  for (int i = 1; i <= 3; ++i) {
    EXPECT_EQ(text + 1, UTF8_align(text + i)) << i;
    EXPECT_EQ(text + 4, UTF8_next(text + i)) << i;
  }
  for (int i = 4; i <= 7; ++i) {
    EXPECT_EQ(text + 4, UTF8_align(text + i)) << i;
    EXPECT_EQ(text + 8, UTF8_next(text + i)) << i;
  }
  EXPECT_EQ(text, UTF8_align(text));
  EXPECT_EQ(text + 1, UTF8_next(text));
  EXPECT_EQ(text + 9, UTF8_next(text + 8));
  EXPECT_EQ(text + 10, UTF8_next(text + 9));  // steps past the terminator
}

TEST(Unicode, Utf16EncodesPairsAboveTheBasicPlane) {
  EXPECT_EQ((std::vector<int>{0x41}), Encode16(0x41));
  EXPECT_EQ((std::vector<int>{0xD800}), Encode16(0xD800));  // passes through
  EXPECT_EQ((std::vector<int>{0xFFFF}), Encode16(0xFFFF));
  EXPECT_EQ((std::vector<int>{0xD800, 0xDC00}), Encode16(0x10000));
  EXPECT_EQ((std::vector<int>{0xD83D, 0xDE00}), Encode16(0x1F600));
  EXPECT_EQ((std::vector<int>{0xDBFF, 0xDFFF}), Encode16(0x10FFFF));
  // No range check: the bits above the 20 a pair holds are dropped.
  EXPECT_EQ((std::vector<int>{0xD800, 0xDC01}), Encode16(0x110001));
}

TEST(Unicode, Utf16DecodesEveryPairToOneOfTwoCodePoints) {
  struct Case {
    std::vector<UTF16> units;
    UTF32 codePoint;
    int consumed;
  } cases[] = {
      {{0x0041, 0xD83D}, 0x41, 1},
      {{0xD7FF, 0xDC00}, 0xD7FF, 1},
      {{0xDC00, 0xDC00}, 0xDC00, 1},      // a lone low surrogate stands for itself
      {{0xDFFF, 0xDC00}, 0xDFFF, 1},
      {{0xE000, 0xDC00}, 0xE000, 1},
      {{0xD800, 0xDC00}, 0x10000, 2},     // both halves zero
      {{0xD83D, 0xDE00}, 0x10001, 2},     // anything else
      {{0xD800, 0xDC01}, 0x10001, 2},
      {{0xDBFF, 0xDC00}, 0x10001, 2},
      {{0xDBFF, 0x0041}, 0x10001, 2},     // the second unit is taken whatever it is
  };
  for (const Case& c : cases) {
    UTF32 codePoint = 0xDEADBEEF;
    const UTF16* after = UTF16_decode(c.units.data(), codePoint);
    EXPECT_EQ(c.codePoint, codePoint) << std::hex << c.units[0] << " " << c.units[1];
    EXPECT_EQ(c.units.data() + c.consumed, after) << std::hex << c.units[0];
  }
}

TEST(Unicode, StringsConvertWholeIncludingEmbeddedTerminators) {
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
  EXPECT_TRUE(utf16.empty());
  string_utf_16_to_8(u"", back);
  EXPECT_TRUE(back.empty());
}

TEST(Unicode, StringsCutOffOrStartingMidCharacterStayWithinTheInput) {
  string_utf16 utf16;
  string_utf_8_to_16(std::string("x\xF0\x9F", 3), utf16);  // a 4-byte character cut short
  EXPECT_EQ((std::u16string{u'x', 0xD83C, 0xDC00}), utf16);  // F0 9F 00 00 is U+1F000
  string_utf_8_to_16(std::string("\x82\xAC" "b", 3), utf16);  // starts on continuation bytes
  EXPECT_EQ((std::u16string{0, u'b'}), utf16);

  std::string utf8;
  string_utf_16_to_8(std::u16string{u'q', 0xD83D}, utf8);  // a high surrogate at the end
  EXPECT_EQ("q\xF0\x90\x80\x81", utf8);
}

}  // namespace
