// Calendar-wide checks of CDateTime: every year from -9999 to 9999 parses, prints and parses
// back to an equal value, and date arithmetic agrees with an independent day-count oracle.
#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <string>

#include "test_datetime_helpers.h"

using namespace QzXmlLib16;
using namespace QzDateTests;

namespace {

// Oracle calendar, kept independent of the library: proleptic Gregorian, astronomical years.
bool OracleLeap(long long y) {
    return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
}

int OracleMonthLength(long long y, int m) {
    static const int kLength[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return m == 2 && OracleLeap(y) ? 29 : kLength[m - 1];
}

long long FloorDiv(long long a, long long b) {
    return a / b - ((a % b != 0) && ((a < 0) != (b < 0)));
}

// Days from 0000-01-01 to y-01-01: 365 a year plus the leap days of the years [0, y).
long long DaysBeforeYear(long long y) {
    return 365 * y + FloorDiv(y + 3, 4) - FloorDiv(y + 99, 100) + FloorDiv(y + 399, 400);
}

long long DayNumber(long long y, int m, int d) {
    long long n = DaysBeforeYear(y);
    for (int i = 1; i < m; ++i)
        n += OracleMonthLength(y, i);
    return n + d - 1;
}

void FromDayNumber(long long n, long long& y, int& m, int& d) {
    y = FloorDiv(n * 400, 146097);
    while (DaysBeforeYear(y) > n)
        --y;
    while (DaysBeforeYear(y + 1) <= n)
        ++y;
    n -= DaysBeforeYear(y);
    m = 1;
    while (n >= OracleMonthLength(y, m))
        n -= OracleMonthLength(y, m++);
    d = static_cast<int>(n) + 1;
}

std::string DateText(int y, int m, int d) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%s%04d-%02d-%02d", y < 0 ? "-" : "", y < 0 ? -y : y, m, d);
    return buffer;
}

} // namespace

// Every year, every month, the first, a middle and the last day, and each leap-year boundary
// (28 and 29 February, 1 March, 31 December, 1 January). February 29 of a common year fails.
TEST(CDateTimeCalendarWideTest, EveryYearRoundTrips) {
    long long checked = 0;
    for (int y = -9999; y <= 9999; ++y) {
        if (y == 0)
            continue;
        for (int m = 1; m <= 12; ++m) {
            const int last = OracleMonthLength(y, m);
            const int days[] = {1, 15, 28, last};
            for (int d : days) {
                const std::string text = DateText(y, m, d);
                CDateTime value;
                value.ParseXSDDate(text.c_str());
                const std::string written = value.ToString();
                if (written != text) {
                    ADD_FAILURE() << text << " written as " << written;
                    return;
                }
                CDateTime again;
                again.ParseXSDDate(written.c_str());
                if (again.CompareTo(value) != 0 || again.GetYear() != y || again.GetMonth() != m ||
                    again.GetDay() != d) {
                    ADD_FAILURE() << text << " does not read back equal";
                    return;
                }
                ++checked;
            }
        }
        const std::string feb29 = DateText(y, 2, 29);
        CDateTime leap;
        if (OracleLeap(y)) {
            leap.ParseXSDDate(feb29.c_str());
            ASSERT_EQ(leap.ToString(), feb29);
            ASSERT_EQ((leap + P("P1D")).ToString(), DateText(y, 3, 1));
        } else {
            ASSERT_THROW(leap.ParseXSDDate(feb29.c_str()), CQzInvalidValueException) << feb29;
            ASSERT_EQ((D(DateText(y, 2, 28).c_str()) + P("P1D")).ToString(), DateText(y, 3, 1));
        }
        if (y != -1 && y != 9999) {
            // The year boundary, both ways.
            ASSERT_EQ((D(DateText(y, 12, 31).c_str()) + P("P1D")).ToString(), DateText(y + 1, 1, 1));
            ASSERT_EQ((D(DateText(y + 1, 1, 1).c_str()) - P("P1D")).ToString(), DateText(y, 12, 31));
        }
    }
    EXPECT_EQ(checked, 19998LL * 12 * 4);
}

// dateTime values with fraction and zone, one a month over the whole range.
TEST(CDateTimeCalendarWideTest, DateTimesWithZoneRoundTrip) {
    const char* tails[] = {"T00:00:00", "T23:59:59.999999999Z", "T12:30:00.5+14:00",
                           "T01:02:03.000001-13:45"};
    int i = 0;
    for (int y = -9999; y <= 9999; y += 7) {
        if (y == 0)
            continue;
        for (int m = 1; m <= 12; ++m) {
            const std::string text = DateText(y, m, OracleMonthLength(y, m)) + tails[i++ % 4];
            const CDateTime value(text.c_str());
            ASSERT_EQ(value.ToString(), text);
            ASSERT_EQ(CDateTime(value.ToString().c_str()).CompareTo(value), 0) << text;
        }
    }
}

// AddDateTimeSpan against the oracle, for spans whose month step keeps the day inside the
// new month (so the missing clamp never shows). Fractions and signs included.
TEST(CDateTimeCalendarWideTest, AdditionMatchesDayCountOracle) {
    std::mt19937 random(20240229u);
    auto pick = [&random](int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(random);
    };
    int compared = 0;
    while (compared < 20000) {
        const int y = pick(-9000, 9000);
        const int m = pick(1, 12);
        const int d = pick(1, OracleMonthLength(y == 0 ? 1 : y, m));
        if (y == 0)
            continue;
        const int hh = pick(0, 23), mi = pick(0, 59), ss = pick(0, 59), nano = pick(0, 999999999);
        const bool negative = pick(0, 1) == 1;
        const int spanYears = pick(0, 900), spanMonths = pick(0, 40), spanDays = pick(0, 100000);
        const int spanHours = pick(0, 100), spanMinutes = pick(0, 10000), spanSeconds = pick(0, 100000);
        const int spanNano = pick(0, 999999999);
        const int s = negative ? -1 : 1;

        // Year and month first, as the algorithm does; skip a day the new month cannot hold.
        const long long monthIndex = static_cast<long long>(y) * 12 + (m - 1) + s * spanMonths;
        const long long y2 = FloorDiv(monthIndex, 12) + s * spanYears;
        const int m2 = static_cast<int>(monthIndex - FloorDiv(monthIndex, 12) * 12) + 1;
        if (d > OracleMonthLength(y2, m2))
            continue;

        const __int128 kNanoPerDay = static_cast<__int128>(86400) * 1000000000;
        const __int128 start =
            DayNumber(y2, m2, d) * kNanoPerDay + ((hh * 3600LL + mi * 60LL + ss) * 1000000000LL + nano);
        const __int128 delta = static_cast<__int128>(spanDays) * kNanoPerDay +
                               (spanHours * 3600LL + spanMinutes * 60LL + spanSeconds) * 1000000000LL +
                               spanNano;
        const __int128 end = start + s * delta;
        __int128 dayNumber = end / kNanoPerDay;
        __int128 nanoOfDay = end % kNanoPerDay;
        if (nanoOfDay < 0) {
            nanoOfDay += kNanoPerDay;
            --dayNumber;
        }
        long long ey;
        int em, ed;
        FromDayNumber(static_cast<long long>(dayNumber), ey, em, ed);
        const long long secondOfDay = static_cast<long long>(nanoOfDay / 1000000000);
        const int fraction = static_cast<int>(nanoOfDay % 1000000000);

        CDateTime value(static_cast<short>(y), static_cast<unsigned char>(m), static_cast<unsigned char>(d),
                        static_cast<unsigned char>(hh), static_cast<unsigned char>(mi),
                        static_cast<unsigned char>(ss), static_cast<unsigned short>(nano / 1000000),
                        static_cast<unsigned short>(nano / 1000 % 1000),
                        static_cast<unsigned short>(nano % 1000));
        ASSERT_EQ(value.GetType(), CDateTime::dateTime);
        CDateTimeSpan span(static_cast<unsigned short>(spanYears), spanMonths, spanDays, spanHours,
                           spanMinutes, spanSeconds, static_cast<unsigned short>(spanNano / 1000000),
                           static_cast<unsigned short>(spanNano / 1000 % 1000),
                           static_cast<unsigned short>(spanNano % 1000));
        if (negative)
            span.Negate();
        value.AddDateTimeSpan(span);

        const RawDateTime raw(value);
        SCOPED_TRACE(DateText(y, m, d) + " + " + span.ToString());
        ASSERT_EQ(raw.Year(), ey);
        ASSERT_EQ(raw.Month(), em);
        ASSERT_EQ(raw.Day(), ed);
        ASSERT_EQ(raw.Hour(), secondOfDay / 3600);
        ASSERT_EQ(raw.Minute(), secondOfDay / 60 % 60);
        ASSERT_EQ(raw.Second(), secondOfDay % 60);
        ASSERT_EQ(raw.Milli() * 1000000 + raw.Micro() * 1000 + raw.Nano(), fraction);
        ++compared;
    }
}
