// Conversions.cpp - text forms of the primitive item types.
//
// The integer and boolean readers work on the whiteSpace rule's result in place: the rule
// copies only when it changes the text, and the parsers themselves never allocate.
#include "values/Conversions.h"

#include "foundation/Exceptions.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string_view>

namespace QzXmlLib16 {

namespace {

// Failures

[[noreturn]] void ThrowNotConverted(const std::string& text, const char* typeName) {
    throw CQzInvalidValueException(
        FormatString("The value [%s] can not be converted to a %s", text.c_str(), typeName));
}

[[noreturn]] void ThrowTooLarge(const std::string& text, const char* typeName) {
    throw CQzInvalidValueException(
        FormatString("The value [%s] is to large to fit in a %s", text.c_str(), typeName));
}

[[noreturn]] void ThrowInvalidFormat(const std::string& format) {
    throw CQzInvalidParamException(FormatString("Invalid number format [%s]", format.c_str()));
}

// The most places a decimal format may ask for; a larger count is taken as this one.
const long kMaxDecimalPlaces = 1000;

// Integer text

// Writes an integer the way "%d"/"%u" and their long long forms print it.
template <class T> std::string IntegerText(T value) {
    char buffer[24];
    std::to_chars_result r = std::to_chars(buffer, buffer + sizeof(buffer), value);
    return std::string(buffer, r.ptr);
}

// The prefix, then the value as "%02u" prints it.
std::string PaddedTwoDigits(const char* prefix, unsigned value) {
    std::string text(prefix);
    if (value < 10)
        text.push_back('0');
    char buffer[4];
    std::to_chars_result r = std::to_chars(buffer, buffer + sizeof(buffer), value);
    text.append(buffer, r.ptr);
    return text;
}

// Does the text, after the blanks strtol skips, start with a minus sign?
bool HasLeadingMinus(const char* p) {
    while (*p == ' ' || (*p >= '\t' && *p <= '\r'))
        ++p;
    return *p == '-';
}

// Real number text

// A printf format that is safe to apply to one double: literal text, "%%", and at most one
// conversion of f, e, g or a (either case) with flags, a width and a precision of up to four
// digits each and an optional 'l'. Anything else ("%s", "%n", "*", "%Lf", ...) is refused.
bool IsRealFormat(const std::string& format) {
    const std::string_view flags("-+ #0");
    const std::string_view kinds("fFeEgGaA");
    int conversions = 0;
    size_t n = format.size();
    for (size_t i = 0; i < n; ++i) {
        if (format[i] == '\0')
            return false;
        if (format[i] != '%')
            continue;
        if (++i < n && format[i] == '%')
            continue;
        while (i < n && flags.find(format[i]) != std::string_view::npos)
            ++i;
        size_t digits = 0;
        for (; i < n && format[i] >= '0' && format[i] <= '9'; ++i)
            ++digits;
        if (digits > 4)
            return false;
        if (i < n && format[i] == '.') {
            digits = 0;
            for (++i; i < n && format[i] >= '0' && format[i] <= '9'; ++i)
                ++digits;
            if (digits > 4)
                return false;
        }
        if (i < n && format[i] == 'l')
            ++i;
        if (i >= n || kinds.find(format[i]) == std::string_view::npos)
            return false;
        if (++conversions > 1)
            return false;
    }
    return true;
}

// The shared body of r4ToString and r8ToString. The default formats go through to_chars,
// which prints exactly as printf's "%.<precision>g" does, without the format parser.
std::string RealText(double value, int defaultPrecision, const std::string& format) {
    if (std::isnan(value))
        return "NaN";
    if (value == -std::numeric_limits<double>::infinity())
        return "-INF";
    if (value == std::numeric_limits<double>::infinity())
        return "INF";
    char buffer[48];
    if (format.empty()) {
        std::to_chars_result r = std::to_chars(buffer, buffer + sizeof(buffer), value,
                                               std::chars_format::general, defaultPrecision);
        return std::string(buffer, r.ptr);
    }
    if (!IsRealFormat(format))
        ThrowInvalidFormat(format);
    int n = std::snprintf(buffer, sizeof(buffer), format.c_str(), value);
    if (n < 0)
        ThrowInvalidFormat(format);
    if (static_cast<size_t>(n) < sizeof(buffer))
        return std::string(buffer, static_cast<size_t>(n));
    // A wide format: print again into a buffer of the full length rather than cut the text.
    std::string text(static_cast<size_t>(n), '\0');
    std::snprintf(&text[0], text.size() + 1, format.c_str(), value);
    return text;
}

// Reads the special spellings, then strtod. The returned double is narrowed by r4.
double RealValue(const std::string& text, CWhitespaceUtils::WhitespaceRule rule, const char* typeName) {
    std::string buffer;
    const std::string& s = CWhitespaceUtils::ApplyRule(rule, text, buffer);
    if (s.empty())
        ThrowNotConverted(s, typeName);
    if (s == "NaN" || s == "1.#QNAN" || s == "-NAN")
        return std::numeric_limits<double>::quiet_NaN();
    if (s == "-INF")
        return -std::numeric_limits<double>::infinity();
    if (s == "INF")
        return std::numeric_limits<double>::infinity();
    const char* begin = s.c_str();
    char* end = nullptr;
    double value = std::strtod(begin, &end);
    if (end != begin + s.size())
        ThrowNotConverted(s, typeName);
    return value;
}

// Rounds a double to float as the hardware does, also where the value lies beyond the float
// range (a plain conversion of such a value is undefined in C++).
float NarrowToFloat(double value) {
    const double kFloatMax = std::numeric_limits<float>::max();
    if (std::isfinite(value) && std::fabs(value) > kFloatMax) {
        const float kInf = std::numeric_limits<float>::infinity();
        const float kMax = std::numeric_limits<float>::max();
        // 0x1.ffffffp127 is halfway between FLT_MAX and 2^128; from there on it rounds to infinity.
        float magnitude = std::fabs(value) >= 0x1.ffffffp127 ? kInf : kMax;
        return std::signbit(value) ? -magnitude : magnitude;
    }
    return static_cast<float>(value);
}

// Date-like text

// Starts from `type`, then ParseXSDDate, which clears and takes the type the text has.
CDateTime DateLikeValue(CDateTime::DTType type, const std::string& text,
                        CWhitespaceUtils::WhitespaceRule rule) {
    std::string buffer;
    CDateTime value(type);
    value.ParseXSDDate(CWhitespaceUtils::ApplyRule(rule, text, buffer).c_str());
    return value;
}

// Boolean text

// strcasecmp over the whole string: a zero byte inside the text is not an end.
bool EqualsNoCase(const std::string& text, const char* word) {
    size_t n = std::strlen(word);
    if (text.size() != n)
        return false;
    for (size_t i = 0; i < n; ++i) {
        char c = text[i];
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
        if (c != word[i])
            return false;
    }
    return true;
}

} // namespace

// ---- integers ------------------------------------------------------------------------------

std::string CConversions::i1ToString(char value) {
    return IntegerText(static_cast<int>(static_cast<signed char>(value)));
}
std::string CConversions::i2ToString(short value) {
    return IntegerText(static_cast<int>(value));
}
std::string CConversions::i4ToString(int32_t value) {
    return IntegerText(value);
}
std::string CConversions::i8ToString(long long value) {
    return IntegerText(value);
}
std::string CConversions::ui1ToString(unsigned char value) {
    return IntegerText(static_cast<unsigned>(value));
}
std::string CConversions::ui2ToString(unsigned short value) {
    return IntegerText(static_cast<unsigned>(value));
}
std::string CConversions::ui4ToString(uint32_t value) {
    return IntegerText(value);
}
std::string CConversions::ui8ToString(unsigned long long value) {
    return IntegerText(value);
}

// long is 64 bits here, so the 32-bit readers test the range themselves where a 32-bit strtol
// would have set ERANGE; the messages are the same either way.
int32_t CConversions::i4FromString(const std::string& text, WhitespaceRule rule) {
    std::string buffer;
    const std::string& s = CWhitespaceUtils::ApplyRule(rule, text, buffer);
    if (s.empty())
        ThrowNotConverted(s, "i4");
    const char* begin = s.c_str();
    char* end = nullptr;
    errno = 0;
    long value = std::strtol(begin, &end, 10);
    if (errno == ERANGE || value < std::numeric_limits<int32_t>::min() ||
        value > std::numeric_limits<int32_t>::max())
        ThrowTooLarge(s, "i4");
    if (end != begin + s.size())
        ThrowNotConverted(s, "i4");
    return static_cast<int32_t>(value);
}

long long CConversions::i8FromString(const std::string& text, WhitespaceRule rule) {
    std::string buffer;
    const std::string& s = CWhitespaceUtils::ApplyRule(rule, text, buffer);
    if (s.empty())
        ThrowNotConverted(s, "i8");
    const char* begin = s.c_str();
    char* end = nullptr;
    errno = 0;
    long long value = std::strtoll(begin, &end, 10);
    if (errno == ERANGE)
        ThrowTooLarge(s, "i8");
    if (end != begin + s.size())
        ThrowNotConverted(s, "i8");
    return value;
}

// A 32-bit strtoul negates a "-" text in 32 bits and fails only when the magnitude itself is
// beyond 32 bits; the 64-bit call is brought back to that.
uint32_t CConversions::ui4FromString(const std::string& text, WhitespaceRule rule) {
    std::string buffer;
    const std::string& s = CWhitespaceUtils::ApplyRule(rule, text, buffer);
    if (s.empty())
        ThrowNotConverted(s, "ui4");
    const char* begin = s.c_str();
    char* end = nullptr;
    errno = 0;
    unsigned long value = std::strtoul(begin, &end, 10);
    if (errno == ERANGE)
        ThrowTooLarge(s, "ui4");
    const unsigned long kMax = std::numeric_limits<uint32_t>::max();
    if (end != begin && HasLeadingMinus(begin)) {
        unsigned long magnitude = 0UL - value;
        if (magnitude > kMax)
            ThrowTooLarge(s, "ui4");
        value = static_cast<uint32_t>(0U - static_cast<uint32_t>(magnitude));
    } else if (value > kMax) {
        ThrowTooLarge(s, "ui4");
    }
    if (end != begin + s.size())
        ThrowNotConverted(s, "ui4");
    return static_cast<uint32_t>(value);
}

unsigned long long CConversions::ui8FromString(const std::string& text, WhitespaceRule rule) {
    std::string buffer;
    const std::string& s = CWhitespaceUtils::ApplyRule(rule, text, buffer);
    if (s.empty())
        ThrowNotConverted(s, "ui8");
    const char* begin = s.c_str();
    char* end = nullptr;
    errno = 0;
    unsigned long long value = std::strtoull(begin, &end, 10);
    if (errno == ERANGE)
        ThrowTooLarge(s, "ui8");
    if (end != begin + s.size())
        ThrowNotConverted(s, "ui8");
    return value;
}

char CConversions::i1FromString(const std::string& text, WhitespaceRule rule) {
    int32_t value = i4FromString(text, rule);
    if (value < -128 || value > 127)
        ThrowTooLarge(text, "i1");
    return static_cast<char>(value);
}

short CConversions::i2FromString(const std::string& text, WhitespaceRule rule) {
    int32_t value = i4FromString(text, rule);
    if (value < -32768 || value > 32767)
        ThrowTooLarge(text, "i2");
    return static_cast<short>(value);
}

unsigned char CConversions::ui1FromString(const std::string& text, WhitespaceRule rule) {
    uint32_t value = ui4FromString(text, rule);
    if (value > 255)
        ThrowTooLarge(text, "ui1");
    return static_cast<unsigned char>(value);
}

unsigned short CConversions::ui2FromString(const std::string& text, WhitespaceRule rule) {
    uint32_t value = ui4FromString(text, rule);
    if (value > 65535)
        ThrowTooLarge(text, "ui2");
    return static_cast<unsigned short>(value);
}

// ---- real numbers --------------------------------------------------------------------------

std::string CConversions::r4ToString(float value) {
    return RealText(value, 7, std::string());
}
std::string CConversions::r4ToString(float value, const std::string& format) {
    return RealText(value, 7, format);
}
std::string CConversions::r8ToString(double value) {
    return RealText(value, 16, std::string());
}
std::string CConversions::r8ToString(double value, const std::string& format) {
    return RealText(value, 16, format);
}

float CConversions::r4FromString(const std::string& text, WhitespaceRule rule) {
    return NarrowToFloat(RealValue(text, rule, "r4"));
}

double CConversions::r8FromString(const std::string& text, WhitespaceRule rule) {
    return RealValue(text, rule, "r8");
}

// ---- binary -------------------------------------------------------------------------------

std::string CConversions::hexBinaryToString(const CBinaryData& value) {
    return value.GetAsHexString();
}
std::string CConversions::base64BinaryToString(const CBinaryData& value) {
    return value.GetAsBase64();
}

CBinaryData CConversions::hexBinaryFromString(const std::string& text, WhitespaceRule rule) {
    std::string buffer;
    CBinaryData value;
    value.SetAsHexString(CWhitespaceUtils::ApplyRule(rule, text, buffer).c_str());
    return value;
}

CBinaryData CConversions::base64BinaryFromString(const std::string& text, WhitespaceRule rule) {
    std::string buffer;
    CBinaryData value;
    value.SetAsBase64(CWhitespaceUtils::ApplyRule(rule, text, buffer).c_str());
    return value;
}

// ---- dates and durations -------------------------------------------------------------------

std::string CConversions::durationToString(const CDateTimeSpan& value) {
    return value.ToString();
}
std::string CConversions::yearMonthToString(const CDateTime& value) {
    return value.ToString("s");
}
std::string CConversions::monthDayToString(const CDateTime& value) {
    return value.ToString("s");
}
std::string CConversions::dateToString(const CDateTime& value) {
    return value.ToString("s");
}
std::string CConversions::datetimeToString(const CDateTime& value) {
    return value.ToString("s");
}
std::string CConversions::timeToString(const CDateTime& value) {
    return value.ToString("s");
}

CDateTimeSpan CConversions::durationFromString(const std::string& text, WhitespaceRule rule) {
    std::string buffer;
    CDateTimeSpan value;
    value.ParseXSDDuration(CWhitespaceUtils::ApplyRule(rule, text, buffer).c_str());
    return value;
}

// The date-like readers start from an object of their own type, but ParseXSDDate clears it,
// so the text decides the type of the result.
CDateTime CConversions::yearMonthFromString(const std::string& text, WhitespaceRule rule) {
    return DateLikeValue(CDateTime::dt_gYearMonth, text, rule);
}

CDateTime CConversions::monthDayFromString(const std::string& text, WhitespaceRule rule) {
    return DateLikeValue(CDateTime::dt_gMonthDay, text, rule);
}

CDateTime CConversions::dateFromString(const std::string& text, WhitespaceRule rule) {
    return DateLikeValue(CDateTime::dt_date, text, rule);
}

unsigned short CConversions::yearFromString(const std::string& text, WhitespaceRule rule) {
    return static_cast<unsigned short>(DateLikeValue(CDateTime::dt_gYear, text, rule).GetYear());
}

unsigned char CConversions::monthFromString(const std::string& text, WhitespaceRule rule) {
    return DateLikeValue(CDateTime::dt_gMonth, text, rule).GetMonth();
}

unsigned char CConversions::dayFromString(const std::string& text, WhitespaceRule rule) {
    return DateLikeValue(CDateTime::dt_gDay, text, rule).GetDay();
}

CDateTime CConversions::datetimeFromString(const std::string& text, WhitespaceRule rule) {
    std::string buffer;
    CDateTime value(CDateTime::dt_dateTime);
    value.ParseXSDDateTime(CWhitespaceUtils::ApplyRule(rule, text, buffer).c_str());
    return value;
}

CDateTime CConversions::timeFromString(const std::string& text, WhitespaceRule rule) {
    std::string buffer;
    CDateTime value(CDateTime::dt_time);
    value.ParseXSDTime(CWhitespaceUtils::ApplyRule(rule, text, buffer).c_str());
    return value;
}

// ---- bare year, month and day numbers ------------------------------------------------------

std::string CConversions::yearToString(unsigned short value) {
    return IntegerText(static_cast<unsigned>(value));
}

std::string CConversions::monthToString(unsigned char value) {
    return PaddedTwoDigits("--", value);
}

std::string CConversions::dayToString(unsigned char value) {
    return PaddedTwoDigits("---", value);
}

// ---- decimal and integer ------------------------------------------------------------------

std::string CConversions::decimalToString(const CDecimal& value) {
    return value.ToString();
}

std::string CConversions::decimalToString(const CDecimal& value, const std::string& format) {
    if (format.empty())
        return value.ToString();
    long places = std::strtol(format.c_str(), nullptr, 10);
    if (places < 0)
        places = 0;
    if (places > kMaxDecimalPlaces)
        places = kMaxDecimalPlaces;
    return value.ToString(static_cast<int>(places));
}

std::string CConversions::integerToString(const CBigInteger& value) {
    return value.ToString();
}

CDecimal CConversions::decimalFromString(const std::string& text, WhitespaceRule rule) {
    std::string buffer;
    CDecimal value;
    value.Parse(CWhitespaceUtils::ApplyRule(rule, text, buffer).c_str());
    return value;
}

CBigInteger CConversions::integerFromString(const std::string& text, WhitespaceRule rule) {
    std::string buffer;
    CBigInteger value(0);
    value.Parse(CWhitespaceUtils::ApplyRule(rule, text, buffer).c_str());
    return value;
}

// ---- char, string, boolean -----------------------------------------------------------------

std::string CConversions::charToString(char value) {
    return std::string(1, value);
}

char CConversions::charFromString(const std::string& text, WhitespaceRule rule) {
    std::string buffer;
    const std::string& s = CWhitespaceUtils::ApplyRule(rule, text, buffer);
    if (s.size() != 1)
        throw CQzInvalidValueException(FormatString(
            "The value [%s] can not be a char as it is either empty of greater than 1 char long", s.c_str()));
    return s[0];
}

std::string CConversions::stringToString(const std::string& value) {
    return value;
}

std::string CConversions::stringFromString(const std::string& text, WhitespaceRule rule) {
    return CWhitespaceUtils::ApplyRule(rule, text);
}

std::string CConversions::booleanToString(bool value) {
    return value ? "true" : "false";
}

bool CConversions::booleanFromString(const std::string& text, WhitespaceRule rule) {
    std::string buffer;
    const std::string& s = CWhitespaceUtils::ApplyRule(rule, text, buffer);
    if (EqualsNoCase(s, "true"))
        return true;
    if (EqualsNoCase(s, "false"))
        return false;
    if (s == "1")
        return true;
    if (s == "0")
        return false;
    throw CQzInvalidValueException(
        FormatString("A Boolean Value read from an XML document was invalid [%s]. Valid "
                     "values are 'true', 'false', '1', or '0'",
                     text.c_str()));
}

} // namespace QzXmlLib16
