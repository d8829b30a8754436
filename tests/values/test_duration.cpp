// CDateTimeSpan: the duration text form, its designator order, fractions, signs and the
// comparison over the four reference dates.
#include <gtest/gtest.h>

#include "test_datetime_helpers.h"

using namespace QzXmlLib16;
using namespace QzDateTests;

namespace {

struct Row {
    const char* input;
    const char* written;
};

} // namespace

// Fields are kept as written: nothing is carried or normalised.
TEST(CDateTimeSpanTest, TextFormsWriteBack) {
    // clang-format off
    const Row rows[] = {
        {"P1Y2M3DT4H5M6.7S", "P1Y2M3DT4H5M6.7S"}, {"P1Y2M3DT4H5M6.700S", "P1Y2M3DT4H5M6.7S"},
        {"-P1D", "-P1D"}, {"PT90M", "PT90M"}, {"PT36H", "PT36H"}, {"P13M", "P13M"}, {"PT0S", "P"},
        {"P0Y", "P"}, {"-PT0S", "-P"}, {"PT1.S", "PT1S"}, {"PT.5S", "PT0.5S"}, {"PT1.", "PT1S"},
        {"PT0.000000001S", "PT0.000000001S"}, {"PT5M0.010S", "PT5M0.01S"}, {"P1YT1M", "P1YT1M"},
        {"PT1H1S", "PT1H1S"}, {"P2147483647D", "P2147483647D"}};
    // clang-format on
    for (const Row& row : rows) {
        SCOPED_TRACE(row.input);
        EXPECT_EQ(P(row.input).ToString(), row.written);
    }
}

// Note: "Y" is accepted at any point and restarts the order; the number is optional.
TEST(CDateTimeSpanTest, YearDesignatorAnywhere) {
    const Row rows[] = {
        {"P1DT1H2Y3M", "P2Y3M1DT1H"}, {"P1M1Y", "P1Y1M"}, {"PT1.5S2Y", "P2YT1.5S"}, {"PY", "P"},
        {"PT1HYT2M", "PT1H2M"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.input);
        EXPECT_EQ(P(row.input).ToString(), row.written);
    }
    // The years are truncated to their 16-bit field.
    EXPECT_EQ(P("P70000Y").GetYears(), 70000 % 65536);
}

// Note: fraction digits 7 to 9 each overwrite the nanoseconds with their bare value.
TEST(CDateTimeSpanTest, FractionDigits) {
    const CDateTimeSpan full = P("PT0.123456789S");
    EXPECT_EQ(full.GetMilliSeconds(), 123);
    EXPECT_EQ(full.GetMicroSeconds(), 456);
    EXPECT_EQ(full.GetNanoSeconds(), 9);
    EXPECT_EQ(full.ToString(), "PT0.123456009S");
    EXPECT_EQ(P("PT0.123456780S").GetNanoSeconds(), 0);
    EXPECT_EQ(P("PT0.1234567S").GetNanoSeconds(), 7);
    EXPECT_EQ(P("PT0.12S").GetMilliSeconds(), 120);
    EXPECT_EQ(P("PT0.0001S").GetMicroSeconds(), 100);
    EXPECT_EQ(ThrownMessage<CQzInvalidValueException>([] { P("PT0.1234567890S"); }),
              "Invalid XSD Duration [PT0.1234567890S] Fraction part too long");
}

TEST(CDateTimeSpanTest, RefusedTexts) {
    const char* refused[] = {"P",       "-P",     "PT",       "1Y",   "P1",           "P1S",
                             "PT1D",    "P-1Y",   "PT1.5",    "P1YT", "P1D1M",        "PT1S1M",
                             "PT1M1H",  "PT1H2H", "P1M1M",    "+P1D", "P1.5D",        "PT1.5X",
                             "PT1S.5S", "P1DT1D", "PT1.5S1S", "P1Y ", "P2147483648D", "PT99999999999S"};
    for (const char* text : refused) {
        SCOPED_TRACE(text);
        EXPECT_EQ(ThrownMessage<CQzInvalidValueException>([&] { P(text); }),
                  "Invalid XSD Duration [" + std::string(text) +
                      "] expected [-]P[nY][nM][nD][T[nH][nM][nS.ff]]");
    }
    EXPECT_EQ(ThrownMessage<CQzInvalidValueException>([] { P(nullptr); }),
              "Invalid XSD Duration (Null String)");
    EXPECT_EQ(ThrownMessage<CQzInvalidValueException>([] { P(""); }), "Invalid XSD Duration (Empty String)");
}

// Parsing clears first, also the sign.
TEST(CDateTimeSpanTest, ParseClearsEarlierFields) {
    CDateTimeSpan span = P("-P1Y2M");
    span.ParseXSDDuration("PT5S");
    EXPECT_EQ(span.ToString(), "PT5S");
    EXPECT_FALSE(span.IsNegative());
}

// Note: GetAsNegative always gives a negative span; Negate flips.
TEST(CDateTimeSpanTest, SignOperations) {
    const CDateTimeSpan day = P("P1D");
    const CDateTimeSpan minusDay = P("-P1D");
    EXPECT_FALSE(day.IsNegative());
    EXPECT_TRUE(minusDay.IsNegative());
    EXPECT_TRUE(day.GetAsNegative() == minusDay);
    EXPECT_EQ(day.GetAsNegative().ToString(), "-P1D");
    EXPECT_TRUE(minusDay.GetAsNegative().IsNegative());
    CDateTimeSpan flip = minusDay;
    flip.Negate();
    EXPECT_FALSE(flip.IsNegative());
    flip.Negate();
    EXPECT_TRUE(flip.IsNegative());
    // SetDateTimeSpan clears, so the sign goes.
    flip.SetDateTimeSpan(1, 2, 3);
    EXPECT_EQ(flip.ToString(), "PT1H2M3S");
}

TEST(CDateTimeSpanTest, ConstructorsAndSettersStoreAsGiven) {
    EXPECT_EQ(CDateTimeSpan().ToString(), "P");
    EXPECT_EQ(CDateTimeSpan(25, 61, 61).ToString(), "PT25H61M61S");
    EXPECT_EQ(CDateTimeSpan(1, 13, 32, 0, 0, 0).ToString(), "P1Y13M32D");
    EXPECT_EQ(CDateTimeSpan(0, 0, 0, 0, 0, 0, 0, 0, 5).ToString(), "PT0.000000005S");
    CDateTimeSpan span;
    span.SetYears(65535);
    span.SetMonths(4294967295UL);
    span.SetMinutes(18446744073709551615ULL);
    span.SetMilliSeconds(1500);
    EXPECT_EQ(span.ToString(), "P65535Y4294967295MT18446744073709551615M0.15S");
    CDateTimeSpan copy(span);
    EXPECT_EQ(copy.GetMinutes(), 18446744073709551615ULL);
    copy.Clear();
    EXPECT_EQ(copy.ToString(), "P");
}

// Comparison adds both spans to four reference dates and looks at whole days only.
TEST(CDateTimeSpanTest, CompareOverReferenceDates) {
    // {a, b, a.CompareTo(b)}. Note: only the day of the sums counts (the last three rows).
    struct Row {
        const char *a, *b;
        int result;
    };
    // clang-format off
    const Row rows[] = {
        {"P1Y", "P12M", 0}, {"P1M", "P30D", 3}, {"P1M", "P31D", 3}, {"P1M", "P32D", 1}, {"P1M", "P27D", 2},
        {"P1D", "P2D", 1}, {"-P1D", "P1D", 1}, {"P400Y", "P146097D", 0},
        {"PT1H", "PT2H", 0}, {"P1D", "PT24H", 0}, {"P1D", "PT23H", 2}};
    // clang-format on
    for (const Row& row : rows)
        EXPECT_EQ(P(row.a).CompareTo(P(row.b)), row.result) << row.a << " vs " << row.b;
    EXPECT_TRUE(P("PT1H") == P("PT2H") && !(P("PT1H") < P("PT2H")));
    EXPECT_TRUE(P("P1D") < P("P2D") && P("P2D") > P("P1D"));
    EXPECT_TRUE(P("P1M") != P("P30D") && !(P("P1M") < P("P30D")) && !(P("P1M") > P("P30D")));
    // Sums beyond the 16-bit year cannot be formed.
    EXPECT_THROW(P("P32000Y").CompareTo(P("P1Y")), CQzInvalidValueException);
}
