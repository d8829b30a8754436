// ConvertUTF.cpp - the UTF conversion routines and the layer over them.
#include "foundation/ConvertUTF.h"

#include <cstring>

namespace {

// ---------------------------------------------------------------------------------------------
// Tables of the classic UTF-8 algorithm

// Trailing bytes announced by a lead byte: 0 up to 0xBF, then 1, 2, 3, 4, 5 from 0xC0, 0xE0,
// 0xF0, 0xF8, 0xFC. Continuation bytes (0x80-0xBF) show 0 and are caught by IsLegalUTF8.
const unsigned char kTrailingBytesForUTF8[256] = {
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1,
    2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 3, 3, 3, 3, 3, 3, 3, 3, 4, 4, 4, 4, 5, 5, 5, 5};

// Subtracted after summing the shifted bytes of a sequence with n trailing bytes: removes the
// lead-byte marks and the 10xxxxxx marks of the continuation bytes in one step.
const UTF32 kOffsetsFromUTF8[6] = {0x00000000UL, 0x00003080UL, 0x000E2080UL,
                                   0x03C82080UL, 0xFA082080UL, 0x82082080UL};

// Mark of the lead byte of a sequence of n bytes (index n).
const UTF8 kFirstByteMark[7] = {0x00, 0x00, 0xC0, 0xE0, 0xF0, 0xF8, 0xFC};

constexpr UTF32 kReplacementChar = 0xFFFD;
constexpr UTF32 kMaxLegalUTF32 = 0x10FFFF;
constexpr UTF32 kSurrogateHighStart = 0xD800;
constexpr UTF32 kSurrogateHighEnd = 0xDBFF;
constexpr UTF32 kSurrogateLowStart = 0xDC00;
constexpr UTF32 kSurrogateLowEnd = 0xDFFF;

inline bool IsSurrogate(UTF32 c) {
    return c >= kSurrogateHighStart && c <= kSurrogateLowEnd;
}

// ---------------------------------------------------------------------------------------------
// Sources: each yields one code point per Next call

enum DecodeResult { kDecoded, kEnd, kIllegal };

// UTF-32 units of any 32-bit type (UTF32 or wchar_t). Values above 0x10FFFF pass through: the
// target decides what becomes of them.
template <class T> struct Utf32Source {
    const T* p;
    const T* end;
    DecodeResult Next(UTF32& cp) {
        if (p >= end)
            return kEnd;
        UTF32 c = static_cast<UTF32>(*p);
        if (IsSurrogate(c))
            return kIllegal;
        ++p;
        cp = c;
        return kDecoded;
    }
};

// UTF-16 units in host order, read through memcpy so that any byte address works.
struct Utf16Source {
    const unsigned char* p;
    const unsigned char* end; // p + 2 * units
    static UTF16 Load(const unsigned char* at) {
        UTF16 u;
        std::memcpy(&u, at, sizeof u);
        return u;
    }
    DecodeResult Next(UTF32& cp) {
        if (end - p < 2)
            return kEnd;
        UTF32 c = Load(p);
        if (c >= kSurrogateHighStart && c <= kSurrogateHighEnd) {
            if (end - p < 4) // high surrogate at the end: lone
                return kIllegal;
            UTF32 c2 = Load(p + 2);
            if (c2 < kSurrogateLowStart || c2 > kSurrogateLowEnd)
                return kIllegal;
            cp = ((c - kSurrogateHighStart) << 10) + (c2 - kSurrogateLowStart) + 0x10000;
            p += 4;
            return kDecoded;
        }
        if (c >= kSurrogateLowStart && c <= kSurrogateLowEnd) // low surrogate first: reversed or lone
            return kIllegal;
        cp = c;
        p += 2;
        return kDecoded;
    }
};

struct Utf8Source {
    const UTF8* p;
    const UTF8* end;
    DecodeResult Next(UTF32& cp) {
        if (p >= end)
            return kEnd;
        UTF8 lead = *p;
        if (lead < 0x80) { // 0xxxxxxx -> U+0000..U+007F
            cp = lead;
            ++p;
            return kDecoded;
        }
        int extra = kTrailingBytesForUTF8[lead];
        if (extra >= end - p) // cut off by the source end
            return kIllegal;
        if (!IsLegalUTF8(p, extra + 1))
            return kIllegal;
        UTF32 c = 0;
        switch (extra) { // IsLegalUTF8 has refused 4 and 5 already
        case 3:
            c += *p++;
            c <<= 6;
            [[fallthrough]];
        case 2:
            c += *p++;
            c <<= 6;
            [[fallthrough]];
        case 1:
            c += *p++;
            c <<= 6;
            [[fallthrough]];
        default:
            c += *p++;
        }
        c -= kOffsetsFromUTF8[extra];
        if (c > kMaxLegalUTF32 || IsSurrogate(c))
            return kIllegal;
        cp = c;
        return kDecoded;
    }
};

// ---------------------------------------------------------------------------------------------
// Targets: Size says how many units a code point needs (0: not representable, stop),
// Room whether they fit, Write stores them

template <class T> struct Utf32Target {
    T* p;
    T* end;
    static int Size(UTF32&) { return 1; }
    bool Room(int n) const { return end - p >= n; }
    void Write(UTF32 cp, int) { *p++ = static_cast<T>(cp); }
};

struct Utf16Target {
    unsigned char* p;
    unsigned char* end; // p + 2 * units
    static int Size(UTF32& cp) {
        if (cp <= 0xFFFF)
            return 1;
        return cp > kMaxLegalUTF32 ? 0 : 2;
    }
    bool Room(int n) const { return end - p >= 2 * n; }
    void Store(UTF32 u) {
        UTF16 v = static_cast<UTF16>(u);
        std::memcpy(p, &v, sizeof v);
        p += 2;
    }
    void Write(UTF32 cp, int n) {
        if (n == 1) {
            Store(cp);
        } else {
            cp -= 0x10000;
            Store((cp >> 10) + kSurrogateHighStart);
            Store((cp & 0x3FF) + kSurrogateLowStart);
        }
    }
};

struct Utf8Target {
    UTF8* p;
    UTF8* end;
    static int Size(UTF32& cp) {
        if (cp < 0x80)
            return 1;
        if (cp < 0x800)
            return 2;
        if (cp < 0x10000)
            return 3;
        if (cp <= kMaxLegalUTF32)
            return 4;
        cp = kReplacementChar;
        return 3;
    }
    bool Room(int n) const { return end - p >= n; }
    void Write(UTF32 cp, int n) {
        if (n == 1) {
            *p++ = static_cast<UTF8>(cp);
            return;
        }
        // Fill from the back: 10xxxxxx continuation bytes, then the lead byte.
        UTF8* last = p + n;
        UTF8* q = last;
        for (int i = 1; i < n; ++i) {
            *--q = static_cast<UTF8>((cp | 0x80) & 0xBF);
            cp >>= 6;
        }
        *--q = static_cast<UTF8>(cp | kFirstByteMark[n]);
        p = last;
    }
};

// ---------------------------------------------------------------------------------------------
// The one conversion loop behind all routines

template <class Source, class Target> unsigned long Convert(Source src, Target tgt, bool counting) {
    unsigned long count = 0;
    UTF32 cp = 0;
    for (;;) {
        DecodeResult r = src.Next(cp);
        if (r == kEnd)
            break;
        if (r == kIllegal)
            return counting ? 0 : count;
        int n = Target::Size(cp);
        if (n == 0)
            return counting ? 0 : count;
        if (!counting) {
            if (!tgt.Room(n))
                break;
            tgt.Write(cp, n);
        }
        count += static_cast<unsigned long>(n);
    }
    return count;
}

const unsigned char* Bytes(const UTF16* p) {
    return reinterpret_cast<const unsigned char*>(p);
}
unsigned char* Bytes(UTF16* p) {
    return reinterpret_cast<unsigned char*>(p);
}

} // namespace

// ---------------------------------------------------------------------------------------------
// Legality tests

bool IsLegalUTF8(const unsigned char* source, int length) {
    if (length < 1 || length > 4)
        return false;
    const unsigned char* srcptr = source + length;
    unsigned char a = 0;
    switch (length) {
    case 4:
        if ((a = *--srcptr) < 0x80 || a > 0xBF)
            return false;
        [[fallthrough]];
    case 3:
        if ((a = *--srcptr) < 0x80 || a > 0xBF)
            return false;
        [[fallthrough]];
    case 2:
        if ((a = *--srcptr) > 0xBF)
            return false;
        // The second byte's range depends on the lead byte.
        switch (*source) {
        case 0xE0: // overlong below U+0800
            if (a < 0xA0)
                return false;
            break;
        case 0xED: // U+D800..U+DFFF
            if (a > 0x9F)
                return false;
            break;
        case 0xF0: // overlong below U+10000
            if (a < 0x90)
                return false;
            break;
        case 0xF4: // above U+10FFFF
            if (a > 0x8F)
                return false;
            break;
        default:
            if (a < 0x80)
                return false;
        }
        [[fallthrough]];
    default:
        // A continuation byte cannot lead; 0xC0 and 0xC1 only start overlong forms.
        if (*source >= 0x80 && *source < 0xC2)
            return false;
    }
    return *source <= 0xF4;
}

bool IsLegalUTF8Sequence(const unsigned char* source, const unsigned char* sourceEnd) {
    if (source == nullptr || source >= sourceEnd)
        return false;
    int length = kTrailingBytesForUTF8[*source] + 1;
    if (length > sourceEnd - source)
        return false;
    return IsLegalUTF8(source, length);
}

// ---------------------------------------------------------------------------------------------
// Conversion routines

unsigned long ConvertUTF32toUTF16(const UTF32* sourceStart, const UTF32* sourceEnd, UTF16* targetStart,
                                  UTF16* targetEnd) {
    return Convert(Utf32Source<UTF32>{sourceStart, sourceEnd},
                   Utf16Target{Bytes(targetStart), Bytes(targetEnd)}, targetStart == nullptr);
}

unsigned long ConvertUTF16toUTF32(const UTF16* sourceStart, const UTF16* sourceEnd, UTF32* targetStart,
                                  UTF32* targetEnd) {
    return Convert(Utf16Source{Bytes(sourceStart), Bytes(sourceEnd)},
                   Utf32Target<UTF32>{targetStart, targetEnd}, targetStart == nullptr);
}

unsigned long ConvertUTF16toUTF8(const UTF16* sourceStart, const UTF16* sourceEnd, UTF8* targetStart,
                                 UTF8* targetEnd) {
    return Convert(Utf16Source{Bytes(sourceStart), Bytes(sourceEnd)}, Utf8Target{targetStart, targetEnd},
                   targetStart == nullptr);
}

unsigned long ConvertUTF8toUTF16(const UTF8* sourceStart, const UTF8* sourceEnd, UTF16* targetStart,
                                 UTF16* targetEnd) {
    return Convert(Utf8Source{sourceStart, sourceEnd}, Utf16Target{Bytes(targetStart), Bytes(targetEnd)},
                   targetStart == nullptr);
}

unsigned long ConvertUTF32toUTF8(const UTF32* sourceStart, const UTF32* sourceEnd, UTF8* targetStart,
                                 UTF8* targetEnd) {
    return Convert(Utf32Source<UTF32>{sourceStart, sourceEnd}, Utf8Target{targetStart, targetEnd},
                   targetStart == nullptr);
}

unsigned long ConvertUTF8toUTF32(const UTF8* sourceStart, const UTF8* sourceEnd, UTF32* targetStart,
                                 UTF32* targetEnd) {
    return Convert(Utf8Source{sourceStart, sourceEnd}, Utf32Target<UTF32>{targetStart, targetEnd},
                   targetStart == nullptr);
}

// ---------------------------------------------------------------------------------------------
// Layer over the routines

unsigned long UnicodeToUTF8(const wchar_t* source, unsigned long sourceLength, unsigned char* target,
                            unsigned long targetLength) {
    if (source == nullptr)
        return 0;
    return Convert(Utf32Source<wchar_t>{source, source + sourceLength},
                   Utf8Target{target, target ? target + targetLength : nullptr}, target == nullptr);
}

unsigned long UTF8ToUnicode(unsigned char* source, unsigned long sourceLength, wchar_t* target,
                            unsigned long targetLength) {
    if (source == nullptr)
        return 0;
    return Convert(Utf8Source{source, source + sourceLength},
                   Utf32Target<wchar_t>{target, target ? target + targetLength : nullptr}, target == nullptr);
}

unsigned long UnicodeToUTF16(const wchar_t* source, unsigned long sourceLength, unsigned char* target,
                             unsigned long targetLength) {
    if (source == nullptr)
        return 0;
    return Convert(Utf32Source<wchar_t>{source, source + sourceLength},
                   Utf16Target{target, target ? target + (targetLength & ~1UL) : nullptr}, target == nullptr);
}

unsigned long UTF16ToUnicode(unsigned char* source, unsigned long sourceLength, wchar_t* target,
                             unsigned long targetLength) {
    if (source == nullptr)
        return 0;
    return Convert(Utf16Source{source, source + (sourceLength & ~1UL)},
                   Utf32Target<wchar_t>{target, target ? target + targetLength : nullptr}, target == nullptr);
}

bool DoesUnicodeStrContainAnyUTF8CharsLargerThanOneByte(const wchar_t* text, int n) {
    if (text == nullptr)
        return false;
    for (int i = n - 1; i >= 0; --i) {
        if (text[i] >= 128)
            return true;
    }
    return false;
}

bool DoesUTF8StrContainAnyCharsLargerThanOneByte(unsigned char* bytes, unsigned long n) {
    if (bytes == nullptr)
        return false;
    // Eight bytes at a time: any top bit set in the word means a byte above 127.
    unsigned long i = 0;
    for (; i + 8 <= n; i += 8) {
        uint64_t word;
        std::memcpy(&word, bytes + i, sizeof word);
        if (word & 0x8080808080808080ULL)
            return true;
    }
    for (; i < n; ++i) {
        if (bytes[i] > 127)
            return true;
    }
    return false;
}
