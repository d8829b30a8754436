// Round trips value -> text -> value for every item type over random values (fixed seeds), and
// the same through QzVariant::ToString and FromString. Where a writer's format cannot carry the
// whole value (the default float formats, the nanoseconds of a duration, a bare year below
// 1000) the test states the limit it shows.
#include "values/Conversions.h"
#include "values/QzVariant.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

using namespace QzXmlLib16;

namespace {

const CWhitespaceUtils::WhitespaceRule kNone = CWhitespaceUtils::None;
const CWhitespaceUtils::WhitespaceRule kCollapse = CWhitespaceUtils::Collapse;

// Integers spread over all magnitudes, plus the limits and their neighbours.
template <class T> std::vector<T> IntegerSamples(std::mt19937_64& rng) {
    std::vector<T> values = {std::numeric_limits<T>::min(),
                             static_cast<T>(std::numeric_limits<T>::min() + 1),
                             std::numeric_limits<T>::max(),
                             static_cast<T>(std::numeric_limits<T>::max() - 1),
                             T(0),
                             T(1)};
    for (int i = 0; i < 500; ++i) {
        unsigned bits = static_cast<unsigned>(rng() % (sizeof(T) * 8)) + 1;
        uint64_t raw = rng();
        if (bits < 64)
            raw &= (uint64_t(1) << bits) - 1;
        T value;
        std::memcpy(&value, &raw, sizeof(T));
        values.push_back(value);
    }
    return values;
}

std::string RandomDigits(std::mt19937_64& rng, size_t count) {
    std::string digits;
    for (size_t i = 0; i < count; ++i)
        digits.push_back(static_cast<char>('0' + rng() % 10));
    return digits;
}

CDateTime RandomDate(std::mt19937_64& rng, CDateTime::DTType type) {
    static const unsigned char kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    short year = static_cast<short>(rng() % 9999 + 1);
    if (rng() % 4 == 0)
        year = static_cast<short>(-year);
    unsigned char month = static_cast<unsigned char>(rng() % 12 + 1);
    unsigned char day = static_cast<unsigned char>(rng() % kDays[month - 1] + 1);
    unsigned char hour = static_cast<unsigned char>(rng() % 24);
    unsigned char minute = static_cast<unsigned char>(rng() % 60);
    unsigned char second = static_cast<unsigned char>(rng() % 60);
    unsigned short milli = static_cast<unsigned short>(rng() % 1000);
    unsigned short micro = static_cast<unsigned short>(rng() % 3 == 0 ? rng() % 1000 : 0);
    unsigned short nano = static_cast<unsigned short>(rng() % 3 == 0 ? rng() % 1000 : 0);
    CDateTime value;
    if (type == CDateTime::dt_dateTime)
        value.SetDateTime(year, month, day, hour, minute, second, milli, micro, nano);
    else if (type == CDateTime::dt_date)
        value.SetDate(year, month, day);
    else if (type == CDateTime::dt_gYearMonth)
        value.SetGYearMonth(year, month);
    else if (type == CDateTime::dt_gMonthDay)
        value.SetGMonthDay(month, day);
    else
        value.SetTime(hour, minute, second, milli, micro, nano);
    const int zone = static_cast<int>(rng() % 3); // none, UTC or an offset
    if (zone == 1)
        value.SetUTC();
    else if (zone == 2)
        value.SetTimeZone(static_cast<short>(static_cast<int>(rng() % 47) - 23),
                          static_cast<unsigned char>(rng() % 60));
    return value;
}

// Every field a date writer shows: the text alone decides equality of two values.
void ExpectSameDate(const CDateTime& expected, const CDateTime& actual) {
    EXPECT_EQ(expected.GetType(), actual.GetType());
    EXPECT_EQ(expected.ToString(), actual.ToString());
    EXPECT_EQ(expected.IsUTC(), actual.IsUTC());
    EXPECT_EQ(expected.HasTimeZone(), actual.HasTimeZone());
    EXPECT_EQ(0, expected.CompareTo(actual));
}

} // namespace

TEST(CConversionsRoundTripTest, Integers) {
    std::mt19937_64 rng(1);
    for (char v : IntegerSamples<signed char>(rng))
        ASSERT_EQ(v, CConversions::i1FromString(CConversions::i1ToString(v), kNone));
    for (short v : IntegerSamples<short>(rng))
        ASSERT_EQ(v, CConversions::i2FromString(CConversions::i2ToString(v), kNone));
    for (int32_t v : IntegerSamples<int32_t>(rng))
        ASSERT_EQ(v, CConversions::i4FromString(CConversions::i4ToString(v), kNone));
    for (long long v : IntegerSamples<long long>(rng))
        ASSERT_EQ(v, CConversions::i8FromString(CConversions::i8ToString(v), kNone));
    for (unsigned char v : IntegerSamples<unsigned char>(rng))
        ASSERT_EQ(v, CConversions::ui1FromString(CConversions::ui1ToString(v), kNone));
    for (unsigned short v : IntegerSamples<unsigned short>(rng))
        ASSERT_EQ(v, CConversions::ui2FromString(CConversions::ui2ToString(v), kNone));
    for (uint32_t v : IntegerSamples<uint32_t>(rng))
        ASSERT_EQ(v, CConversions::ui4FromString(CConversions::ui4ToString(v), kNone));
    for (unsigned long long v : IntegerSamples<unsigned long long>(rng))
        ASSERT_EQ(v, CConversions::ui8FromString(CConversions::ui8ToString(v), kNone));
}

// Random bit patterns cover normal numbers, subnormals and both zeros. "%.9g" and "%.17g" carry
// every float and double exactly; the default "%.7g" and "%.16g" carry 7 and 16 digits, so the
// value comes back within half a unit of that digit and a second round trip is stable.
TEST(CConversionsRoundTripTest, RealsIncludingSubnormals) {
    std::mt19937_64 rng(2);
    int subnormals = 0;
    for (int i = 0; i < 20000; ++i) {
        uint64_t bits = rng();
        if (i % 4 == 0)
            bits &= 0x800fffffffffffffull; // a double subnormal or zero
        double d;
        std::memcpy(&d, &bits, sizeof(d));
        uint32_t fbits = static_cast<uint32_t>(bits >> 32);
        if (i % 4 == 1)
            fbits &= 0x807fffffu; // a float subnormal or zero
        float f;
        std::memcpy(&f, &fbits, sizeof(f));
        if (std::fpclassify(d) == FP_SUBNORMAL || std::fpclassify(f) == FP_SUBNORMAL)
            ++subnormals;
        if (!std::isnan(d)) {
            double exact = CConversions::r8FromString(CConversions::r8ToString(d, "%.17g"), kNone);
            ASSERT_EQ(0, std::memcmp(&d, &exact, sizeof(d))) << CConversions::r8ToString(d, "%.17g");
            std::string text = CConversions::r8ToString(d);
            double back = CConversions::r8FromString(text, kNone);
            ASSERT_EQ(std::signbit(d), std::signbit(back)) << text;
            ASSERT_LE(std::fabs(back - d), std::fabs(d) * 7e-16 + std::numeric_limits<double>::denorm_min())
                << text;
            ASSERT_EQ(text, CConversions::r8ToString(back));
        }
        if (!std::isnan(f)) {
            float exact = CConversions::r4FromString(CConversions::r4ToString(f, "%.9g"), kNone);
            ASSERT_EQ(0, std::memcmp(&f, &exact, sizeof(f))) << CConversions::r4ToString(f, "%.9g");
            std::string text = CConversions::r4ToString(f);
            float back = CConversions::r4FromString(text, kNone);
            ASSERT_EQ(std::signbit(f), std::signbit(back)) << text;
            ASSERT_LE(std::fabs(static_cast<double>(back) - f),
                      std::fabs(static_cast<double>(f)) * 6e-7 + 1e-45)
                << text;
            ASSERT_EQ(text, CConversions::r4ToString(back));
        }
    }
    EXPECT_GT(subnormals, 1000);
    // The special values come back as themselves.
    for (double d :
         {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(), 0.0, -0.0}) {
        double back = CConversions::r8FromString(CConversions::r8ToString(d), kNone);
        EXPECT_EQ(0, std::memcmp(&d, &back, sizeof(d))) << d;
    }
    EXPECT_TRUE(std::isnan(CConversions::r8FromString(CConversions::r8ToString(std::nan("")), kNone)));
    EXPECT_TRUE(std::isnan(CConversions::r4FromString(CConversions::r4ToString(std::nanf("")), kNone)));
    EXPECT_EQ(
        std::numeric_limits<float>::infinity(),
        CConversions::r4FromString(CConversions::r4ToString(std::numeric_limits<float>::infinity()), kNone));
}

// Decimals of up to 30 places (the most a value keeps) and big integers of up to 200 digits.
TEST(CConversionsRoundTripTest, DecimalsAndBigIntegers) {
    std::mt19937_64 rng(3);
    for (int i = 0; i < 300; ++i) {
        std::string text = (rng() % 2 ? "-" : "") + RandomDigits(rng, rng() % 40 + 1) + "." +
                           RandomDigits(rng, rng() % 30 + 1);
        CDecimal value = CConversions::decimalFromString(text, kNone);
        std::string written = CConversions::decimalToString(value);
        CDecimal back = CConversions::decimalFromString(written, kNone);
        ASSERT_TRUE(value == back) << text << " -> " << written;
        ASSERT_EQ(written, CConversions::decimalToString(back));
        ASSERT_EQ(value.GetFractionalDivider(), back.GetFractionalDivider()) << text;
    }
    for (int i = 0; i < 300; ++i) {
        std::string digits = RandomDigits(rng, rng() % 200 + 1);
        CBigInteger value(((rng() % 2) ? "-" + digits : digits).c_str());
        std::string written = CConversions::integerToString(value);
        CBigInteger back = CConversions::integerFromString(written, kNone);
        ASSERT_TRUE(value == back) << written;
        ASSERT_EQ(written, CConversions::integerToString(back));
    }
}

TEST(CConversionsRoundTripTest, DatesAndTimes) {
    std::mt19937_64 rng(4);
    for (int i = 0; i < 400; ++i) {
        CDateTime dateTime = RandomDate(rng, CDateTime::dt_dateTime);
        ExpectSameDate(dateTime,
                       CConversions::datetimeFromString(CConversions::datetimeToString(dateTime), kNone));
        CDateTime date = RandomDate(rng, CDateTime::dt_date);
        ExpectSameDate(date, CConversions::dateFromString(CConversions::dateToString(date), kNone));
        CDateTime yearMonth = RandomDate(rng, CDateTime::dt_gYearMonth);
        ExpectSameDate(yearMonth,
                       CConversions::yearMonthFromString(CConversions::yearMonthToString(yearMonth), kNone));
        CDateTime monthDay = RandomDate(rng, CDateTime::dt_gMonthDay);
        ExpectSameDate(monthDay,
                       CConversions::monthDayFromString(CConversions::monthDayToString(monthDay), kNone));
        CDateTime time = RandomDate(rng, CDateTime::dt_time);
        ExpectSameDate(time, CConversions::timeFromString(CConversions::timeToString(time), kNone));
        if (::testing::Test::HasFailure())
            FAIL() << dateTime.ToString() << " " << time.ToString();
    }
}

// Bare numbers: month 1-12 and day 1-31 all come back. The year writer has no padding, so only
// years of four digits read back (the reader wants four).
TEST(CConversionsRoundTripTest, BareYearMonthDay) {
    for (unsigned short year = 1000; year <= 9999; ++year)
        ASSERT_EQ(year, CConversions::yearFromString(CConversions::yearToString(year), kNone));
    EXPECT_THROW(CConversions::yearFromString(CConversions::yearToString(999), kNone),
                 CQzInvalidValueException);
    for (unsigned char month = 1; month <= 12; ++month)
        ASSERT_EQ(month, CConversions::monthFromString(CConversions::monthToString(month), kNone));
    for (unsigned char day = 1; day <= 31; ++day)
        ASSERT_EQ(day, CConversions::dayFromString(CConversions::dayToString(day), kNone));
}

// Durations come back field by field. The reader takes the 7th to 9th fraction digits each as
// a bare nanosecond value, so only nanoseconds 0 to 9 survive the trip.
TEST(CConversionsRoundTripTest, Durations) {
    std::mt19937_64 rng(5);
    for (int i = 0; i < 500; ++i) {
        CDateTimeSpan span(
            static_cast<unsigned short>(rng() % 3 ? rng() % 65536 : 0),
            static_cast<unsigned long>(rng() % 3 ? rng() % 100000 : 0),
            static_cast<unsigned long>(rng() % 3 ? rng() % 100000 : 0),
            static_cast<unsigned long>(rng() % 3 ? rng() % 100000 : 0), rng() % 3 ? rng() % 1000000 : 0,
            rng() % 3 ? rng() % 1000000 : 1, static_cast<unsigned short>(rng() % 1000),
            static_cast<unsigned short>(rng() % 1000), static_cast<unsigned short>(rng() % 10));
        if (rng() % 2)
            span.Negate();
        std::string text = CConversions::durationToString(span);
        CDateTimeSpan back = CConversions::durationFromString(text, kNone);
        ASSERT_EQ(text, CConversions::durationToString(back));
        auto fields = [](const CDateTimeSpan& s) {
            return std::vector<unsigned long long>{
                s.GetYears(),   s.GetMonths(),       s.GetDays(),         s.GetHours(),       s.GetMinutes(),
                s.GetSeconds(), s.GetMilliSeconds(), s.GetMicroSeconds(), s.GetNanoSeconds(), s.IsNegative()};
        };
        EXPECT_EQ(fields(span), fields(back)) << text;
    }
}

// Random bytes through hex and base64, lengths 0 to 300.
TEST(CConversionsRoundTripTest, Binary) {
    std::mt19937_64 rng(6);
    for (int i = 0; i < 300; ++i) {
        std::string bytes;
        size_t length = i == 0 ? 0 : rng() % 300;
        for (size_t k = 0; k < length; ++k)
            bytes.push_back(static_cast<char>(rng()));
        CBinaryData data(reinterpret_cast<unsigned char*>(&bytes[0]), static_cast<unsigned long>(length),
                         false);
        ASSERT_TRUE(data == CConversions::hexBinaryFromString(CConversions::hexBinaryToString(data), kNone));
        ASSERT_TRUE(data ==
                    CConversions::base64BinaryFromString(CConversions::base64BinaryToString(data), kNone));
    }
}

// Every character, every boolean, and strings with any bytes (no rule, so nothing changes).
TEST(CConversionsRoundTripTest, CharBooleanString) {
    for (int c = -128; c < 128; ++c) {
        char value = static_cast<char>(c);
        ASSERT_EQ(value, CConversions::charFromString(CConversions::charToString(value), kNone));
    }
    EXPECT_TRUE(CConversions::booleanFromString(CConversions::booleanToString(true), kNone));
    EXPECT_FALSE(CConversions::booleanFromString(CConversions::booleanToString(false), kNone));
    std::mt19937_64 rng(7);
    for (int i = 0; i < 200; ++i) {
        std::string value;
        size_t length = rng() % 64;
        for (size_t k = 0; k < length; ++k)
            value.push_back(static_cast<char>(rng()));
        ASSERT_EQ(value, CConversions::stringFromString(CConversions::stringToString(value), kNone));
    }
}

// The same trip through the variant: ToString, then FromString of the written text under
// Collapse, gives a variant of the same type that writes the same text.
TEST(CConversionsRoundTripTest, ThroughTheVariantForEveryType) {
    std::mt19937_64 rng(8);
    for (int i = 0; i < 100; ++i) {
        QzVariant values[26];
        values[0].SetHexBinary(CBinaryData(RandomDigits(rng, rng() % 20 + 1).c_str()));
        values[1].SetBase64Binary(CBinaryData(RandomDigits(rng, rng() % 20 + 1).c_str()));
        values[2].SetI1(static_cast<char>(rng()));
        values[3].SetI2(static_cast<short>(rng()));
        values[4].SetI4(static_cast<int32_t>(rng()));
        values[5].SetI8(static_cast<long long>(rng()));
        values[6].SetUI1(static_cast<unsigned char>(rng()));
        values[7].SetUI2(static_cast<unsigned short>(rng()));
        values[8].SetUI4(static_cast<uint32_t>(rng()));
        values[9].SetUI8(rng());
        values[10].SetR4(static_cast<float>(static_cast<int>(rng() % 200001) - 100000) / 4.0f);
        values[11].SetR8(
            static_cast<double>(static_cast<long long>(rng() % 1000000000000ull) - 500000000000ll) / 16.0);
        values[12].SetDuration(
            CDateTimeSpan(static_cast<unsigned long>(rng() % 100), rng() % 100, rng() % 100 + 1));
        values[13].SetYearMonth(RandomDate(rng, CDateTime::dt_gYearMonth));
        values[14].SetMonthDay(RandomDate(rng, CDateTime::dt_gMonthDay));
        values[15].SetYear(static_cast<unsigned short>(rng() % 9000 + 1000));
        values[16].SetMonth(static_cast<unsigned char>(rng() % 12 + 1));
        values[17].SetDay(static_cast<unsigned char>(rng() % 31 + 1));
        values[18].SetDate(RandomDate(rng, CDateTime::dt_date));
        values[19].SetDateTime(RandomDate(rng, CDateTime::dt_dateTime));
        values[20].SetTime(RandomDate(rng, CDateTime::dt_time));
        values[21].SetChar(static_cast<char>('!' + rng() % 94));
        values[22].SetString("a" + RandomDigits(rng, rng() % 10) + " x " + RandomDigits(rng, rng() % 10) +
                             "z");
        values[23].SetBoolean(rng() % 2 == 0);
        values[24].SetDecimal(CDecimal((RandomDigits(rng, 12) + "." + RandomDigits(rng, 12)).c_str()));
        values[25].SetInteger(CBigInteger(("-" + RandomDigits(rng, 50)).c_str()));
        for (const QzVariant& value : values) {
            SCOPED_TRACE(value.GetType());
            std::string text = value.ToString(nullptr);
            QzVariant back;
            back.FromString(" " + text + "\n", value.GetItemType(), kCollapse);
            ASSERT_EQ(value.GetItemType(), back.GetItemType());
            ASSERT_EQ(text, back.ToString(nullptr));
        }
    }
}
