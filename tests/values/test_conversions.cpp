// Tests of the scalar conversions: integers at and past their limits, the special spellings
// of the real numbers and their formats, boolean, char, string and the bare date numbers.
// Every failure text is compared in full.
#include "values/Conversions.h"

#include "foundation/Exceptions.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <string>

#include "support/TestSupport.h"

using namespace QzXmlLib16;

namespace {

const CWhitespaceUtils::WhitespaceRule kNone = CWhitespaceUtils::None;
const CWhitespaceUtils::WhitespaceRule kCollapse = CWhitespaceUtils::Collapse;

// The message of the CQzInvalidValueException that `call` must raise.
template <class F> std::string InvalidValueMessage(F call) {
    return QzTest::MessageOf<CQzInvalidValueException>(call);
}

// The integer readers without a rule, by index, and the type names their messages use.
const std::function<void(const std::string&)> kIntegerReaders[] = {
    [](const std::string& t) { CConversions::i1FromString(t, kNone); },
    [](const std::string& t) { CConversions::i2FromString(t, kNone); },
    [](const std::string& t) { CConversions::i4FromString(t, kNone); },
    [](const std::string& t) { CConversions::i8FromString(t, kNone); },
    [](const std::string& t) { CConversions::ui1FromString(t, kNone); },
    [](const std::string& t) { CConversions::ui2FromString(t, kNone); },
    [](const std::string& t) { CConversions::ui4FromString(t, kNone); },
    [](const std::string& t) { CConversions::ui8FromString(t, kNone); }};
enum { i1, i2, i4, i8, ui1, ui2, ui4, ui8 };
const char* const kIntegerNames[] = {"i1", "i2", "i4", "i8", "ui1", "ui2", "ui4", "ui8"};

std::string Printf(const char* format, double value) {
    char buffer[64];
    std::snprintf(buffer, sizeof(buffer), format, value);
    return buffer;
}

} // namespace

// ---- integer readers -------------------------------------------------------------------------

TEST(CConversionsIntegerTest, SignedReadersAcceptTheirLimits) {
    EXPECT_EQ(-128, CConversions::i1FromString("-128", kNone));
    EXPECT_EQ(127, CConversions::i1FromString("127", kNone));
    EXPECT_EQ(-32768, CConversions::i2FromString("-32768", kNone));
    EXPECT_EQ(32767, CConversions::i2FromString("+32767", kNone));
    EXPECT_EQ(std::numeric_limits<int32_t>::min(), CConversions::i4FromString("-2147483648", kNone));
    EXPECT_EQ(std::numeric_limits<int32_t>::max(), CConversions::i4FromString("2147483647", kNone));
    EXPECT_EQ(std::numeric_limits<long long>::min(),
              CConversions::i8FromString("-9223372036854775808", kNone));
    EXPECT_EQ(std::numeric_limits<long long>::max(),
              CConversions::i8FromString("9223372036854775807", kNone));
    EXPECT_EQ(0, CConversions::i4FromString("-0", kNone));
    EXPECT_EQ(7, CConversions::i4FromString("0007", kNone));
}

TEST(CConversionsIntegerTest, UnsignedReadersAcceptTheirLimits) {
    EXPECT_EQ(255, CConversions::ui1FromString("255", kNone));
    EXPECT_EQ(65535, CConversions::ui2FromString("65535", kNone));
    EXPECT_EQ(4294967295u, CConversions::ui4FromString("4294967295", kNone));
    EXPECT_EQ(18446744073709551615ull, CConversions::ui8FromString("18446744073709551615", kNone));
    EXPECT_EQ(0u, CConversions::ui4FromString("+0", kNone));
}

// Note: the C library takes a "-" in the unsigned readers and negates in the unsigned type.
TEST(CConversionsIntegerTest, UnsignedReadersNegateMinusAsTheCLibraryDoes) {
    EXPECT_EQ(4294967295u, CConversions::ui4FromString("-1", kNone));
    EXPECT_EQ(1u, CConversions::ui4FromString("-4294967295", kNone));
    EXPECT_EQ(0u, CConversions::ui4FromString("-0", kNone));
    EXPECT_EQ(18446744073709551615ull, CConversions::ui8FromString("-1", kNone));
    EXPECT_EQ("The value [-4294967296] is to large to fit in a ui4",
              InvalidValueMessage([] { CConversions::ui4FromString("-4294967296", kNone); }));
    // "-1" is 4294967295 for the 32-bit reader, which the narrow range test then refuses.
    EXPECT_EQ("The value [-1] is to large to fit in a ui1",
              InvalidValueMessage([] { CConversions::ui1FromString("-1", kNone); }));
    EXPECT_EQ("The value [-1] is to large to fit in a ui2",
              InvalidValueMessage([] { CConversions::ui2FromString("-1", kNone); }));
}

TEST(CConversionsIntegerTest, OnePastTheLimitIsTooLarge) {
    // {reader, text, type named in the message}. A narrow reader reaches the 32-bit reader
    // first, whose text names i4 or ui4; the range test comes before the trailing-junk test.
    struct Row {
        int reader;
        const char* text;
        int named;
    };
    // clang-format off
    const Row rows[] = {
        {i1, "128", i1}, {i1, "-129", i1}, {i2, "32768", i2}, {i2, "-32769", i2}, {i4, "2147483648", i4},
        {i4, "-2147483649", i4}, {i8, "9223372036854775808", i8}, {i8, "-9223372036854775809", i8},
        {ui1, "256", ui1}, {ui2, "65536", ui2}, {ui4, "4294967296", ui4}, {ui8, "18446744073709551616", ui8},
        {i1, "99999999999", i4}, {ui2, "99999999999", ui4}, {i4, "2147483648x", i4},
        {i8, "99999999999999999999x", i8}};
    // clang-format on
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(kIntegerNames[row.reader]) + " " + row.text);
        EXPECT_EQ(std::string("The value [") + row.text + "] is to large to fit in a " +
                      kIntegerNames[row.named],
                  InvalidValueMessage([&] { kIntegerReaders[row.reader](row.text); }));
    }
}

TEST(CConversionsIntegerTest, MalformedTextCannotBeConverted) {
    const char* texts[] = {"", "12x", "x12", "1.5", "+", "-", " ", "1 2", "0x10", "12 "};
    for (const char* text : texts) {
        SCOPED_TRACE(text);
        // {reader, type named}: the narrow readers pass the 32-bit reader's text through.
        for (const auto& use :
             {std::pair<int, int>{i4, i4}, {i8, i8}, {ui4, ui4}, {ui8, ui8}, {i1, i4}, {ui2, ui4}})
            EXPECT_EQ(std::string("The value [") + text + "] can not be converted to a " +
                          kIntegerNames[use.second],
                      InvalidValueMessage([&] { kIntegerReaders[use.first](text); }))
                << kIntegerNames[use.first];
    }
    // A zero byte inside the text is junk, not an end.
    EXPECT_THROW(CConversions::i4FromString(std::string("12\0", 3), kNone), CQzInvalidValueException);
}

// strtol skips leading blanks itself, so only trailing ones need the rule.
TEST(CConversionsIntegerTest, LeadingBlanksPassWithoutRuleTrailingOnesDoNot) {
    EXPECT_EQ(12, CConversions::i4FromString(" 12", kNone));
    EXPECT_EQ(12, CConversions::i4FromString("\t\n12", kNone));
    EXPECT_EQ("The value [12 ] can not be converted to a i4",
              InvalidValueMessage([] { CConversions::i4FromString("12 ", kNone); }));
    EXPECT_EQ(12, CConversions::i4FromString(" 12 \r\n", kCollapse));
}

// Messages of the 32-bit readers show the text after the rule; the narrow range test shows the
// text as it was passed in.
TEST(CConversionsIntegerTest, MessagesShowTheRightText) {
    EXPECT_EQ("The value [12x] can not be converted to a i4",
              InvalidValueMessage([] { CConversions::i4FromString("\t12x\n", kCollapse); }));
    EXPECT_EQ("The value [ 300\n] is to large to fit in a i1",
              InvalidValueMessage([] { CConversions::i1FromString(" 300\n", kCollapse); }));
    EXPECT_EQ("The value [] can not be converted to a ui8",
              InvalidValueMessage([] { CConversions::ui8FromString(" \t ", kCollapse); }));
}

TEST(CConversionsIntegerTest, WritersPrintPlainDecimal) {
    EXPECT_EQ("-128", CConversions::i1ToString(static_cast<char>(-128)));
    EXPECT_EQ("127", CConversions::i1ToString(127));
    EXPECT_EQ("-32768", CConversions::i2ToString(-32768));
    EXPECT_EQ("-2147483648", CConversions::i4ToString(std::numeric_limits<int32_t>::min()));
    EXPECT_EQ("-9223372036854775808", CConversions::i8ToString(std::numeric_limits<long long>::min()));
    EXPECT_EQ("255", CConversions::ui1ToString(255));
    EXPECT_EQ("65535", CConversions::ui2ToString(65535));
    EXPECT_EQ("4294967295", CConversions::ui4ToString(4294967295u));
    EXPECT_EQ("18446744073709551615", CConversions::ui8ToString(18446744073709551615ull));
    EXPECT_EQ("0", CConversions::i4ToString(0));
}

// ---- real numbers ------------------------------------------------------------------------------

TEST(CConversionsRealTest, SpecialSpellingsRead) {
    EXPECT_TRUE(std::isnan(CConversions::r8FromString("NaN", kNone)));
    EXPECT_TRUE(std::isnan(CConversions::r8FromString("1.#QNAN", kNone)));
    EXPECT_TRUE(std::isnan(CConversions::r8FromString("-NAN", kNone)));
    EXPECT_TRUE(std::isnan(CConversions::r4FromString("NaN", kNone)));
    EXPECT_EQ(std::numeric_limits<double>::infinity(), CConversions::r8FromString("INF", kNone));
    EXPECT_EQ(-std::numeric_limits<double>::infinity(), CConversions::r8FromString("-INF", kNone));
    EXPECT_EQ(std::numeric_limits<float>::infinity(), CConversions::r4FromString("INF", kNone));
    EXPECT_EQ(-std::numeric_limits<float>::infinity(), CConversions::r4FromString("-INF", kNone));
    EXPECT_EQ(std::numeric_limits<double>::infinity(), CConversions::r8FromString(" INF\n", kCollapse));
    // The spellings are exact; "+INF" is not one of them and strtod does not take it either.
    EXPECT_THROW(CConversions::r8FromString("+INF ", kNone), CQzInvalidValueException);
}

// Zero writes through the format; the infinities and NaN have their own texts.
TEST(CConversionsRealTest, WritersUseSpecialTextsAndCFormats) {
    const double inf = HUGE_VAL;
    // clang-format off
    const std::pair<double, const char*> r8[] = {
        {0.0, "0"}, {-0.0, "-0"}, {inf, "INF"}, {-inf, "-INF"}, {std::nan(""), "NaN"}, {1.0, "1"},
        {0.1, "0.1"}, {1.5, "1.5"}, {1e20, "1e+20"}, {3.14159265358979323846, "3.141592653589793"},
        {std::numeric_limits<double>::denorm_min(), "4.940656458412465e-324"}};
    // clang-format on
    for (const auto& row : r8)
        EXPECT_EQ(row.second, CConversions::r8ToString(row.first));
    // clang-format off
    const std::pair<float, const char*> r4[] = {
        {0.0f, "0"}, {HUGE_VALF, "INF"}, {-HUGE_VALF, "-INF"},
        {-std::numeric_limits<float>::quiet_NaN(), "NaN"}, {0.1f, "0.1"}, {3.14159265f, "3.141593"},
        {std::numeric_limits<float>::denorm_min(), "1.401298e-45"}};
    // clang-format on
    for (const auto& row : r4)
        EXPECT_EQ(row.second, CConversions::r4ToString(row.first));
}

// The default writers print exactly what "%.7g" and "%.16g" print.
TEST(CConversionsRealTest, DefaultFormatsMatchTheCFormatter) {
    std::mt19937_64 rng(42);
    for (int i = 0; i < 5000; ++i) {
        uint64_t bits = rng();
        double d;
        std::memcpy(&d, &bits, sizeof(d));
        if (!std::isfinite(d))
            continue;
        ASSERT_EQ(Printf("%.16g", d), CConversions::r8ToString(d));
        float f;
        uint32_t fbits = static_cast<uint32_t>(bits >> 32);
        std::memcpy(&f, &fbits, sizeof(f));
        if (std::isfinite(f)) {
            ASSERT_EQ(Printf("%.7g", f), CConversions::r4ToString(f));
        }
    }
}

TEST(CConversionsRealTest, GivenFormatIsApplied) {
    EXPECT_EQ("3.14", CConversions::r8ToString(3.14159, "%.2f"));
    EXPECT_EQ("3.1%", CConversions::r8ToString(3.14159, "%.1f%%"));
    EXPECT_EQ("x= 2.50E+00;", CConversions::r4ToString(2.5f, "x=%9.2E;"));
    EXPECT_EQ("0x1p+0", CConversions::r8ToString(1.0, "%a"));
    EXPECT_EQ("12", CConversions::r8ToString(12.0, "%lg"));
    EXPECT_EQ("no number", CConversions::r8ToString(12.0, "no number"));
    // Specials win over the format.
    EXPECT_EQ("INF", CConversions::r8ToString(std::numeric_limits<double>::infinity(), "%.2f"));
    EXPECT_EQ("NaN", CConversions::r4ToString(std::numeric_limits<float>::quiet_NaN(), "%.2f"));
    // A result longer than the writer's buffer is not cut.
    std::string wide = CConversions::r8ToString(1e300, "%.2f");
    char full[400];
    std::snprintf(full, sizeof(full), "%.2f", 1e300);
    EXPECT_EQ(304u, wide.size());
    EXPECT_EQ(full, wide);
}

// Formats that would hand the double to a non-floating conversion are refused.
TEST(CConversionsRealTest, UnsafeFormatsAreRefused) {
    const char* formats[] = {"%s",    "%d", "%n", "%*f",     "%.*f",     "%Lf",
                             "%f %f", "%",  "%5", "%12345f", "%.12345f", "%1$f"};
    for (const char* format : formats) {
        SCOPED_TRACE(format);
        try {
            CConversions::r8ToString(1.0, format);
            ADD_FAILURE() << "no exception";
        } catch (const CQzInvalidParamException& e) {
            EXPECT_EQ(std::string("Invalid number format [") + format + "]", e.GetMessage());
        }
        EXPECT_THROW(CConversions::r4ToString(1.0f, format), CQzInvalidParamException);
    }
    EXPECT_THROW(CConversions::r8ToString(1.0, std::string("%f\0%s", 5)), CQzInvalidParamException);
}

TEST(CConversionsRealTest, ReadersUseStrtod) {
    EXPECT_EQ(1.5, CConversions::r8FromString("1.5", kNone));
    EXPECT_EQ(-1e-300, CConversions::r8FromString("-1e-300", kNone));
    EXPECT_EQ(150.0, CConversions::r8FromString(" 1.5E2", kNone));
    EXPECT_EQ(0.1f, CConversions::r4FromString("0.1", kNone));
    EXPECT_EQ(std::numeric_limits<double>::denorm_min(),
              CConversions::r8FromString("4.940656458412465e-324", kNone));
    EXPECT_TRUE(std::signbit(CConversions::r8FromString("-0", kNone)));
    // No range test: overflow gives the infinity strtod returns.
    EXPECT_EQ(std::numeric_limits<double>::infinity(), CConversions::r8FromString("1e999", kNone));
}

// r4 narrows the double as the hardware rounds, also beyond the float range.
TEST(CConversionsRealTest, R4NarrowsAtTheFloatLimits) {
    EXPECT_EQ(FLT_MAX, CConversions::r4FromString("3.4028235e38", kNone));
    EXPECT_EQ(FLT_MAX, CConversions::r4FromString("3.40282356e38", kNone));
    EXPECT_EQ(std::numeric_limits<float>::infinity(), CConversions::r4FromString("3.4028236e38", kNone));
    EXPECT_EQ(-std::numeric_limits<float>::infinity(), CConversions::r4FromString("-1e39", kNone));
    EXPECT_EQ(std::numeric_limits<float>::denorm_min(), CConversions::r4FromString("1.401298e-45", kNone));
    EXPECT_EQ(0.0f, CConversions::r4FromString("1e-50", kNone));
}

TEST(CConversionsRealTest, MalformedTextCannotBeConverted) {
    const char* texts[] = {"", "1.5x", "abc", "nan ", "Inf inity", "1,5", "--1"};
    for (const char* text : texts) {
        SCOPED_TRACE(text);
        std::string t = text;
        EXPECT_EQ("The value [" + t + "] can not be converted to a r8",
                  InvalidValueMessage([&] { CConversions::r8FromString(t, kNone); }));
        EXPECT_EQ("The value [" + t + "] can not be converted to a r4",
                  InvalidValueMessage([&] { CConversions::r4FromString(t, kNone); }));
    }
    EXPECT_EQ("The value [1 5] can not be converted to a r8",
              InvalidValueMessage([] { CConversions::r8FromString("\t1  5 ", kCollapse); }));
}

// ---- boolean, char, string --------------------------------------------------------------------

TEST(CConversionsBooleanTest, AcceptsFourWordsInAnyCase) {
    for (const char* text : {"true", "TRUE", "tRuE", "1"})
        EXPECT_TRUE(CConversions::booleanFromString(text, kNone)) << text;
    for (const char* text : {"false", "False", "0"})
        EXPECT_FALSE(CConversions::booleanFromString(text, kNone)) << text;
    EXPECT_TRUE(CConversions::booleanFromString("\n true \t", kCollapse));
    EXPECT_EQ("true", CConversions::booleanToString(true));
    EXPECT_EQ("false", CConversions::booleanToString(false));
}

TEST(CConversionsBooleanTest, AnythingElseRaisesWithTheTextAsPassedIn) {
    const char* texts[] = {"yes", "", " true", "01", "truex", "t", "-1"};
    for (const char* text : texts) {
        SCOPED_TRACE(text);
        EXPECT_EQ(std::string("A Boolean Value read from an XML document was invalid [") + text +
                      "]. Valid values are 'true', 'false', '1', or '0'",
                  InvalidValueMessage([&] { CConversions::booleanFromString(text, kNone); }));
    }
    EXPECT_EQ(
        "A Boolean Value read from an XML document was invalid [ yes\n]. Valid values are 'true', 'false', "
        "'1', or '0'",
        InvalidValueMessage([] { CConversions::booleanFromString(" yes\n", kCollapse); }));
    EXPECT_THROW(CConversions::booleanFromString(std::string("true\0", 5), kNone), CQzInvalidValueException);
}

TEST(CConversionsCharTest, ExactlyOneCharacterAfterTheRule) {
    EXPECT_EQ('a', CConversions::charFromString(" a ", kCollapse));
    EXPECT_EQ(' ', CConversions::charFromString(" ", kNone));
    EXPECT_EQ(' ', CConversions::charFromString("\t", CWhitespaceUtils::Replace));
    EXPECT_EQ('\0', CConversions::charFromString(std::string(1, '\0'), kNone));
    EXPECT_EQ("The value [ab] can not be a char as it is either empty of greater than 1 char long",
              InvalidValueMessage([] { CConversions::charFromString("ab", kNone); }));
    EXPECT_EQ("The value [] can not be a char as it is either empty of greater than 1 char long",
              InvalidValueMessage([] { CConversions::charFromString("  ", kCollapse); }));
    // CR LF is two characters as it stands and one after the line ends are normalised.
    EXPECT_THROW(CConversions::charFromString("\r\n", kNone), CQzInvalidValueException);
    EXPECT_EQ('\n', CConversions::charFromString("\r\n", CWhitespaceUtils::Preserve));
    EXPECT_EQ("x", CConversions::charToString('x'));
    EXPECT_EQ(std::string(1, '\0'), CConversions::charToString('\0'));
}

TEST(CConversionsStringTest, TextAfterTheRule) {
    EXPECT_EQ(" a\r\n b ", CConversions::stringFromString(" a\r\n b ", kNone));
    EXPECT_EQ(" a\n b ", CConversions::stringFromString(" a\r\n b ", CWhitespaceUtils::Preserve));
    EXPECT_EQ(" a  b ", CConversions::stringFromString(" a\r\n\tb ", CWhitespaceUtils::Replace));
    EXPECT_EQ("a b", CConversions::stringFromString(" a\r\n b ", kCollapse));
    EXPECT_EQ(std::string("a\0b", 3), CConversions::stringToString(std::string("a\0b", 3)));
}

TEST(CConversionsDateNumberTest, BareYearMonthDayWriters) {
    EXPECT_EQ("2004", CConversions::yearToString(2004));
    EXPECT_EQ("5", CConversions::yearToString(5));
    EXPECT_EQ("65535", CConversions::yearToString(65535));
    EXPECT_EQ("--05", CConversions::monthToString(5));
    EXPECT_EQ("--12", CConversions::monthToString(12));
    EXPECT_EQ("---07", CConversions::dayToString(7));
    EXPECT_EQ("---31", CConversions::dayToString(31));
    EXPECT_EQ("--255", CConversions::monthToString(255));
}
