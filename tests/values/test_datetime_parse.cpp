// Lexical forms of CDateTime: what each parser accepts, how values are written back,
// and the exact texts of parse and validation failures.
#include <gtest/gtest.h>

#include <functional>

#include "test_datetime_helpers.h"

using namespace QzXmlLib16;
using namespace QzDateTests;

namespace {

struct FormRow {
    const char* input;
    CDateTime::DTType type;
    const char* written;
};

struct FailRow {
    const char* input;
    const char* message;
};

} // namespace

// Every date-like form, with the type chosen from the length and the text written back. The
// older gMonth form "--MM--" is read, never written, and its last two characters are not looked at.
TEST(CDateTimeParseTest, DateFormsPickTheirTypeAndWriteBack) {
    // clang-format off
    const FormRow rows[] = {
        {"2004-02-29", CDateTime::date, "2004-02-29"}, {"-0001-01-01", CDateTime::date, "-0001-01-01"},
        {"9999-12-31", CDateTime::date, "9999-12-31"}, {"-9999-01-01", CDateTime::date, "-9999-01-01"},
        {"2000-05", CDateTime::gYearMonth, "2000-05"}, {"-0044-03", CDateTime::gYearMonth, "-0044-03"},
        {"2000", CDateTime::gYear, "2000"}, {"0001", CDateTime::gYear, "0001"},
        {"--05", CDateTime::gMonth, "--05"}, {"--05--", CDateTime::gMonth, "--05"},
        {"--05xy", CDateTime::gMonth, "--05"}, {"---15", CDateTime::gDay, "---15"},
        {"--02-29", CDateTime::gMonthDay, "--02-29"}, {"2000-01-01Z", CDateTime::date, "2000-01-01Z"},
        {"2000-01-01+05:30", CDateTime::date, "2000-01-01+05:30"},
        {"2000-01-01-05:30", CDateTime::date, "2000-01-01-05:30"},
        {"-2000-01-01-05:30", CDateTime::date, "-2000-01-01-05:30"}, {"2000Z", CDateTime::gYear, "2000Z"},
        {"--05-05:00", CDateTime::gMonth, "--05-05:00"}, {"---31+01:00", CDateTime::gDay, "---31+01:00"},
        {"--12-31Z", CDateTime::gMonthDay, "--12-31Z"}};
    // clang-format on
    for (const FormRow& row : rows) {
        SCOPED_TRACE(row.input);
        const CDateTime value = D(row.input);
        EXPECT_EQ(value.GetType(), row.type);
        EXPECT_EQ(value.ToString(), row.written);
    }
}

// Times: fraction digits are kept to nine places and written without trailing zeros; junk
// behind the seconds that does not start a zone is dropped.
TEST(CDateTimeParseTest, TimeFormsAndFractions) {
    // clang-format off
    const std::pair<const char*, const char*> rows[] = {
        {"00:00:00", "00:00:00"}, {"23:59:59", "23:59:59"}, {"12:00:00.123456789", "12:00:00.123456789"},
        {"12:00:00.120", "12:00:00.12"}, {"12:00:00.000", "12:00:00"}, {"12:00:00.", "12:00:00"},
        {"12:00:00.0000005", "12:00:00.0000005"}, {"12:00:00.000100", "12:00:00.0001"},
        {"12:00:00abc", "12:00:00"}, {"12:00:00Z", "12:00:00Z"}, {"12:00:00Zjunk", "12:00:00Z"},
        {"12:00:00+14:30", "12:00:00+14:30"}, {"12:00:00+23:59", "12:00:00+23:59"},
        {"12:00:00+24:00", "12:00:00+00:00"}, {"12:00:00-24:00", "12:00:00+00:00"},
        {"12:00:00.5-05:00", "12:00:00.5-05:00"}};
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(row.first);
        const CDateTime value = T(row.first);
        EXPECT_EQ(value.GetType(), CDateTime::time);
        EXPECT_EQ(value.ToString(), row.second);
    }
    const CDateTime fine = T("12:00:00.123456789");
    EXPECT_EQ(fine.GetMilliSecond(), 123);
    EXPECT_EQ(fine.GetMicroSecond(), 456);
    EXPECT_EQ(fine.GetNanoSecond(), 789);
}

// dateTime: the date part may carry the zone, so a zone may stand before the "T".
TEST(CDateTimeParseTest, DateTimeForms) {
    // clang-format off
    const FormRow rows[] = {
        {"2004-02-29T00:00:00", CDateTime::dateTime, "2004-02-29T00:00:00"},
        {"2000-01-01T12:34:56.789Z", CDateTime::dateTime, "2000-01-01T12:34:56.789Z"},
        {"-0500-06-15T01:02:03.000000001+01:30", CDateTime::dateTime, "-0500-06-15T01:02:03.000000001+01:30"},
        {"2000-01-01ZT12:00:00", CDateTime::dateTime, "2000-01-01T12:00:00Z"},
        {"2000-01-01+02:00T12:00:00", CDateTime::dateTime, "2000-01-01T12:00:00+02:00"}};
    // clang-format on
    for (const FormRow& row : rows) {
        SCOPED_TRACE(row.input);
        CDateTime value;
        value.ParseXSDDateTime(row.input);
        EXPECT_EQ(value.GetType(), row.type);
        EXPECT_EQ(value.ToString(), row.written);
    }
}

// Note: the sign of an offset lives in the hour, so "-00:30" comes back as "+00:30" and
// normalises as a positive offset (30 minutes back).
TEST(CDateTimeParseTest, NegativeZeroHourOffsetLosesItsSign) {
    const CDateTime value = DT("2000-01-01T12:00:00-00:30");
    EXPECT_EQ(value.GetZoneHour(), 0);
    EXPECT_EQ(value.GetZoneMinute(), 30);
    EXPECT_EQ(value.ToString(), "2000-01-01T12:00:00+00:30");
    EXPECT_EQ(value.GetNormalized().ToString(), "2000-01-01T11:30:00+00:00");
    const CDateTime negative = DT("2000-01-01T12:00:00-05:30");
    EXPECT_EQ(negative.GetZoneHour(), -5);
    EXPECT_EQ(negative.GetZoneMinute(), 30);
}

TEST(CDateTimeParseTest, ZoneStates) {
    const CDateTime none = DT("2000-01-01T00:00:00");
    EXPECT_FALSE(none.IsUTC());
    EXPECT_FALSE(none.HasTimeZone());
    const CDateTime z = DT("2000-01-01T00:00:00Z");
    EXPECT_TRUE(z.IsUTC());
    EXPECT_FALSE(z.HasTimeZone());
    EXPECT_EQ(ThrownMessage<CQzInvalidStateException>([&] { z.GetZoneHour(); }), "TimeZone is not been used");
    EXPECT_EQ(ThrownMessage<CQzInvalidStateException>([&] { none.GetZoneMinute(); }),
              "TimeZone is not been used");
    const CDateTime offset = DT("2000-01-01T00:00:00+05:00");
    EXPECT_TRUE(offset.IsUTC());
    EXPECT_TRUE(offset.HasTimeZone());

    CDateTime value = DT("2000-01-01T00:00:00");
    EXPECT_EQ(ThrownMessage<CQzInvalidValueException>([&] { value.SetTimeZone(24, 0); }),
              "Invalid TimeZone [24:0]");
    EXPECT_EQ(ThrownMessage<CQzInvalidValueException>([&] { value.SetTimeZone(-24, 0); }),
              "Invalid TimeZone [-24:0]");
    EXPECT_EQ(ThrownMessage<CQzInvalidValueException>([&] { value.SetTimeZone(0, 60); }),
              "Invalid TimeZone [0:60]");
    value.SetTimeZone(-23, 59);
    EXPECT_EQ(value.ToString(), "2000-01-01T00:00:00-23:59");
    value.SetUTC();
    EXPECT_EQ(value.ToString(), "2000-01-01T00:00:00Z");
}

// The parser pieces on their own neither clear nor validate: ranges stay unchecked, fields
// are stored before the clock range test, and fraction digits add to what the fields hold.
TEST(CDateTimeParseTest, PiecesNeitherClearNorValidate) {
    CDateTime date;
    date.SetXSDDate("2003-02-29");
    EXPECT_EQ(date.GetType(), CDateTime::date);
    EXPECT_EQ(date.m_day, 29);
    EXPECT_EQ(ThrownMessage<CQzInvalidValueException>([&] { date.Validate(); }),
              "Invalid Day [29] (1 <= day <= days in month");
    date.SetZone("+05:30");
    EXPECT_EQ(date.ToString(), "2003-02-29+05:30");
    date.SetZone("junk");
    EXPECT_EQ(date.GetZoneHour(), 5);
    date.SetZone("Zanything");
    EXPECT_FALSE(date.HasTimeZone());
    EXPECT_EQ(date.ToString(), "2003-02-29Z");
    EXPECT_EQ(ThrownMessage<CQzInvalidValueException>([&] { date.SetZone("+5:30"); }),
              "Invalid XSD Time Zone [+5:30].");

    CDateTime time;
    EXPECT_EQ(ThrownMessage<CQzInvalidValueException>([&] { time.SetXSDTime("25:61:00"); }),
              "Invalid XSD Time [25:61:00] expected hh:mm:ss[.ff]");
    EXPECT_EQ(time.m_hour, 25);
    EXPECT_EQ(time.m_minute, 61);
    time.Clear();
    time.SetXSDTime("00:00:00.6");
    time.SetXSDTime("00:00:00.6");
    EXPECT_EQ(time.m_milliSecond, 1200);
    EXPECT_EQ(ThrownMessage<CQzInvalidValueException>([&] { time.Validate(); }),
              "Invalid Milli-Second [1200] (0 <= milli <= 999)");

    EXPECT_EQ(ThrownMessage<CQzInvalidValueException>([&] { date.SetXSDDate(nullptr); }),
              "Invalid Date (Null String)");
    EXPECT_EQ(ThrownMessage<CQzInvalidValueException>([&] { time.SetXSDTime(nullptr); }),
              "Invalid Time (Null String)");
    EXPECT_EQ(ThrownMessage<CQzInvalidValueException>([&] { time.SetXSDTime(""); }),
              "Invalid XSD Time (Empty String)");
}

// A parser clears first, so it retypes an object freely.
TEST(CDateTimeParseTest, ParsersRetypeAndDropTheOldZone) {
    CDateTime value = DT("2000-01-01T00:00:00+05:00");
    value.ParseXSDTime("10:00:00");
    EXPECT_EQ(value.GetType(), CDateTime::time);
    EXPECT_FALSE(value.IsUTC());
    value.ParseXSDDate("--07");
    EXPECT_EQ(value.GetType(), CDateTime::gMonth);
    EXPECT_EQ(value.GetMonth(), 7);
}

TEST(CDateTimeParseTest, DateTimeFailures) {
    // clang-format off
    const FailRow rows[] = {
        {"2000-01-01", "Invalid XSD DateTime [2000-01-01]."},
        {"2000-01T12:00:00", "Invalid XSD DateTime [2000-01T12:00:00] expected CCYY-MM-DDThh:mm:ss[.ff]"},
        {"--01-01T12:00:00", "Invalid XSD DateTime [--01-01T12:00:00] expected CCYY-MM-DDThh:mm:ss[.ff]"},
        {"T12:00:00", "Invalid Date (Empty String)"}, {"2000-01-01T", "Invalid XSD Time (Empty String)"},
        {"2000-01-01T24:00:00", "Invalid XSD Time [24:00:00] expected hh:mm:ss[.ff]"},
        {"2000-01-01T12:00", "Invalid XSD Time [12:00] expected hh:mm:ss[.ff]"},
        {"2003-02-29T00:00:00", "Invalid Day [29] (1 <= day <= days in month"},
        {"1900-02-29T00:00:00", "Invalid Day [29] (1 <= day <= days in month"},
        {"0000-01-01T00:00:00", "Invalid Year [0] (-9999 <= year <= 9999 && year != 0)"},
        {"2000-01-01Z+01:00T00:00:00", "Invalid Date (Bad Zone value)"}};
    // clang-format on
    for (const FailRow& row : rows) {
        SCOPED_TRACE(row.input);
        EXPECT_EQ(ThrownMessage<CQzInvalidValueException>([&] { CDateTime value(row.input); }), row.message);
    }
    EXPECT_EQ(ThrownMessage<CQzInvalidValueException>([] { CDateTime().ParseXSDDateTime(nullptr); }),
              "Invalid DateTime (Null String)");
}

TEST(CDateTimeParseTest, DateFailures) {
    // clang-format off
    const FailRow rows[] = {
        {"", "Invalid Date (Empty String)"}, {"2000-01-01T", "Invalid Date ('T' not allowed)"},
        {"2000-01-01Z+01:00", "Invalid Date (Bad Zone value)"},
        {"2000-01-01+5:000", "Invalid XSD Time Zone [+5:000]."},
        {"2000-01-01+25:00", "Invalid TimeZone [25:0]"},
        {"0000-01-01", "Invalid Year [0] (-9999 <= year <= 9999 && year != 0)"},
        {"-0000", "Invalid Year [0] (-9999 <= year <= 9999 && year != 0)"},
        {"2000-13-01", "Invalid Month [13] (1 <= month <= 12)"},
        {"2000-00", "Invalid Month [0] (1 <= month <= 12)"}, {"--00", "Invalid Month [0] (1 <= month <= 12)"},
        {"2000-04-31", "Invalid Day [31] (1 <= day <= days in month"},
        {"2000-01-00", "Invalid Day [0] (1 <= day <= days in month"},
        {"--02-30", "Invalid Day [30] (1 <= day <= days in month)"},
        {"--04-31", "Invalid Day [31] (1 <= day <= days in month)"},
        {"---32", "Invalid Day [32] (1 <= day <= 31)"}, {"---00", "Invalid Day [0] (1 <= day <= 31)"}};
    // clang-format on
    for (const FailRow& row : rows) {
        SCOPED_TRACE(row.input);
        EXPECT_EQ(ThrownMessage<CQzInvalidValueException>([&] { D(row.input); }), row.message);
    }
    // Texts of no known length or shape.
    for (const char* text :
         {"12004-01-01", "200-01-01", "2000/01/01", "2000-1-01", "20a0", "+2000", "--5-01", "--5", "-", "Z",
          "1:00", "2000-01-01+0500", "2000-01-01+5:00", "2000-01-01+05-00"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(ThrownMessage<CQzInvalidValueException>([&] { D(text); }),
                  std::string("Invalid XSD Date [") + text + "] expected CCYY-MM-DD[Z|[+|-]hh:mm]");
    }
    EXPECT_EQ(ThrownMessage<CQzInvalidValueException>([] { CDateTime().ParseXSDDate(nullptr); }),
              "Invalid Date (Null String)");
}

TEST(CDateTimeParseTest, TimeFailures) {
    // clang-format off
    const FailRow rows[] = {
        {"", "Invalid XSD Time (Empty String)"},
        {"12:00:00.1234567890", "Invalid XSD Time [12:00:00.1234567890] Fraction part too long"},
        {"12:00:00+1:00", "Invalid XSD Time Zone [+1:00]."},
        {"12:00:00+01:00x", "Invalid XSD Time Zone [+01:00x]."}, {"12:00:00-", "Invalid XSD Time Zone [-]."},
        {"12:00:00+05:60", "Invalid TimeZone [5:60]"}, {"12:00:00+25:00", "Invalid TimeZone [25:0]"},
        {"12:00:00-25:00", "Invalid TimeZone [-25:0]"}};
    // clang-format on
    for (const FailRow& row : rows) {
        SCOPED_TRACE(row.input);
        EXPECT_EQ(ThrownMessage<CQzInvalidValueException>([&] { T(row.input); }), row.message);
    }
    for (const char* text : {"24:00:00", "12:60:00", "12:00:60", "1:00:00", "12:00", "12-00-00"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(ThrownMessage<CQzInvalidValueException>([&] { T(text); }),
                  std::string("Invalid XSD Time [") + text + "] expected hh:mm:ss[.ff]");
    }
    EXPECT_EQ(ThrownMessage<CQzInvalidValueException>([] { CDateTime().ParseXSDTime(nullptr); }),
              "Invalid Time (Null String)");
}

// Validate stops at the first failure in the order type, month, year, day, time fields; the
// fields a type has no use for must be zero. Conversions copy every field, which reaches
// the "for type" texts.
TEST(CDateTimeValidateTest, FieldsATypeDoesNotUseMustBeZero) {
    struct Row {
        const char* source;
        CDateTime::DTType target;
        const char* message;
    };
    // clang-format off
    const Row rows[] = {
        {"2000-05-15", CDateTime::gYear, "Invalid Month [5] for type gYear"},
        {"2000-05-15", CDateTime::gYearMonth, "Invalid Day [15] for type gYearMonth"},
        {"2000-05-15", CDateTime::gMonthDay, "Invalid Year [2000] for type gMonthDay"},
        {"2000-05-15T12:00:00", CDateTime::date, "Invalid Hour [12] for type date"},
        {"2000-05-15T00:07:00", CDateTime::date, "Invalid Minute [7] for type date"},
        {"2000-05-15T00:00:05", CDateTime::date, "Invalid Second [5] for type date"},
        {"2000-05-15T00:00:00.005", CDateTime::date, "Invalid Milli-Second [5] for type date"},
        {"2000-05-15T00:00:00.000005", CDateTime::date, "Invalid Micro-Second [5] for type date"},
        {"2000-05-15T00:00:00.000000005", CDateTime::date, "Invalid Nano-Second [5] for type date"}};
    // clang-format on
    for (const Row& row : rows) {
        SCOPED_TRACE(row.message);
        CDateTime source;
        if (std::string(row.source).find('T') != std::string::npos)
            source.ParseXSDDateTime(row.source);
        else
            source.ParseXSDDate(row.source);
        CDateTime target;
        target.SetDateTime(source, row.target);
        EXPECT_EQ(target.GetType(), row.target);
        EXPECT_EQ(ThrownMessage<CQzInvalidValueException>([&] { target.Validate(); }), row.message);
    }
    EXPECT_EQ(ThrownMessage<CQzInvalidValueException>([] { CDateTime().Validate(); }), "Invalid Year Zero");
}

TEST(CDateTimeValidateTest, TimeFieldRangesInOrder) {
    // All fields are out of range at first (hour and minute together); each row mends the
    // field the previous one reported, so the next field is reported in turn.
    CDateTime value(CDateTime::time);
    value.SetMinute(60);
    value.SetHour(24);
    value.SetSecond(60);
    value.SetMilliSecond(1000);
    value.SetMicroSecond(1000);
    value.SetNanoSecond(1000);
    const std::pair<std::function<void(CDateTime&)>, const char*> rows[] = {
        {[](CDateTime&) {}, "Invalid Hour [24] (0 <= hour <= 23)"},
        {[](CDateTime& v) { v.SetHour(23); }, "Invalid Minute [60] (0 <= minute <= 59)"},
        {[](CDateTime& v) { v.SetMinute(0); }, "Invalid Second [60] (0 <= second <= 59)"},
        {[](CDateTime& v) { v.SetSecond(59); }, "Invalid Milli-Second [1000] (0 <= milli <= 999)"},
        {[](CDateTime& v) { v.SetMilliSecond(999); }, "Invalid Micro-Second [1000] (0 <= micro <= 999)"},
        {[](CDateTime& v) { v.SetMicroSecond(999); }, "Invalid Nano-Second [1000] (0 <= nano <= 999)"},
        {[](CDateTime& v) { v.SetNanoSecond(999); }, "<no exception>"}};
    for (const auto& row : rows) {
        row.first(value);
        EXPECT_EQ(ThrownMessage<CQzInvalidValueException>([&] { value.Validate(); }), row.second);
    }
    EXPECT_EQ(value.ToString(), "23:00:59.999999999");

    // The month is checked before the year.
    CDateTime date(CDateTime::date);
    date.SetMonth(13);
    EXPECT_EQ(ThrownMessage<CQzInvalidValueException>([&] { date.Validate(); }),
              "Invalid Month [13] (1 <= month <= 12)");
    date.SetMonth(1);
    date.SetYear(10000);
    EXPECT_EQ(ThrownMessage<CQzInvalidValueException>([&] { date.Validate(); }),
              "Invalid Year [10000] (-9999 <= year <= 9999 && year != 0)");
    date.SetYear(-10000);
    EXPECT_EQ(ThrownMessage<CQzInvalidValueException>([&] { date.Validate(); }),
              "Invalid Year [-10000] (-9999 <= year <= 9999 && year != 0)");
}

// The one-word format language of ToString.
TEST(CDateTimeFormatTest, FormatWords) {
    const CDateTime value = D("2000-01-02");
    EXPECT_EQ(value.ToString("s"), "2000-01-02");
    EXPECT_EQ(value.ToString(nullptr), "");
    EXPECT_EQ(value.ToString(""), "");
    EXPECT_EQ(value.ToString("G"), "");
    EXPECT_EQ(value.ToString("yyyy"), "Unknown Format: yyyy");
    // An unset value says so whatever the format.
    EXPECT_EQ(CDateTime().ToString(), "Error: Date Not Set");
    EXPECT_EQ(CDateTime().ToString("G"), "Error: Date Not Set");
    EXPECT_EQ(CDateTime(CDateTime::date).ToString(), "Error: Date Not Set");
    EXPECT_EQ(CDateTime(CDateTime::gDay).ToString(), "Error: Date Not Set");
    // Midnight is a real time.
    EXPECT_EQ(CDateTime(CDateTime::time).ToString(), "00:00:00");
}

TEST(CDateTimeFormatTest, PadZeroTrimAndFraction) {
    EXPECT_EQ(PadZero(-5, 3) + " " + PadZero(5, 3) + " " + PadZero(12345, 3) + " " + PadZero(7, 0),
              "-05 005 12345 7");
    for (const auto& row :
         {std::pair<const char*, const char*>{"000", "0"}, {"120", "12"}, {"1", "1"}, {"100", "1"}, {"", ""}})
        EXPECT_EQ(TrimTrainingZeros(row.first), row.second) << row.first;
    EXPECT_EQ(ToFracString(100, 0, 0) + " " + ToFracString(0, 0, 500) + " " + ToFracString(0, 0, 0) + " " +
                  ToFracString(0, 10, 0) + " " + ToFracString(1, 2, 3),
              ".1 .0000005  .00001 .001002003");
    // Out-of-range fields (possible through the setters) are written as they are, and
    // ToString writes the same text as ToFracString.
    EXPECT_EQ(ToFracString(1000, 0, 0), ".1");
    CDateTime value(CDateTime::time);
    value.SetMilliSecond(1000);
    value.SetNanoSecond(1230);
    EXPECT_EQ(value.ToString(), "00:00:00" + ToFracString(1000, 0, 1230));
}
