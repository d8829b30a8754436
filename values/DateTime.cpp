// DateTime.cpp - CDateTime fields, validation, formatting, comparison and arithmetic.
// The lexical parsers are in DateTimeParse.cpp.
#include "values/DateTime.h"

#include <cstdio>
#include <cstring>
#include <limits>

#include "foundation/Exceptions.h"

namespace QzXmlLib16 {

const unsigned char g_monthMax[12] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
const unsigned short g_monthDayInYear[13] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365};

namespace {

// Messages
const char* const kMsgGetYear = "Failed to GetYear. Invalid Date Type: %s.";
const char* const kMsgGetMonth = "Failed to GetMonth. Invalid Date Type: %s.";
const char* const kMsgGetDay = "Failed to GetDay. Invalid Date Type: %s.";
const char* const kMsgGetHour = "Failed to GetHour. Invalid Date Type: %s.";
const char* const kMsgGetMinute = "Failed to GetMinute. Invalid Date Type: %s.";
const char* const kMsgGetSecond = "Failed to GetSecond. Invalid Date Type: %s.";
const char* const kMsgGetRealSecond = "Failed to GetRealSecond. Invalid Date Type: %s.";
const char* const kMsgGetMilli = "Failed to GetMilliSecond. Invalid Date Type: %s.";
const char* const kMsgGetMicro = "Failed to GetMicroSecond. Invalid Date Type: %s.";
const char* const kMsgGetNano = "Failed to GetNanoSecond. Invalid Date Type: %s.";
const char* const kMsgDayOfWeek = "Failed to GetDayOfWeek. Invalid Date Type: %s.";
const char* const kMsgDayOfYear = "Failed to GetDayOfYear. Invalid Date Type: %s.";
const char* const kMsgNoZone = "TimeZone is not been used";
const char* const kMsgBadZone = "Invalid TimeZone [%d:%d]";
const char* const kMsgRetype = "Failed to copy CDateTime. Invalid Date Type: %s, expected: %s.";
const char* const kMsgConvert =
    "Attempting to set a CDateTime of type %s using an XmlDateTime of type %s. The "
    "source CDateTime does not contian enough data to allow the conversion.";
const char* const kMsgUnknownType = "Unknown date type %d.";
const char* const kMsgGetTime =
    "Failed to GetTime, Date Status must be dateTime or date. Invalid Date Type: %s.";
const char* const kMsgYearZero = "Invalid Year Zero";
const char* const kMsgMonthRange = "Invalid Month [%d] (1 <= month <= 12)";
const char* const kMsgMonthType = "Invalid Month [%d] for type %s";
const char* const kMsgYearRange = "Invalid Year [%d] (%d <= year <= %d && year != 0)";
const char* const kMsgYearType = "Invalid Year [%d] for type %s";
const char* const kMsgDayInMonth = "Invalid Day [%d] (1 <= day <= days in month"; // no ")" on purpose
const char* const kMsgDayInMonthDay = "Invalid Day [%d] (1 <= day <= days in month)";
const char* const kMsgDay31 = "Invalid Day [%d] (1 <= day <= 31)";
const char* const kMsgDayType = "Invalid Day [%d] for type %s";
const char* const kMsgTimeRange[6] = {
    "Invalid Hour [%d] (0 <= hour <= 23)",           "Invalid Minute [%d] (0 <= minute <= 59)",
    "Invalid Second [%d] (0 <= second <= 59)",       "Invalid Milli-Second [%d] (0 <= milli <= 999)",
    "Invalid Micro-Second [%d] (0 <= micro <= 999)", "Invalid Nano-Second [%d] (0 <= nano <= 999)"};
const char* const kMsgTimeType[6] = {
    "Invalid Hour [%d] for type %s",         "Invalid Minute [%d] for type %s",
    "Invalid Second [%d] for type %s",       "Invalid Milli-Second [%d] for type %s",
    "Invalid Micro-Second [%d] for type %s", "Invalid Nano-Second [%d] for type %s"};
const char* const kMsgNotSet = "Error: Date Not Set";
const char* const kMsgUnknownFormat = "Unknown Format: ";
const char* const kMsgYearOverflow = "Year out of range [%lld] in date arithmetic (-32768 <= year <= 32767)";
const char* const kMsgTimeValue = "Invalid time value [%ld]";
const char* const kMsgDivZero = "GetQuotient: division by zero";
const char* const kMsgQuotientOverflow = "GetQuotient: result out of range";

// The name of a type tag, "" for a value outside the enumeration.
const char* TypeName(int type) {
    static const char* const kNames[9] = {"yearZero", "dateTime", "date",   "gYearMonth", "gYear",
                                          "time",     "gDay",     "gMonth", "gMonthDay"};
    return (type >= 0 && type <= 8) ? kNames[type] : "";
}

[[noreturn]] void ThrowState(const char* format, CDateTime::DTType type) {
    throw CQzInvalidStateException(FormatString(format, TypeName(type)));
}

// Which types carry which field
bool HasYear(int t) {
    return t >= 1 && t <= 4;
}
bool HasMonth(int t) {
    return (t >= 1 && t <= 3) || t == 7 || t == 8;
}
bool HasDay(int t) {
    return t == 1 || t == 2 || t == 6 || t == 8;
}
bool HasTime(int t) {
    return t == 1 || t == 5;
}

// Length of a month in a given year; month 0 counts as January (the day walk never sees it).
int MonthLength(int month, long long year) {
    if (month == 0)
        return g_monthMax[0];
    if (month == 2 && !IsLeapYear(static_cast<int>(year % 400)))
        return 28;
    return g_monthMax[month - 1];
}

// Days from 1970-01-01 to the given proleptic Gregorian date (astronomical years, so the
// year before 1 is 0). Exact for any year the class can hold.
long long DaysFromCivil(long long y, unsigned m, unsigned d) {
    y -= m <= 2;
    const long long era = (y >= 0 ? y : y - 399) / 400;
    const unsigned yoe = static_cast<unsigned>(y - era * 400);            // [0, 399]
    const unsigned doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1; // [0, 365]
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;           // [0, 146096]
    return era * 146097 + static_cast<long long>(doe) - 719468;
}

// Floor division and modulo on 128-bit intermediates, for sums that may pass 2^63.
__int128 FloorDiv(__int128 a, int b) {
    __int128 q = a / b;
    if ((a % b != 0) && ((a < 0) != (b < 0)))
        --q;
    return q;
}

// Appends value in decimal, padded with zeros to at least width digits.
char* AppendPadded(char* out, unsigned value, int width) {
    char digits[12];
    int n = 0;
    do {
        digits[n++] = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value != 0);
    for (int i = n; i < width; ++i)
        *out++ = '0';
    while (n > 0)
        *out++ = digits[--n];
    return out;
}

// The shortest fraction text (see ToFracString) written into a buffer; nothing for a zero fraction.
char* AppendFraction(char* out, unsigned milli, unsigned micro, unsigned nano) {
    if (milli == 0 && micro == 0 && nano == 0)
        return out;
    *out++ = '.';
    // The last field written loses its trailing zeros, but never its first character.
    unsigned last;
    if (nano != 0) {
        out = AppendPadded(out, milli, 3);
        out = AppendPadded(out, micro, 3);
        last = nano;
    } else if (micro != 0) {
        out = AppendPadded(out, milli, 3);
        last = micro;
    } else {
        last = milli;
    }
    char* start = out;
    out = AppendPadded(out, last, 3);
    while (out - start > 1 && out[-1] == '0')
        --out;
    return out;
}

} // namespace

// --- free functions ------------------------------------------------------------

bool IsLeapYear(int year) {
    // (year & 3) is right for negatives in two's complement, unlike year % 4 != 0 tests on sign.
    if ((year & 3) != 0)
        return false;
    return year % 100 != 0 || year % 400 == 0;
}

long long GetQuotient(long long a, int b) {
    if (b == 0)
        throw CQzInvalidParamException(kMsgDivZero);
    if (a == std::numeric_limits<long long>::min() && b == -1)
        throw CQzInvalidParamException(kMsgQuotientOverflow);
    return static_cast<long long>(FloorDiv(a, b));
}

int GetModulo(long long a, int b) {
    // In 128 bits: the product may pass the 64-bit range by less than b.
    return static_cast<int>(static_cast<__int128>(a) - static_cast<__int128>(GetQuotient(a, b)) * b);
}

std::string PadZero(int value, unsigned char width) {
    char format[16];
    std::snprintf(format, sizeof format, "%%0%dd", static_cast<int>(width));
    char buffer[300];
    std::snprintf(buffer, sizeof buffer, format, value);
    return buffer;
}

std::string TrimTrainingZeros(std::string text) {
    size_t end = text.size();
    while (end > 1 && text[end - 1] == '0')
        --end;
    text.resize(end);
    return text;
}

std::string ToFracString(unsigned short milli, unsigned short micro, unsigned short nano) {
    // The same text as "." + PadZero(milli, 3) + PadZero(micro, 3) + TrimTrainingZeros(PadZero(nano, 3))
    // and its shorter forms, written without temporaries.
    char buffer[24];
    char* end = AppendFraction(buffer, milli, micro, nano);
    return std::string(buffer, end);
}

int Compare(const CDateTime& a, const CDateTime& b) {
    const int ta = a.GetType();
    const int tb = b.GetType();
    // Each field as a number, -1 where the type has no such field.
    auto field = [](const CDateTime& v, int t, int which) -> double {
        switch (which) {
        case 0:
            return HasYear(t) ? v.GetYear() : -1;
        case 1:
            return HasMonth(t) ? v.GetMonth() : -1;
        case 2:
            return HasDay(t) ? v.GetDay() : -1;
        case 3:
            return HasTime(t) ? v.GetHour() : -1;
        case 4:
            return HasTime(t) ? v.GetMinute() : -1;
        default:
            return HasTime(t) ? v.GetRealSecond() : -1;
        }
    };
    for (int which = 0; which < 6; ++which) {
        const double x = field(a, ta, which);
        const double y = field(b, tb, which);
        if (x * y < 0)
            return 3;
        if (x < y)
            return 1;
        if (x > y)
            return 2;
    }
    return 0;
}

// --- construction ------------------------------------------------------------------

std::string CDateTime::GetTypeAsString(DTType type) {
    return TypeName(type);
}

CDateTime::CDateTime() : CInstanceMonitor("CDateTime") {
    Clear();
}

CDateTime::CDateTime(DTType type) : CInstanceMonitor("CDateTime") {
    Clear();
    m_type = type;
}

CDateTime::CDateTime(const char* xsdDateTime) : CInstanceMonitor("CDateTime") {
    Clear();
    ParseXSDDateTime(xsdDateTime);
}

CDateTime::CDateTime(const long& timeT) : CInstanceMonitor("CDateTime") {
    Clear();
    try {
        *this = timeT;
    } catch (CQzInvalidValueException&) {
        Clear();
    }
}

CDateTime::CDateTime(short year, unsigned char month, unsigned char day) : CInstanceMonitor("CDateTime") {
    Clear();
    try {
        SetDate(year, month, day);
    } catch (CQzInvalidValueException&) {
        Clear();
    }
}

CDateTime::CDateTime(short year, unsigned char month, unsigned char day, unsigned char hour,
                     unsigned char minute, unsigned char second)
    : CInstanceMonitor("CDateTime") {
    Clear();
    try {
        SetDateTime(year, month, day, hour, minute, second);
    } catch (CQzInvalidValueException&) {
        Clear();
    }
}

CDateTime::CDateTime(short year, unsigned char month, unsigned char day, unsigned char hour,
                     unsigned char minute, unsigned char second, unsigned short milli, unsigned short micro,
                     unsigned short nano)
    : CInstanceMonitor("CDateTime") {
    Clear();
    try {
        SetDateTime(year, month, day, hour, minute, second, milli, micro, nano);
    } catch (CQzInvalidValueException&) {
        Clear();
    }
}

CDateTime::~CDateTime() {}

CDateTime CDateTime::GetCurrentTime() {
    const long now = static_cast<long>(::time(nullptr));
    return CDateTime(now);
}

CDateTime& CDateTime::operator=(const long& timeT) {
    const time_t t = static_cast<time_t>(timeT);
    struct tm parts;
    if (gmtime_r(&t, &parts) == nullptr)
        throw CQzInvalidValueException(FormatString(kMsgTimeValue, timeT));
    const long long year = static_cast<long long>(parts.tm_year) + 1900;
    // Checked before the year is narrowed to its 16-bit field, so a far time cannot wrap into range.
    if (year < MIN_YEAR || year > MAX_YEAR)
        throw CQzInvalidValueException(
            FormatString(kMsgYearRange, static_cast<int>(year), (int)MIN_YEAR, (int)MAX_YEAR));
    SetDateTime(static_cast<short>(year), static_cast<unsigned char>(parts.tm_mon + 1),
                static_cast<unsigned char>(parts.tm_mday), static_cast<unsigned char>(parts.tm_hour),
                static_cast<unsigned char>(parts.tm_min), static_cast<unsigned char>(parts.tm_sec));
    return *this;
}

void CDateTime::Clear() {
    m_type = yearZero;
    m_year = 0;
    m_month = 0;
    m_day = 0;
    m_hour = 0;
    m_minute = 0;
    m_second = 0;
    m_milliSecond = 0;
    m_microSecond = 0;
    m_nanoSecond = 0;
    m_isUTC = false;
    m_hasZone = false;
    m_zoneHour = 0;
    m_zoneMinute = 0;
}

// --- accessors -----------------------------------------------------------------------

short CDateTime::GetYear() const {
    if (!HasYear(m_type))
        ThrowState(kMsgGetYear, m_type);
    return m_year;
}

unsigned char CDateTime::GetMonth() const {
    if (!HasMonth(m_type))
        ThrowState(kMsgGetMonth, m_type);
    return m_month;
}

unsigned char CDateTime::GetDay() const {
    if (!HasDay(m_type))
        ThrowState(kMsgGetDay, m_type);
    return m_day;
}

unsigned char CDateTime::GetHour() const {
    if (!HasTime(m_type))
        ThrowState(kMsgGetHour, m_type);
    return m_hour;
}

unsigned char CDateTime::GetMinute() const {
    if (!HasTime(m_type))
        ThrowState(kMsgGetMinute, m_type);
    return m_minute;
}

unsigned char CDateTime::GetSecond() const {
    if (!HasTime(m_type))
        ThrowState(kMsgGetSecond, m_type);
    return m_second;
}

double CDateTime::GetRealSecond() const {
    if (!HasTime(m_type))
        ThrowState(kMsgGetRealSecond, m_type);
    return m_second + m_milliSecond / 1000.0 + m_microSecond / 1000000.0 + m_nanoSecond / 1000000000.0;
}

unsigned short CDateTime::GetMilliSecond() const {
    if (!HasTime(m_type))
        ThrowState(kMsgGetMilli, m_type);
    return m_milliSecond;
}

unsigned short CDateTime::GetMicroSecond() const {
    if (!HasTime(m_type))
        ThrowState(kMsgGetMicro, m_type);
    return m_microSecond;
}

unsigned short CDateTime::GetNanoSecond() const {
    if (!HasTime(m_type))
        ThrowState(kMsgGetNano, m_type);
    return m_nanoSecond;
}

void CDateTime::SetYear(short year) {
    if (!HasYear(m_type))
        ThrowState(kMsgGetYear, m_type);
    m_year = year;
}

void CDateTime::SetMonth(unsigned char month) {
    if (!HasMonth(m_type))
        ThrowState(kMsgGetMonth, m_type);
    m_month = month;
}

void CDateTime::SetDay(unsigned char day) {
    if (!HasDay(m_type))
        ThrowState(kMsgGetDay, m_type);
    m_day = day;
}

void CDateTime::SetHour(unsigned char hour) {
    if (!HasTime(m_type))
        ThrowState(kMsgGetHour, m_type);
    m_hour = hour;
}

void CDateTime::SetMinute(unsigned char minute) {
    if (!HasTime(m_type))
        ThrowState(kMsgGetMinute, m_type);
    m_minute = minute;
}

void CDateTime::SetSecond(unsigned char second) {
    if (!HasTime(m_type))
        ThrowState(kMsgGetSecond, m_type);
    m_second = second;
}

void CDateTime::SetMilliSecond(unsigned short milli) {
    if (!HasTime(m_type))
        ThrowState(kMsgGetMilli, m_type);
    m_milliSecond = milli;
}

void CDateTime::SetMicroSecond(unsigned short micro) {
    if (!HasTime(m_type))
        ThrowState(kMsgGetMicro, m_type);
    m_microSecond = micro;
}

void CDateTime::SetNanoSecond(unsigned short nano) {
    if (!HasTime(m_type))
        ThrowState(kMsgGetNano, m_type);
    m_nanoSecond = nano;
}

int CDateTime::GetDayOfWeek() const {
    if (m_type != dateTime && m_type != date)
        ThrowState(kMsgDayOfWeek, m_type);
    const time_t t = GetTime();
    struct tm local;
    if (localtime_r(&t, &local) == nullptr)
        throw CQzInvalidValueException(FormatString(kMsgTimeValue, static_cast<long>(t)));
    return local.tm_wday + 1;
}

int CDateTime::GetDayOfYear() const {
    if (m_type != dateTime && m_type != date)
        ThrowState(kMsgDayOfYear, m_type);
    // The setters store unchecked months; one outside the table is refused as Validate would.
    if (m_month < 1 || m_month > 12)
        throw CQzInvalidValueException(FormatString(kMsgMonthRange, (int)m_month));
    int day = g_monthDayInYear[m_month - 1] + m_day;
    if (IsLeapYear(m_year) && m_month <= 2)
        ++day;
    return day;
}

short CDateTime::GetZoneHour() const {
    if (!m_hasZone)
        throw CQzInvalidStateException(kMsgNoZone);
    return m_zoneHour;
}

unsigned char CDateTime::GetZoneMinute() const {
    if (!m_hasZone)
        throw CQzInvalidStateException(kMsgNoZone);
    return m_zoneMinute;
}

void CDateTime::SetTimeZone(short hour, unsigned char minute) {
    if (hour < -23 || hour > 23 || minute >= 60)
        throw CQzInvalidValueException(
            FormatString(kMsgBadZone, static_cast<int>(hour), static_cast<int>(minute)));
    m_zoneHour = hour;
    m_zoneMinute = minute;
    m_isUTC = true;
    m_hasZone = true;
}

void CDateTime::SetUTC() {
    m_isUTC = true;
    m_hasZone = false;
    m_zoneHour = 0;
    m_zoneMinute = 0;
}

// --- whole-value setters ------------------------------------------------------------

void CDateTime::SetDateTime(short year, unsigned char month, unsigned char day, unsigned char hour,
                            unsigned char minute, unsigned char second) {
    SetDateTime(dateTime, year, month, day, hour, minute, second, 0, 0, 0);
}

void CDateTime::SetDateTime(short year, unsigned char month, unsigned char day, unsigned char hour,
                            unsigned char minute, unsigned char second, unsigned short milli,
                            unsigned short micro, unsigned short nano) {
    SetDateTime(dateTime, year, month, day, hour, minute, second, milli, micro, nano);
}

void CDateTime::SetGYear(short year) {
    SetDateTime(gYear, year, 0, 0, 0, 0, 0, 0, 0, 0);
}

void CDateTime::SetGYearMonth(short year, unsigned char month) {
    SetDateTime(gYearMonth, year, month, 0, 0, 0, 0, 0, 0, 0);
}

void CDateTime::SetGMonth(unsigned char month) {
    SetDateTime(gMonth, 0, month, 0, 0, 0, 0, 0, 0, 0);
}

void CDateTime::SetGMonthDay(unsigned char month, unsigned char day) {
    SetDateTime(gMonthDay, 0, month, day, 0, 0, 0, 0, 0, 0);
}

void CDateTime::SetGDay(unsigned char day) {
    SetDateTime(gDay, 0, 0, day, 0, 0, 0, 0, 0, 0);
}

void CDateTime::SetDate(short year, unsigned char month, unsigned char day) {
    SetDateTime(date, year, month, day, 0, 0, 0, 0, 0, 0);
}

void CDateTime::SetTime(unsigned char hour, unsigned char minute, unsigned char second) {
    SetDateTime(time, 0, 0, 0, hour, minute, second, 0, 0, 0);
}

void CDateTime::SetTime(unsigned char hour, unsigned char minute, unsigned char second, unsigned short milli,
                        unsigned short micro, unsigned short nano) {
    SetDateTime(time, 0, 0, 0, hour, minute, second, milli, micro, nano);
}

void CDateTime::SetFracTime(unsigned short milli, unsigned short micro, unsigned short nano) {
    SetDateTime(time, 0, 0, 0, 0, 0, 0, milli, micro, nano);
}

void CDateTime::SetDateTime(DTType type, short year, unsigned char month, unsigned char day,
                            unsigned char hour, unsigned char minute, unsigned char second,
                            unsigned short milli, unsigned short micro, unsigned short nano) {
    if (m_type != yearZero && m_type != type)
        throw CQzInvalidStateException(FormatString(kMsgRetype, TypeName(type), TypeName(m_type)));
    Clear();
    m_type = type;
    m_year = year;
    m_month = month;
    m_day = day;
    m_hour = hour;
    m_minute = minute;
    m_second = second;
    m_milliSecond = milli;
    m_microSecond = micro;
    m_nanoSecond = nano;
    Validate();
}

bool CDateTime::CheckConversion(DTType from, DTType to) const {
    if (from == to || to == yearZero)
        return true;
    switch (from) {
    case yearZero:
    case gYear:
    case time:
    case gDay:
    case gMonth:
        return false;
    case dateTime:
        return true;
    case date:
        return to == gYearMonth || to == gYear || to == gDay || to == gMonth || to == gMonthDay;
    case gYearMonth:
        return to == gYear || to == gMonth;
    case gMonthDay:
        return to == gDay || to == gMonth;
    default:
        throw CQzInvalidValueException(FormatString(kMsgUnknownType, static_cast<int>(from)));
    }
}

void CDateTime::SetDateTime(const CDateTime& src, DTType target) {
    if (!CheckConversion(src.m_type, target))
        throw CQzInvalidValueException(FormatString(kMsgConvert, TypeName(target), TypeName(src.m_type)));
    *this = src;
    m_type = target;
}

// --- validation --------------------------------------------------------------------------

void CDateTime::Validate() const {
    const int t = m_type;
    const char* name = TypeName(m_type);
    if (t == yearZero)
        throw CQzInvalidValueException(kMsgYearZero);

    if (HasMonth(t)) {
        if (m_month < 1 || m_month > 12)
            throw CQzInvalidValueException(FormatString(kMsgMonthRange, (int)m_month));
    } else if (m_month != 0) {
        throw CQzInvalidValueException(FormatString(kMsgMonthType, (int)m_month, name));
    }

    if (HasYear(t)) {
        if (m_year == 0 || m_year < MIN_YEAR || m_year > MAX_YEAR)
            throw CQzInvalidValueException(
                FormatString(kMsgYearRange, (int)m_year, (int)MIN_YEAR, (int)MAX_YEAR));
    } else if (m_year != 0) {
        throw CQzInvalidValueException(FormatString(kMsgYearType, (int)m_year, name));
    }

    if (t == dateTime || t == date) {
        const int max = (m_month == 2 && !IsLeapYear(m_year)) ? 28 : g_monthMax[m_month - 1];
        if (m_day < 1 || m_day > max)
            throw CQzInvalidValueException(FormatString(kMsgDayInMonth, (int)m_day));
    } else if (t == gMonthDay) {
        if (m_day < 1 || m_day > g_monthMax[m_month - 1])
            throw CQzInvalidValueException(FormatString(kMsgDayInMonthDay, (int)m_day));
    } else if (t == gDay) {
        if (m_day < 1 || m_day > 31)
            throw CQzInvalidValueException(FormatString(kMsgDay31, (int)m_day));
    } else if (m_day != 0) {
        throw CQzInvalidValueException(FormatString(kMsgDayType, (int)m_day, name));
    }

    const int values[6] = {m_hour, m_minute, m_second, m_milliSecond, m_microSecond, m_nanoSecond};
    const int limits[6] = {23, 59, 59, 999, 999, 999};
    const bool timed = HasTime(t);
    for (int i = 0; i < 6; ++i) {
        if (timed && values[i] > limits[i])
            throw CQzInvalidValueException(FormatString(kMsgTimeRange[i], values[i]));
        if (!timed && values[i] != 0)
            throw CQzInvalidValueException(FormatString(kMsgTimeType[i], values[i], name));
    }
}

// --- formatting -----------------------------------------------------------------------------

std::string CDateTime::ToString() const {
    return ToString("s");
}

std::string CDateTime::ToString(const char* format) const {
    const bool allZero = m_year == 0 && m_month == 0 && m_day == 0 && m_hour == 0 && m_minute == 0 &&
                         m_second == 0 && m_milliSecond == 0 && m_microSecond == 0 && m_nanoSecond == 0;
    if (m_type == yearZero || (m_type != time && allZero))
        return kMsgNotSet;
    if (format == nullptr || format[0] == '\0' || std::strcmp(format, "G") == 0)
        return std::string();
    if (std::strcmp(format, "s") != 0)
        return kMsgUnknownFormat + std::string(format);

    // Longest form: "-32768-255-255T255:255:255.655356553565535+23:59" stays far below 96.
    char buffer[96];
    char* out = buffer;
    auto year = [&]() {
        int y = m_year;
        if (y < 0) {
            *out++ = '-';
            y = -y;
        }
        out = AppendPadded(out, static_cast<unsigned>(y), 4);
    };
    auto two = [&](unsigned v) { out = AppendPadded(out, v, 2); };
    auto clock = [&]() {
        two(m_hour);
        *out++ = ':';
        two(m_minute);
        *out++ = ':';
        two(m_second);
        out = AppendFraction(out, m_milliSecond, m_microSecond, m_nanoSecond);
    };
    switch (m_type) {
    case dateTime:
        year();
        *out++ = '-';
        two(m_month);
        *out++ = '-';
        two(m_day);
        *out++ = 'T';
        clock();
        break;
    case date:
        year();
        *out++ = '-';
        two(m_month);
        *out++ = '-';
        two(m_day);
        break;
    case gYearMonth:
        year();
        *out++ = '-';
        two(m_month);
        break;
    case gYear:
        year();
        break;
    case time:
        clock();
        break;
    case gDay:
        *out++ = '-';
        *out++ = '-';
        *out++ = '-';
        two(m_day);
        break;
    case gMonth:
        *out++ = '-';
        *out++ = '-';
        two(m_month);
        break;
    case gMonthDay:
        *out++ = '-';
        *out++ = '-';
        two(m_month);
        *out++ = '-';
        two(m_day);
        break;
    default:
        break;
    }
    if (m_isUTC) {
        if (!m_hasZone) {
            *out++ = 'Z';
        } else {
            *out++ = m_zoneHour < 0 ? '-' : '+';
            two(static_cast<unsigned>(m_zoneHour < 0 ? -m_zoneHour : m_zoneHour));
            *out++ = ':';
            two(m_zoneMinute);
        }
    }
    return std::string(buffer, out);
}

// --- epoch and normalisation ------------------------------------------------------------------

time_t CDateTime::GetTime() const {
    const CDateTime n = GetNormalized();
    if (n.m_type != dateTime && n.m_type != date)
        throw CQzInvalidValueException(FormatString(kMsgGetTime, TypeName(n.m_type)));
    // The same value as mktime of the fields corrected by the local-to-UTC difference,
    // computed directly so it does not depend on the process's zone or on DST rules.
    const long long days = DaysFromCivil(n.m_year, n.m_month, n.m_day);
    long long seconds = days * 86400;
    if (n.m_type == dateTime)
        seconds += n.m_hour * 3600LL + n.m_minute * 60LL + n.m_second;
    return static_cast<time_t>(seconds);
}

CDateTime CDateTime::GetNormalized() const {
    CDateTime copy(*this);
    if (copy.m_hasZone) {
        const unsigned long hours = static_cast<unsigned long>(m_zoneHour < 0 ? -m_zoneHour : m_zoneHour);
        const CDateTimeSpan zone(hours, m_zoneMinute, 0);
        if (m_zoneHour < 0)
            copy.AddDateTimeSpan(zone);
        else
            copy.AddDateTimeSpan(zone.GetAsNegative());
        copy.SetTimeZone(0, 0);
    }
    return copy;
}

// --- comparison ------------------------------------------------------------------------------

int CDateTime::CompareTo(const CDateTime& other) const {
    CDateTime p = m_hasZone ? GetNormalized() : *this;
    CDateTime q = other.m_hasZone ? other.GetNormalized() : other;
    if (p.IsUTC() == q.IsUTC())
        return Compare(p, q);
    if (p.IsUTC()) {
        q.SetTimeZone(14, 0);
        q = q.GetNormalized();
        if (Compare(p, q) == 1)
            return 1;
        // The second try starts from the moved value, which puts q back on its own clock.
        q.SetTimeZone(-14, 0);
        q = q.GetNormalized();
        return Compare(p, q) == 2 ? 2 : 3;
    }
    p.SetTimeZone(14, 0);
    p = p.GetNormalized();
    if (Compare(p, q) == 2)
        return 2;
    p.SetTimeZone(-14, 0);
    p = p.GetNormalized();
    return Compare(p, q) == 1 ? 1 : 3;
}

bool CDateTime::operator<=(const CDateTime& other) const {
    const int r = CompareTo(other);
    return r == 0 || r == 1;
}

bool CDateTime::operator>=(const CDateTime& other) const {
    const int r = CompareTo(other);
    return r == 0 || r == 2;
}

// --- arithmetic ---------------------------------------------------------------------------------

void CDateTime::AddDateTimeSpan(const CDateTimeSpan& span) {
    const int s = span.IsNegative() ? -1 : 1;
    // Every sum is formed in 128 bits: minutes and seconds may be near 2^64.
    __int128 t;

    // Months, with the carry into the year.
    t = static_cast<__int128>(m_month) + s * static_cast<__int128>(span.GetMonths()) - 1;
    const int month = static_cast<int>(t - FloorDiv(t, 12) * 12) + 1;
    long long year = static_cast<long long>(m_year) + static_cast<long long>(FloorDiv(t, 12)) +
                     s * static_cast<long long>(span.GetYears());

    // Fraction, seconds, minutes and hours, each carrying into the next.
    auto step = [s](unsigned field, __int128 carry, unsigned long long amount, int base, __int128& next) {
        const __int128 sum = field + carry + s * static_cast<__int128>(amount);
        next = FloorDiv(sum, base);
        return static_cast<unsigned>(sum - next * base);
    };
    __int128 carry = 0;
    m_nanoSecond = static_cast<unsigned short>(step(m_nanoSecond, 0, span.GetNanoSeconds(), 1000, carry));
    m_microSecond =
        static_cast<unsigned short>(step(m_microSecond, carry, span.GetMicroSeconds(), 1000, carry));
    m_milliSecond =
        static_cast<unsigned short>(step(m_milliSecond, carry, span.GetMilliSeconds(), 1000, carry));
    m_second = static_cast<unsigned char>(step(m_second, carry, span.GetSeconds(), 60, carry));
    m_minute = static_cast<unsigned char>(step(m_minute, carry, span.GetMinutes(), 60, carry));
    m_hour = static_cast<unsigned char>(step(m_hour, carry, span.GetHours(), 24, carry));

    // Days, walked month by month from the unclamped day.
    const __int128 days = carry + s * static_cast<__int128>(span.GetDays());
    // 70000 years of days cannot stay inside a 16-bit year: refuse before walking.
    const __int128 kMaxWalk = static_cast<__int128>(70000) * 366;
    auto overflow = [](long long y) { throw CQzInvalidValueException(FormatString(kMsgYearOverflow, y)); };
    if (days > kMaxWalk || days < -kMaxWalk)
        overflow(days > 0 ? year + 70000 : year - 70000);
    long long d = static_cast<long long>(days);
    int m = month;
    long long day = m_day;
    if (year < -32768 || year > 32767)
        overflow(year);
    while (d != 0) {
        if (d < 0) {
            if (-d <= day - 1) {
                day += d;
                break;
            }
            // Step back into the previous month and stand on its last day.
            int prevLength;
            if (m <= 1)
                prevLength = g_monthMax[11];
            else
                prevLength = MonthLength(m - 1, year);
            d += day;
            day = prevLength;
            if (--m <= 0) {
                m = 12;
                --year;
            }
        } else {
            const int n = MonthLength(m, year);
            if (day + d <= n) {
                day += d;
                break;
            }
            d = d + day - n - 1;
            day = 1;
            if (++m >= 13) {
                m = 1;
                ++year;
            }
        }
        if (year < -32768 || year > 32767)
            overflow(year);
    }
    m_year = static_cast<short>(year);
    m_month = static_cast<unsigned char>(m);
    m_day = static_cast<unsigned char>(day);
}

CDateTime CDateTime::operator+(const CDateTimeSpan& span) const {
    CDateTime result(*this);
    result.AddDateTimeSpan(span);
    return result;
}

CDateTime& CDateTime::operator+=(const CDateTimeSpan& span) {
    AddDateTimeSpan(span);
    return *this;
}

CDateTime CDateTime::operator-(const CDateTimeSpan& span) const {
    CDateTime result(*this);
    result.AddDateTimeSpan(span.GetAsNegative());
    return result;
}

CDateTime& CDateTime::operator-=(const CDateTimeSpan& span) {
    AddDateTimeSpan(span.GetAsNegative());
    return *this;
}

CDateTimeSpan CDateTime::operator-(const CDateTime& other) const {
    (void)other;
    return CDateTimeSpan();
}

} // namespace QzXmlLib16
