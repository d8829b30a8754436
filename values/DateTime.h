// DateTime.h - CDateTime, one value class for the eight XSD date and time types, and the
// helpers of the date writers (PadZero, TrimTrainingZeros, ToFracString).
//
// Durations are values/DateTimeSpan.h; failures are the classes of foundation/Exceptions.h.
#ifndef QZXML_VALUES_DATETIME_H
#define QZXML_VALUES_DATETIME_H

#include <cstdint>
#include <ctime>
#include <string>

#include "foundation/InstanceMonitor.h"
#include "values/DateTimeSpan.h"

namespace QzXmlLib16 {

const short MIN_YEAR = -9999;
const short MAX_YEAR = 9999;
// Days in each month; February stands at 29 (the leap year is tested separately).
extern const unsigned char g_monthMax[12];
// Days of the year before each month (index 0 to 11) and the length of a common year (12).
extern const unsigned short g_monthDayInYear[13];

// A date or time of one of the XSD types dateTime, date, time, gYear, gYearMonth, gMonth,
// gMonthDay and gDay. The type tag says which fields are meaningful; Validate insists that
// the others are zero. Zones: none (both flags false), "Z" (m_isUTC only) or an explicit
// offset (both flags), whose sign lives in the hour alone.
class CDateTime : public CInstanceMonitor {
public:
    // The type tag; the numbers are part of the interface, and each name is the text that
    // GetTypeAsString gives for it.
    enum DTType {
        yearZero = 0,   // not set
        dateTime = 1,   // year, month, day, hour, minute, second, fraction
        date = 2,       // year, month, day
        gYearMonth = 3, // year, month
        gYear = 4,      // year
        time = 5,       // hour, minute, second, fraction
        gDay = 6,       // day
        gMonth = 7,     // month
        gMonthDay = 8,  // month, day

        // The same tags with the dt_ prefix, the spelling that the date collections' messages
        // use ("must be of type dt_date"); both spellings are part of the interface.
        dt_yearZero = yearZero,
        dt_dateTime = dateTime,
        dt_date = date,
        dt_gYearMonth = gYearMonth,
        dt_gYear = gYear,
        dt_time = time,
        dt_gDay = gDay,
        dt_gMonth = gMonth,
        dt_gMonthDay = gMonthDay
    };

    // The XSD name of a type ("dateTime", "gMonthDay", "yearZero" for 0); "" for other values.
    static std::string GetTypeAsString(DTType type);
    std::string GetTypeAsString() const { return GetTypeAsString(m_type); }

    // Type 0, every field zero.
    CDateTime();
    // Every field zero, with the given type.
    CDateTime(DTType type);
    // ParseXSDDateTime; throws CQzInvalidValueException on a bad text.
    CDateTime(const char* xsdDateTime);
    // The UTC fields of a time_t, as a dateTime without a zone; a value out of range gives type 0.
    CDateTime(const long& timeT);
    // A date; an invalid date gives a type 0 object (nothing is thrown).
    CDateTime(short year, unsigned char month, unsigned char day);
    // A dateTime; invalid fields give a type 0 object (nothing is thrown).
    CDateTime(short year, unsigned char month, unsigned char day, unsigned char hour, unsigned char minute,
              unsigned char second);
    CDateTime(short year, unsigned char month, unsigned char day, unsigned char hour, unsigned char minute,
              unsigned char second, unsigned short milli, unsigned short micro, unsigned short nano);
    CDateTime(const CDateTime& other) = default;
    virtual ~CDateTime();

    // The current time from time(), in UTC terms but with no zone set.
    static CDateTime GetCurrentTime();

    CDateTime& operator=(const CDateTime& other) = default;
    // The UTC fields of a time_t as a dateTime (SetDateTime of six fields). Throws
    // CQzInvalidValueException for a time outside the years -9999 to 9999, and
    // CQzInvalidStateException if the object already holds another type.
    CDateTime& operator=(const long& timeT);

    // Typed accessors. Each throws CQzInvalidStateException ("Failed to GetYear. Invalid Date
    // Type: %s." and so on) when the type has no such field. Setters store without validating.
    // Note: the setters raise the getters' texts ("Failed to GetYear" from SetYear).
    short GetYear() const;
    unsigned char GetMonth() const;
    unsigned char GetDay() const;
    unsigned char GetHour() const;
    unsigned char GetMinute() const;
    unsigned char GetSecond() const;
    // Second plus the fraction in seconds.
    double GetRealSecond() const;
    unsigned short GetMilliSecond() const;
    unsigned short GetMicroSecond() const;
    unsigned short GetNanoSecond() const;
    void SetYear(short year);
    void SetMonth(unsigned char month);
    void SetDay(unsigned char day);
    void SetHour(unsigned char hour);
    void SetMinute(unsigned char minute);
    void SetSecond(unsigned char second);
    void SetMilliSecond(unsigned short milli);
    void SetMicroSecond(unsigned short micro);
    void SetNanoSecond(unsigned short nano);

    // 1 (Sunday) to 7 (Saturday), reckoned in the machine's local time from GetTime().
    // Types dateTime and date only, else CQzInvalidStateException.
    int GetDayOfWeek() const;
    // Days before the month plus the day; types dateTime and date only. A month set outside
    // 1 to 12 raises CQzInvalidValueException with Validate's month text.
    // Note: in a leap year the extra day is counted for January and February, not from March
    // on: 2000-01-01 is day 2 and 2000-03-01 is day 60.
    int GetDayOfYear() const;

    DTType GetType() const { return m_type; }
    // True for "Z" and for an explicit offset.
    bool IsUTC() const { return m_isUTC; }
    // True for an explicit offset only.
    bool HasTimeZone() const { return m_hasZone; }
    // The offset; CQzInvalidStateException "TimeZone is not been used" without an explicit offset.
    short GetZoneHour() const;
    unsigned char GetZoneMinute() const;
    // An explicit offset: hour -23 to 23 carries the sign, minute below 60, else
    // CQzInvalidValueException "Invalid TimeZone [%d:%d]".
    void SetTimeZone(short hour, unsigned char minute);
    // The "Z" zone.
    void SetUTC();

    // The whole-value setters. Each refuses a type other than the current one (unless the
    // current type is 0) with CQzInvalidStateException, then clears (dropping any zone),
    // stores and validates (CQzInvalidValueException).
    void SetDateTime(short year, unsigned char month, unsigned char day, unsigned char hour,
                     unsigned char minute, unsigned char second);
    void SetDateTime(short year, unsigned char month, unsigned char day, unsigned char hour,
                     unsigned char minute, unsigned char second, unsigned short milli, unsigned short micro,
                     unsigned short nano);
    void SetGYear(short year);
    void SetGYearMonth(short year, unsigned char month);
    void SetGMonth(unsigned char month);
    void SetGMonthDay(unsigned char month, unsigned char day);
    void SetGDay(unsigned char day);
    void SetDate(short year, unsigned char month, unsigned char day);
    void SetTime(unsigned char hour, unsigned char minute, unsigned char second);
    void SetTime(unsigned char hour, unsigned char minute, unsigned char second, unsigned short milli,
                 unsigned short micro, unsigned short nano);
    // A time holding only a fraction.
    void SetFracTime(unsigned short milli, unsigned short micro, unsigned short nano);
    // The routine behind all of the above.
    // Note: the retyping message names the requested type first and the current one second
    // ("Invalid Date Type: <requested>, expected: <current>.").
    void SetDateTime(DTType type, short year, unsigned char month, unsigned char day, unsigned char hour,
                     unsigned char minute, unsigned char second, unsigned short milli, unsigned short micro,
                     unsigned short nano);
    // Retypes to target and copies every field of src (zone included, also fields the target
    // has no use for), without validating. CQzInvalidValueException if src lacks the data.
    void SetDateTime(const CDateTime& src, DTType target);
    // True if a value of type from can become type to (equal types, or to is 0, or the table
    // of narrowing conversions). CQzInvalidValueException "Unknown date type %d." otherwise.
    bool CheckConversion(DTType from, DTType to) const;

    // Zeroes every field: type 0, no zone.
    void Clear();

    // Parsers. Each clears first, so any type results; CQzInvalidValueException on bad text.
    // Range checks are Validate's. The parse may leave partial fields behind on failure.
    // dateTime: CCYY-MM-DDThh:mm:ss[.f{1,9}][zone]; a zone may also stand before the "T".
    void ParseXSDDateTime(const char* text);
    // Every date-like form: [-]CCYY, [-]CCYY-MM, [-]CCYY-MM-DD, --MM, --MM--, ---DD, --MM-DD,
    // each followed by an optional "Z" or [+|-]hh:mm.
    void ParseXSDDate(const char* text);
    // hh:mm:ss[.f{0,9}][zone].
    // Note: characters after the seconds that do not start a zone are dropped:
    // "12:00:00abc" is noon. "-00:30" is read as +00:30 (the sign lives in the hour).
    void ParseXSDTime(const char* text);

    // ToString("s").
    std::string ToString() const;
    // "s": the XSD lexical form; null, "" or "G": the empty string; anything else
    // "Unknown Format: " + format. An unset value gives "Error: Date Not Set".
    std::string ToString(const char* format) const;

    // The UTC epoch value of the normalised fields; dateTime and date only, else
    // CQzInvalidValueException.
    time_t GetTime() const;
    // A copy moved to offset +00:00 if it has an explicit offset; other values unchanged.
    CDateTime GetNormalized() const;
    // Checks the fields against the type; CQzInvalidValueException with the first failure.
    // Note: the day text for dateTime and date has no closing parenthesis:
    // "Invalid Day [%d] (1 <= day <= days in month".
    void Validate() const;

    // 0 equal, 1 less, 2 greater, 3 indeterminate, by the XSD order relation.
    // Note: when only one side has a zone, the other is tried 14 hours back and then at its
    // own clock value, not 14 hours ahead: the window is one-sided.
    int CompareTo(const CDateTime& other) const;
    bool operator==(const CDateTime& other) const { return CompareTo(other) == 0; }
    // Indeterminate counts as not equal.
    bool operator!=(const CDateTime& other) const { return CompareTo(other) != 0; }
    bool operator<(const CDateTime& other) const { return CompareTo(other) == 1; }
    bool operator<=(const CDateTime& other) const;
    bool operator>(const CDateTime& other) const { return CompareTo(other) == 2; }
    bool operator>=(const CDateTime& other) const;

    // Adds a duration field by field with carries; the result is not validated.
    // Note: the day is not clamped to the new month first: 2001-01-31 plus P1M is the
    // unvalidated 2001-02-31, and plus P1M1D is 2001-03-04. A time value takes on year and
    // month fields that it does not show. CQzInvalidValueException if the year leaves the
    // range of its 16-bit field.
    void AddDateTimeSpan(const CDateTimeSpan& span);
    CDateTime operator+(const CDateTimeSpan& span) const;
    CDateTime& operator+=(const CDateTimeSpan& span);
    // Adds span.GetAsNegative(): always moves backwards, even for a negative span.
    CDateTime operator-(const CDateTimeSpan& span) const;
    CDateTime& operator-=(const CDateTimeSpan& span);
    // Note: a stub kept on purpose: always a zero span, whatever the operands.
    CDateTimeSpan operator-(const CDateTime& other) const;

    // The pieces of the parsers, public for callers that assemble a value themselves. None
    // of them clears or validates. SetXSDDate takes any date-like form with its zone and
    // decides the type by length; SetXSDTime takes hh:mm:ss[.f][zone] and sets type time;
    // SetZone reads "Z...", "+hh:mm" or "-hh:mm" and ignores text that starts otherwise.
    // Each throws CQzInvalidValueException on a bad text.
    void SetXSDDate(const char* text);
    void SetXSDTime(const char* text);
    void SetZone(const char* text);

    // The fields, in this order; the type tag says which of them are meaningful.
    DTType m_type;
    short m_year;
    unsigned char m_month;
    unsigned char m_day;
    unsigned char m_hour;
    unsigned char m_minute;
    unsigned char m_second;
    unsigned short m_milliSecond;
    unsigned short m_microSecond;
    unsigned short m_nanoSecond;
    bool m_isUTC;
    bool m_hasZone;
    short m_zoneHour;
    unsigned char m_zoneMinute;

protected:
    // The same pieces on len characters at text (no terminating zero needed).
    void SetXSDDate(const char* text, size_t len);
    void SetXSDTime(const char* text, size_t len);
    void SetZone(const char* text, size_t len);
};

// Proleptic Gregorian with no year shift: -4 and 0 are leap years.
bool IsLeapYear(int year);
// The floor of a / b (exact). CQzInvalidParamException if b is 0 or the result overflows.
long long GetQuotient(long long a, int b);
// a - GetQuotient(a, b) * b: the result takes the sign of b.
int GetModulo(long long a, int b);
// Field walk over year, month, day, hour, minute and real second: 0 equal, 1 a before b,
// 2 a after b, 3 when one value has a field the other lacks.
// Note: the test is the sign of the product of the two fields (an absent field is -1), so a
// negative year against a positive one is also 3.
int Compare(const CDateTime& a, const CDateTime& b);

// printf "%0<width>d" of value: PadZero(-5, 3) is "-05".
std::string PadZero(int value, unsigned char width);
// Drops trailing "0" characters but never the first character: "000" gives "0".
std::string TrimTrainingZeros(std::string text);
// The shortest fraction text: ".1" for (100, 0, 0), ".0000005" for (0, 0, 500), "" for zero.
std::string ToFracString(unsigned short milli, unsigned short micro, unsigned short nano);

} // namespace QzXmlLib16

#endif
