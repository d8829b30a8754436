// Tests of CBigInteger: reading, printing, the two zeros, arithmetic with its division
// rules, conversions, square root and the digit routines.
#include "values/BigInteger.h"
#include "values/Decimal.h"
#include "foundation/Exceptions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>

#include "support/TestSupport.h"

using namespace QzXmlLib16;

namespace {

// The message of the CQzInvalidValueException the call throws, or a marker text.
template <class F> std::string InvalidValueMessage(F call) {
    return QzTest::MessageOf<CQzInvalidValueException>(call);
}

std::string Text(const CBigInteger& value) {
    return value.ToString();
}

CBigInteger::DigitVector Digits(std::initializer_list<int> leastSignificantFirst) {
    CBigInteger::DigitVector v;
    for (int d : leastSignificantFirst) {
        v.push_back(static_cast<char>(d));
    }
    return v;
}

} // namespace

// --- reading and printing ------------------------------------------------------------

TEST(CBigIntegerParseTest, BlankAndEmptyTextsArePositiveZero) {
    for (const char* text : {"", "   ", static_cast<const char*>(nullptr)}) {
        CBigInteger value(77);
        value.Parse(text);
        EXPECT_EQ("0", Text(value));
        EXPECT_EQ(1, value.GetSign());
    }
}

TEST(CBigIntegerParseTest, PlainIntegersRoundTrip) {
    for (const char* text : {"0", "7", "-7", "2147483648", "-9223372036854775809",
                             "123456789012345678901234567890123456789012345678901234567890"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(text, Text(CBigInteger(text)));
    }
}

// The reader keeps only the last run of digits; what stands in front is dropped. Only a "-" at
// the very front (after blanks) makes the value negative. Texts with a point or an exponent are
// read as decimals and rounded, ties towards zero.
TEST(CBigIntegerParseTest, ToleranceAndDecimalTexts) {
    const std::pair<const char*, const char*> rows[] = {
        {"  00042  ", "42"}, {" -42 ", "-42"}, {"+5", "5"},     {"1 2", "2"},      {"12-3", "3"},
        {"\t5", "5"},        {"+-3", "3"},     {"-+3", "-3"},   {"1.5E3", "1500"}, {"2.5", "2"},
        {"2.6", "3"},        {"-2.5", "-2"},   {"-2.51", "-3"}, {"1.2e1", "12"}};
    for (const auto& row : rows)
        EXPECT_EQ(row.second, Text(CBigInteger(row.first))) << "[" << row.first << "]";
    // A trailing line feed stops the reading at once: no digit at all is read.
    CBigInteger lineFeed("7\n");
    EXPECT_EQ("0", Text(lineFeed));
    EXPECT_TRUE(lineFeed.GetDigits().empty());
}

TEST(CBigIntegerParseTest, InvalidDecimalTextThrowsAndKeepsTheValue) {
    CBigInteger value(99);
    EXPECT_EQ("The string representing a Decimal, contained an invalid char at position 1 [1a].",
              InvalidValueMessage([&] { value.Parse("1a"); }));
    EXPECT_EQ("99", Text(value));
    EXPECT_EQ("The string representing a Decimal, contained an invalid char at position 0 [abc].",
              InvalidValueMessage([] { CBigInteger("abc"); }));
}

// --- the two zeros -------------------------------------------------------------------

TEST(CBigIntegerZeroTest, NegativeZeroEqualsZeroButIsLess) {
    CBigInteger negativeZero("-0");
    CBigInteger zero(0);
    EXPECT_EQ("0", Text(negativeZero));
    EXPECT_EQ(-1, negativeZero.GetSign());
    EXPECT_TRUE(negativeZero == zero && !(negativeZero != zero));
    EXPECT_TRUE(negativeZero < zero && !(zero < negativeZero) && zero > negativeZero);
    EXPECT_TRUE(!(zero <= negativeZero) && negativeZero <= zero);
}

TEST(CBigIntegerZeroTest, ArithmeticSignsOfZeroResults) {
    // Equal magnitudes with different signs give a fresh +0.
    EXPECT_EQ(1, (CBigInteger(-5) + CBigInteger(5)).GetSign());
    EXPECT_EQ(1, (CBigInteger(5) - CBigInteger(5)).GetSign());
    CBigInteger sum(-5);
    sum += CBigInteger(5);
    EXPECT_EQ(1, sum.GetSign());
    // A product keeps the product of the signs, even when it is zero.
    CBigInteger product = CBigInteger(0) * CBigInteger(-3);
    EXPECT_EQ("0", Text(product));
    EXPECT_EQ(-1, product.GetSign());
    // A quotient truncated to zero with mixed signs is a negative zero ...
    CBigInteger quotient = CBigInteger(-1) / CBigInteger(5);
    EXPECT_EQ(-1, quotient.GetSign());
    EXPECT_TRUE(quotient < CBigInteger(0));
    // ... while a zero dividend gives +0.
    EXPECT_EQ(1, (CBigInteger("-0") / CBigInteger(5)).GetSign());
    EXPECT_EQ(1, (CBigInteger("-0") % CBigInteger(5)).GetSign());
}

// --- construction --------------------------------------------------------------------

TEST(CBigIntegerConstructTest, MostNegativeValuesOfEachType) {
    CBigInteger minInt(-2147483647 - 1);
    EXPECT_EQ("-2147483648", Text(minInt));
    EXPECT_EQ(-2147483647 - 1, static_cast<int>(minInt));
    EXPECT_EQ("-9223372036854775808", Text(CBigInteger(std::numeric_limits<long long>::min())));
    EXPECT_EQ("-9223372036854775808", Text(CBigInteger(std::numeric_limits<long>::min())));
    EXPECT_EQ("18446744073709551615", Text(CBigInteger(std::numeric_limits<unsigned long long>::max())));
    EXPECT_EQ("18446744073709551615", Text(CBigInteger(std::numeric_limits<unsigned long>::max())));
    EXPECT_EQ("4294967295", Text(CBigInteger(4294967295U)));
    EXPECT_EQ("0", Text(CBigInteger(0ULL)));
}

TEST(CBigIntegerConstructTest, DoublesRoundHalvesDown) {
    const std::pair<double, const char*> rows[] = {{2.5, "2"},  {3.5, "3"}, {-2.5, "-2"},
                                                   {2.51, "3"}, {0.4, "0"}, {1e20, "100000000000000000000"}};
    for (const auto& row : rows)
        EXPECT_EQ(row.second, Text(CBigInteger(row.first))) << row.first;
    // Far beyond a double's precision the digits are those of repeated division.
    EXPECT_EQ(309u, CBigInteger(1.7e308).GetDigits().size());
}

TEST(CBigIntegerConstructTest, NanReadsAsZeroAndInfinityThrows) {
    CBigInteger nan(std::numeric_limits<double>::quiet_NaN());
    EXPECT_TRUE(nan.GetDigits().empty());
    EXPECT_EQ("0", Text(nan));
    for (double infinity : {HUGE_VAL, -HUGE_VAL})
        EXPECT_EQ("ERROR: An infinite value cannot be held by a BigInteger.",
                  InvalidValueMessage([&] { CBigInteger{infinity}; }));
}

TEST(CBigIntegerConstructTest, FromDecimalRoundsTiesTowardsZero) {
    EXPECT_EQ("2", Text(CBigInteger(CDecimal("2.5"))));
    EXPECT_EQ("-3", Text(CBigInteger(CDecimal("-2.7"))));
    EXPECT_EQ("0", Text(CBigInteger(CDecimal("0.4"))));
}

// --- arithmetic ----------------------------------------------------------------------

TEST(CBigIntegerArithmeticTest, SignedAdditionAndSubtraction) {
    EXPECT_EQ("1000000000000000000000", Text(CBigInteger("999999999999999999999") + CBigInteger(1)));
    EXPECT_EQ("-999999999999999999999", Text(CBigInteger("-1000000000000000000000") + CBigInteger(1)));
    EXPECT_EQ("3", Text(CBigInteger(-2) + CBigInteger(5)));
    EXPECT_EQ("-3", Text(CBigInteger(2) - CBigInteger(5)));
    EXPECT_EQ("7", Text(CBigInteger(2) - CBigInteger(-5)));
    CBigInteger x(10);
    x -= CBigInteger(25);
    EXPECT_EQ("-15", Text(x));
    x *= CBigInteger(-4);
    EXPECT_EQ("60", Text(x));
}

TEST(CBigIntegerArithmeticTest, UnaryMinusFlipsTheObjectItself) {
    CBigInteger x(5);
    CBigInteger& result = -x;
    EXPECT_EQ(&x, &result);
    EXPECT_EQ("-5", Text(x));
    EXPECT_EQ("5", Text(x.GetNegative()));
    EXPECT_EQ("-5", Text(x));
    EXPECT_EQ("5", Text(x.GetAbs()));
    x.Abs();
    EXPECT_EQ("5", Text(x));
}

// Each division operator has its own test and text; all truncate towards zero.
TEST(CBigIntegerDivisionTest, OperatorsKeepTheirOwnRules) {
    EXPECT_EQ("-3", Text(CBigInteger(-7) / CBigInteger(2)));
    EXPECT_EQ("-1", Text(CBigInteger(-7) % CBigInteger(2)));
    EXPECT_EQ("-3", Text(CBigInteger(7) / CBigInteger(-2)));
    EXPECT_EQ("3", Text(CBigInteger(-7) / CBigInteger(-2)));
    EXPECT_EQ("0", Text(CBigInteger(0) / CBigInteger(5)));
    EXPECT_EQ("ERROR: Overflow in operator/.", InvalidValueMessage([] { CBigInteger(5) / CBigInteger(0); }));
    EXPECT_EQ("ERROR: Overflow in operator/.",
              InvalidValueMessage([] { CBigInteger(0) / CBigInteger("-0"); }));
    EXPECT_EQ("ERROR: Overflow in operator%.", InvalidValueMessage([] { CBigInteger(7) % CBigInteger(-2); }));
    // A negative zero is below zero, so it is refused as a negative divisor.
    EXPECT_EQ("ERROR: Overflow in operator%.",
              InvalidValueMessage([] { CBigInteger(7) % CBigInteger("-0"); }));

    CBigInteger x(-7);
    EXPECT_EQ("ERROR: Overflow in operator /=.", InvalidValueMessage([&] { x /= CBigInteger(-2); }));
    EXPECT_EQ("ERROR: Overflow in operator%=.", InvalidValueMessage([&] { x %= CBigInteger(-2); }));
    EXPECT_EQ("-7", Text(x));
    x /= CBigInteger(2);
    EXPECT_EQ("-3", Text(x));
    CBigInteger y(-7);
    y %= CBigInteger(2);
    EXPECT_EQ("-1", Text(y));
    CBigInteger zero(0);
    zero /= CBigInteger(3);
    EXPECT_EQ("0", Text(zero));
}

// A built-in number on either side is read as a CBigInteger first, so the division rules
// and their texts are those of the class operators.
TEST(CBigIntegerDivisionTest, BuiltInNumbersOnEitherSide) {
    CBigInteger minusSeven(-7);
    EXPECT_EQ("-3", Text(minusSeven / 2));
    EXPECT_EQ("-1", Text(minusSeven % 2));
    EXPECT_EQ("-3", Text(7 / CBigInteger(-2)));
    EXPECT_EQ("ERROR: Overflow in operator%.", InvalidValueMessage([] { CBigInteger(7) % -2; }));
    EXPECT_EQ("ERROR: Overflow in operator/.", InvalidValueMessage([] { CBigInteger(5) / 0; }));
    EXPECT_EQ("-4", Text(minusSeven + 3));
    EXPECT_EQ("10", Text(3 - minusSeven));
    EXPECT_EQ("-14", Text(2LL * minusSeven));
    EXPECT_EQ("4294967296", Text(CBigInteger(1) * 4294967296ULL));
    // The two zeros stay equal, and negative zero stays below zero, with a plain 0 too.
    CBigInteger negativeZero("-0");
    EXPECT_TRUE(negativeZero == 0);
    EXPECT_TRUE(0 == negativeZero);
    EXPECT_TRUE(negativeZero < 0);
    EXPECT_FALSE(0 <= negativeZero);
    EXPECT_TRUE(minusSeven != -6);
    EXPECT_TRUE(minusSeven >= -7L);
    EXPECT_TRUE(-8 < minusSeven);
    // A double is rounded first, halves down: 2.5 is 2.
    EXPECT_FALSE(2.5 > CBigInteger(2));
    EXPECT_TRUE(2.5 == CBigInteger(2));
}

// A zero divisor ends with the operator's own text instead of a never-ending loop.
TEST(CBigIntegerDivisionTest, ZeroDivisorThrowsForEveryOperator) {
    CBigInteger x(7);
    EXPECT_EQ("ERROR: Overflow in operator%.", InvalidValueMessage([&] { x % CBigInteger(0); }));
    EXPECT_EQ("ERROR: Overflow in operator /=.", InvalidValueMessage([&] { x /= CBigInteger(0); }));
    EXPECT_EQ("ERROR: Overflow in operator%=.", InvalidValueMessage([&] { x %= CBigInteger(0); }));
    EXPECT_EQ("ERROR: Overflow in operator%.", InvalidValueMessage([] { CBigInteger(0) % CBigInteger(0); }));
    // A divisor whose digits were never read ("+" leaves an empty vector) is zero too.
    EXPECT_EQ("ERROR: Overflow in operator/.", InvalidValueMessage([&] { x / CBigInteger("+"); }));
    EXPECT_EQ("7", Text(x));
}

TEST(CBigIntegerDivisionTest, LongQuotientsAreExact) {
    CBigInteger big("123456789012345678901234567890123456789");
    CBigInteger divisor("987654321987");
    CBigInteger q = big / divisor;
    CBigInteger r = big % divisor;
    EXPECT_EQ("124999998748520313653794077", Text(q));
    EXPECT_EQ(Text(big), Text(q * divisor + r));
    EXPECT_TRUE(r < divisor);
    EXPECT_EQ("1", Text(CBigInteger::Pow10(50) / CBigInteger::Pow10(50)));
    // Runs of nines and near-powers of ten push every quotient digit to its limit.
    CBigInteger nines = CBigInteger::Pow10(60) - CBigInteger(1);
    CBigInteger divisor24 = CBigInteger::Pow10(24) - CBigInteger(1);
    EXPECT_EQ("1000000000000000000000001000000000000", Text(nines / divisor24));
    EXPECT_EQ("999999999999", Text(nines % divisor24));
    CBigInteger ninesThenZeros((std::string(50, '9') + std::string(10, '0')).c_str());
    CBigInteger nearPower = CBigInteger::Pow10(25) + CBigInteger(7);
    EXPECT_EQ("99999999999999999999999930000000000", Text(ninesThenZeros / nearPower));
    EXPECT_EQ("480000000000", Text(ninesThenZeros % nearPower));
    EXPECT_EQ("12345", Text(CBigInteger("1234567890") / CBigInteger(100000)));
    EXPECT_EQ("67890", Text(CBigInteger("1234567890") % CBigInteger(100000)));
}

// Ten thousand digits survive the text round trip; a product divides back exactly.
TEST(CBigIntegerDivisionTest, LargeValuesRoundTripAndDivideBack) {
    std::string text;
    for (int i = 0; i < 10000; ++i) {
        text.push_back(static_cast<char>('1' + (i * 7) % 9));
    }
    EXPECT_EQ(text, Text(CBigInteger(text.c_str())));
    EXPECT_EQ("-" + text, Text(CBigInteger(("-" + text).c_str())));
    CBigInteger a(text.substr(0, 600).c_str());
    CBigInteger b(text.substr(5000, 400).c_str());
    CBigInteger product = a * b;
    EXPECT_EQ(Text(a), Text(product / b));
    EXPECT_EQ("0", Text(product % b));
    EXPECT_EQ(Text(b), Text((product + CBigInteger(1)) / a));
    EXPECT_EQ("1", Text((product + CBigInteger(1)) % a));
}

// --- conversions ---------------------------------------------------------------------

TEST(CBigIntegerConvertTest, IntBounds) {
    EXPECT_EQ(2147483647, static_cast<int>(CBigInteger("2147483647")));
    EXPECT_EQ(-123, static_cast<int>(CBigInteger("-123")));
    EXPECT_EQ(0, static_cast<int>(CBigInteger("-0")));
    for (const char* text : {"2147483648", "-2147483649"})
        EXPECT_EQ("ERROR: Value out of bound of int.",
                  InvalidValueMessage([&] { (void)static_cast<int>(CBigInteger(text)); }));
}

// The 64-bit conversion multiplies in 32 bits: right while each digit product fits.
TEST(CBigIntegerConvertTest, LongLongKeepsTheThirtyTwoBitMultiplier) {
    EXPECT_EQ(4294967295LL, static_cast<long long>(CBigInteger("4294967295")));
    EXPECT_EQ(-4294967295LL, static_cast<long long>(CBigInteger("-4294967295")));
    // 4 * 10^9 still fits in 32 bits, so this one is right as well.
    EXPECT_EQ(4294967296LL, static_cast<long long>(CBigInteger("4294967296")));
    // 5 * 10^9 wraps to 705032704; 10^10 uses the wrapped multiplier 1410065408.
    EXPECT_EQ(705032704LL, static_cast<long long>(CBigInteger("5000000000")));
    EXPECT_EQ(-705032704LL, static_cast<long long>(CBigInteger("-5000000000")));
    EXPECT_EQ(1410065408LL, static_cast<long long>(CBigInteger("10000000000")));
    EXPECT_NE(9223372036854775807LL, static_cast<long long>(CBigInteger::MAX_LONGLONG));
    for (const char* text : {"9223372036854775808", "-9223372036854775809"})
        EXPECT_EQ("ERROR: Value out of bound of LONGLONG.",
                  InvalidValueMessage([&] { (void)static_cast<long long>(CBigInteger(text)); }));
}

// --- roots and powers ----------------------------------------------------------------

TEST(CBigIntegerRootTest, FloorOfTheSquareRoot) {
    for (const auto& row : {std::pair<int, const char*>{99, "9"}, {100, "10"}, {1, "1"}, {3, "1"}, {4, "2"}})
        EXPECT_EQ(row.second, Text(CBigInteger(row.first).SquareRoot())) << row.first;
    EXPECT_EQ("100000000000000000000", Text(CBigInteger::Pow10(40).SquareRoot()));
    // (10^20 + 1)^2 - 1 lies just below a square.
    CBigInteger justBelow =
        (CBigInteger::Pow10(20) + CBigInteger(1)) * (CBigInteger::Pow10(20) + CBigInteger(1)) -
        CBigInteger(1);
    EXPECT_EQ("100000000000000000000", Text(justBelow.SquareRoot()));
}

TEST(CBigIntegerRootTest, ZeroAndNegativeValuesThrow) {
    EXPECT_EQ("ERROR: Overflow in operator/.", InvalidValueMessage([] { CBigInteger(0).SquareRoot(); }));
    for (const char* text : {"-4", "-0"})
        EXPECT_EQ("ERROR: Negative Number in function SquareRoot().",
                  InvalidValueMessage([&] { CBigInteger(text).SquareRoot(); }));
}

TEST(CBigIntegerRootTest, PowersOfTen) {
    EXPECT_EQ("1", Text(CBigInteger::Pow10(0)));
    EXPECT_EQ("100000", Text(CBigInteger::Pow10(5)));
    EXPECT_EQ(1, CBigInteger::Pow10(3).GetSign());
}

// --- class constants -----------------------------------------------------------------

TEST(CBigIntegerConstantTest, Values) {
    EXPECT_EQ("2147483647", Text(CBigInteger::MAX_LONG));
    EXPECT_EQ("-2147483648", Text(CBigInteger::MIN_LONG));
    EXPECT_EQ("9223372036854775807", Text(CBigInteger::MAX_LONGLONG));
    EXPECT_EQ("-9223372036854775808", Text(CBigInteger::MIN_LONGLONG));
    EXPECT_EQ("17" + std::string(307, '0'), Text(CBigInteger::MAX_DOUBLE));
    EXPECT_EQ("-17" + std::string(307, '0'), Text(CBigInteger::MIN_DOUBLE));
}

// --- digit routines ------------------------------------------------------------------

TEST(CBigIntegerDigitsTest, BuildAndClean) {
    CBigInteger::DigitVector v;
    CBigInteger::Build(0u, v);
    EXPECT_EQ(Digits({0}), v);
    CBigInteger::BuildDWORDLONG(1203ULL, v);
    EXPECT_EQ(Digits({3, 0, 2, 1}), v);
    CBigInteger::Build(std::string("ab0012"), v);
    EXPECT_EQ(Digits({2, 1}), v);
    CBigInteger::BuildDouble(std::nan(""), v);
    EXPECT_TRUE(v.empty());
    CBigInteger::BuildDouble(-3.0, v);
    EXPECT_TRUE(v.empty());
    CBigInteger::BuildDouble(-std::numeric_limits<double>::infinity(), v);
    EXPECT_TRUE(v.empty());
    CBigInteger::DigitVector zeros = Digits({0, 0, 0});
    CBigInteger::Clean(zeros);
    EXPECT_EQ(Digits({0}), zeros);
    CBigInteger::DigitVector empty;
    CBigInteger::Clean(empty);
    EXPECT_TRUE(empty.empty());
    EXPECT_EQ(1, CBigInteger::Position(empty));
    EXPECT_EQ(3, CBigInteger::Position(Digits({1, 2, 3})));
}

TEST(CBigIntegerDigitsTest, CompareAddSubtractShift) {
    EXPECT_EQ(-1, CBigInteger::Compare(Digits({9}), Digits({0, 1})));
    EXPECT_EQ(1, CBigInteger::Compare(Digits({1, 2}), Digits({9, 1})));
    EXPECT_EQ(0, CBigInteger::Compare(Digits({4, 5}), Digits({4, 5})));
    CBigInteger::DigitVector out;
    CBigInteger::Add(Digits({9, 9}), Digits({1}), out);
    EXPECT_EQ(Digits({0, 0, 1}), out);
    // Add does not clean: the longer operand's top zeros stay.
    CBigInteger::Add(Digits({1, 0}), Digits({1}), out);
    EXPECT_EQ(Digits({2, 0}), out);
    CBigInteger::Subtract(Digits({0, 0, 1}), Digits({1}), out);
    EXPECT_EQ(Digits({9, 9}), out);
    CBigInteger::Subtract(Digits({5, 4}), Digits({5, 4}), out);
    EXPECT_EQ(Digits({0}), out);
    EXPECT_EQ("ERROR: Subtract needs a minuend not less than the subtrahend.",
              InvalidValueMessage([&] { CBigInteger::Subtract(Digits({1}), Digits({2}), out); }));
    CBigInteger::DigitVector v = Digits({7});
    CBigInteger::ShiftLeft(v, 0);
    CBigInteger::ShiftLeft(v, -2);
    EXPECT_EQ(Digits({7}), v);
    CBigInteger::ShiftLeft(v, 2);
    EXPECT_EQ(Digits({0, 0, 7}), v);
    CBigInteger::Pow10(3, v);
    EXPECT_EQ(Digits({0, 0, 0, 1}), v);
}

TEST(CBigIntegerDigitsTest, MultiplyAndDivide) {
    CBigInteger::DigitVector out;
    CBigInteger::Multiply(Digits({9, 9}), 9, out);
    EXPECT_EQ(Digits({1, 9, 8}), out);
    CBigInteger::Multiply(Digits({9, 9}), 0, out);
    EXPECT_EQ(Digits({0}), out);
    CBigInteger::Multiply(Digits({0}), Digits({3, 2}), out);
    EXPECT_EQ(Digits({0}), out);
    CBigInteger::Multiply(Digits({2, 1}), Digits({0, 1}), out); // 12 * 10
    EXPECT_EQ(Digits({0, 2, 1}), out);
    CBigInteger::DigitVector q;
    CBigInteger::DigitVector r;
    CBigInteger::Divide(Digits({3}), Digits({0, 1}), q, r);
    EXPECT_EQ(Digits({0}), q);
    EXPECT_EQ(Digits({3}), r);
    CBigInteger::Divide(Digits({0, 0, 1}), Digits({7}), q, r); // 100 / 7
    EXPECT_EQ(Digits({4, 1}), q);
    EXPECT_EQ(Digits({2}), r);
    EXPECT_EQ("ERROR: Overflow in operator/.",
              InvalidValueMessage([&] { CBigInteger::Divide(Digits({5}), Digits({0}), q, r); }));
}
