// Tests of CDecimal: the reader and its messages, scale handling and rounding,
// arithmetic, comparison, printing and the conversions with their overflow failures.
#include "values/Decimal.h"
#include "foundation/Exceptions.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <sstream>
#include <string>
#include "support/TestSupport.h"

using namespace QzXmlLib16;

namespace {

using QzTest::MessageOf;

std::string InvalidChar(int position, const std::string& text) {
    return "The string representing a Decimal, contained an invalid char at position " +
           std::to_string(position) + " [" + text + "].";
}

std::string Text(const char* text) {
    return CDecimal(text).ToString();
}

} // namespace

// --- reading -------------------------------------------------------------------------

TEST(CDecimalParseTest, ShortestTextAfterRationalising) {
    CDecimal value("1.50");
    EXPECT_EQ("1", value.m_integer.ToString());
    EXPECT_EQ("5", value.m_fraction.ToString());
    EXPECT_EQ(1, value.m_fractionalDivider);
    EXPECT_EQ("1.5", value.ToString());
    CDecimal keepsZero("1.05");
    EXPECT_EQ("5", keepsZero.GetFraction().ToString());
    EXPECT_EQ(2, keepsZero.GetFractionalDivider());
    EXPECT_EQ("1.05", keepsZero.ToString());
    EXPECT_EQ("0", Text(nullptr));
}

// Blanks are skipped and the last sign wins; exponents may carry blanks and signs of their own;
// beyond 30 places the value rounds (ties towards zero, a final zero stays) and a tiny value is 0.
TEST(CDecimalParseTest, TextsAndTheirShortestForm) {
    // clang-format off
    const std::pair<const char*, std::string> rows[] = {
        {"1.0", "1"}, {"0", "0"}, {"-0", "0"}, {"-0.5", "-0.5"}, {".5", "0.5"}, {"1.", "1"}, {"", "0"},
        {".", "0"}, {"-3.05", "-3.05"}, {"+12345678901234567890123.4500", "12345678901234567890123.45"},
        {"1 000.5", "1000.5"}, {"1.5 5", "1.55"}, {"1-2", "-12"}, {"-1+2", "12"}, {"- 1", "-1"},
        {"\t2.5\r\n", "2.5"}, {"1.5E2", "150"}, {"15E-1", "1.5"}, {"1e+-3", "0.001"}, {"1e 5", "100000"},
        {"1e5 0", "1" + std::string(50, '0')}, {"E5", "0"}, {"1E", "1"}, {"-1.5e-3", "-0.0015"},
        {"1E400", "1" + std::string(400, '0')}, {"1E-30", "0.000000000000000000000000000001"}, {"1E-31", "0"},
        {"-9E-99999999999999999999", "0"},
        {"0.1234567890123456789012345678905", "0.123456789012345678901234567890"},
        {"0.1234567890123456789012345678906", "0.123456789012345678901234567891"},
        {"-0.1234567890123456789012345678905", "-0.123456789012345678901234567890"},
        {"-0.1234567890123456789012345678906", "-0.123456789012345678901234567891"}};
    // clang-format on
    for (const auto& row : rows)
        EXPECT_EQ(row.second, Text(row.first)) << "[" << row.first << "]";
}

TEST(CDecimalParseTest, NegativeZeroIntegerPartCarriesTheSign) {
    CDecimal value("-0.5");
    EXPECT_EQ(-1, value.GetInteger().GetSign());
    EXPECT_EQ("-5", value.GetFraction().ToString());
}

TEST(CDecimalParseTest, InvalidCharactersReportTheirPosition) {
    const std::pair<int, const char*> rows[] = {{1, "1,5"},  {0, "abc"},  {3, "1.2.3"}, {2, "1.-2"},
                                                {3, "1e5-"}, {2, "1ee5"}, {2, "1e.5"}};
    for (const auto& row : rows)
        EXPECT_EQ(InvalidChar(row.first, row.second),
                  MessageOf<CQzInvalidValueException>([&] { CDecimal(row.second); }));
}

TEST(CDecimalParseTest, FailedParseKeepsThePreviousValue) {
    CDecimal value("7.25");
    EXPECT_THROW(value.Parse("7.2x"), CQzInvalidValueException);
    EXPECT_EQ("7.25", value.ToString());
}

// Collectors grow with the text: long digit runs are read in full.
TEST(CDecimalParseTest, LongDigitRunsAreReadInFull) {
    std::string integer(2000, '7');
    EXPECT_EQ(integer, CDecimal(integer.c_str()).m_integer.ToString());
    CDecimal withFraction((integer + ".5").c_str());
    EXPECT_EQ(integer, withFraction.m_integer.ToString());
    EXPECT_EQ("5", withFraction.m_fraction.ToString());
    std::string exponent = "1E" + std::string(40, '0') + "3";
    EXPECT_EQ("1000", Text(exponent.c_str()));
}

TEST(CDecimalParseTest, HugePositiveExponentIsRefused) {
    EXPECT_EQ("The string representing a Decimal, contained an exponent out of range [1E100001].",
              MessageOf<CQzInvalidValueException>([] { CDecimal("1E100001"); }));
    EXPECT_EQ(
        "The string representing a Decimal, contained an exponent out of range [1E99999999999999999999].",
        MessageOf<CQzInvalidValueException>([] { CDecimal("1E99999999999999999999"); }));
}

TEST(CDecimalParseTest, FromDouble) {
    EXPECT_EQ("0.1", CDecimal(0.1).ToString());
    EXPECT_EQ("-2.5", CDecimal(-2.5).ToString());
    EXPECT_EQ("100000000000000000000", CDecimal(1e20).ToString());
    EXPECT_EQ("0.0000000000001", CDecimal(1e-13).ToString());
    EXPECT_EQ("0", CDecimal(1e-14).ToString());
    EXPECT_EQ(InvalidChar(0, "nan\n"), MessageOf<CQzInvalidValueException>(
                                           [] { CDecimal(std::numeric_limits<double>::quiet_NaN()); }));
    EXPECT_EQ(InvalidChar(0, "inf\n"),
              MessageOf<CQzInvalidValueException>([] { CDecimal(std::numeric_limits<double>::infinity()); }));
}

// --- scale ---------------------------------------------------------------------------

// The rounding carry never leaves the fraction: 0.96 at one place prints "0.10".
TEST(CDecimalScaleTest, RoundingCarryStaysInTheFraction) {
    CDecimal value("0.96");
    value.ChangeFractionalDivider(1);
    EXPECT_EQ("10", value.GetFraction().ToString());
    EXPECT_EQ("0.10", value.ToString());
    CDecimal negative("-0.96");
    negative.ChangeFractionalDivider(1);
    EXPECT_EQ("-0.10", negative.ToString());
}

TEST(CDecimalScaleTest, LoweringRoundsTiesTowardsZero) {
    struct Row {
        const char* text;
        int places;
        const char* expected;
    } rows[] = {
        {"2.25", 1, "2.2"},   {"2.26", 1, "2.3"},   {"-2.25", 1, "-2.2"}, {"-2.26", 1, "-2.3"},
        {"2.5", 0, "2"},      {"2.51", 0, "3"},     {"-2.5", 0, "-2"},    {"-2.51", 0, "-3"},
        {"0.04", 1, "0"},     {"-0.06", 1, "-0.1"}, {"1.04", 1, "1"},     {"1.449", 1, "1.4"},
        {"-1.06", 1, "-1.1"}, {"0.5", 0, "0"},      {"0.6", 0, "1"},      {"-0.6", 0, "-1"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        CDecimal value(row.text);
        value.ChangeFractionalDivider(row.places);
        EXPECT_EQ(row.expected, value.ToString());
    }
}

TEST(CDecimalScaleTest, RaisingIsExactAndRationaliseUndoesIt) {
    CDecimal value("1.5");
    value.ChangeFractionalDivider(4);
    EXPECT_EQ("5000", value.GetFraction().ToString());
    EXPECT_EQ("1.5000", value.ToString());
    value.Rationalise();
    EXPECT_EQ(1, value.GetFractionalDivider());
    EXPECT_EQ("1.5", value.ToString());

    CDecimal zeroFraction(CBigInteger(3), CBigInteger(0), 5);
    zeroFraction.Rationalise();
    EXPECT_EQ(1, zeroFraction.GetFractionalDivider());
    CDecimal noPlaces(CBigInteger(3), CBigInteger(0), 0);
    noPlaces.Rationalise();
    EXPECT_EQ(0, noPlaces.GetFractionalDivider());
}

TEST(CDecimalScaleTest, NormalizeRaisesTheShorterOperand) {
    CDecimal a("1.5");
    CDecimal b("2.125");
    EXPECT_EQ(3, CDecimal::Normalize(a, b));
    EXPECT_EQ(3, a.GetFractionalDivider());
    EXPECT_EQ("500", a.GetFraction().ToString());
    EXPECT_EQ("125", b.GetFraction().ToString());
}

TEST(CDecimalScaleTest, NegativePlacesAreRefused) {
    CDecimal value("1.5");
    EXPECT_EQ("ERROR: A Decimal cannot have a negative number of places.",
              MessageOf<CQzInvalidParamException>([&] { value.ChangeFractionalDivider(-1); }));
    EXPECT_EQ("1.5", value.ToString());
}

// --- arithmetic ----------------------------------------------------------------------

// Sums carry and take their sign from the larger side; products and quotients keep 30 places,
// a tie at the 31st rounding towards zero.
TEST(CDecimalArithmeticTest, OperatorsOnTwoDecimals) {
    const std::string third(30, '3'), twoThirds = std::string(29, '6') + "7";
    const std::string tiny = "0." + std::string(29, '0') + "1";
    struct Row {
        const char *a, op, *b;
        std::string expected;
    };
    // clang-format off
    const Row rows[] = {
        {"0.5", '+', "0.5", "1"}, {"-0.5", '+', "-0.5", "-1"}, {"0.3", '-', "0.5", "-0.2"},
        {"1.3", '-', "1.5", "-0.2"}, {"2.3", '-', "1.5", "0.8"}, {"-2.3", '+', "1.5", "-0.8"},
        {"9.999", '+', "0.011", "10.01"}, {"1.25", '-', "1.25", "0"}, {"1.5", '*', "1.5", "2.25"},
        {"-0.5", '*', "3", "-1.5"}, {"-0.5", '*', "-0.5", "0.25"},
        {"0.000000000000001", '*', "0.000000000000001", tiny},
        {"0.0000000000000001", '*', "0.000000000000005", "0"},
        {"0.0000000000000001", '*', "0.000000000000006", tiny},
        {"1", '/', "3", "0." + third}, {"-1", '/', "3", "-0." + third}, {"2", '/', "3", "0." + twoThirds},
        {"2", '/', "-3", "-0." + twoThirds}, {"5", '/', "2", "2.5"}, {"10", '/', "-2.5", "-4"},
        {"0.5", '/', "4", "0.125"}};
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.a) + ' ' + row.op + ' ' + row.b);
        const CDecimal a(row.a), b(row.b);
        const CDecimal result = row.op == '+' ? a + b : row.op == '-' ? a - b : row.op == '*' ? a * b : a / b;
        EXPECT_EQ(row.expected, result.ToString());
    }
    CDecimal x("1.5");
    x += CDecimal("2.25");
    x -= CDecimal("0.75");
    EXPECT_EQ("3", x.ToString());
    x *= CDecimal("1.1");
    EXPECT_EQ("3.3", x.ToString());
    x /= CDecimal(8);
    EXPECT_EQ("0.4125", x.ToString());
}

// A fraction far above its scale (only the unchecked constructor makes one) is carried
// out in one step rather than one unit at a time.
TEST(CDecimalArithmeticTest, OversizedFractionIsCarriedIntoTheInteger) {
    CDecimal odd(CBigInteger(0), CBigInteger(("1" + std::string(40, '0')).c_str()), 1);
    EXPECT_EQ("1" + std::string(39, '0'), (odd + CDecimal()).ToString());
    CDecimal negative(CBigInteger(-2), CBigInteger("-25"), 1);
    EXPECT_EQ("-4.5", (negative + CDecimal()).ToString());
}

TEST(CDecimalArithmeticTest, DivisionByZeroThrows) {
    EXPECT_EQ("ERROR: Overflow in operator/.",
              MessageOf<CQzInvalidValueException>([] { CDecimal(1) / CDecimal("0.0"); }));
    EXPECT_EQ("ERROR: Overflow in operator/.",
              MessageOf<CQzInvalidValueException>([] { CDecimal(0) / CDecimal("-0"); }));
}

TEST(CDecimalArithmeticTest, PrefixChangesTheObject) {
    CDecimal x("1.5");
    CDecimal& result = ++x;
    EXPECT_EQ(&x, &result);
    EXPECT_EQ("2.5", x.ToString());
    --x;
    --x;
    EXPECT_EQ("0.5", x.ToString());
}

// The postfix forms return the changed value and leave the object as it was.
TEST(CDecimalArithmeticTest, PostfixLeavesTheObjectUnchanged) {
    CDecimal x("1.5");
    CDecimal incremented = x++;
    EXPECT_EQ("2.5", incremented.ToString());
    EXPECT_EQ("1.5", x.ToString());
    CDecimal decremented = x--;
    EXPECT_EQ("0.5", decremented.ToString());
    EXPECT_EQ("1.5", x.ToString());
}

TEST(CDecimalArithmeticTest, NegationFlipsBothParts) {
    CDecimal x("3.05");
    EXPECT_EQ("-3.05", x.GetNegative().ToString());
    EXPECT_EQ("3.05", x.ToString());
    x.Negate();
    EXPECT_EQ("-5", x.GetFraction().ToString());
    EXPECT_EQ("-3.05", x.ToString());
}

// A built-in number may stand on either side; it is read as a CDecimal first.
TEST(CDecimalArithmeticTest, BuiltInNumbersOnEitherSide) {
    CDecimal half("0.5");
    EXPECT_EQ("1.5", (half + 1).ToString());
    EXPECT_EQ("1.5", (1 + half).ToString());
    EXPECT_EQ("-0.5", (0 - half).ToString());
    EXPECT_EQ("1", (2 * half).ToString());
    EXPECT_EQ("4", (2 / half).ToString());
    EXPECT_EQ("0.75", (1.5 * half).ToString());
    EXPECT_TRUE(half == 0.5 && 0.5 == half && 1 > half && 0 < half && 1LL >= half && !(1 <= half) &&
                1 != half);
    EXPECT_EQ("ERROR: Overflow in operator/.", MessageOf<CQzInvalidValueException>([&] { half / 0; }));
    EXPECT_EQ(30, CDecimal::m_maxDivider);
}

// --- comparison ----------------------------------------------------------------------

TEST(CDecimalCompareTest, OrderAcrossScalesAndSigns) {
    EXPECT_TRUE(CDecimal("1.5") == CDecimal("1.50"));
    EXPECT_TRUE(CDecimal("1.5") < CDecimal("1.50001"));
    EXPECT_TRUE(CDecimal("-1.5") < CDecimal("-1.2"));
    EXPECT_TRUE(CDecimal("-0.5") < CDecimal("0.5"));
    EXPECT_TRUE(CDecimal("2") > CDecimal("1.99"));
    EXPECT_TRUE(CDecimal("2") >= CDecimal("2.0"));
    EXPECT_TRUE(CDecimal("2") <= CDecimal("2.0"));
    EXPECT_FALSE(CDecimal("2.01") <= CDecimal("2"));
    EXPECT_FALSE(CDecimal("-2.01") >= CDecimal("-2"));
    EXPECT_TRUE(CDecimal("1.2") != CDecimal("1.21"));
}

TEST(CDecimalCompareTest, NegativeZeroEqualsZeroButIsLess) {
    CDecimal negativeZero("-0.0");
    CDecimal zero("0.0");
    EXPECT_TRUE(negativeZero == zero);
    EXPECT_TRUE(negativeZero < zero);
    EXPECT_FALSE(zero < negativeZero);
}

// --- printing ------------------------------------------------------------------------

TEST(CDecimalToStringTest, ZeroPaddedFraction) {
    EXPECT_EQ("0.001", CDecimal(CBigInteger(0), CBigInteger(1), 3).ToString());
    EXPECT_EQ("-0.001", CDecimal(CBigInteger("-0"), CBigInteger(-1), 3).ToString());
    EXPECT_EQ("7", CDecimal(CBigInteger(7), CBigInteger(0), 3).ToString());
    // The sign comes from the integer part only.
    EXPECT_EQ("1.5", CDecimal(CBigInteger(1), CBigInteger(-5), 1).ToString());
}

// Streams get the same text as ToString, whatever the size of the value.
TEST(CDecimalToStringTest, StreamsWriteTheText) {
    std::ostringstream stream;
    stream << CDecimal("-0.50") << ' ' << CBigInteger("-0") << ' ' << CBigInteger::MAX_DOUBLE.GetNegative();
    EXPECT_EQ("-0.5 0 -17" + std::string(307, '0'), stream.str());
}

// The formatting buffer holds 1024 characters: longer texts keep their first 1023.
TEST(CDecimalToStringTest, LongTextsAreCutTo1023Characters) {
    std::string digits;
    for (int i = 0; i < 1100; ++i) {
        digits.push_back(static_cast<char>('1' + i % 9));
    }
    EXPECT_EQ(digits.substr(0, 1023), Text(digits.c_str()));
    EXPECT_EQ("-" + digits.substr(0, 1022), Text(("-" + digits + ".25").c_str()));
    std::string fits = std::string(1021, '9') + ".5";
    EXPECT_EQ(fits, Text(fits.c_str()));
    // The value itself is whole; only its text is cut.
    EXPECT_EQ(digits, CDecimal(digits.c_str()).ToBigInteger().ToString());
}

TEST(CDecimalToStringTest, FixedPlacesRoundHalfAwayFromZero) {
    struct Row {
        const char* text;
        int places;
        const char* expected;
    } rows[] = {
        {"2.5", 0, "3."},     {"2.4", 0, "2."},        {"12", 0, "12."},       {"1.234", 2, "1.23"},
        {"1.235", 2, "1.24"}, {"-1.235", 2, "-1.24"},  {"-1.234", 2, "-1.23"}, {"1", 2, "1.00"},
        {"1.2", 3, "1.200"},  {"0.96", 1, "1.0"},      {"-0.5", 0, "-1."},     {"-0.05", 1, "-0.1"},
        {"0.995", 2, "1.0"},  {"9.9999", 3, "10.000"}, {"0.04", 1, "0.0"},     {"3.14159", -2, "3."},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.text) + " at " + std::to_string(row.places));
        EXPECT_EQ(row.expected, CDecimal(row.text).ToString(row.places));
    }
}

// Beyond 30 places the rounding term is zero, however many places are asked for.
TEST(CDecimalToStringTest, FixedPlacesBeyondThePrecision) {
    CDecimal value("-1.25");
    EXPECT_EQ("-1.25", value.ToString(30));
    EXPECT_EQ("-1.25", value.ToString(31));
    EXPECT_EQ("-1.25", value.ToString(std::numeric_limits<int>::max()));
    CDecimal third = CDecimal(1) / CDecimal(3);
    EXPECT_EQ("0." + std::string(29, '3'), third.ToString(29));
    EXPECT_EQ("0." + std::string(30, '3'), third.ToString(1000));
}

// --- conversions ---------------------------------------------------------------------

TEST(CDecimalConvertTest, LongLongDropsTheFractionAfterOnePlace) {
    EXPECT_EQ(2, CDecimal("2.96").ToLongLong());
    EXPECT_EQ(-2, CDecimal("-2.96").ToLongLong());
    EXPECT_EQ(9223372036854775807LL, CDecimal("9223372036854775807").ToLongLong());
    EXPECT_EQ(-9223372036854775807LL - 1, CDecimal("-9223372036854775808.4").ToLongLong());
    for (const char* text : {"9223372036854775808", "-9223372036854775809"})
        EXPECT_EQ("The Decimal value if to large to fit into a LONGLONG",
                  MessageOf<CQzOverFlowException>([&] { CDecimal(text).ToLongLong(); }));
}

TEST(CDecimalConvertTest, LongRoundsTiesTowardsZero) {
    EXPECT_EQ(3, CDecimal("2.6").ToLong());
    EXPECT_EQ(2, CDecimal("2.5").ToLong());
    EXPECT_EQ(-3, CDecimal("-2.6").ToLong());
    EXPECT_EQ(-2, CDecimal("-2.5").ToLong());
    EXPECT_EQ(2147483647, CDecimal("2147483647.4").ToLong());
    for (const char* text : {"2147483647.6", "-2147483649"})
        EXPECT_EQ("The Decimal value if to large to fit into a LONG",
                  MessageOf<CQzOverFlowException>([&] { CDecimal(text).ToLong(); }));
}

TEST(CDecimalConvertTest, DoubleWithinItsRange) {
    EXPECT_DOUBLE_EQ(1.5, CDecimal("1.5").ToDouble());
    EXPECT_DOUBLE_EQ(-0.001, CDecimal("-0.001").ToDouble());
    EXPECT_DOUBLE_EQ(1.7e308, CDecimal("1.7E308").ToDouble());
    for (const char* text : {"1.8E308", "-1.8E308"})
        EXPECT_EQ("The Decimal value if to large to fit into a Double",
                  MessageOf<CQzOverFlowException>([&] { CDecimal(text).ToDouble(); }));
}

TEST(CDecimalConvertTest, BigIntegerRoundsTiesTowardsZero) {
    EXPECT_EQ("2", CDecimal("2.5").ToBigInteger().ToString());
    EXPECT_EQ("3", CDecimal("2.51").ToBigInteger().ToString());
    EXPECT_EQ("-123456789012345678901234567890",
              CDecimal("-123456789012345678901234567890.2").ToBigInteger().ToString());
}
