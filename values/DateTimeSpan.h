// DateTimeSpan.h - CDateTimeSpan, the value type of the XSD duration.
//
// A span keeps unsigned counts of each unit and one sign for the whole, exactly as
// written and never normalised. Date arithmetic with spans lives in values/DateTime.h.
#ifndef QZXML_VALUES_DATETIMESPAN_H
#define QZXML_VALUES_DATETIMESPAN_H

#include <cstdint>
#include <string>

#include "foundation/InstanceMonitor.h"

namespace QzXmlLib16 {

// An XSD duration: [-]P[nY][nM][nD][T[nH][nM][n[.fffffffff]S]].
// No field has an upper bound: 90 minutes stay 90 minutes and are never carried into hours.
class CDateTimeSpan : public CInstanceMonitor {
public:
    // All fields zero, positive.
    CDateTimeSpan();
    CDateTimeSpan(const CDateTimeSpan& other);
    // The counts are stored as given (months, days and hours are kept in 32 bits).
    CDateTimeSpan(unsigned long hours, unsigned long long minutes, unsigned long long seconds);
    CDateTimeSpan(unsigned short years, unsigned long months, unsigned long days, unsigned long hours,
                  unsigned long long minutes, unsigned long long seconds);
    CDateTimeSpan(unsigned short years, unsigned long months, unsigned long days, unsigned long hours,
                  unsigned long long minutes, unsigned long long seconds, unsigned short milli,
                  unsigned short micro, unsigned short nano);
    virtual ~CDateTimeSpan();

    // Each form clears first (so the sign becomes positive) and stores the counts; the
    // shorter forms pass 0 for the missing ones.
    void SetDateTimeSpan(unsigned long hours, unsigned long long minutes, unsigned long long seconds);
    void SetDateTimeSpan(unsigned short years, unsigned long months, unsigned long days, unsigned long hours,
                         unsigned long long minutes, unsigned long long seconds);
    void SetDateTimeSpan(unsigned short years, unsigned long months, unsigned long days, unsigned long hours,
                         unsigned long long minutes, unsigned long long seconds, unsigned short milli,
                         unsigned short micro, unsigned short nano);

    // Plain field access; nothing is checked or carried.
    unsigned short GetYears() const { return m_years; }
    uint32_t GetMonths() const { return m_months; }
    uint32_t GetDays() const { return m_days; }
    uint32_t GetHours() const { return m_hours; }
    unsigned long long GetMinutes() const { return m_minutes; }
    unsigned long long GetSeconds() const { return m_seconds; }
    unsigned short GetMilliSeconds() const { return m_milliSeconds; }
    unsigned short GetMicroSeconds() const { return m_microSeconds; }
    unsigned short GetNanoSeconds() const { return m_nanoSeconds; }
    void SetYears(unsigned short years) { m_years = years; }
    void SetMonths(unsigned long months) { m_months = static_cast<uint32_t>(months); }
    void SetDays(unsigned long days) { m_days = static_cast<uint32_t>(days); }
    void SetHours(unsigned long hours) { m_hours = static_cast<uint32_t>(hours); }
    void SetMinutes(unsigned long long minutes) { m_minutes = minutes; }
    void SetSeconds(unsigned long long seconds) { m_seconds = seconds; }
    void SetMilliSeconds(unsigned short milli) { m_milliSeconds = milli; }
    void SetMicroSeconds(unsigned short micro) { m_microSeconds = micro; }
    void SetNanoSeconds(unsigned short nano) { m_nanoSeconds = nano; }

    bool IsNegative() const { return m_isNegative; }
    // Flips the sign of the whole span.
    void Negate() { m_isNegative = !m_isNegative; }
    // A copy whose sign is negative.
    // Note: this is not a negation: a span that is already negative stays negative.
    // Subtracting a span from a date relies on this, so "date - (-P1D)" still moves back.
    CDateTimeSpan GetAsNegative() const;
    // Zeroes every field and makes the span positive.
    void Clear();

    CDateTimeSpan& operator=(const CDateTimeSpan& other);

    // The XSD lexical form, e.g. "-P1Y2M3DT4H5M6.7S"; the fraction has no trailing zeros.
    // Note: a zero span writes "P" (or "-P"), which ParseXSDDuration refuses.
    std::string ToString() const;

    // Clears, then reads [-]P[nY][nM][nD][T[nH][nM][n[.f]S]]. Throws CQzInvalidValueException
    // with the input in the message; on failure the fields keep what was read so far.
    // Note: "Y" is accepted at any point and restarts the order ("P1DT1H2Y3M" is valid); the
    // years are truncated to 16 bits; fraction digits 7 to 9 each overwrite the nanoseconds
    // with the bare digit ("PT0.123456789S" has nanoseconds 9); "PT1." is one second.
    void ParseXSDDuration(const char* text);

    // 0 equal, 1 less, 2 greater, 3 indeterminate, found by adding both spans to the
    // reference dates 1696-09-01, 1697-02-01, 1903-03-01 and 1903-07-01 (UTC).
    // Note: the sums are dates, so only whole days count: PT1H equals PT2H, P1D equals PT24H.
    // Throws CQzInvalidValueException only if a sum leaves the 16-bit year range.
    int CompareTo(const CDateTimeSpan& other) const;

    bool operator==(const CDateTimeSpan& other) const { return CompareTo(other) == 0; }
    // Indeterminate counts as not equal.
    bool operator!=(const CDateTimeSpan& other) const { return CompareTo(other) != 0; }
    bool operator<(const CDateTimeSpan& other) const { return CompareTo(other) == 1; }
    bool operator>(const CDateTimeSpan& other) const { return CompareTo(other) == 2; }

    // The fields, in this order: unsigned counts as written and one sign for the whole.
    unsigned short m_years;
    uint32_t m_months;
    uint32_t m_days;
    uint32_t m_hours;
    unsigned long long m_minutes;
    unsigned long long m_seconds;
    unsigned short m_milliSeconds;
    unsigned short m_microSeconds;
    unsigned short m_nanoSeconds;
    bool m_isNegative;
};

} // namespace QzXmlLib16

#endif
