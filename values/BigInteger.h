// BigInteger.h - CBigInteger, the unbounded decimal integer behind the XSD type integer.
//
// One decimal digit per byte, least significant first, arithmetic done as on paper.
// CDecimal (values/Decimal.h) keeps its integer part and fraction in this class, and
// text that is not a plain integer is read through CDecimal. Failures are the
// CQzInvalidValueException of foundation/Exceptions.h.
#ifndef QZXML_VALUES_BIGINTEGER_H
#define QZXML_VALUES_BIGINTEGER_H

#include <cstdint>
#include <iosfwd>
#include <string>
#include <type_traits>
#include <vector>

namespace QzXmlLib16 {

class CDecimal;

// An integer of any length: a sign (+1 or -1, never 0) and a digit vector.
//
//   m_vDigits = { 3, 2, 1 }  is the magnitude 123 (least significant digit first)
//   m_vDigits = { 0 }        is zero; an empty vector also reads as zero
//
// Zero can carry either sign. Note: "-0" prints "0" and equals CBigInteger(0) by
// operator==, yet is less than it by operator<, since ordering looks at the signs
// first. This asymmetry is kept on purpose.
//
// The integer constructors and conversions are implicit both ways; the operator templates
// below the class take a built-in number on either side of an operator (big / 2, 0 == big).
class CBigInteger {
public:
    typedef std::vector<char> DigitVector;

    // Exact; a negative value's magnitude is its two's-complement negation, so the most
    // negative value of each type is held too. There is no default constructor.
    CBigInteger(int value);
    CBigInteger(unsigned int value);
    CBigInteger(long value);
    CBigInteger(unsigned long value);
    CBigInteger(long long value);
    CBigInteger(unsigned long long value);
    // Rounds to the nearest integer with halves going down (2.5 gives 2, -2.5 gives -2).
    // A NaN gives zero; an infinity throws CQzInvalidValueException.
    CBigInteger(double value);
    // The decimal rounded to no places (ties towards zero); see CDecimal::ChangeFractionalDivider.
    CBigInteger(const CDecimal& value);
    // Reads the text with Parse; throws what Parse throws.
    CBigInteger(const char* text);
    virtual ~CBigInteger();

    // Reads a plain integer (digits, signs and white space only) or hands any other text
    // to CDecimal and keeps its rounded integer part. A null or blank text gives +0.
    // Note: a plain integer is read from its last run of digits backwards, so anything
    // in front of that run is dropped without complaint: "+5" is 5, "1 2" is 2, "12-3" is 3,
    // and "7\n" is 0. Throws CQzInvalidValueException only from the CDecimal path; the
    // value is unchanged then.
    void Parse(const char* text);
    // The digits, most significant first, with "-" for a negative non-zero value.
    std::string ToString() const;

    // A copy with sign +1.
    CBigInteger GetAbs() const;
    // Sets the sign to +1; returns this object.
    CBigInteger& Abs();
    // A copy with the sign flipped.
    CBigInteger GetNegative() const;
    // Flips the sign (also of a zero); returns this object.
    CBigInteger& Negate();
    // Note: flips the sign of this object itself and returns it; no new value is made.
    CBigInteger& operator-();

    // Equal magnitudes and signs; the two zeros are equal whatever their signs.
    bool operator==(const CBigInteger& other) const;
    bool operator!=(const CBigInteger& other) const;
    // Signs decide first (negative is less), then the magnitudes.
    bool operator<(const CBigInteger& other) const;
    bool operator>(const CBigInteger& other) const;
    bool operator<=(const CBigInteger& other) const;
    bool operator>=(const CBigInteger& other) const;

    // Exact sum and difference; equal magnitudes of opposite signs give +0.
    CBigInteger operator+(const CBigInteger& other) const;
    CBigInteger operator-(const CBigInteger& other) const;
    // The sign is the product of the signs, so zero times a negative is a negative zero.
    CBigInteger operator*(const CBigInteger& other) const;
    // Truncates towards zero. Throws "ERROR: Overflow in operator/." for a zero divisor.
    CBigInteger operator/(const CBigInteger& other) const;
    // Remainder with the sign of the dividend. Note: a negative divisor throws
    // "ERROR: Overflow in operator%.", and so does a zero one.
    CBigInteger operator%(const CBigInteger& other) const;
    // In place; same results as the binary forms.
    CBigInteger& operator+=(const CBigInteger& other);
    CBigInteger& operator-=(const CBigInteger& other);
    CBigInteger& operator*=(const CBigInteger& other);
    // Note: unlike operator/, a negative divisor throws "ERROR: Overflow in operator /=."
    // (with the blank), and so does a zero one.
    CBigInteger& operator/=(const CBigInteger& other);
    // Note: a negative or zero divisor throws "ERROR: Overflow in operator%=.".
    CBigInteger& operator%=(const CBigInteger& other);

    // Throws "ERROR: Value out of bound of int." outside -2147483648..2147483647.
    operator int() const;
    // Throws "ERROR: Value out of bound of LONGLONG." outside the 64-bit range.
    // Note: the positional multiplier and each digit product are 32-bit and wrap, so
    // only values whose products fit in 32 bits come out right (any value up to
    // 4294967295 does); callers that need large values use ToString.
    operator long long() const;

    // Floor of the square root by Newton's iteration. Throws "ERROR: Negative Number in
    // function SquareRoot()." below zero. Note: the root of zero throws
    // "ERROR: Overflow in operator/." from the iteration; no special case is made.
    CBigInteger SquareRoot() const;
    // 10 to the n.
    static CBigInteger Pow10(unsigned int n);

    // Read access for neighbours (facet checks, conversions): +1 or -1.
    int32_t GetSign() const { return m_nSign; }
    // The magnitude, least significant digit first.
    const DigitVector& GetDigits() const { return m_vDigits; }

    // --- digit routines on magnitudes (least significant digit first) ------------------
    // Build: the digits of an unsigned value; 0 gives the single digit 0.
    static void Build(unsigned int value, DigitVector& out);
    static void BuildDWORDLONG(unsigned long long value, DigitVector& out);
    // Rounds half down, then takes the digits by repeated division of the double; a NaN
    // or a negative value leaves the vector empty, +infinity throws CQzInvalidValueException.
    static void BuildDouble(double value, DigitVector& out);
    // The trailing run of digits of the text, then Clean.
    static void Build(const std::string& text, DigitVector& out);
    // Drops most significant zeros, keeping at least one element; empty stays empty.
    static void Clean(DigitVector& digits);
    // -1, 0 or 1: by length first, then from the most significant digit down.
    static int Compare(const DigitVector& a, const DigitVector& b);
    // a + b, padded to a common length plus a carry digit; not cleaned.
    static void Add(const DigitVector& a, const DigitVector& b, DigitVector& out);
    // a - b, cleaned. Requires a >= b; throws CQzInvalidValueException when the
    // borrow runs past the top of a.
    static void Subtract(const DigitVector& a, const DigitVector& b, DigitVector& out);
    static void Multiply(const DigitVector& a, char digit, DigitVector& out);
    static void Multiply(const DigitVector& a, const DigitVector& b, DigitVector& out);
    // Inserts n zero digits at the least significant end; nothing for n < 1.
    static void ShiftLeft(DigitVector& digits, int n);
    // The number of digits; 1 for an empty vector.
    static int Position(const DigitVector& digits);
    static void Pow10(unsigned int n, DigitVector& out);
    // Exact quotient and remainder of the magnitudes. A zero divisor throws
    // "ERROR: Overflow in operator/." instead of looping.
    static void Divide(const DigitVector& a, const DigitVector& b, DigitVector& quotient,
                       DigitVector& remainder);

    // --- class constants ---------------------------------------------------------------
    // Ready before any static initialiser of any translation unit that includes this
    // header runs, and alive until the last such unit is torn down.
    static const CBigInteger& MAX_LONG;     // 2147483647
    static const CBigInteger& MIN_LONG;     // -2147483648
    static const CBigInteger& MAX_LONGLONG; // 9223372036854775807
    static const CBigInteger& MIN_LONGLONG; // -9223372036854775808
    static const CBigInteger& MAX_DOUBLE;   // 1.7E+308
    static const CBigInteger& MIN_DOUBLE;   // -1.7E+308

    // The sign, +1 or -1, and the magnitude, least significant digit first.
    int32_t m_nSign;
    DigitVector m_vDigits;

private:
    CBigInteger(int32_t sign, DigitVector digits);
    friend class CDecimal;
};

// Writes ToString() to the stream (test frameworks and logs print values this way).
std::ostream& operator<<(std::ostream& stream, const CBigInteger& value);

// --- a built-in number on either side of an operator ----------------------------------
// Without these, big + 2 would be ambiguous between the member operator and the built-in
// one reached through operator int. The number becomes a CBigInteger first, so results and
// failures are those of the member operators. The class operand is deduced, so that no
// other class (a CDecimal, say) reaches these through a conversion.
template <typename B, typename T>
using EnableIfBigIntegerMix =
    typename std::enable_if<std::is_same<B, CBigInteger>::value && std::is_arithmetic<T>::value &&
                                std::is_constructible<CBigInteger, T>::value,
                            int>::type;

#define QZXML_BIGINTEGER_MIXED_OPERATOR(op, result)                                                          \
    template <typename B, typename T, EnableIfBigIntegerMix<B, T> = 0>                                       \
    result operator op(const B& left, T right) {                                                             \
        return left op CBigInteger(right);                                                                   \
    }                                                                                                        \
    template <typename B, typename T, EnableIfBigIntegerMix<B, T> = 0>                                       \
    result operator op(T left, const B& right) {                                                             \
        return CBigInteger(left) op right;                                                                   \
    }

QZXML_BIGINTEGER_MIXED_OPERATOR(+, CBigInteger)
QZXML_BIGINTEGER_MIXED_OPERATOR(-, CBigInteger)
QZXML_BIGINTEGER_MIXED_OPERATOR(*, CBigInteger)
QZXML_BIGINTEGER_MIXED_OPERATOR(/, CBigInteger)
QZXML_BIGINTEGER_MIXED_OPERATOR(%, CBigInteger)
QZXML_BIGINTEGER_MIXED_OPERATOR(==, bool)
QZXML_BIGINTEGER_MIXED_OPERATOR(!=, bool)
QZXML_BIGINTEGER_MIXED_OPERATOR(<, bool)
QZXML_BIGINTEGER_MIXED_OPERATOR(>, bool)
QZXML_BIGINTEGER_MIXED_OPERATOR(<=, bool)
QZXML_BIGINTEGER_MIXED_OPERATOR(>=, bool)

#undef QZXML_BIGINTEGER_MIXED_OPERATOR

// End of public API. Implementation details follow.

// Builds the class constants on first use and destroys them with the last user. One
// instance lives in every translation unit that includes this header, in front of that
// unit's own statics, so the constants exist before those statics are initialised.
class CBigIntegerConstantsInit {
public:
    CBigIntegerConstantsInit();
    ~CBigIntegerConstantsInit();
    CBigIntegerConstantsInit(const CBigIntegerConstantsInit&) = delete;
    CBigIntegerConstantsInit& operator=(const CBigIntegerConstantsInit&) = delete;
};

namespace {
const CBigIntegerConstantsInit s_bigIntegerConstantsInit;
} // namespace

} // namespace QzXmlLib16

#endif
