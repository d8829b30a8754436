// Tests of CEncoder, the ASCIIOnly switch and the small text helpers.
#include "foundation/Encoder.h"

#include "foundation/ConvertUTF.h"
#include "foundation/Exceptions.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <vector>

using namespace QzXmlLib16;

// ---------------------------------------------------------------------------------------------
// Allocation counting: only the calling thread's allocations, only while a test asks for it.

namespace {
thread_local bool g_countAllocations = false;
thread_local int g_allocations = 0;
} // namespace

void* operator new(std::size_t size) {
    if (g_countAllocations)
        ++g_allocations;
    if (void* p = std::malloc(size ? size : 1))
        return p;
    throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
    return operator new(size);
}
void operator delete(void* p) noexcept {
    std::free(p);
}
void operator delete[](void* p) noexcept {
    std::free(p);
}
void operator delete(void* p, std::size_t) noexcept {
    std::free(p);
}
void operator delete[](void* p, std::size_t) noexcept {
    std::free(p);
}

namespace {

// Switches the process to a UTF-8 locale for one test and back to "C" afterwards.
class Utf8Locale {
public:
    Utf8Locale() {
        m_ok = std::setlocale(LC_ALL, "C.UTF-8") != nullptr || std::setlocale(LC_ALL, "C.utf8") != nullptr;
    }
    ~Utf8Locale() { std::setlocale(LC_ALL, "C"); }
    bool Ok() const { return m_ok; }

private:
    bool m_ok;
};

#define REQUIRE_UTF8_LOCALE(guard)                                                                           \
    Utf8Locale guard;                                                                                        \
    if (!guard.Ok())                                                                                         \
    GTEST_SKIP() << "no UTF-8 locale installed"

// Resets the process-wide switch even when an assertion fails.
class AsciiOnlyScope {
public:
    explicit AsciiOnlyScope(bool on) { ASCIIOnly(on); }
    ~AsciiOnlyScope() { ASCIIOnly(false); }
};

std::string ToLocal(const char* utf8) {
    return CEncoder::Utf8ToLocalCodePage(utf8);
}

std::string ToLocal(const char* bytes, int length) {
    return CEncoder::Utf8ToLocalCodePage(reinterpret_cast<unsigned char*>(const_cast<char*>(bytes)), length);
}

const char kEAcute[] = "\xC3\xA9";
const char kMixed[] = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z"; // a é € 😀 z

} // namespace

// ---------------------------------------------------------------------------------------------
// UTF-8 to the local code page

// In the "C" locale non-ASCII becomes "?", one per character, unless ASCIIOnly passes bytes.
TEST(EncoderUtf8ToLocalTest, CLocaleShowsQuestionMarksUnlessAsciiOnly) {
    EXPECT_EQ("?", ToLocal(kEAcute));
    EXPECT_EQ("a???z", ToLocal(kMixed));
    {
        AsciiOnlyScope on(true);
        EXPECT_EQ(kEAcute, ToLocal(kEAcute));
        // Even invalid UTF-8 and embedded NULs pass through untouched.
        EXPECT_EQ(std::string("a\xC0\0b", 4), ToLocal("a\xC0\0b", 4));
    }
    EXPECT_EQ("?", ToLocal(kEAcute));
}

// In a UTF-8 locale the result is the legal prefix of the input taken directly; it must equal
// decoding, cutting at a NUL and narrowing with the locale's own wcrtomb.
TEST(EncoderUtf8ToLocalTest, Utf8LocaleShortcutMatchesTheLocale) {
    REQUIRE_UTF8_LOCALE(utf8);
    const std::string inputs[] = {std::string(kMixed),
                                  std::string("x\xF4\x8F\xBF\xBFy"),
                                  std::string("\xC3\xA9\xC3"),
                                  std::string("\xE0\x80\x80z"),
                                  std::string("\xEF\xBF\xBD!"),
                                  std::string("\xC3\xA9\0\xC3\xA9", 5),
                                  std::string("ok\xF0\x9F\x98"),
                                  std::string("\x80"),
                                  std::string("\xC2\x80\xDF\xBF")};
    EXPECT_EQ(kMixed, ToLocal(kMixed));
    for (const std::string& in : inputs) {
        std::vector<wchar_t> wide(in.size() + 1, 0);
        unsigned char* bytes = reinterpret_cast<unsigned char*>(const_cast<char*>(in.data()));
        UTF8ToUnicode(bytes, in.size(), wide.data(), in.size());
        EXPECT_EQ(UnicodeToMultiByte(wide.data()), ToLocal(in.data(), static_cast<int>(in.size()))) << in;
    }
}

// Invalid UTF-8 silently ends the text; a NUL ends it too. ASCII is unchanged in every locale.
TEST(EncoderUtf8ToLocalTest, InvalidInputAndNulEndTheText) {
    EXPECT_EQ("ab", ToLocal("ab\xC0"
                            "cd"));
    EXPECT_EQ("ab", ToLocal("ab\xED\xA0\x80"
                            "cd"));                  // surrogate
    EXPECT_EQ("ab?", ToLocal("ab\xC3\xA9\xE2\x82")); // cut off at the end
    EXPECT_EQ("ab", ToLocal("ab\0cd", 5));
    EXPECT_EQ("ab", ToLocal("ab\0\xC3\xA9", 5));
    EXPECT_EQ("", ToLocal("abc", 0));
    EXPECT_EQ("", ToLocal("abc", -3));
    EXPECT_EQ("abc", ToLocal("abc"));
    EXPECT_EQ("", ToLocal(""));
    EXPECT_EQ("", ToLocal(nullptr));
    REQUIRE_UTF8_LOCALE(utf8);
    EXPECT_EQ("abc", ToLocal("abc"));
    EXPECT_EQ("ab", ToLocal("ab\xC0"
                            "cd"));
    EXPECT_EQ("ab\xC3\xA9", ToLocal("ab\xC3\xA9\xE2\x82"));
    EXPECT_EQ("ab", ToLocal("ab\0\xC3\xA9", 5));
}

// Caller buffers of any size give the same result; large enough ones keep the heap untouched.
TEST(EncoderUtf8ToLocalTest, CallerBuffersAvoidTheHeap) {
    REQUIRE_UTF8_LOCALE(utf8);
    wchar_t wide[512];
    char narrow[512];
    const unsigned long sizes[] = {0, 1, 3, 4, 7, 11, 12, 512};
    for (unsigned long wideSize : sizes) {
        for (unsigned long narrowSize : sizes) {
            EXPECT_EQ(kMixed, CEncoder::Utf8ToLocalCodePage(kMixed, wide, wideSize, narrow, narrowSize))
                << wideSize << "/" << narrowSize;
        }
    }

    // 11 bytes fit the string's own space: no heap, in the UTF-8 locale and in "C".
    for (const char* expected : {kMixed, "a???z"}) {
        g_allocations = 0;
        g_countAllocations = true;
        std::string result = CEncoder::Utf8ToLocalCodePage(kMixed, wide, 512, narrow, 512);
        g_countAllocations = false;
        EXPECT_EQ(0, g_allocations);
        EXPECT_EQ(expected, result);
        std::setlocale(LC_ALL, "C");
    }
}

// Text longer than any stack scratch space.
TEST(EncoderUtf8ToLocalTest, LongText) {
    std::string text;
    for (int i = 0; i < 3000; ++i)
        text += kEAcute;
    EXPECT_EQ(std::string(3000, '?'), ToLocal(text.c_str()));
    REQUIRE_UTF8_LOCALE(utf8);
    EXPECT_EQ(text, ToLocal(text.c_str()));
}

// ---------------------------------------------------------------------------------------------
// Wide and local text to bytes

namespace {
std::string Text(const CBinaryData& d) {
    return d.GetData() ? std::string(reinterpret_cast<const char*>(d.GetData()), d.GetLength())
                       : std::string();
}
} // namespace

TEST(EncoderBinaryTest, UnicodeToUtf8Binary) {
    EXPECT_EQ(nullptr, CEncoder::UnicodeToUtf8Binary(L"").GetData());
    EXPECT_EQ(nullptr, CEncoder::UnicodeToUtf8Binary(nullptr).GetData());
    EXPECT_EQ("plain", Text(CEncoder::UnicodeToUtf8Binary(L"plain")));
    EXPECT_EQ(kMixed, Text(CEncoder::UnicodeToUtf8Binary(L"a\u00E9\u20AC\U0001F600z")));
    // A surrogate has no UTF-8 form: the whole text counts as nothing.
    const wchar_t surrogate[] = {'a', 0xD800, 0};
    EXPECT_EQ(nullptr, CEncoder::UnicodeToUtf8Binary(surrogate).GetData());
}

TEST(EncoderBinaryTest, LocalCodePageToUnicodeBinaryGivesFourBytesPerCharacter) {
    CBinaryData ab = CEncoder::LocalCodePageToUnicodeBinary("ab");
    ASSERT_EQ(8u, ab.GetLength());
    const wchar_t expected[] = {L'a', L'b'};
    EXPECT_EQ(0, std::memcmp(expected, ab.GetData(), 8));
    EXPECT_EQ(nullptr, CEncoder::LocalCodePageToUnicodeBinary("").GetData());

    REQUIRE_UTF8_LOCALE(utf8);
    CBinaryData wide = CEncoder::LocalCodePageToUnicodeBinary("\xC3\xA9\xFF");
    ASSERT_EQ(8u, wide.GetLength());
    const wchar_t expectedWide[] = {0xE9, L'?'}; // an undecodable byte becomes "?"
    EXPECT_EQ(0, std::memcmp(expectedWide, wide.GetData(), 8));
    {
        AsciiOnlyScope on(true); // not looked at here
        EXPECT_EQ(4u, CEncoder::LocalCodePageToUnicodeBinary("\xC3\xA9").GetLength());
    }
}

TEST(EncoderBinaryTest, LocalCodePageToUtf8Binary) {
    EXPECT_EQ(nullptr, CEncoder::LocalCodePageToUtf8Binary("").GetData());
    EXPECT_EQ("abc", Text(CEncoder::LocalCodePageToUtf8Binary("abc")));
    {
        AsciiOnlyScope on(true);
        EXPECT_EQ("a\xFF\xC3\xA9", Text(CEncoder::LocalCodePageToUtf8Binary("a\xFF\xC3\xA9")));
    }
    REQUIRE_UTF8_LOCALE(utf8);
    EXPECT_EQ(kMixed, Text(CEncoder::LocalCodePageToUtf8Binary(kMixed)));
    // Each byte that starts no complete character becomes "?", the cut-off euro sign two of them.
    EXPECT_EQ("a?b??", Text(CEncoder::LocalCodePageToUtf8Binary("a\xFF"
                                                                "b\xE2\x82")));
    std::string longText(1000, 'x');
    longText += "\xC3\xA9";
    EXPECT_EQ(longText, Text(CEncoder::LocalCodePageToUtf8Binary(longText.c_str())));
}

// ---------------------------------------------------------------------------------------------
// UTF-16BE to the local code page

namespace {
std::string FromUtf16BE(const std::string& bytes) {
    return CEncoder::Utf16ToLocalCodePage(reinterpret_cast<unsigned char*>(const_cast<char*>(bytes.data())),
                                          static_cast<int>(bytes.size()));
}
const std::string kBE("\0a\0\xE9\x20\xAC\xD8\x3D\xDE\x00\0z", 12); // a é € 😀 z, big-endian
} // namespace

// A broken surrogate ends the text; while ASCIIOnly is on the library holds UTF-8, and so does
// the result. Long text leaves the stack buffers.
TEST(EncoderUtf16Test, BigEndianBytesAreSwapped) {
    EXPECT_EQ("a???z", FromUtf16BE(kBE));
    EXPECT_EQ("", FromUtf16BE(std::string()));
    EXPECT_EQ("", FromUtf16BE(std::string("\0", 1)));
    EXPECT_EQ("a", FromUtf16BE(std::string("\0a\0", 3))); // the odd last byte is ignored
    EXPECT_EQ("a", FromUtf16BE(std::string("\0a\xD8\x3D\0b", 6)));
    EXPECT_EQ("a", FromUtf16BE(std::string("\0a\xDE\x00\xD8\x3D", 6)));
    std::string be, euros;
    for (int i = 0; i < 700; ++i) {
        be += std::string("\x20\xAC", 2);
        euros += "\xE2\x82\xAC";
    }
    EXPECT_EQ(std::string(700, '?'), FromUtf16BE(be));
    {
        AsciiOnlyScope on(true);
        EXPECT_EQ(kMixed, FromUtf16BE(kBE));
    }
    REQUIRE_UTF8_LOCALE(utf8);
    EXPECT_EQ(kMixed, FromUtf16BE(kBE));
    EXPECT_EQ(euros, FromUtf16BE(be));
}

// ---------------------------------------------------------------------------------------------
// Free helpers

TEST(UnicodeToMultiByteTest, UsesTheLocaleAndIgnoresAsciiOnly) {
    EXPECT_EQ("", UnicodeToMultiByte(nullptr));
    EXPECT_EQ("a?", UnicodeToMultiByte(L"a\u00E9"));
    AsciiOnlyScope on(true);
    EXPECT_EQ("a?", UnicodeToMultiByte(L"a\u00E9"));
}

// Every occurrence goes; the search starts again from the beginning, so occurrences formed by
// a replacement go too.
TEST(FindReplaceTest, ReplacesEveryOccurrence) {
    const struct {
        const char* text;
        const char* find;
        const char* replacement;
        const char* expected;
    } cases[] = {
        {"aXa", "a", "b", "bXb"},
        {"1.000.000", ".", "", "1000000"},
        {"nothing here", "zz", "y", "nothing here"},
        {"aabb", "ab", "", ""},
        {"xaaaa", "aa", "a", "xa"},
        {"abcbc", "bc", "c", "acc"}, // "acbc" -> "acc"
        {"xyz", "a", "aa", "xyz"},   // endless only where the loop would start
    };
    for (const auto& c : cases) {
        std::string text = c.text;
        FindReplace(text, c.find, c.replacement);
        EXPECT_EQ(c.expected, text) << c.text << " " << c.find;
    }
    std::wstring wide = L"x--y--z";
    FindReplace(wide, std::wstring(L"--"), std::wstring(L"+"));
    EXPECT_EQ(L"x+y+z", wide);
}

// Arguments that would make the loop endless are refused; an empty search is found in any text.
TEST(FindReplaceTest, EndlessArgumentsThrow) {
    std::string empty;
    EXPECT_THROW(FindReplace(empty, "", "x"), CQzInvalidParamException);
    std::string text = "abc";
    EXPECT_EQ("FindReplace: the text to find is empty",
              QzTest::MessageOf<CQzInvalidParamException>([&] { FindReplace(text, "", "x"); }));
    EXPECT_EQ("FindReplace: the replacement contains the text to find",
              QzTest::MessageOf<CQzInvalidParamException>([&] { FindReplace(text, "b", "bb"); }));
    EXPECT_EQ("abc", text);
    std::wstring wide = L"abc";
    EXPECT_THROW(FindReplace(wide, std::wstring(L"a"), std::wstring(L"xa")), CQzInvalidParamException);
}

TEST(StruprTest, UppercasesInPlace) {
    char text[] = "mixed Case-09\xE9";
    EXPECT_EQ(text, strupr(text));
    EXPECT_STREQ("MIXED CASE-09\xE9", text); // "C" locale: high bytes stay
    EXPECT_EQ(nullptr, strupr(nullptr));
}
