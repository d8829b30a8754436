// test_datetime_helpers.h - shared helpers of the date, time and duration tests.
#ifndef QZXML_TESTS_VALUES_TEST_DATETIME_HELPERS_H
#define QZXML_TESTS_VALUES_TEST_DATETIME_HELPERS_H

#include <string>

#include "foundation/Exceptions.h"
#include "values/DateTime.h"

namespace QzDateTests {

// The message of the exception of class E thrown by f, or a marker saying what happened instead.
template <class E, class F> std::string ThrownMessage(F f) {
    try {
        f();
    } catch (const E& e) {
        return e.GetMessage();
    } catch (const QzXmlLib16::CQzException& e) {
        return "<other exception class> " + e.GetMessage();
    }
    return "<no exception>";
}

// Opens the raw fields of a CDateTime, including those its type does not show.
class RawDateTime : public QzXmlLib16::CDateTime {
public:
    explicit RawDateTime(const QzXmlLib16::CDateTime& value) : CDateTime(value) {}
    int Year() const { return m_year; }
    int Month() const { return m_month; }
    int Day() const { return m_day; }
    int Hour() const { return m_hour; }
    int Minute() const { return m_minute; }
    int Second() const { return m_second; }
    int Milli() const { return m_milliSecond; }
    int Micro() const { return m_microSecond; }
    int Nano() const { return m_nanoSecond; }
};

// Parses a lexical dateTime.
inline QzXmlLib16::CDateTime DT(const char* text) {
    return QzXmlLib16::CDateTime(text);
}

// Parses any date-like form (date, gYear, gMonthDay, ...).
inline QzXmlLib16::CDateTime D(const char* text) {
    QzXmlLib16::CDateTime value;
    value.ParseXSDDate(text);
    return value;
}

// Parses a time.
inline QzXmlLib16::CDateTime T(const char* text) {
    QzXmlLib16::CDateTime value;
    value.ParseXSDTime(text);
    return value;
}

// Parses a duration.
inline QzXmlLib16::CDateTimeSpan P(const char* text) {
    QzXmlLib16::CDateTimeSpan span;
    span.ParseXSDDuration(text);
    return span;
}

} // namespace QzDateTests

#endif
