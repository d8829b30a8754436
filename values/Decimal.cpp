// Decimal.cpp - scale handling, rounding, arithmetic, comparison and printing of CDecimal.
// The reader is in DecimalParse.cpp.
#include "values/Decimal.h"

#include "foundation/Exceptions.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ostream>
#include <utility>

namespace QzXmlLib16 {

namespace {

// Messages
const char* const kMsgLongLongOverflow = "The Decimal value if to large to fit into a LONGLONG";
const char* const kMsgLongOverflow = "The Decimal value if to large to fit into a LONG";
const char* const kMsgDoubleOverflow = "The Decimal value if to large to fit into a Double";

const char* const kMsgNegativeDivider = "ERROR: A Decimal cannot have a negative number of places.";

[[noreturn]] void ThrowOverflow(const char* message) {
    throw CQzOverFlowException(message);
}

// 10 to the given number of places; a negative count (only the unchecked constructor
// can make one) is refused rather than read as a huge unsigned count.
CBigInteger Scale(int places) {
    if (places < 0) {
        throw CQzInvalidParamException(kMsgNegativeDivider);
    }
    return CBigInteger::Pow10(static_cast<unsigned int>(places));
}

// Text helpers

// The digits padded with "0" to the width the printf template "%0<width>s" gives on a
// C library that pads strings with blanks, once those blanks are turned into zeros:
// on the left for a positive width, on the right for a negative one (the "-" flag).
std::string PadWithZeros(const std::string& digits, int width) {
    size_t target =
        width < 0 ? static_cast<size_t>(-static_cast<long long>(width)) : static_cast<size_t>(width);
    if (digits.size() >= target) {
        return digits;
    }
    std::string zeros(target - digits.size(), '0');
    return width < 0 ? digits + zeros : zeros + digits;
}

// The longest text ToString gives: the formatting buffer holds 1024 characters.
const size_t kMaxTextLength = 1023;

std::string CutToBuffer(std::string text) {
    if (text.size() > kMaxTextLength) {
        text.resize(kMaxTextLength);
    }
    return text;
}

} // namespace

// --- construction --------------------------------------------------------------------

CDecimal::CDecimal() : m_integer(0), m_fraction(0), m_fractionalDivider(1) {}

CDecimal::CDecimal(int value) : m_integer(value), m_fraction(0), m_fractionalDivider(1) {}

CDecimal::CDecimal(long value) : m_integer(value), m_fraction(0), m_fractionalDivider(1) {}

CDecimal::CDecimal(long long value) : m_integer(value), m_fraction(0), m_fractionalDivider(1) {}

CDecimal::CDecimal(const CBigInteger& value) : m_integer(value), m_fraction(0), m_fractionalDivider(1) {}

CDecimal::CDecimal(const CBigInteger& integer, const CBigInteger& fraction, int divider)
    : m_integer(integer), m_fraction(fraction), m_fractionalDivider(divider) {}

// 13 places hide the binary error of most short decimals: 0.1 prints 0.1000000000000.
CDecimal::CDecimal(double value) : CDecimal() {
    char buffer[1024];
    std::snprintf(buffer, sizeof buffer, "%.13f\n", value);
    Parse(buffer);
}

CDecimal::CDecimal(const char* text) : CDecimal() {
    Parse(text);
}

CDecimal::~CDecimal() {}

// --- scale ---------------------------------------------------------------------------

// Trailing zeros of the fraction go, one division by ten each, down to one place. The
// fraction text laid right-aligned over the divider's width shows the same zeros as the
// fraction's own digits, so they are counted on the digits (all of them for a zero).
void CDecimal::Rationalise() {
    if (m_fractionalDivider <= 1) {
        return;
    }
    const CBigInteger::DigitVector& digits = m_fraction.m_vDigits;
    size_t zeros = 0;
    while (zeros < digits.size() && digits[zeros] == 0) {
        ++zeros;
    }
    bool isZero = zeros == digits.size();
    size_t limit = static_cast<size_t>(m_fractionalDivider - 1);
    size_t drop = isZero ? limit : std::min(zeros, limit);
    if (drop == 0) {
        return;
    }
    if (isZero) {
        // The first division of a zero dividend yields a plain +0.
        m_fraction = CBigInteger(0);
    } else {
        m_fraction.m_vDigits.erase(m_fraction.m_vDigits.begin(),
                                   m_fraction.m_vDigits.begin() + static_cast<std::ptrdiff_t>(drop));
    }
    m_fractionalDivider -= static_cast<int32_t>(drop);
}

void CDecimal::ChangeFractionalDivider(int n) {
    if (n < 0) {
        throw CQzInvalidParamException(kMsgNegativeDivider);
    }
    int d = m_fractionalDivider;
    if (d <= n) {
        m_fraction = m_fraction * Scale(n - d);
        m_fractionalDivider = n;
        return;
    }
    CBigInteger p = Scale(d - n);
    CBigInteger r = m_fraction % p;
    m_fraction = m_fraction / p;
    m_fractionalDivider = n;

    // Ties (a remainder of exactly half) stay: rounding goes towards zero there.
    int carry = 0;
    if (r > p / CBigInteger(2)) {
        carry = 1;
    } else if (r < p / CBigInteger(-2)) {
        carry = -1;
    }
    if (carry == 0) {
        return;
    }
    if (n == 0) {
        m_integer += CBigInteger(carry);
        return;
    }
    // A fraction that reaches 10^n keeps it: there is no carry into the integer part.
    const CBigInteger zero(0);
    CBigInteger q = Scale(n);
    m_fraction += CBigInteger(carry);
    if (m_integer > zero && m_fraction < zero) {
        m_fraction += q;
        m_integer -= CBigInteger(1);
    }
    if (m_integer < zero && m_fraction > zero) {
        m_fraction -= q;
        m_integer += CBigInteger(1);
    }
    if (m_integer == zero) {
        m_integer.m_nSign = m_fraction.m_nSign;
    }
}

int CDecimal::Normalize(CDecimal& a, CDecimal& b) {
    int n = std::max(a.m_fractionalDivider, b.m_fractionalDivider);
    if (a.m_fractionalDivider != n) {
        a.ChangeFractionalDivider(n);
    }
    if (b.m_fractionalDivider != n) {
        b.ChangeFractionalDivider(n);
    }
    return n;
}

// --- arithmetic ----------------------------------------------------------------------

CDecimal CDecimal::operator+(const CDecimal& other) const {
    CDecimal left(*this);
    CDecimal right(other);
    int n = Normalize(left, right);
    const CBigInteger p = Scale(n);
    const CBigInteger zero(0);
    CBigInteger f = left.m_fraction + right.m_fraction;
    CBigInteger i = left.m_integer + right.m_integer;

    // Carry whole units out of the fraction until it lies within (-p, p). One step per
    // unit would do, but a fraction made by the unchecked constructor can hold very many,
    // so they move in one division; a fraction emptied by this becomes a plain +0.
    bool positive = !(f < p);
    bool negative = !(f > p.GetNegative());
    if (positive || negative) {
        CBigInteger magnitude = f.GetAbs();
        CBigInteger units = magnitude / p;
        CBigInteger rest = magnitude % p;
        if (rest == zero) {
            f = CBigInteger(0);
        } else {
            f = positive ? rest : rest.GetNegative();
        }
        i = positive ? i + units : i - units;
    }
    if (i > zero && f < zero) {
        f += p;
        i -= CBigInteger(1);
    }
    if (i < zero && f > zero) {
        f -= p;
        i += CBigInteger(1);
    }
    if (i == zero) {
        i.m_nSign = f.m_nSign;
    }
    CDecimal result(i, f, n);
    result.Rationalise();
    return result;
}

CDecimal CDecimal::operator-(const CDecimal& other) const {
    return *this + other.GetNegative();
}

CDecimal CDecimal::operator*(const CDecimal& other) const {
    CDecimal left(*this);
    CDecimal right(other);
    int n = Normalize(left, right);
    const CBigInteger p1 = Scale(n);
    const CBigInteger p2 = Scale(2 * n);
    const CBigInteger& li = left.m_integer;
    const CBigInteger& lf = left.m_fraction;
    const CBigInteger& ri = right.m_integer;
    const CBigInteger& rf = right.m_fraction;
    CBigInteger s = ri * li * p2 + ri * lf * p1 + rf * li * p1 + rf * lf;
    CDecimal result(s / p2, s % p2, 2 * n);
    result.Rationalise();
    if (result.m_fractionalDivider > m_maxDivider) {
        result.ChangeFractionalDivider(m_maxDivider);
    }
    return result;
}

// Two guard places beyond m_maxDivider, truncated, then rounded by the tie rule.
CDecimal CDecimal::operator/(const CDecimal& other) const {
    CDecimal left(*this);
    CDecimal right(other);
    int n = Normalize(left, right);
    const CBigInteger p = Scale(n);
    const CBigInteger m = Scale(m_maxDivider + 2);
    CBigInteger dividend = (p * left.m_integer + left.m_fraction) * m;
    CBigInteger divisor = p * right.m_integer + right.m_fraction;
    CBigInteger q = dividend / divisor;
    CDecimal result(q / m, q % m, m_maxDivider + 2);
    result.Rationalise();
    if (result.m_fractionalDivider > m_maxDivider) {
        result.ChangeFractionalDivider(m_maxDivider);
    }
    return result;
}

CDecimal& CDecimal::operator+=(const CDecimal& other) {
    *this = *this + other;
    return *this;
}

CDecimal& CDecimal::operator-=(const CDecimal& other) {
    *this = *this - other;
    return *this;
}

CDecimal& CDecimal::operator*=(const CDecimal& other) {
    *this = *this * other;
    return *this;
}

CDecimal& CDecimal::operator/=(const CDecimal& other) {
    *this = *this / other;
    return *this;
}

CDecimal& CDecimal::operator++() {
    *this = *this + CDecimal(1);
    return *this;
}

CDecimal& CDecimal::operator--() {
    *this = *this - CDecimal(1);
    return *this;
}

CDecimal CDecimal::operator++(int) {
    CDecimal result(*this);
    return result + CDecimal(1);
}

CDecimal CDecimal::operator--(int) {
    CDecimal result(*this);
    return result - CDecimal(1);
}

CDecimal CDecimal::GetNegative() const {
    CDecimal copy(*this);
    return copy.Negate();
}

CDecimal& CDecimal::Negate() {
    m_integer.Negate();
    m_fraction.Negate();
    return *this;
}

// --- comparison ----------------------------------------------------------------------

bool CDecimal::operator==(const CDecimal& other) const {
    CDecimal a(*this);
    CDecimal b(other);
    Normalize(a, b);
    return a.m_integer == b.m_integer && a.m_fraction == b.m_fraction;
}

bool CDecimal::operator!=(const CDecimal& other) const {
    return !(*this == other);
}

bool CDecimal::operator<(const CDecimal& other) const {
    CDecimal a(*this);
    CDecimal b(other);
    Normalize(a, b);
    return a.m_integer < b.m_integer || (a.m_integer == b.m_integer && a.m_fraction < b.m_fraction);
}

bool CDecimal::operator>(const CDecimal& other) const {
    CDecimal a(*this);
    CDecimal b(other);
    Normalize(a, b);
    return a.m_integer > b.m_integer || (a.m_integer == b.m_integer && a.m_fraction > b.m_fraction);
}

bool CDecimal::operator<=(const CDecimal& other) const {
    CDecimal a(*this);
    CDecimal b(other);
    Normalize(a, b);
    if (a.m_integer > b.m_integer) {
        return false;
    }
    if (a.m_integer == b.m_integer) {
        return a.m_fraction <= b.m_fraction;
    }
    return true;
}

bool CDecimal::operator>=(const CDecimal& other) const {
    CDecimal a(*this);
    CDecimal b(other);
    Normalize(a, b);
    if (a.m_integer < b.m_integer) {
        return false;
    }
    if (a.m_integer == b.m_integer) {
        return a.m_fraction >= b.m_fraction;
    }
    return true;
}

// --- text ----------------------------------------------------------------------------

// integer ["." fraction zero-padded to the divider's width]; a whole number has no ".".
// Both forms pass through the 1024-character formatting buffer and are cut to fit.
std::string CDecimal::ToString() const {
    if (m_fraction == CBigInteger(0)) {
        return CutToBuffer(m_integer.ToString());
    }
    std::string text = m_integer.m_nSign == -1 ? "-" : "";
    text += m_integer.GetAbs().ToString();
    text += '.';
    text += PadWithZeros(m_fraction.GetAbs().ToString(), m_fractionalDivider);
    return CutToBuffer(std::move(text));
}

// Adds 5 at place nDecimals + 1 (away from zero, by the sign of the integer part) and
// cuts the fraction after nDecimals places.
std::string CDecimal::ToString(int nDecimals) const {
    if (nDecimals < 0) {
        nDecimals = 0;
    }
    const bool negative = m_integer.m_nSign == -1;
    // The reader keeps m_maxDivider places, so a 5 at place m_maxDivider + 1 or further
    // reads as the same zero term: the zeros in front are capped there, which keeps a
    // huge count from building a huge text.
    const int zeros = std::min(nDecimals, m_maxDivider);
    std::string roundingText = negative ? "-0." : "0.";
    roundingText.append(static_cast<size_t>(zeros), '0');
    roundingText += '5';
    CDecimal r(roundingText.c_str());
    r += *this;

    std::string fraction = PadWithZeros(r.m_fraction.GetAbs().ToString(), r.m_fractionalDivider);
    if (fraction.size() > static_cast<size_t>(nDecimals)) {
        fraction.resize(static_cast<size_t>(nDecimals));
    }
    std::string text = r.m_integer.m_nSign == -1 ? "-" : "";
    text += r.m_integer.GetAbs().ToString();
    text += '.';
    text += fraction;
    return text;
}

std::ostream& operator<<(std::ostream& stream, const CDecimal& value) {
    return stream << value.ToString();
}

// --- conversions ---------------------------------------------------------------------

long long CDecimal::ToLongLong() const {
    CDecimal copy(*this);
    copy.ChangeFractionalDivider(1);
    if (copy.m_integer > CBigInteger::MAX_LONGLONG || copy.m_integer < CBigInteger::MIN_LONGLONG) {
        ThrowOverflow(kMsgLongLongOverflow);
    }
    std::string text = copy.ToString();
    return std::strtoll(text.c_str(), nullptr, 10);
}

int32_t CDecimal::ToLong() const {
    CDecimal copy(*this);
    copy.ChangeFractionalDivider(0);
    if (copy.m_integer > CBigInteger::MAX_LONG || copy.m_integer < CBigInteger::MIN_LONG) {
        ThrowOverflow(kMsgLongOverflow);
    }
    std::string text = copy.ToString();
    return static_cast<int32_t>(std::strtol(text.c_str(), nullptr, 10));
}

double CDecimal::ToDouble() const {
    if (m_integer > CBigInteger::MAX_DOUBLE || m_integer < CBigInteger::MIN_DOUBLE) {
        ThrowOverflow(kMsgDoubleOverflow);
    }
    std::string text = ToString();
    return std::strtod(text.c_str(), nullptr);
}

CBigInteger CDecimal::ToBigInteger() const {
    CDecimal copy(*this);
    copy.ChangeFractionalDivider(0);
    return copy.m_integer;
}

} // namespace QzXmlLib16
