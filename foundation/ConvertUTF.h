// ConvertUTF.h - conversions between UTF-8, UTF-16 and UTF-32, and the thin layer over them.
//
// Everything here is at global scope, works on caller-owned buffers and never allocates.
// The conversions to and from the local code page live in foundation/Encoder.h, which is
// built on this layer.
#ifndef QZXML_FOUNDATION_CONVERTUTF_H
#define QZXML_FOUNDATION_CONVERTUTF_H

#include <cstddef>
#include <cstdint>
#include <type_traits>

typedef uint32_t UTF32; // a code point
typedef uint16_t UTF16; // a UTF-16 code unit, in host byte order
typedef uint8_t UTF8;   // a UTF-8 code unit

// --- Conversion routines ------------------------------------------------------------------
// Each takes (source start, source end, target start, target end), the end pointers one
// behind the last unit, and returns a count of target units:
//  - a null target start counts only: nothing is written and the number of units a full
//    conversion needs is returned; any illegal input then makes the result 0;
//  - otherwise the conversion stops at the first illegal unit or when the next character
//    does not fit, and returns the units written until then (a stop cannot be told apart
//    from the end of the input).
// Illegal: UTF-8 that IsLegalUTF8 rejects or that is cut off by the source end, surrogate
// code points (0xD800-0xDFFF) in UTF-8 or UTF-32 source, lone or reversed surrogates in
// UTF-16 source. A UTF-32 value above 0x10FFFF becomes U+FFFD going to UTF-8 and stops the
// conversion going to UTF-16. No byte order handling: UTF-16 units are in host order.

unsigned long ConvertUTF32toUTF16(const UTF32* sourceStart, const UTF32* sourceEnd, UTF16* targetStart,
                                  UTF16* targetEnd);
unsigned long ConvertUTF16toUTF32(const UTF16* sourceStart, const UTF16* sourceEnd, UTF32* targetStart,
                                  UTF32* targetEnd);
unsigned long ConvertUTF16toUTF8(const UTF16* sourceStart, const UTF16* sourceEnd, UTF8* targetStart,
                                 UTF8* targetEnd);
unsigned long ConvertUTF8toUTF16(const UTF8* sourceStart, const UTF8* sourceEnd, UTF16* targetStart,
                                 UTF16* targetEnd);
unsigned long ConvertUTF32toUTF8(const UTF32* sourceStart, const UTF32* sourceEnd, UTF8* targetStart,
                                 UTF8* targetEnd);
unsigned long ConvertUTF8toUTF32(const UTF8* sourceStart, const UTF8* sourceEnd, UTF32* targetStart,
                                 UTF32* targetEnd);

// True if the length bytes at source form one legal UTF-8 sequence (length 1 to 4; 5- and
// 6-byte forms, overlong forms, surrogates and values above U+10FFFF are rejected).
bool IsLegalUTF8(const unsigned char* source, int length);

// True if the sequence starting at source is legal and ends before sourceEnd.
bool IsLegalUTF8Sequence(const unsigned char* source, const unsigned char* sourceEnd);

// --- The same routines and tests for other unit types ----------------------------------------
// Any integer or character type of the unit's width serves: char or unsigned char for UTF-8,
// char16_t or unsigned short for UTF-16, wchar_t, char32_t or unsigned int for UTF-32. These
// forward to the routines above, and a nullptr target counts as there.

namespace QzUtfUnits {
template <class T, unsigned N>
constexpr bool kIsUnit = std::is_integral<std::remove_cv_t<T>>::value && sizeof(T) == N;
template <class S, unsigned NS, class T, unsigned NT>
using EnablePair = std::enable_if_t<kIsUnit<S, NS> && kIsUnit<T, NT>, int>;
} // namespace QzUtfUnits

#define QZXML_UTF_FORWARD(Name, FromUnit, FromWidth, ToUnit, ToWidth)                                        \
    template <class S, class T, QzUtfUnits::EnablePair<S, FromWidth, T, ToWidth> = 0>                        \
    inline unsigned long Name(const S* sourceStart, const S* sourceEnd, T* targetStart, T* targetEnd) {      \
        return Name(reinterpret_cast<const FromUnit*>(sourceStart),                                          \
                    reinterpret_cast<const FromUnit*>(sourceEnd), reinterpret_cast<ToUnit*>(targetStart),    \
                    reinterpret_cast<ToUnit*>(targetEnd));                                                   \
    }                                                                                                        \
    template <class S, std::enable_if_t<QzUtfUnits::kIsUnit<S, FromWidth>, int> = 0>                         \
    inline unsigned long Name(const S* sourceStart, const S* sourceEnd, std::nullptr_t, std::nullptr_t) {    \
        return Name(reinterpret_cast<const FromUnit*>(sourceStart),                                          \
                    reinterpret_cast<const FromUnit*>(sourceEnd), static_cast<ToUnit*>(nullptr),             \
                    static_cast<ToUnit*>(nullptr));                                                          \
    }

QZXML_UTF_FORWARD(ConvertUTF32toUTF16, UTF32, 4, UTF16, 2)
QZXML_UTF_FORWARD(ConvertUTF16toUTF32, UTF16, 2, UTF32, 4)
QZXML_UTF_FORWARD(ConvertUTF16toUTF8, UTF16, 2, UTF8, 1)
QZXML_UTF_FORWARD(ConvertUTF8toUTF16, UTF8, 1, UTF16, 2)
QZXML_UTF_FORWARD(ConvertUTF32toUTF8, UTF32, 4, UTF8, 1)
QZXML_UTF_FORWARD(ConvertUTF8toUTF32, UTF8, 1, UTF32, 4)

#undef QZXML_UTF_FORWARD

template <class S, std::enable_if_t<QzUtfUnits::kIsUnit<S, 1>, int> = 0>
inline bool IsLegalUTF8(const S* source, int length) {
    return IsLegalUTF8(reinterpret_cast<const unsigned char*>(source), length);
}

template <class S, std::enable_if_t<QzUtfUnits::kIsUnit<S, 1>, int> = 0>
inline bool IsLegalUTF8Sequence(const S* source, const S* sourceEnd) {
    return IsLegalUTF8Sequence(reinterpret_cast<const unsigned char*>(source),
                               reinterpret_cast<const unsigned char*>(sourceEnd));
}

// --- Layer over the routines ---------------------------------------------------------------
// Lengths of wchar_t buffers count characters; lengths of unsigned char buffers count
// bytes. The result is the number of target units written (characters, bytes, or 16-bit
// units for UnicodeToUTF16). A null target counts only, as above. wchar_t holds a code point.

// UTF-32 (wchar_t) to UTF-8.
unsigned long UnicodeToUTF8(const wchar_t* source, unsigned long sourceLength, unsigned char* target,
                            unsigned long targetLength);
// UTF-8 to UTF-32 (wchar_t).
unsigned long UTF8ToUnicode(unsigned char* source, unsigned long sourceLength, wchar_t* target,
                            unsigned long targetLength);
// UTF-32 (wchar_t) to UTF-16 in host order. targetLength is in bytes (an odd last byte is
// unused); the result counts 16-bit units. The target need not be aligned.
unsigned long UnicodeToUTF16(const wchar_t* source, unsigned long sourceLength, unsigned char* target,
                             unsigned long targetLength);
// UTF-16 in host order to UTF-32 (wchar_t). sourceLength is in bytes (an odd last byte is
// ignored). The source need not be aligned.
unsigned long UTF16ToUnicode(unsigned char* source, unsigned long sourceLength, wchar_t* target,
                             unsigned long targetLength);

// True if any of the first n characters is 128 or above (as a signed value).
bool DoesUnicodeStrContainAnyUTF8CharsLargerThanOneByte(const wchar_t* text, int n);
// True if any of the first n bytes is above 127.
bool DoesUTF8StrContainAnyCharsLargerThanOneByte(unsigned char* bytes, unsigned long n);

// The layer for byte buffers of char or const type; forwards to the functions above, which
// never write to a source.
template <class B, std::enable_if_t<QzUtfUnits::kIsUnit<B, 1>, int> = 0>
inline unsigned long UnicodeToUTF8(const wchar_t* source, unsigned long sourceLength, B* target,
                                   unsigned long targetLength) {
    return UnicodeToUTF8(source, sourceLength, reinterpret_cast<unsigned char*>(target), targetLength);
}
template <class B, std::enable_if_t<QzUtfUnits::kIsUnit<B, 1>, int> = 0>
inline unsigned long UTF8ToUnicode(B* source, unsigned long sourceLength, wchar_t* target,
                                   unsigned long targetLength) {
    return UTF8ToUnicode(reinterpret_cast<unsigned char*>(const_cast<std::remove_cv_t<B>*>(source)),
                         sourceLength, target, targetLength);
}
template <class B, std::enable_if_t<QzUtfUnits::kIsUnit<B, 1>, int> = 0>
inline unsigned long UnicodeToUTF16(const wchar_t* source, unsigned long sourceLength, B* target,
                                    unsigned long targetLength) {
    return UnicodeToUTF16(source, sourceLength, reinterpret_cast<unsigned char*>(target), targetLength);
}
template <class B, std::enable_if_t<QzUtfUnits::kIsUnit<B, 1>, int> = 0>
inline unsigned long UTF16ToUnicode(B* source, unsigned long sourceLength, wchar_t* target,
                                    unsigned long targetLength) {
    return UTF16ToUnicode(reinterpret_cast<unsigned char*>(const_cast<std::remove_cv_t<B>*>(source)),
                          sourceLength, target, targetLength);
}
template <class B, std::enable_if_t<QzUtfUnits::kIsUnit<B, 1>, int> = 0>
inline bool DoesUTF8StrContainAnyCharsLargerThanOneByte(B* bytes, unsigned long n) {
    return DoesUTF8StrContainAnyCharsLargerThanOneByte(
        reinterpret_cast<unsigned char*>(const_cast<std::remove_cv_t<B>*>(bytes)), n);
}

#endif
