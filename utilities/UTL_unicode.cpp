// UTF-8 and UTF-16 one code point at a time.
#include "utilities/UTL_unicode.h"

#include <cassert>
#include <cstring>

static bool IsContinuation(UTF8 byte) {
  return (byte & 0xC0) == 0x80;
}

const UTF8* UTF8_align(const UTF8* p) {
  while (IsContinuation(*p)) --p;
  return p;
}

const UTF8* UTF8_next(const UTF8* p) {
  p = UTF8_align(p) + 1;
  while (IsContinuation(*p)) ++p;
  return p;
}

UTF32 UTF8_decode(const UTF8* p) {
  const UTF8 lead = *p;
  if (lead < 0x80) return lead;
  // A continuation byte or 0xF8..0xFF keeps no bits and no following bytes,
  // and so decodes to 0.
  int following = 0;
  UTF8 mask = 0;
  if ((lead & 0xE0) == 0xC0) following = 1, mask = 0x1F;
  if ((lead & 0xF0) == 0xE0) following = 2, mask = 0x0F;
  if ((lead & 0xF8) == 0xF0) following = 3, mask = 0x07;
  UTF32 value = lead & mask;
  for (int i = 1; i <= following; ++i) value = (value << 6) | (p[i] & 0x3F);
  return value;
}

int UTF8_encode(UTF32 c, UTF8 out[4]) {
  if (c < 0x80) {
    out[0] = (UTF8)c;
    return 1;
  }
  if (c < 0x800) {
    out[0] = (UTF8)(0xC0 | ((c & 0x7C0) >> 6));
    out[1] = (UTF8)(0x80 | (c & 0x3F));
    return 2;
  }
  if (c <= 0xFFFF) {
    out[0] = (UTF8)(0xE0 | ((c & 0xF000) >> 12));
    out[1] = (UTF8)(0x80 | ((c & 0xFC0) >> 6));
    out[2] = (UTF8)(0x80 | (c & 0x3F));
    return 3;
  }
  if (c <= 0x10FFFF) {
    out[0] = (UTF8)(0xF0 | ((c & 0x1C0000) >> 18));
    out[1] = (UTF8)(0x80 | ((c & 0x3F000) >> 12));
    out[2] = (UTF8)(0x80 | ((c & 0xFC0) >> 6));
    out[3] = (UTF8)(0x80 | (c & 0x3F));
    return 4;
  }
  assert(!"out of range unicode.");
  // Without assertions nothing is written for a code point UTF-8 cannot hold.
  return 0;
}

const UTF16* UTF16_decode(const UTF16* p, UTF32& outCodePoint) {
  const UTF32 first = p[0];
  if (first < 0xD800 || first > 0xDBFF) {
    outCodePoint = first;
    return p + 1;
  }
  const UTF32 second = p[1];
  // The halves are joined with a logical or, so every pair decodes to
  // U+10000 or U+10001. Names and paths that plugins have stored after this
  // conversion only match again if it stays exactly so.
  outCodePoint = 0x10000 + (((first & 0x3FF) << 10) || (second & 0x3FF));
  return p + 2;
}

int UTF16_encode(UTF32 c, UTF16 out[2]) {
  if (c > 0xFFFF) {
    out[0] = (UTF16)(0xD800 | (((c - 0x10000) & 0xFFC00) >> 10));
    out[1] = (UTF16)(0xDC00 | (c & 0x3FF));
    return 2;
  }
  out[0] = (UTF16)c;
  return 1;
}

void string_utf_8_to_16(const string_utf8& input, string_utf16& output) {
  output.clear();
  // Stepping from a stray continuation byte at the start looks back for its
  // lead byte, and a character cut off at the end makes the decoder read up
  // to three bytes past the string: give both a zero byte to find there.
  string_utf8 padded(1, '\0');
  padded += input;
  padded.append(3, '\0');
  const UTF8* p = (const UTF8*)padded.data() + 1;
  const UTF8* end = p + input.size();
  UTF16 units[2];
  while (p < end) {
    int count = UTF16_encode(UTF8_decode(p), units);
    p = UTF8_next(p);
    output.append(units, count);
  }
}

void string_utf_16_to_8(const string_utf16& input, string_utf8& output) {
  output.clear();
  // A high surrogate at the end pairs with the string's terminator.
  const UTF16* p = input.c_str();
  const UTF16* end = p + input.size();
  UTF8 bytes[4];
  while (p < end) {
    UTF32 c;
    p = UTF16_decode(p, c);
    output.append((const char*)bytes, UTF8_encode(c, bytes));
  }
}
