// Stepping through and converting UTF-8 and UTF-16 text one code point at a
// time, and whole strings between the two.
//
// These trust their input: nothing checks bounds, terminators or
// well-formedness. The only refusal is UTF8_encode's assertion on code points
// above U+10FFFF, which is a programming error.
#ifndef TOKA_UTILITIES_UTL_UNICODE_H
#define TOKA_UTILITIES_UTL_UNICODE_H

#include <cstdint>
#include <string>

typedef unsigned char UTF8;
typedef char16_t UTF16;
typedef uint32_t UTF32;

typedef std::string string_utf8;      // bytes of UTF-8 text
typedef std::u16string string_utf16;  // units of UTF-16 text

// The first byte of the character that contains *p. A lead byte must come
// before p.
const UTF8* UTF8_align(const UTF8* p);

// The first byte of the character after the one that contains *p; steps past
// a terminator like any other character.
const UTF8* UTF8_next(const UTF8* p);

// The code point of the character that starts at p. A byte that cannot start
// a character decodes to 0; following bytes are taken as they come.
UTF32 UTF8_decode(const UTF8* p);

// Writes c as 1 to 4 bytes (no terminator) and returns how many.
int UTF8_encode(UTF32 c, UTF8 out[4]);

// Reads one code point into outCodePoint and returns the position after it.
// Surrogate pairs decode to U+10000 or U+10001 only (see the definition).
const UTF16* UTF16_decode(const UTF16* p, UTF32& outCodePoint);

// Writes c as 1 or 2 units and returns how many.
int UTF16_encode(UTF32 c, UTF16 out[2]);

// Replace the output with the conversion of the whole input (its length,
// terminators included).
void string_utf_8_to_16(const string_utf8& input, string_utf16& output);
void string_utf_16_to_8(const string_utf16& input, string_utf8& output);

#endif
