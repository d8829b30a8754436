// DateTimeParse.cpp - the lexical parsers of CDateTime: text to fields.
// Ranges are left to Validate; these routines only check the shape of the text.
#include <cstring>
#include <string>

#include "foundation/Exceptions.h"
#include "values/DateTime.h"

namespace QzXmlLib16 {

namespace {

// Messages
const char* const kMsgDateTimeNull = "Invalid DateTime (Null String)";
const char* const kMsgDateTimeNoT = "Invalid XSD DateTime [%s].";
const char* const kMsgDateTimeForm = "Invalid XSD DateTime [%s] expected CCYY-MM-DDThh:mm:ss[.ff]";
const char* const kMsgDateNull = "Invalid Date (Null String)";
const char* const kMsgDateEmpty = "Invalid Date (Empty String)";
const char* const kMsgDateT = "Invalid Date ('T' not allowed)";
const char* const kMsgDateBadZone = "Invalid Date (Bad Zone value)";
const char* const kMsgDateForm = "Invalid XSD Date [%s] expected CCYY-MM-DD[Z|[+|-]hh:mm]";
const char* const kMsgTimeNull = "Invalid Time (Null String)";
const char* const kMsgTimeEmpty = "Invalid XSD Time (Empty String)";
const char* const kMsgTimeForm = "Invalid XSD Time [%s] expected hh:mm:ss[.ff]";
const char* const kMsgTimeFraction = "Invalid XSD Time [%s] Fraction part too long";
const char* const kMsgZoneForm = "Invalid XSD Time Zone [%s].";

[[noreturn]] void ThrowValue(const char* format, const char* text, size_t len) {
    throw CQzInvalidValueException(FormatString(format, std::string(text, len).c_str()));
}

// Character tests
inline bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// Two digits at text[0..1] into value; false if either is not a digit.
inline bool ReadTwo(const char* text, int& value) {
    if (!IsDigit(text[0]) || !IsDigit(text[1]))
        return false;
    value = (text[0] - '0') * 10 + (text[1] - '0');
    return true;
}

} // namespace

// dateTime: <date part>T<time part>; the date part may carry the zone as well.
void CDateTime::ParseXSDDateTime(const char* text) {
    if (text == nullptr)
        throw CQzInvalidValueException(kMsgDateTimeNull);
    const char* t = std::strchr(text, 'T');
    if (t == nullptr)
        throw CQzInvalidValueException(FormatString(kMsgDateTimeNoT, text));
    Clear();
    SetXSDDate(text, static_cast<size_t>(t - text));
    if (m_type != date)
        throw CQzInvalidValueException(FormatString(kMsgDateTimeForm, text));
    SetXSDTime(t + 1, std::strlen(t + 1));
    m_type = dateTime;
    Validate();
}

void CDateTime::ParseXSDDate(const char* text) {
    Clear();
    if (text == nullptr)
        throw CQzInvalidValueException(kMsgDateNull);
    SetXSDDate(text, std::strlen(text));
    Validate();
}

void CDateTime::ParseXSDTime(const char* text) {
    Clear();
    if (text == nullptr)
        throw CQzInvalidValueException(kMsgTimeNull);
    SetXSDTime(text, std::strlen(text));
    Validate();
}

void CDateTime::SetXSDDate(const char* text) {
    SetXSDDate(text, text == nullptr ? 0 : std::strlen(text));
}

void CDateTime::SetXSDTime(const char* text) {
    SetXSDTime(text, text == nullptr ? 0 : std::strlen(text));
}

void CDateTime::SetZone(const char* text) {
    if (text != nullptr)
        SetZone(text, std::strlen(text));
}

// The date forms, told apart by the length of the core (the text in front of the zone):
//   [-]YYYY (4), [-]YYYY-MM (7), [-]YYYY-MM-DD (10), --MM (4), ---DD (5), --MM-- (6), --MM-DD (7)
// followed by nothing, "Z" or [+|-]hh:mm.
void CDateTime::SetXSDDate(const char* text, size_t len) {
    if (text == nullptr)
        throw CQzInvalidValueException(kMsgDateNull);
    if (len == 0)
        throw CQzInvalidValueException(kMsgDateEmpty);
    if (std::memchr(text, 'T', len) != nullptr)
        throw CQzInvalidValueException(kMsgDateT);

    const bool hasColon = std::memchr(text, ':', len) != nullptr;
    // A "Z" can only stand last: anywhere else it breaks the digits of the core below.
    const bool hasZ = std::memchr(text, 'Z', len) != nullptr;
    long long core;
    if (hasZ) {
        if (hasColon)
            throw CQzInvalidValueException(kMsgDateBadZone);
        core = static_cast<long long>(len) - 1;
    } else if (hasColon) {
        core = static_cast<long long>(len) - 6;
    } else {
        core = static_cast<long long>(len);
    }

    size_t start = 0;
    DTType type = yearZero;
    int year = 0, month = 0, day = 0;
    bool ok = false;
    if (len >= 2 && text[0] == '-' && text[1] == '-') {
        switch (core) {
        case 4: // --MM
            ok = ReadTwo(text + 2, month);
            type = gMonth;
            break;
        case 5: // ---DD
            ok = text[2] == '-' && ReadTwo(text + 3, day);
            type = gDay;
            break;
        case 6: // --MM-- (the last two characters are not looked at)
            ok = ReadTwo(text + 2, month);
            type = gMonth;
            break;
        case 7: // --MM-DD
            ok = ReadTwo(text + 2, month) && text[4] == '-' && ReadTwo(text + 5, day);
            type = gMonthDay;
            break;
        default:
            break;
        }
    } else {
        const bool negative = text[0] == '-';
        if (negative) {
            start = 1;
            --core;
        }
        const char* p = text + start;
        if (core == 4 || core == 7 || core == 10) {
            int high = 0, low = 0;
            ok = ReadTwo(p, high) && ReadTwo(p + 2, low);
            year = high * 100 + low;
            if (ok && core >= 7)
                ok = p[4] == '-' && ReadTwo(p + 5, month);
            if (ok && core == 10)
                ok = p[7] == '-' && ReadTwo(p + 8, day);
            type = core == 4 ? gYear : (core == 7 ? gYearMonth : date);
            if (negative)
                year = -year;
        }
    }
    if (!ok)
        ThrowValue(kMsgDateForm, text, len);

    m_type = type;
    m_year = static_cast<short>(year);
    m_month = static_cast<unsigned char>(month);
    m_day = static_cast<unsigned char>(day);
    if (hasZ || hasColon) {
        const size_t zone = start + static_cast<size_t>(core);
        SetZone(text + zone, len - zone);
    }
}

// hh:mm:ss[.f{0,9}][zone]
void CDateTime::SetXSDTime(const char* text, size_t len) {
    if (text == nullptr)
        throw CQzInvalidValueException(kMsgTimeNull);
    if (len == 0)
        throw CQzInvalidValueException(kMsgTimeEmpty);
    int hour = 0, minute = 0, second = 0;
    if (len < 8 || !ReadTwo(text, hour) || text[2] != ':' || !ReadTwo(text + 3, minute) || text[5] != ':' ||
        !ReadTwo(text + 6, second))
        ThrowValue(kMsgTimeForm, text, len);
    m_hour = static_cast<unsigned char>(hour);
    m_minute = static_cast<unsigned char>(minute);
    m_second = static_cast<unsigned char>(second);
    if (hour > 23 || minute > 59 || second > 59)
        ThrowValue(kMsgTimeForm, text, len);

    size_t pos = 8;
    if (pos < len && text[pos] == '.') {
        ++pos;
        // Digit k (from 0) goes into milli, micro or nano by k / 3, with weights 100, 10, 1.
        static const unsigned short kWeight[3] = {100, 10, 1};
        unsigned short* const fields[3] = {&m_milliSecond, &m_microSecond, &m_nanoSecond};
        int k = 0;
        while (pos < len && IsDigit(text[pos])) {
            if (k == 9)
                ThrowValue(kMsgTimeFraction, text, len);
            *fields[k / 3] = static_cast<unsigned short>(*fields[k / 3] + (text[pos] - '0') * kWeight[k % 3]);
            ++k;
            ++pos;
        }
    }
    if (pos < len)
        SetZone(text + pos, len - pos);
    m_type = time;
}

// "Z" (anything may follow), +hh:mm or -hh:mm; any other first character is ignored.
void CDateTime::SetZone(const char* text, size_t len) {
    if (len == 0)
        return;
    if (text[0] == 'Z') {
        SetUTC();
        return;
    }
    if (text[0] != '+' && text[0] != '-')
        return;
    int hour = 0, minute = 0;
    if (len != 6 || !ReadTwo(text + 1, hour) || text[3] != ':' || !ReadTwo(text + 4, minute))
        ThrowValue(kMsgZoneForm, text, len);
    if (hour == 24)
        hour = 0;
    if (text[0] == '-')
        hour = -hour;
    SetTimeZone(static_cast<short>(hour), static_cast<unsigned char>(minute));
}

} // namespace QzXmlLib16
