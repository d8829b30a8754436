// DecimalParse.cpp - the reader of CDecimal: text to integer part, fraction and places.
// Scale handling and arithmetic, which the exponent needs, are in Decimal.cpp.
#include "values/Decimal.h"

#include "foundation/Exceptions.h"

#include <cstdlib>
#include <cstring>
#include <string>

namespace QzXmlLib16 {

namespace {

// Messages
const char* const kMsgInvalidChar =
    "The string representing a Decimal, contained an invalid char at position %d [%s].";
const char* const kMsgExponentRange =
    "The string representing a Decimal, contained an exponent out of range [%s].";

// The largest positive exponent read: beyond it the value alone would take megabytes.
const long kMaxExponent = 100000;

[[noreturn]] void ThrowInvalidChar(size_t position, const char* text) {
    throw CQzInvalidValueException(FormatString(kMsgInvalidChar, static_cast<int>(position), text));
}

// Character classes

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// The magnitude of a run of ASCII digits, as CBigInteger::Parse would read it.
CBigInteger::DigitVector DigitsOf(const std::string& digits) {
    CBigInteger::DigitVector out;
    CBigInteger::Build(digits, out);
    if (out.empty()) {
        out.push_back(0);
    }
    return out;
}

} // namespace

// Grammar (blanks = space, tab, line feed, carriage return; skipped everywhere):
//   integer phase   ( digit | "+" | "-" | blank )*        the last sign wins
//   fraction phase  "." ( digit | blank )*
//   exponent phase  ("e" | "E") ( "+" | "-" | blank )* ( digit | blank )*
void CDecimal::Parse(const char* text) {
    if (text == nullptr) {
        text = "";
    }
    enum Phase { IntegerPhase, FractionPhase, ExponentSignPhase, ExponentDigitPhase };
    Phase phase = IntegerPhase;
    std::string integerDigits;
    std::string fractionDigits;
    std::string exponentDigits;
    char sign = '+';
    char exponentSign = '+';

    for (size_t i = 0; text[i] != '\0'; ++i) {
        char c = text[i];
        switch (phase) {
        case IntegerPhase:
            if (IsDigit(c)) {
                integerDigits.push_back(c);
            } else if (c == '-' || c == '+') {
                sign = c;
            } else if (c == '.') {
                phase = FractionPhase;
            } else if (c == 'e' || c == 'E') {
                phase = ExponentSignPhase;
            } else if (!IsBlank(c)) {
                ThrowInvalidChar(i, text);
            }
            break;
        case FractionPhase:
            if (IsDigit(c)) {
                fractionDigits.push_back(c);
            } else if (c == 'e' || c == 'E') {
                phase = ExponentSignPhase;
            } else if (!IsBlank(c)) {
                ThrowInvalidChar(i, text);
            }
            break;
        case ExponentSignPhase:
            if (c == '-' || c == '+') {
                exponentSign = c;
            } else if (IsDigit(c)) {
                exponentDigits.push_back(c);
                phase = ExponentDigitPhase;
            } else if (!IsBlank(c)) {
                ThrowInvalidChar(i, text);
            }
            break;
        case ExponentDigitPhase:
            if (IsDigit(c)) {
                exponentDigits.push_back(c);
            } else if (!IsBlank(c)) {
                ThrowInvalidChar(i, text);
            }
            break;
        }
    }

    CDecimal value(CBigInteger(1, DigitsOf(integerDigits)), CBigInteger(1, DigitsOf(fractionDigits)),
                   fractionDigits.empty() ? 1 : static_cast<int>(fractionDigits.size()));
    if (sign == '-') {
        value.Negate();
    }

    if (!exponentDigits.empty()) {
        long exponent = std::strtol(exponentDigits.c_str(), nullptr, 10);
        if (exponentSign == '-') {
            // Once 10^exponent exceeds the dividend's 10^(digits + 32), the truncated
            // quotient is 0 and the division would give +0: skip building the power.
            long integerLength = CBigInteger::Position(value.m_integer.m_vDigits);
            if (exponent >= integerLength + m_maxDivider + 2) {
                value = CDecimal();
            } else {
                value = value / CDecimal(CBigInteger::Pow10(static_cast<unsigned int>(exponent)));
            }
        } else {
            if (exponent > kMaxExponent) {
                throw CQzInvalidValueException(FormatString(kMsgExponentRange, text));
            }
            value = value * CDecimal(CBigInteger::Pow10(static_cast<unsigned int>(exponent)));
        }
    }

    value.Rationalise();
    if (value.m_fractionalDivider > m_maxDivider) {
        value.ChangeFractionalDivider(m_maxDivider);
    }
    *this = value;
}

} // namespace QzXmlLib16
