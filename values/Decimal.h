// Decimal.h - CDecimal, the exact fixed-point value behind the XSD type decimal.
//
// A value is an integer part plus a fraction of a given number of places, both held as
// CBigInteger (values/BigInteger.h), which does all digit work. Reading lives in
// DecimalParse.cpp, arithmetic, rounding and printing in Decimal.cpp.
#ifndef QZXML_VALUES_DECIMAL_H
#define QZXML_VALUES_DECIMAL_H

#include "values/BigInteger.h"

#include <cstdint>
#include <iosfwd>
#include <string>
#include <type_traits>

namespace QzXmlLib16 {

// value = m_integer + m_fraction / 10^m_fractionalDivider
//
//   "-3.05"  ->  m_integer -3,  m_fraction -5,  m_fractionalDivider 2
//   "-0.5"   ->  m_integer -0 (a negative zero keeps the sign), m_fraction -5, divider 1
//
// Both parts carry the sign of the number. Results of parsing, multiplication and
// division keep at most m_maxDivider places; rounding sends ties towards zero.
class CDecimal {
public:
    // The largest number of places kept after parsing, multiplication or division.
    static constexpr int32_t m_maxDivider = 30;

    // +0.
    CDecimal();
    // The integer part; fraction +0 at one place.
    CDecimal(int value);
    CDecimal(long value);
    CDecimal(long long value);
    CDecimal(const CBigInteger& value);
    // Stores the three fields as given, without any check.
    CDecimal(const CBigInteger& integer, const CBigInteger& fraction, int divider);
    // The value printed with 13 places and parsed; NaN and infinities throw the
    // invalid-character CQzInvalidValueException.
    CDecimal(double value);
    // Parses the text; throws what Parse throws.
    CDecimal(const char* text);
    CDecimal(const CDecimal& other) = default;
    CDecimal& operator=(const CDecimal& other) = default;
    virtual ~CDecimal();

    // Reads [sign][digits][.digits][(e|E)[signs]digits], with blanks, tabs and line ends
    // skipped anywhere and signs taken anywhere before the "." (the last one wins:
    // "1-2" is -12). Throws CQzInvalidValueException "The string representing a Decimal,
    // contained an invalid char at position %d [%s]."; the value is unchanged then.
    // An exponent above 100000 throws "The string representing a Decimal, contained an
    // exponent out of range [%s].". A null text reads as the empty text, which is zero.
    void Parse(const char* text);

    // The shortest text: "1.5", "-0.05", "12"; never an exponent nor a leading "+".
    // Note: the text is cut after 1023 characters, as the formatting buffer holds 1024.
    std::string ToString() const;
    // Rounded half away from zero to nDecimals places, the "." always written ("12." for
    // 0 places). Note: a fraction that becomes shorter through rounding is not padded
    // behind, so 0.995 at two places prints "1.0". A negative count counts as 0.
    std::string ToString(int nDecimals) const;

    // Note: drops the fraction after rounding to one place, so 2.96 gives 2.
    // Throws CQzOverFlowException "The Decimal value if to large to fit into a LONGLONG".
    long long ToLongLong() const;
    // Rounded to no places, ties towards zero (2.6 gives 3, 2.5 gives 2).
    // Throws CQzOverFlowException "The Decimal value if to large to fit into a LONG".
    int32_t ToLong() const;
    // Throws CQzOverFlowException "The Decimal value if to large to fit into a Double"
    // when the integer part lies outside +-1.7E+308.
    double ToDouble() const;
    // Rounded to no places, ties towards zero.
    CBigInteger ToBigInteger() const;

    // A copy with both parts negated.
    CDecimal GetNegative() const;
    // Negates both parts; returns this object.
    CDecimal& Negate();

    // Exact sum and difference.
    CDecimal operator+(const CDecimal& other) const;
    CDecimal operator-(const CDecimal& other) const;
    // Product rounded to m_maxDivider places.
    CDecimal operator*(const CDecimal& other) const;
    // Quotient truncated at m_maxDivider + 2 places, then rounded to m_maxDivider.
    // Throws CQzInvalidValueException "ERROR: Overflow in operator/." for a zero divisor.
    CDecimal operator/(const CDecimal& other) const;
    CDecimal& operator+=(const CDecimal& other);
    CDecimal& operator-=(const CDecimal& other);
    CDecimal& operator*=(const CDecimal& other);
    CDecimal& operator/=(const CDecimal& other);

    // Add or subtract 1; return this object.
    CDecimal& operator++();
    CDecimal& operator--();
    // Note: the postfix forms return the value plus (minus) 1 and leave this object
    // unchanged: after y = x++, y is x + 1 and x is what it was.
    CDecimal operator++(int);
    CDecimal operator--(int);

    // Note: as with CBigInteger, -0.0 equals 0.0 but is less than it.
    bool operator==(const CDecimal& other) const;
    bool operator!=(const CDecimal& other) const;
    bool operator<(const CDecimal& other) const;
    bool operator>(const CDecimal& other) const;
    bool operator<=(const CDecimal& other) const;
    bool operator>=(const CDecimal& other) const;

    // Read access for neighbours (facet checks, conversions).
    const CBigInteger& GetInteger() const { return m_integer; }
    const CBigInteger& GetFraction() const { return m_fraction; }
    int32_t GetFractionalDivider() const { return m_fractionalDivider; }

    // --- internal: scale handling, public for CBigInteger and the library ---------------
    // Removes trailing zeros of the fraction; the divider stays at 1 or more.
    void Rationalise();
    // Rescales to n places. Raising is exact; lowering rounds to nearest. Throws
    // CQzInvalidParamException for a negative n.
    // Note: a remainder of exactly one half does not round: ties go towards zero (2.25 at
    // one place is 2.2, -2.5 at none is -2), never to even.
    // Note: a rounding carry that fills the fraction does not reach the integer part:
    // 0.96 at one place holds fraction 10 and prints "0.10".
    void ChangeFractionalDivider(int n);
    // Raises the operand with fewer places to the other's; returns the common divider.
    static int Normalize(CDecimal& a, CDecimal& b);

    // value = m_integer + m_fraction / 10^m_fractionalDivider; both parts carry the sign.
    CBigInteger m_integer;
    CBigInteger m_fraction;
    int32_t m_fractionalDivider;
};

// Writes ToString() to the stream (test frameworks and logs print values this way).
std::ostream& operator<<(std::ostream& stream, const CDecimal& value);

// --- a built-in number in front of an operator -----------------------------------------
// 2 * d and 1 == d read as CDecimal(2) * d and CDecimal(1) == d; the forms with the number
// behind the operator reach the members through the implicit constructors. The class
// operand is deduced, so that no other class reaches these through a conversion.
template <typename D, typename T>
using EnableIfDecimalMix =
    typename std::enable_if<std::is_same<D, CDecimal>::value && std::is_arithmetic<T>::value &&
                                std::is_constructible<CDecimal, T>::value,
                            int>::type;

#define QZXML_DECIMAL_MIXED_OPERATOR(op, result)                                                             \
    template <typename D, typename T, EnableIfDecimalMix<D, T> = 0>                                          \
    result operator op(T left, const D& right) {                                                             \
        return CDecimal(left) op right;                                                                      \
    }

QZXML_DECIMAL_MIXED_OPERATOR(+, CDecimal)
QZXML_DECIMAL_MIXED_OPERATOR(-, CDecimal)
QZXML_DECIMAL_MIXED_OPERATOR(*, CDecimal)
QZXML_DECIMAL_MIXED_OPERATOR(/, CDecimal)
QZXML_DECIMAL_MIXED_OPERATOR(==, bool)
QZXML_DECIMAL_MIXED_OPERATOR(!=, bool)
QZXML_DECIMAL_MIXED_OPERATOR(<, bool)
QZXML_DECIMAL_MIXED_OPERATOR(>, bool)
QZXML_DECIMAL_MIXED_OPERATOR(<=, bool)
QZXML_DECIMAL_MIXED_OPERATOR(>=, bool)

#undef QZXML_DECIMAL_MIXED_OPERATOR

} // namespace QzXmlLib16

#endif
