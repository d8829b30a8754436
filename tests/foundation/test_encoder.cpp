// Tests of CEncoder, the ASCIIOnly switch and the small text helpers.
#include "foundation/Encoder.h"

#include "foundation/Exceptions.h"

#include <gtest/gtest.h>

#include <atomic>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

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
    if (g_countAllocations)
        ++g_allocations;
    if (void* p = std::malloc(size ? size : 1))
        return p;
    throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }

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

#define REQUIRE_UTF8_LOCALE(guard)                                                                            \
    Utf8Locale guard;                                                                                         \
    if (!guard.Ok())                                                                                          \
    GTEST_SKIP() << "no UTF-8 locale installed"

// Resets the process-wide switch even when an assertion fails.
class AsciiOnlyScope {
public:
    explicit AsciiOnlyScope(bool on) { ASCIIOnly(on); }
    ~AsciiOnlyScope() { ASCIIOnly(false); }
};

std::string ToLocal(const char* utf8) { return CEncoder::Utf8ToLocalCodePage(utf8); }

std::string ToLocal(const char* bytes, int length) {
    return CEncoder::Utf8ToLocalCodePage(reinterpret_cast<unsigned char*>(const_cast<char*>(bytes)), length);
}

const char kEAcute[] = "\xC3\xA9";
const char kMixed[] = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z"; // a é € 😀 z

} // namespace

// ---------------------------------------------------------------------------------------------
// UTF-8 to the local code page

TEST(EncoderUtf8ToLocalTest, AsciiIsUnchangedInEveryLocale) {
    EXPECT_EQ("abc", ToLocal("abc"));
    EXPECT_EQ("", ToLocal(""));
    EXPECT_EQ("", ToLocal(nullptr));
    REQUIRE_UTF8_LOCALE(utf8);
    EXPECT_EQ("abc", ToLocal("abc"));
}

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

TEST(EncoderUtf8ToLocalTest, Utf8LocaleKeepsText) {
    REQUIRE_UTF8_LOCALE(utf8);
    EXPECT_EQ(kMixed, ToLocal(kMixed));
    // The table-driven path gives what the locale's own wcrtomb gives.
    EXPECT_EQ(UnicodeToMultiByte(L"a\u00E9\u20AC\U0001F600z"), ToLocal(kMixed));
}

// Invalid UTF-8 silently ends the text; a NUL ends it too.
TEST(EncoderUtf8ToLocalTest, InvalidInputAndNulEndTheText) {
    EXPECT_EQ("ab", ToLocal("ab\xC0" "cd"));
    EXPECT_EQ("ab", ToLocal("ab\xED\xA0\x80" "cd")); // surrogate
    EXPECT_EQ("ab?", ToLocal("ab\xC3\xA9\xE2\x82")); // cut off at the end
    EXPECT_EQ("ab", ToLocal("ab\0cd", 5));
    EXPECT_EQ("ab", ToLocal("ab\0\xC3\xA9", 5));
    EXPECT_EQ("", ToLocal("abc", 0));
    EXPECT_EQ("", ToLocal("abc", -3));
    REQUIRE_UTF8_LOCALE(utf8);
    EXPECT_EQ("ab", ToLocal("ab\xC0" "cd"));
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

    std::string result;
    g_allocations = 0;
    g_countAllocations = true;
    result = CEncoder::Utf8ToLocalCodePage(kMixed, wide, 512, narrow, 512); // 11 bytes: no string heap
    g_countAllocations = false;
    EXPECT_EQ(0, g_allocations);
    EXPECT_EQ(kMixed, result);

    std::setlocale(LC_ALL, "C");
    g_allocations = 0;
    g_countAllocations = true;
    result = CEncoder::Utf8ToLocalCodePage(kMixed, wide, 512, narrow, 512);
    g_countAllocations = false;
    EXPECT_EQ(0, g_allocations);
    EXPECT_EQ("a???z", result);
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
