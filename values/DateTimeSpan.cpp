// DateTimeSpan.cpp - CDateTimeSpan: fields, the duration text form and comparison.
#include "values/DateTimeSpan.h"

#include <cstdint>
#include <cstring>

#include "foundation/Exceptions.h"
#include "values/DateTime.h"

namespace QzXmlLib16 {

namespace {

// Messages
const char* const kMsgNull = "Invalid XSD Duration (Null String)";
const char* const kMsgEmpty = "Invalid XSD Duration (Empty String)";
const char* const kMsgFraction = "Invalid XSD Duration [%s] Fraction part too long";
const char* const kMsgForm = "Invalid XSD Duration [%s] expected [-]P[nY][nM][nD][T[nH][nM][nS.ff]]";

[[noreturn]] void ThrowForm(const char* text) {
    throw CQzInvalidValueException(FormatString(kMsgForm, text));
}

// Number output
char* AppendUnsigned(char* out, unsigned long long value) {
    char digits[24];
    int n = 0;
    do {
        digits[n++] = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value != 0);
    while (n > 0)
        *out++ = digits[--n];
    return out;
}

// Progress through the designators while parsing:
//   0 after "P", 1 after Y, 2 after M(onths), 3 after D, 4 after T, 5 after H, 6 after M(inutes),
//   7 after S, 8 after a fraction and its S.
enum ParseState { kStart = 0, kYears, kMonths, kDays, kTime, kHours, kMinutes, kSeconds, kFraction };

} // namespace

// --- construction --------------------------------------------------------------------

CDateTimeSpan::CDateTimeSpan() : CInstanceMonitor("CDateTimeSpan") {
    Clear();
}

CDateTimeSpan::CDateTimeSpan(const CDateTimeSpan& other)
    : CInstanceMonitor("CDateTimeSpan"), m_years(other.m_years), m_months(other.m_months),
      m_days(other.m_days), m_hours(other.m_hours), m_minutes(other.m_minutes), m_seconds(other.m_seconds),
      m_milliSeconds(other.m_milliSeconds), m_microSeconds(other.m_microSeconds),
      m_nanoSeconds(other.m_nanoSeconds), m_isNegative(other.m_isNegative) {}

CDateTimeSpan::CDateTimeSpan(unsigned long hours, unsigned long long minutes, unsigned long long seconds)
    : CInstanceMonitor("CDateTimeSpan") {
    SetDateTimeSpan(hours, minutes, seconds);
}

CDateTimeSpan::CDateTimeSpan(unsigned short years, unsigned long months, unsigned long days,
                             unsigned long hours, unsigned long long minutes, unsigned long long seconds)
    : CInstanceMonitor("CDateTimeSpan") {
    SetDateTimeSpan(years, months, days, hours, minutes, seconds);
}

CDateTimeSpan::CDateTimeSpan(unsigned short years, unsigned long months, unsigned long days,
                             unsigned long hours, unsigned long long minutes, unsigned long long seconds,
                             unsigned short milli, unsigned short micro, unsigned short nano)
    : CInstanceMonitor("CDateTimeSpan") {
    SetDateTimeSpan(years, months, days, hours, minutes, seconds, milli, micro, nano);
}

CDateTimeSpan::~CDateTimeSpan() {}

void CDateTimeSpan::SetDateTimeSpan(unsigned long hours, unsigned long long minutes,
                                    unsigned long long seconds) {
    SetDateTimeSpan(0, 0, 0, hours, minutes, seconds, 0, 0, 0);
}

void CDateTimeSpan::SetDateTimeSpan(unsigned short years, unsigned long months, unsigned long days,
                                    unsigned long hours, unsigned long long minutes,
                                    unsigned long long seconds) {
    SetDateTimeSpan(years, months, days, hours, minutes, seconds, 0, 0, 0);
}

void CDateTimeSpan::SetDateTimeSpan(unsigned short years, unsigned long months, unsigned long days,
                                    unsigned long hours, unsigned long long minutes,
                                    unsigned long long seconds, unsigned short milli, unsigned short micro,
                                    unsigned short nano) {
    Clear();
    m_years = years;
    m_months = static_cast<uint32_t>(months);
    m_days = static_cast<uint32_t>(days);
    m_hours = static_cast<uint32_t>(hours);
    m_minutes = minutes;
    m_seconds = seconds;
    m_milliSeconds = milli;
    m_microSeconds = micro;
    m_nanoSeconds = nano;
}

CDateTimeSpan CDateTimeSpan::GetAsNegative() const {
    CDateTimeSpan copy(*this);
    copy.m_isNegative = true;
    return copy;
}

void CDateTimeSpan::Clear() {
    m_years = 0;
    m_months = 0;
    m_days = 0;
    m_hours = 0;
    m_minutes = 0;
    m_seconds = 0;
    m_milliSeconds = 0;
    m_microSeconds = 0;
    m_nanoSeconds = 0;
    m_isNegative = false;
}

CDateTimeSpan& CDateTimeSpan::operator=(const CDateTimeSpan& other) {
    m_years = other.m_years;
    m_months = other.m_months;
    m_days = other.m_days;
    m_hours = other.m_hours;
    m_minutes = other.m_minutes;
    m_seconds = other.m_seconds;
    m_milliSeconds = other.m_milliSeconds;
    m_microSeconds = other.m_microSeconds;
    m_nanoSeconds = other.m_nanoSeconds;
    m_isNegative = other.m_isNegative;
    return *this;
}

// --- text form ---------------------------------------------------------------------------

std::string CDateTimeSpan::ToString() const {
    // At most "-P" + 5+10+10 digits of date, "T" + 10+20+20 digits of time, a 16-character
    // fraction (three 5-digit fields) and 6 designators: about 100 characters.
    char buffer[192];
    char* out = buffer;
    if (m_isNegative)
        *out++ = '-';
    *out++ = 'P';
    auto part = [&out](unsigned long long value, char designator) {
        if (value != 0) {
            out = AppendUnsigned(out, value);
            *out++ = designator;
        }
    };
    part(m_years, 'Y');
    part(m_months, 'M');
    part(m_days, 'D');
    const bool fraction = m_milliSeconds != 0 || m_microSeconds != 0 || m_nanoSeconds != 0;
    if (m_hours != 0 || m_minutes != 0 || m_seconds != 0 || fraction) {
        *out++ = 'T';
        part(m_hours, 'H');
        part(m_minutes, 'M');
        if (m_seconds != 0 || fraction) {
            out = AppendUnsigned(out, m_seconds);
            if (fraction) {
                const std::string text = ToFracString(m_milliSeconds, m_microSeconds, m_nanoSeconds);
                std::memcpy(out, text.data(), text.size());
                out += text.size();
            }
            *out++ = 'S';
        }
    }
    return std::string(buffer, out);
}

// [-]P[nY][nM][nD][T[nH][nM][n[.f{0,9}]S]], driven by the designator table:
//   Y any state -> 1; M below 2 -> 2 (months), 4 or 5 -> 6 (minutes); D up to 2 -> 3;
//   T up to 3 -> 4; H at 4 -> 5; S at 4..6 -> 7; "." at 4..6 -> 8. Valid unless it ends at 0 or 4.
void CDateTimeSpan::ParseXSDDuration(const char* text) {
    Clear();
    if (text == nullptr)
        throw CQzInvalidValueException(kMsgNull);
    if (text[0] == '\0')
        throw CQzInvalidValueException(kMsgEmpty);
    const char* p = text;
    if (*p == '-') {
        m_isNegative = true;
        ++p;
    }
    if (*p != 'P')
        ThrowForm(text);
    ++p;

    int state = kStart;
    while (*p != '\0') {
        // The number is optional; a run longer than a signed 32-bit value is refused.
        long long n = 0;
        while (*p >= '0' && *p <= '9') {
            n = n * 10 + (*p - '0');
            if (n > INT32_MAX)
                ThrowForm(text);
            ++p;
        }
        const char designator = *p;
        if (designator == '\0')
            ThrowForm(text);
        ++p;
        switch (designator) {
        case 'Y':
            m_years = static_cast<unsigned short>(n);
            state = kYears;
            break;
        case 'M':
            if (state < kMonths) {
                m_months = static_cast<uint32_t>(n);
                state = kMonths;
            } else if (state == kTime || state == kHours) {
                m_minutes = static_cast<unsigned long long>(n);
                state = kMinutes;
            } else {
                ThrowForm(text);
            }
            break;
        case 'D':
            if (state > kMonths)
                ThrowForm(text);
            m_days = static_cast<uint32_t>(n);
            state = kDays;
            break;
        case 'T':
            if (state > kDays)
                ThrowForm(text);
            state = kTime;
            break;
        case 'H':
            if (state != kTime)
                ThrowForm(text);
            m_hours = static_cast<uint32_t>(n);
            state = kHours;
            break;
        case 'S':
            if (state < kTime || state > kMinutes)
                ThrowForm(text);
            m_seconds = static_cast<unsigned long long>(n);
            state = kSeconds;
            break;
        case '.': {
            if (state < kTime || state > kMinutes)
                ThrowForm(text);
            m_seconds = static_cast<unsigned long long>(n);
            if (*p == '\0') {
                // "PT1." is one second.
                state = kSeconds;
                break;
            }
            // Digits 0-2 and 3-5 add with weights 100, 10, 1; digits 6-8 each replace the
            // nanoseconds with their bare value.
            static const unsigned short kWeight[3] = {100, 10, 1};
            int k = 0;
            while (*p >= '0' && *p <= '9') {
                const unsigned short digit = static_cast<unsigned short>(*p - '0');
                if (k == 9)
                    throw CQzInvalidValueException(FormatString(kMsgFraction, text));
                if (k < 3)
                    m_milliSeconds = static_cast<unsigned short>(m_milliSeconds + digit * kWeight[k]);
                else if (k < 6)
                    m_microSeconds = static_cast<unsigned short>(m_microSeconds + digit * kWeight[k - 3]);
                else
                    m_nanoSeconds = digit;
                ++k;
                ++p;
            }
            if (*p != 'S')
                ThrowForm(text);
            ++p;
            state = kFraction;
            break;
        }
        default:
            ThrowForm(text);
        }
    }
    if (state == kStart || state == kTime)
        ThrowForm(text);
}

// --- comparison ------------------------------------------------------------------------------

int CDateTimeSpan::CompareTo(const CDateTimeSpan& other) const {
    static const short kRef[4][3] = {{1696, 9, 1}, {1697, 2, 1}, {1903, 3, 1}, {1903, 7, 1}};
    int first = 0;
    for (int i = 0; i < 4; ++i) {
        CDateTime reference;
        reference.SetDate(kRef[i][0], static_cast<unsigned char>(kRef[i][1]),
                          static_cast<unsigned char>(kRef[i][2]));
        reference.SetUTC();
        const int r = (reference + *this).CompareTo(reference + other);
        if (r == 3)
            return 3;
        if (i == 0)
            first = r;
        else if (r != first)
            return 3;
    }
    return first;
}

} // namespace QzXmlLib16
