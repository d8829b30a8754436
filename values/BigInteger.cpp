// BigInteger.cpp - digit routines, arithmetic, text and conversions of CBigInteger,
// and the class constants.
#include "values/BigInteger.h"

#include "foundation/Exceptions.h"
#include "values/Decimal.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <ostream>

namespace QzXmlLib16 {

namespace {

// Messages
const char* const kMsgOverflowDivide = "ERROR: Overflow in operator/.";
const char* const kMsgOverflowModulo = "ERROR: Overflow in operator%.";
const char* const kMsgOverflowDivideAssign = "ERROR: Overflow in operator /=.";
const char* const kMsgOverflowModuloAssign = "ERROR: Overflow in operator%=.";
const char* const kMsgIntBound = "ERROR: Value out of bound of int.";
const char* const kMsgLongLongBound = "ERROR: Value out of bound of LONGLONG.";
const char* const kMsgNegativeRoot = "ERROR: Negative Number in function SquareRoot().";
const char* const kMsgInfinity = "ERROR: An infinite value cannot be held by a BigInteger.";
const char* const kMsgSubtractOrder = "ERROR: Subtract needs a minuend not less than the subtrahend.";

[[noreturn]] void ThrowInvalidValue(const char* message) {
    throw CQzInvalidValueException(message);
}

// Digit helpers
typedef CBigInteger::DigitVector DigitVector;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// True for an empty vector and for any run of zero digits.
bool IsZeroMagnitude(const DigitVector& digits) {
    for (char d : digits) {
        if (d != 0) {
            return false;
        }
    }
    return true;
}

// Length without most significant zeros (0 for a zero magnitude).
size_t SignificantLength(const DigitVector& digits) {
    size_t n = digits.size();
    while (n > 0 && digits[n - 1] == 0) {
        --n;
    }
    return n;
}

// Compares the first na digits of a with the first nb of b; both free of top zeros.
int CompareTrimmed(const char* a, size_t na, const char* b, size_t nb) {
    if (na != nb) {
        return na < nb ? -1 : 1;
    }
    for (size_t i = na; i > 0; --i) {
        if (a[i - 1] != b[i - 1]) {
            return a[i - 1] < b[i - 1] ? -1 : 1;
        }
    }
    return 0;
}

// a[0..na) -= b[0..nb) in place, where a >= b; returns the new trimmed length of a.
size_t SubtractInPlace(char* a, size_t na, const char* b, size_t nb) {
    int borrow = 0;
    size_t i = 0;
    for (; i < nb; ++i) {
        int d = a[i] - b[i] - borrow;
        borrow = d < 0 ? 1 : 0;
        a[i] = static_cast<char>(d + 10 * borrow);
    }
    for (; borrow != 0 && i < na; ++i) {
        int d = a[i] - borrow;
        borrow = d < 0 ? 1 : 0;
        a[i] = static_cast<char>(d + 10 * borrow);
    }
    while (na > 0 && a[na - 1] == 0) {
        --na;
    }
    return na;
}

// True when the first n digits of v are a 1 with n - 1 zeros below it.
bool IsPowerOfTen(const DigitVector& v, size_t n) {
    if (n == 0 || v[n - 1] != 1) {
        return false;
    }
    for (size_t i = 0; i + 1 < n; ++i) {
        if (v[i] != 0) {
            return false;
        }
    }
    return true;
}

// a[0..na) -= factor * b[0..nb) in place, where the product does not exceed a; returns
// the new trimmed length of a.
size_t SubtractMultipleInPlace(char* a, size_t na, const char* b, size_t nb, int factor) {
    int borrow = 0;
    size_t i = 0;
    for (; i < nb || (borrow != 0 && i < na); ++i) {
        int d = a[i] - borrow - (i < nb ? factor * b[i] : 0);
        borrow = d < 0 ? (9 - d) / 10 : 0;
        a[i] = static_cast<char>(d + 10 * borrow);
    }
    while (na > 0 && a[na - 1] == 0) {
        --na;
    }
    return na;
}

// The value of the top `count` digits of v[0..n) (most significant first), count <= 18.
uint64_t LeadingValue(const char* v, size_t n, size_t count) {
    uint64_t value = 0;
    for (size_t i = 0; i < count; ++i) {
        value = value * 10 + static_cast<uint64_t>(v[n - 1 - i]);
    }
    return value;
}

// Pushes the digits of the text range [begin, end) read backwards, up to the first
// character that is no digit.
void BuildTrailingDigits(const char* begin, const char* end, DigitVector& out) {
    out.clear();
    const char* p = end;
    while (p > begin && IsDigit(p[-1])) {
        --p;
    }
    out.reserve(static_cast<size_t>(end - p));
    for (const char* q = end; q > p; --q) {
        out.push_back(static_cast<char>(q[-1] - '0'));
    }
    CBigInteger::Clean(out);
}

// The characters a plain integer may hold; anything else goes through CDecimal.
bool IsPlainIntegerChar(char c) {
    return IsDigit(c) || c == '-' || c == '+' || c == ' ' || c == '\n' || c == '\r' || c == '\t';
}

// Class constants: storage that is constant-initialised (so the references below are
// bound before any code runs) and filled by the first CBigIntegerConstantsInit.
union ConstantSlot {
    constexpr ConstantSlot() : unused(0) {}
    ~ConstantSlot() {}
    char unused;
    CBigInteger value;
};

ConstantSlot s_maxLong;
ConstantSlot s_minLong;
ConstantSlot s_maxLongLong;
ConstantSlot s_minLongLong;
ConstantSlot s_maxDouble;
ConstantSlot s_minDouble;
int s_constantUsers = 0;

} // namespace

const CBigInteger& CBigInteger::MAX_LONG = s_maxLong.value;
const CBigInteger& CBigInteger::MIN_LONG = s_minLong.value;
const CBigInteger& CBigInteger::MAX_LONGLONG = s_maxLongLong.value;
const CBigInteger& CBigInteger::MIN_LONGLONG = s_minLongLong.value;
const CBigInteger& CBigInteger::MAX_DOUBLE = s_maxDouble.value;
const CBigInteger& CBigInteger::MIN_DOUBLE = s_minDouble.value;

// Static initialisation runs on one thread, so a plain counter suffices.
CBigIntegerConstantsInit::CBigIntegerConstantsInit() {
    if (s_constantUsers++ == 0) {
        new (&s_maxLong.value) CBigInteger("2147483647");
        new (&s_minLong.value) CBigInteger("-2147483648");
        new (&s_maxLongLong.value) CBigInteger("9223372036854775807");
        new (&s_minLongLong.value) CBigInteger("-9223372036854775808");
        // The exponent form goes through CDecimal, which uses none of these constants.
        new (&s_maxDouble.value) CBigInteger("1.7E+308");
        new (&s_minDouble.value) CBigInteger("-1.7E+308");
    }
}

CBigIntegerConstantsInit::~CBigIntegerConstantsInit() {
    if (--s_constantUsers == 0) {
        s_minDouble.value.~CBigInteger();
        s_maxDouble.value.~CBigInteger();
        s_minLongLong.value.~CBigInteger();
        s_maxLongLong.value.~CBigInteger();
        s_minLong.value.~CBigInteger();
        s_maxLong.value.~CBigInteger();
    }
}

// --- construction --------------------------------------------------------------------

CBigInteger::CBigInteger(int32_t sign, DigitVector digits) : m_nSign(sign), m_vDigits(std::move(digits)) {}

CBigInteger::CBigInteger(int value) : CBigInteger(static_cast<long long>(value)) {}

CBigInteger::CBigInteger(unsigned int value) : m_nSign(1) {
    Build(value, m_vDigits);
}

CBigInteger::CBigInteger(long value) : CBigInteger(static_cast<long long>(value)) {}

CBigInteger::CBigInteger(unsigned long value) : m_nSign(1) {
    BuildDWORDLONG(value, m_vDigits);
}

// The magnitude of a negative value is its two's-complement negation taken unsigned,
// which also covers the most negative value.
CBigInteger::CBigInteger(long long value) : m_nSign(value < 0 ? -1 : 1) {
    unsigned long long magnitude = static_cast<unsigned long long>(value);
    if (value < 0) {
        magnitude = 0ULL - magnitude;
    }
    BuildDWORDLONG(magnitude, m_vDigits);
}

CBigInteger::CBigInteger(unsigned long long value) : m_nSign(1) {
    BuildDWORDLONG(value, m_vDigits);
}

CBigInteger::CBigInteger(double value) : m_nSign(value < 0 ? -1 : 1) {
    BuildDouble(value < 0 ? -value : value, m_vDigits);
}

CBigInteger::CBigInteger(const CDecimal& value) : m_nSign(1) {
    CDecimal rounded(value);
    rounded.ChangeFractionalDivider(0);
    m_nSign = rounded.m_integer.m_nSign;
    m_vDigits = rounded.m_integer.m_vDigits;
}

CBigInteger::CBigInteger(const char* text) : m_nSign(1), m_vDigits(1, 0) {
    Parse(text);
}

CBigInteger::~CBigInteger() {}

// --- text ----------------------------------------------------------------------------

// plain integer:  blanks* ['-'] anything-ending-in-digits blanks*   (digits read backwards)
void CBigInteger::Parse(const char* text) {
    if (text == nullptr) {
        text = "";
    }
    size_t length = std::strlen(text);
    for (size_t i = 0; i < length; ++i) {
        if (!IsPlainIntegerChar(text[i])) {
            CBigInteger rounded{CDecimal(text)};
            m_nSign = rounded.m_nSign;
            m_vDigits.swap(rounded.m_vDigits);
            return;
        }
    }
    const char* begin = text;
    const char* end = text + length;
    while (end > begin && end[-1] == ' ') {
        --end;
    }
    if (end == begin) {
        m_nSign = 1;
        m_vDigits.assign(1, 0);
        return;
    }
    while (*begin == ' ') {
        ++begin;
    }
    if (*begin == '-') {
        m_nSign = -1;
        ++begin;
    } else {
        m_nSign = 1;
    }
    BuildTrailingDigits(begin, end, m_vDigits);
}

std::string CBigInteger::ToString() const {
    if (m_vDigits.empty() || (m_vDigits.size() == 1 && m_vDigits[0] == 0)) {
        return "0";
    }
    std::string text;
    text.reserve(m_vDigits.size() + 1);
    if (m_nSign == -1) {
        text.push_back('-');
    }
    for (auto it = m_vDigits.rbegin(); it != m_vDigits.rend(); ++it) {
        text.push_back(static_cast<char>('0' + *it));
    }
    return text;
}

std::ostream& operator<<(std::ostream& stream, const CBigInteger& value) {
    return stream << value.ToString();
}

// --- sign ----------------------------------------------------------------------------

CBigInteger CBigInteger::GetAbs() const {
    CBigInteger copy(*this);
    return copy.Abs();
}

CBigInteger& CBigInteger::Abs() {
    m_nSign = 1;
    return *this;
}

CBigInteger CBigInteger::GetNegative() const {
    CBigInteger copy(*this);
    return copy.Negate();
}

CBigInteger& CBigInteger::Negate() {
    m_nSign = -m_nSign;
    return *this;
}

CBigInteger& CBigInteger::operator-() {
    return Negate();
}

// --- comparison ----------------------------------------------------------------------

bool CBigInteger::operator==(const CBigInteger& other) const {
    if (m_vDigits != other.m_vDigits) {
        return false;
    }
    if (m_vDigits.size() == 1 && m_vDigits[0] == 0) {
        return true;
    }
    return m_nSign == other.m_nSign;
}

bool CBigInteger::operator!=(const CBigInteger& other) const {
    return !(*this == other);
}

bool CBigInteger::operator<(const CBigInteger& other) const {
    if (m_nSign != other.m_nSign) {
        return m_nSign < other.m_nSign;
    }
    int c = Compare(m_vDigits, other.m_vDigits);
    return m_nSign < 0 ? c > 0 : c < 0;
}

bool CBigInteger::operator>(const CBigInteger& other) const {
    if (m_nSign != other.m_nSign) {
        return m_nSign > other.m_nSign;
    }
    int c = Compare(m_vDigits, other.m_vDigits);
    return m_nSign < 0 ? c < 0 : c > 0;
}

bool CBigInteger::operator<=(const CBigInteger& other) const {
    return !(*this > other);
}

bool CBigInteger::operator>=(const CBigInteger& other) const {
    return !(*this < other);
}

// --- arithmetic ----------------------------------------------------------------------

CBigInteger CBigInteger::operator+(const CBigInteger& other) const {
    DigitVector digits;
    if (m_nSign == other.m_nSign) {
        Add(m_vDigits, other.m_vDigits, digits);
        return CBigInteger(m_nSign, std::move(digits));
    }
    int c = Compare(m_vDigits, other.m_vDigits);
    if (c == 0) {
        return CBigInteger(0);
    }
    if (c > 0) {
        Subtract(m_vDigits, other.m_vDigits, digits);
        return CBigInteger(m_nSign, std::move(digits));
    }
    Subtract(other.m_vDigits, m_vDigits, digits);
    return CBigInteger(other.m_nSign, std::move(digits));
}

CBigInteger CBigInteger::operator-(const CBigInteger& other) const {
    return *this + other.GetNegative();
}

CBigInteger CBigInteger::operator*(const CBigInteger& other) const {
    DigitVector digits;
    Multiply(m_vDigits, other.m_vDigits, digits);
    return CBigInteger(m_nSign * other.m_nSign, std::move(digits));
}

CBigInteger CBigInteger::operator/(const CBigInteger& other) const {
    if (other == CBigInteger(0)) {
        ThrowInvalidValue(kMsgOverflowDivide);
    }
    if (*this == CBigInteger(0)) {
        return CBigInteger("0");
    }
    DigitVector quotient;
    DigitVector remainder;
    Divide(m_vDigits, other.m_vDigits, quotient, remainder);
    return CBigInteger(m_nSign == other.m_nSign ? 1 : -1, std::move(quotient));
}

CBigInteger CBigInteger::operator%(const CBigInteger& other) const {
    if (other < CBigInteger(0) || IsZeroMagnitude(other.m_vDigits)) {
        ThrowInvalidValue(kMsgOverflowModulo);
    }
    if (*this == CBigInteger(0)) {
        return CBigInteger("0");
    }
    DigitVector quotient;
    DigitVector remainder;
    Divide(m_vDigits, other.m_vDigits, quotient, remainder);
    return CBigInteger(m_nSign, std::move(remainder));
}

CBigInteger& CBigInteger::operator+=(const CBigInteger& other) {
    *this = *this + other;
    return *this;
}

CBigInteger& CBigInteger::operator-=(const CBigInteger& other) {
    *this = *this - other;
    return *this;
}

CBigInteger& CBigInteger::operator*=(const CBigInteger& other) {
    *this = *this * other;
    return *this;
}

CBigInteger& CBigInteger::operator/=(const CBigInteger& other) {
    if (other < CBigInteger(0) || IsZeroMagnitude(other.m_vDigits)) {
        ThrowInvalidValue(kMsgOverflowDivideAssign);
    }
    if (*this == CBigInteger(0)) {
        *this = CBigInteger("0");
        return *this;
    }
    DigitVector quotient;
    DigitVector remainder;
    Divide(m_vDigits, other.m_vDigits, quotient, remainder);
    m_nSign = m_nSign == other.m_nSign ? 1 : -1;
    m_vDigits.swap(quotient);
    return *this;
}

CBigInteger& CBigInteger::operator%=(const CBigInteger& other) {
    if (other < CBigInteger(0) || IsZeroMagnitude(other.m_vDigits)) {
        ThrowInvalidValue(kMsgOverflowModuloAssign);
    }
    if (*this == CBigInteger(0)) {
        *this = CBigInteger("0");
        return *this;
    }
    DigitVector quotient;
    DigitVector remainder;
    Divide(m_vDigits, other.m_vDigits, quotient, remainder);
    m_vDigits.swap(remainder);
    return *this;
}

// --- conversions ---------------------------------------------------------------------

CBigInteger::operator int() const {
    if (*this < CBigInteger(-2147483647 - 1) || *this > CBigInteger(2147483647)) {
        ThrowInvalidValue(kMsgIntBound);
    }
    // The bounds keep every partial sum inside 64 bits; the multiplier wraps harmlessly
    // only after the last significant digit.
    long long sum = 0;
    uint32_t multiplier = 1;
    for (char digit : m_vDigits) {
        long long term = static_cast<long long>(digit) * multiplier;
        sum += m_nSign == -1 ? -term : term;
        multiplier *= 10U;
    }
    return static_cast<int>(sum);
}

CBigInteger::operator long long() const {
    if (*this < MIN_LONGLONG || *this > MAX_LONGLONG) {
        ThrowInvalidValue(kMsgLongLongBound);
    }
    // 32-bit multiplier and 32-bit products, both wrapping, added with zero extension:
    // at most 19 terms below 2^32, so the 64-bit sum itself never overflows.
    long long sum = 0;
    uint32_t multiplier = 1;
    for (char digit : m_vDigits) {
        uint32_t term = static_cast<uint32_t>(digit) * multiplier;
        sum += m_nSign == -1 ? -static_cast<long long>(term) : static_cast<long long>(term);
        multiplier *= 10U;
    }
    return sum;
}

// --- roots and powers ----------------------------------------------------------------

CBigInteger CBigInteger::SquareRoot() const {
    if (*this < CBigInteger(0)) {
        ThrowInvalidValue(kMsgNegativeRoot);
    }
    // Start at 10^(number of digit pairs), above the root, and let Newton descend.
    CBigInteger n(*this);
    CBigInteger root(10);
    const CBigInteger hundred(100);
    const CBigInteger zero(0);
    const CBigInteger ten(10);
    for (;;) {
        n = n / hundred;
        if (!(n > zero)) {
            break;
        }
        root = root * ten;
    }
    const CBigInteger two(2);
    CBigInteger previous(root);
    do {
        previous = root;
        root = (*this / root + root) / two;
    } while (root < previous);
    return previous;
}

CBigInteger CBigInteger::Pow10(unsigned int n) {
    CBigInteger result(1);
    Pow10(n, result.m_vDigits);
    return result;
}

// --- digit routines ------------------------------------------------------------------

void CBigInteger::Build(unsigned int value, DigitVector& out) {
    BuildDWORDLONG(value, out);
}

void CBigInteger::BuildDWORDLONG(unsigned long long value, DigitVector& out) {
    out.clear();
    do {
        out.push_back(static_cast<char>(value % 10));
        value /= 10;
    } while (value != 0);
}

void CBigInteger::BuildDouble(double value, DigitVector& out) {
    // +infinity would never reach zero by division; -infinity is simply below zero.
    if (std::isinf(value) && value > 0) {
        ThrowInvalidValue(kMsgInfinity);
    }
    double y = std::ceil(value - 0.5);
    out.clear();
    if (y == 0) {
        out.push_back(0);
    } else if (y > 0) {
        do {
            out.push_back(static_cast<char>(std::fmod(y, 10.0)));
            y = std::floor(y / 10.0);
        } while (y > 0);
    }
}

void CBigInteger::Build(const std::string& text, DigitVector& out) {
    BuildTrailingDigits(text.data(), text.data() + text.size(), out);
}

void CBigInteger::Clean(DigitVector& digits) {
    size_t n = digits.size();
    while (n > 1 && digits[n - 1] == 0) {
        --n;
    }
    digits.resize(n);
}

int CBigInteger::Compare(const DigitVector& a, const DigitVector& b) {
    return CompareTrimmed(a.data(), a.size(), b.data(), b.size());
}

void CBigInteger::Add(const DigitVector& a, const DigitVector& b, DigitVector& out) {
    const DigitVector& longer = a.size() >= b.size() ? a : b;
    const DigitVector& shorter = a.size() >= b.size() ? b : a;
    DigitVector sum;
    sum.reserve(longer.size() + 1);
    int carry = 0;
    for (size_t i = 0; i < longer.size(); ++i) {
        int d = longer[i] + (i < shorter.size() ? shorter[i] : 0) + carry;
        carry = d >= 10 ? 1 : 0;
        sum.push_back(static_cast<char>(d - 10 * carry));
    }
    if (carry != 0) {
        sum.push_back(1);
    }
    out.swap(sum);
}

void CBigInteger::Subtract(const DigitVector& a, const DigitVector& b, DigitVector& out) {
    DigitVector difference(a);
    size_t nb = SignificantLength(b);
    if (difference.size() < nb) {
        difference.resize(nb, 0);
    }
    int borrow = 0;
    size_t i = 0;
    for (; i < nb || (borrow != 0 && i < difference.size()); ++i) {
        int d = difference[i] - (i < nb ? b[i] : 0) - borrow;
        borrow = d < 0 ? 1 : 0;
        difference[i] = static_cast<char>(d + 10 * borrow);
    }
    if (borrow != 0) {
        ThrowInvalidValue(kMsgSubtractOrder);
    }
    Clean(difference);
    out.swap(difference);
}

void CBigInteger::Multiply(const DigitVector& a, char digit, DigitVector& out) {
    DigitVector product;
    if (digit == 0) {
        product.push_back(0);
    } else {
        product.reserve(a.size() + 1);
        int carry = 0;
        for (char d : a) {
            int p = d * digit + carry;
            carry = p / 10;
            product.push_back(static_cast<char>(p % 10));
        }
        if (carry != 0) {
            product.push_back(static_cast<char>(carry));
        }
    }
    out.swap(product);
}

// Schoolbook product. The outer loop runs over the operand with fewer non-zero digits
// (so a power of ten costs one pass); columns collect in 64 bits and carry once at the
// end: each column holds at most 81 per row, far from overflow.
void CBigInteger::Multiply(const DigitVector& a, const DigitVector& b, DigitVector& out) {
    // Compare with the single digit 0: only that exact vector counts as zero here.
    auto isSingleZero = [](const DigitVector& v) { return v.size() == 1 && v[0] == 0; };
    if (isSingleZero(a) || isSingleZero(b)) {
        out.assign(1, 0);
        return;
    }
    size_t nonZeroA = a.size() - static_cast<size_t>(std::count(a.begin(), a.end(), 0));
    size_t nonZeroB = b.size() - static_cast<size_t>(std::count(b.begin(), b.end(), 0));
    const DigitVector& outer = nonZeroB <= nonZeroA ? b : a;
    const DigitVector& inner = nonZeroB <= nonZeroA ? a : b;
    std::vector<uint64_t> columns(a.size() + b.size(), 0);
    for (size_t j = 0; j < outer.size(); ++j) {
        uint64_t factor = static_cast<uint64_t>(outer[j]);
        if (factor == 0) {
            continue;
        }
        uint64_t* column = columns.data() + j;
        for (size_t i = 0; i < inner.size(); ++i) {
            column[i] += factor * static_cast<uint64_t>(inner[i]);
        }
    }
    DigitVector product;
    product.reserve(columns.size() + 1);
    uint64_t carry = 0;
    for (uint64_t c : columns) {
        uint64_t v = c + carry;
        product.push_back(static_cast<char>(v % 10));
        carry = v / 10;
    }
    while (carry != 0) {
        product.push_back(static_cast<char>(carry % 10));
        carry /= 10;
    }
    Clean(product);
    out.swap(product);
}

void CBigInteger::ShiftLeft(DigitVector& digits, int n) {
    if (n < 1) {
        return;
    }
    digits.insert(digits.begin(), static_cast<size_t>(n), 0);
}

int CBigInteger::Position(const DigitVector& digits) {
    return digits.empty() ? 1 : static_cast<int>(digits.size());
}

void CBigInteger::Pow10(unsigned int n, DigitVector& out) {
    out.assign(static_cast<size_t>(n) + 1, 0);
    out[n] = 1;
}

// Long division from the most significant digit of a: the running remainder gains one
// digit per step and each quotient digit is found by at most nine subtractions. A
// divisor that is a power of ten splits the digits instead.
void CBigInteger::Divide(const DigitVector& a, const DigitVector& b, DigitVector& quotient,
                         DigitVector& remainder) {
    size_t nb = SignificantLength(b);
    if (nb == 0) {
        ThrowInvalidValue(kMsgOverflowDivide);
    }
    if (Compare(a, b) < 0) {
        DigitVector r(a);
        quotient.assign(1, 0);
        remainder.swap(r);
        return;
    }
    size_t na = SignificantLength(a);
    if (IsPowerOfTen(b, nb)) {
        size_t shift = nb - 1;
        DigitVector q(a.begin() + static_cast<std::ptrdiff_t>(std::min(shift, na)),
                      a.begin() + static_cast<std::ptrdiff_t>(na));
        DigitVector r(a.begin(), a.begin() + static_cast<std::ptrdiff_t>(std::min(shift, na)));
        if (q.empty()) {
            q.push_back(0);
        }
        if (r.empty()) {
            r.push_back(0);
        }
        Clean(r);
        quotient.swap(q);
        remainder.swap(r);
        return;
    }
    DigitVector q(na, 0);
    // Running remainder, least significant first, at most nb + 1 significant digits.
    DigitVector r(nb + 1, 0);
    size_t nr = 0;
    for (size_t i = na; i > 0; --i) {
        // r = r * 10 + a[i - 1]
        if (nr > 0) {
            std::memmove(r.data() + 1, r.data(), nr);
        }
        r[0] = a[i - 1];
        ++nr;
        while (nr > 0 && r[nr - 1] == 0) {
            --nr;
        }
        // r < 10 * b here, so the digit is 0..9. The leading digits give a lower bound,
        // r_head / (b_head + 1), that is at most one or two short; subtraction ends it.
        int digit = 0;
        if (CompareTrimmed(r.data(), nr, b.data(), nb) >= 0) {
            size_t headLength = std::min<size_t>(nb, 17);
            uint64_t bHead = LeadingValue(b.data(), nb, headLength);
            uint64_t rHead = LeadingValue(r.data(), nr, headLength + (nr - nb));
            digit = static_cast<int>(rHead / (bHead + 1));
            if (digit > 0) {
                nr = SubtractMultipleInPlace(r.data(), nr, b.data(), nb, digit);
            }
            while (CompareTrimmed(r.data(), nr, b.data(), nb) >= 0) {
                nr = SubtractInPlace(r.data(), nr, b.data(), nb);
                ++digit;
            }
        }
        q[i - 1] = static_cast<char>(digit);
    }
    Clean(q);
    r.resize(nr == 0 ? 1 : nr);
    quotient.swap(q);
    remainder.swap(r);
}

} // namespace QzXmlLib16
