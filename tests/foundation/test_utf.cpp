// Tests of the UTF conversion routines and the layer over them.
#include "foundation/ConvertUTF.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

// Bytes of a string literal written with escapes.
std::vector<UTF8> U8(const char* s) {
    return std::vector<UTF8>(s, s + std::strlen(s));
}

unsigned long Count8to32(const std::vector<UTF8>& in) {
    return ConvertUTF8toUTF32(in.data(), in.data() + in.size(), nullptr, nullptr);
}

std::vector<UTF32> Decode8(const std::vector<UTF8>& in, size_t room = 64) {
    std::vector<UTF32> out(room, 0xDEAD);
    unsigned long n = ConvertUTF8toUTF32(in.data(), in.data() + in.size(), out.data(), out.data() + room);
    out.resize(n);
    return out;
}

} // namespace

// "a" U+00E9 U+20AC U+1F600: one character of each UTF-8 length, through every pair of forms.
TEST(ConvertUTFTest, RoundTripThroughAllForms) {
    std::vector<UTF8> utf8 = U8("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
    const std::vector<UTF32> expected = {0x61, 0xE9, 0x20AC, 0x1F600};
    EXPECT_EQ(4u, Count8to32(utf8));
    EXPECT_EQ(expected, Decode8(utf8));

    EXPECT_EQ(5u, ConvertUTF32toUTF16(expected.data(), expected.data() + 4, nullptr, nullptr));
    UTF16 utf16[5];
    ASSERT_EQ(5u, ConvertUTF32toUTF16(expected.data(), expected.data() + 4, utf16, utf16 + 5));
    EXPECT_EQ(0xD83D, utf16[3]);
    EXPECT_EQ(0xDE00, utf16[4]);

    UTF16 viaUtf8[5];
    EXPECT_EQ(5u, ConvertUTF8toUTF16(utf8.data(), utf8.data() + utf8.size(), viaUtf8, viaUtf8 + 5));
    EXPECT_EQ(0, std::memcmp(utf16, viaUtf8, sizeof utf16));

    UTF32 back[4];
    EXPECT_EQ(4u, ConvertUTF16toUTF32(utf16, utf16 + 5, back, back + 4));
    EXPECT_EQ(expected, std::vector<UTF32>(back, back + 4));

    EXPECT_EQ(10u, ConvertUTF16toUTF8(utf16, utf16 + 5, nullptr, nullptr));
    UTF8 bytes[10];
    EXPECT_EQ(10u, ConvertUTF16toUTF8(utf16, utf16 + 5, bytes, bytes + 10));
    EXPECT_EQ(utf8, std::vector<UTF8>(bytes, bytes + 10));
    EXPECT_EQ(10u, ConvertUTF32toUTF8(expected.data(), expected.data() + 4, bytes, bytes + 10));
    EXPECT_EQ(utf8, std::vector<UTF8>(bytes, bytes + 10));
}

// The boundaries of each UTF-8 length decode to themselves, and U+10FFFF is the last legal value.
TEST(ConvertUTFTest, LengthBoundariesAndLargestCodePoint) {
    const UTF32 cps[] = {0x7F, 0x80, 0x7FF, 0x800, 0xD7FF, 0xE000, 0xFFFF, 0x10000, 0x10FFFF};
    for (UTF32 cp : cps) {
        UTF8 buf[4];
        unsigned long n = ConvertUTF32toUTF8(&cp, &cp + 1, buf, buf + 4);
        ASSERT_GT(n, 0u) << cp;
        std::vector<UTF32> back = Decode8(std::vector<UTF8>(buf, buf + n));
        ASSERT_EQ(1u, back.size()) << cp;
        EXPECT_EQ(cp, back[0]);
    }
    EXPECT_TRUE(IsLegalUTF8(reinterpret_cast<const unsigned char*>("\xF4\x8F\xBF\xBF"), 4));
    EXPECT_FALSE(IsLegalUTF8(reinterpret_cast<const unsigned char*>("\xF4\x90\x80\x80"), 4));
}

// Overlong forms, surrogates, 5- and 6-byte forms, stray continuation bytes and bytes
// above 0xF4 are all refused.
TEST(ConvertUTFTest, IllegalUTF8SequencesAreRefused) {
    const char* bad[] = {"\xC0\x80",
                         "\xC1\xBF",
                         "\xE0\x80\x80",
                         "\xE0\x9F\xBF",
                         "\xF0\x80\x80\x80",
                         "\xF0\x8F\xBF\xBF",
                         "\xED\xA0\x80",
                         "\xED\xBF\xBF",
                         "\x80",
                         "\xBF",
                         "\xF5\x80\x80\x80",
                         "\xF8\x88\x80\x80\x80",
                         "\xFC\x84\x80\x80\x80\x80",
                         "\xE2\x28\xA1",
                         "\xFF",
                         "\xFE"};
    for (const char* s : bad) {
        std::vector<UTF8> in = U8(s);
        EXPECT_EQ(0u, Count8to32(in)) << "first byte " << int(in[0]);
        EXPECT_FALSE(IsLegalUTF8Sequence(in.data(), in.data() + in.size())) << int(in[0]);
    }
    // The surrogate's neighbours are legal.
    EXPECT_TRUE(IsLegalUTF8(reinterpret_cast<const unsigned char*>("\xED\x9F\xBF"), 3));
    EXPECT_TRUE(IsLegalUTF8(reinterpret_cast<const unsigned char*>("\xEE\x80\x80"), 3));
    EXPECT_FALSE(IsLegalUTF8(reinterpret_cast<const unsigned char*>("a"), 0));
    EXPECT_FALSE(IsLegalUTF8(reinterpret_cast<const unsigned char*>("\xF8\x88\x80\x80\x80"), 5));
}

// Counting mode gives 0 on bad input; writing mode gives what came before the bad unit.
TEST(ConvertUTFTest, CountingGivesZeroWritingStopsAtError) {
    for (const char* bad : {"ab\xC0", "ab\xC0x"}) {
        EXPECT_EQ(0u, Count8to32(U8(bad)));
        EXPECT_EQ((std::vector<UTF32>{'a', 'b'}), Decode8(U8(bad)));
    }

    // A sequence cut off by the source end: the euro sign without its last byte.
    std::vector<UTF8> cut = U8("x\xE2\x82");
    EXPECT_EQ(0u, Count8to32(cut));
    EXPECT_EQ(1u, Decode8(cut).size());
    EXPECT_FALSE(IsLegalUTF8Sequence(cut.data() + 1, cut.data() + cut.size()));
    EXPECT_TRUE(IsLegalUTF8Sequence(cut.data(), cut.data() + 1));

    UTF16 out[4];
    EXPECT_EQ(0u, ConvertUTF8toUTF16(cut.data(), cut.data() + cut.size(), nullptr, nullptr));
    EXPECT_EQ(1u, ConvertUTF8toUTF16(cut.data(), cut.data() + cut.size(), out, out + 4));
    // An empty source gives 0 in both modes and is no legal sequence.
    EXPECT_EQ(0u, ConvertUTF8toUTF16(cut.data(), cut.data(), out, out + 4));
    EXPECT_EQ(0u, Count8to32({}));
    EXPECT_FALSE(IsLegalUTF8Sequence(cut.data(), cut.data()));
}

// A full target stops before a character that does not fit whole; nothing of it is written.
TEST(ConvertUTFTest, FullTargetStopsWithoutPartialCharacter) {
    const UTF32 text[] = {'a', 0x1F600};
    UTF16 u16[2] = {0, 0x1234};
    EXPECT_EQ(1u, ConvertUTF32toUTF16(text, text + 2, u16, u16 + 2));
    EXPECT_EQ(0x1234, u16[1]);

    UTF8 u8[4] = {0, 0x55, 0x55, 0x55};
    EXPECT_EQ(1u, ConvertUTF32toUTF8(text, text + 2, u8, u8 + 4));
    EXPECT_EQ(0x55, u8[1]);

    std::vector<UTF8> in = U8("abc");
    EXPECT_EQ(2u, Decode8(in, 2).size());
}

// Values above U+10FFFF: U+FFFD in UTF-8, a stop in UTF-16; surrogates in UTF-32 are refused.
TEST(ConvertUTFTest, OutOfRangeAndSurrogateUTF32) {
    const UTF32 big[] = {'a', 0x110000, 'b'};
    UTF8 u8[8];
    ASSERT_EQ(5u, ConvertUTF32toUTF8(big, big + 3, u8, u8 + 8));
    EXPECT_EQ(0, std::memcmp(u8,
                             "a\xEF\xBF\xBD"
                             "b",
                             5));
    EXPECT_EQ(5u, ConvertUTF32toUTF8(big, big + 3, nullptr, nullptr));

    UTF16 u16[4];
    EXPECT_EQ(1u, ConvertUTF32toUTF16(big, big + 3, u16, u16 + 4));
    EXPECT_EQ(0u, ConvertUTF32toUTF16(big, big + 3, nullptr, nullptr));

    const UTF32 sur[] = {'a', 0xDC00};
    EXPECT_EQ(0u, ConvertUTF32toUTF8(sur, sur + 2, nullptr, nullptr));
    EXPECT_EQ(1u, ConvertUTF32toUTF8(sur, sur + 2, u8, u8 + 8));
    EXPECT_EQ(0u, ConvertUTF32toUTF16(sur, sur + 2, nullptr, nullptr));
}

// Lone, reversed and unpaired surrogates in UTF-16 source.
TEST(ConvertUTFTest, BrokenSurrogatesInUTF16) {
    const UTF16 cases[][3] = {
        {'a', 0xD800, 0},      // high surrogate at the end (length 2 below)
        {'a', 0xDC00, 0xD800}, // reversed pair
        {'a', 0xD800, 'b'},    // high without low
    };
    const int lengths[] = {2, 3, 3};
    for (int i = 0; i < 3; ++i) {
        UTF32 out[3];
        EXPECT_EQ(0u, ConvertUTF16toUTF32(cases[i], cases[i] + lengths[i], nullptr, nullptr)) << i;
        EXPECT_EQ(1u, ConvertUTF16toUTF32(cases[i], cases[i] + lengths[i], out, out + 3)) << i;
        EXPECT_EQ(0u, ConvertUTF16toUTF8(cases[i], cases[i] + lengths[i], nullptr, nullptr)) << i;
    }
}

// Buffers of char, wchar_t, char16_t and char32_t reach the same routines as the UTF typedefs,
// and a nullptr target still counts.
TEST(ConvertUTFTest, OtherUnitTypesOfTheSameWidth) {
    const char text[] = "a\xC3\xA9\xF0\x9F\x98\x80";
    const char* end = text + std::strlen(text);
    EXPECT_EQ(3u, ConvertUTF8toUTF32(text, end, nullptr, nullptr));
    wchar_t wide[3];
    ASSERT_EQ(3u, ConvertUTF8toUTF32(text, end, wide, wide + 3));
    EXPECT_EQ(std::wstring(L"a\u00E9\U0001F600"), std::wstring(wide, 3));

    char16_t u16[4];
    ASSERT_EQ(4u, ConvertUTF8toUTF16(text, end, u16, u16 + 4));
    EXPECT_EQ(std::u16string(u"a\u00E9\U0001F600"), std::u16string(u16, 4));
    char32_t u32[3];
    ASSERT_EQ(3u, ConvertUTF16toUTF32(u16, u16 + 4, u32, u32 + 3));
    EXPECT_EQ(std::u32string(U"a\u00E9\U0001F600"), std::u32string(u32, 3));
    char back[8];
    ASSERT_EQ(7u, ConvertUTF32toUTF8(u32, u32 + 3, back, back + 8));
    EXPECT_EQ(std::string(text), std::string(back, 7));
    EXPECT_EQ(0u, ConvertUTF8toUTF32(text, end - 1, nullptr, nullptr)); // cut sequence

    EXPECT_TRUE(IsLegalUTF8("\xF4\x8F\xBF\xBF", 4));
    EXPECT_FALSE(IsLegalUTF8("\xF4\x90\x80\x80", 4));
    EXPECT_TRUE(IsLegalUTF8Sequence(text + 1, end));
    const unsigned char* none = nullptr;
    EXPECT_EQ(0u, UTF8ToUnicode(const_cast<unsigned char*>(none), 3, wide, 3));
    EXPECT_EQ(3u, UTF8ToUnicode(text, 7, nullptr, 0));
    EXPECT_TRUE(DoesUTF8StrContainAnyCharsLargerThanOneByte(text, 2));
}

// The wchar_t layer: byte lengths for UTF-16 buffers, which need not be aligned.
TEST(UTFFunctionsTest, UTF16LayerOnMisalignedBytes) {
    const wchar_t text[] = L"A\u00E9\U0001F600";
    unsigned char storage[16] = {};
    unsigned char* odd = storage + 1;
    EXPECT_EQ(4u, UnicodeToUTF16(text, 3, nullptr, 0));
    ASSERT_EQ(4u, UnicodeToUTF16(text, 3, odd, 8));
    UTF16 first;
    std::memcpy(&first, odd, 2);
    EXPECT_EQ(0x41, first);

    // An odd target length leaves the last byte unused: 7 bytes hold three units only.
    EXPECT_EQ(2u, UnicodeToUTF16(text, 3, odd, 7));

    wchar_t back[4] = {};
    EXPECT_EQ(3u, UTF16ToUnicode(odd, 8, back, 4));
    EXPECT_EQ(std::wstring(text), std::wstring(back, 3));
    // A dangling odd byte is ignored; cutting inside the pair makes the pair lone.
    EXPECT_EQ(3u, UTF16ToUnicode(odd, 9, nullptr, 0));
    EXPECT_EQ(0u, UTF16ToUnicode(odd, 6, nullptr, 0));
}

TEST(UTFFunctionsTest, UTF8LayerCountsAndWrites) {
    const wchar_t text[] = L"x\u20AC";
    EXPECT_EQ(4u, UnicodeToUTF8(text, 2, nullptr, 0));
    unsigned char bytes[4];
    EXPECT_EQ(4u, UnicodeToUTF8(text, 2, bytes, 4));
    EXPECT_EQ(1u, UnicodeToUTF8(text, 2, bytes, 3));
    wchar_t wide[2];
    EXPECT_EQ(2u, UTF8ToUnicode(bytes, 4, wide, 2));
    EXPECT_EQ(L'\u20AC', wide[1]);
    EXPECT_EQ(0u, UTF8ToUnicode(nullptr, 5, wide, 2));
    // A negative wchar_t is no code point: it becomes U+FFFD.
    const wchar_t negative[] = {static_cast<wchar_t>(-1)};
    EXPECT_EQ(3u, UnicodeToUTF8(negative, 1, nullptr, 0));
}

TEST(UTFFunctionsTest, WideCharacterDetection) {
    const wchar_t ascii[] = L"plain";
    const wchar_t high[] = {'a', 128, 'b'};
    const wchar_t negative[] = {'a', static_cast<wchar_t>(-5)};
    EXPECT_FALSE(DoesUnicodeStrContainAnyUTF8CharsLargerThanOneByte(ascii, 5));
    EXPECT_TRUE(DoesUnicodeStrContainAnyUTF8CharsLargerThanOneByte(high, 3));
    EXPECT_FALSE(DoesUnicodeStrContainAnyUTF8CharsLargerThanOneByte(high, 1)); // only n are looked at
    // The test is signed: a negative value is not "large".
    EXPECT_FALSE(DoesUnicodeStrContainAnyUTF8CharsLargerThanOneByte(negative, 2));

    // Every position of a longer text, to cover the word-wise scan and its tail.
    std::vector<unsigned char> bytes(37, 'a');
    EXPECT_FALSE(DoesUTF8StrContainAnyCharsLargerThanOneByte(bytes.data(), bytes.size()));
    for (size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = 0x80;
        EXPECT_TRUE(DoesUTF8StrContainAnyCharsLargerThanOneByte(bytes.data(), bytes.size())) << i;
        EXPECT_EQ(i < 20, DoesUTF8StrContainAnyCharsLargerThanOneByte(bytes.data(), 20)) << i;
        bytes[i] = 0x7F;
    }
}
