// Tests of the conversions of the value classes (binary, dates, duration, decimal, integer),
// and of the promise that every reader applies its whiteSpace rule before it parses.
#include "values/Conversions.h"

#include "foundation/Exceptions.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>
#include "support/TestSupport.h"

using namespace QzXmlLib16;

namespace {

using QzTest::MessageOf;

const CWhitespaceUtils::WhitespaceRule kNone = CWhitespaceUtils::None;
const CWhitespaceUtils::WhitespaceRule kCollapse = CWhitespaceUtils::Collapse;

// One reader and the writer of its result, so any item type reads back as text.
struct Reader {
    const char* name;
    const char* valid; // a text the reader takes, already in its written form
    std::function<std::string(const std::string&, CWhitespaceUtils::WhitespaceRule)> read;
};

// Each reader is named after its pair of conversion routines.
// clang-format off
#define READER(type, valid)                                                                     \
    {#type, valid, [](const std::string& t, CWhitespaceUtils::WhitespaceRule r) {               \
         return CConversions::type##ToString(CConversions::type##FromString(t, r)); }}

std::vector<Reader> AllReaders() {
    return {
        READER(hexBinary, "0AFF"), READER(base64Binary, "AQID"), READER(i1, "-7"), READER(i2, "-300"),
        READER(i4, "70000"), READER(i8, "-5000000000"), READER(ui1, "200"), READER(ui2, "60000"),
        READER(ui4, "4000000000"), READER(ui8, "10000000000000000000"), READER(r4, "1.5"),
        READER(r8, "-2.25e-10"), READER(duration, "P1Y2M3DT4H5M6.7S"), READER(yearMonth, "2004-05"),
        READER(monthDay, "--05-06"), READER(year, "2004"), READER(month, "--05"), READER(day, "---06"),
        READER(date, "2004-05-06Z"), READER(datetime, "2004-05-06T07:08:09.5+01:00"),
        READER(time, "07:08:09"), READER(char, "x"), READER(string, "a b"), READER(boolean, "true"),
        READER(decimal, "-12.05"), READER(integer, "-123456789012345678901234567890")};
}
// clang-format on

#undef READER

} // namespace

// ---- whiteSpace rules before every reader ------------------------------------------------------

// Blanks, tabs and line ends around each type's text vanish under Collapse.
TEST(CConversionsRuleTest, EveryReaderCollapsesFirst) {
    std::vector<Reader> readers = AllReaders();
    ASSERT_EQ(26u, readers.size());
    for (const Reader& reader : readers) {
        SCOPED_TRACE(reader.name);
        EXPECT_EQ(reader.valid, reader.read(reader.valid, kNone));
        EXPECT_EQ(reader.valid, reader.read(std::string("\r\n\t ") + reader.valid + " \t\r\n", kCollapse));
    }
}

// The same padded text without a rule fails in every parser but the string one, which keeps it:
// none of them trims on its own.
TEST(CConversionsRuleTest, WithoutRuleTrailingWhitespaceIsContent) {
    for (const Reader& reader : AllReaders()) {
        SCOPED_TRACE(reader.name);
        std::string padded = std::string(reader.valid) + " \t\n";
        if (std::string(reader.name) == "string") {
            EXPECT_EQ(padded, reader.read(padded, kNone));
        } else if (std::string(reader.name) == "base64Binary" || std::string(reader.name) == "decimal" ||
                   std::string(reader.name) == "integer" || std::string(reader.name) == "time") {
            // These parsers skip blanks themselves or drop what follows the value; nothing to show.
            continue;
        } else {
            EXPECT_THROW(reader.read(padded, kNone), CQzException);
        }
    }
}

// Replace and Preserve change the text before the parser sees it.
TEST(CConversionsRuleTest, ReplaceAndPreserveReachTheParser) {
    EXPECT_EQ('\n', CConversions::charFromString("\r", CWhitespaceUtils::Preserve));
    EXPECT_EQ(12, CConversions::i4FromString("\n12", CWhitespaceUtils::Replace));
}

TEST(CConversionsRuleTest, UnknownRuleFailsInEveryReader) {
    for (const Reader& reader : AllReaders()) {
        SCOPED_TRACE(reader.name);
        EXPECT_EQ("Unknown WhitespaceRule", MessageOf<CQzException>([&] {
                      reader.read(reader.valid, static_cast<CWhitespaceUtils::WhitespaceRule>(7));
                  }));
    }
}

// ---- binary ------------------------------------------------------------------------------------

TEST(CConversionsBinaryTest, HexAndBase64BothWays) {
    CBinaryData data = CConversions::hexBinaryFromString(" 00ff10Ab\n", kCollapse);
    ASSERT_EQ(4u, data.GetLength());
    EXPECT_EQ(0xAB, data.GetData()[3]);
    EXPECT_EQ("00FF10AB", CConversions::hexBinaryToString(data));
    EXPECT_EQ("AP8Qqw==", CConversions::base64BinaryToString(data));
    EXPECT_TRUE(data == CConversions::base64BinaryFromString("AP8Qqw==", kNone));
    EXPECT_EQ("", CConversions::hexBinaryToString(CConversions::hexBinaryFromString("", kNone)));
    EXPECT_EQ("", CConversions::base64BinaryToString(CBinaryData()));
}

// The codec's own failures pass through unchanged.
TEST(CConversionsBinaryTest, HexFailuresPassThrough) {
    EXPECT_EQ("Invalid length in hex string",
              MessageOf<CQzException>([] { CConversions::hexBinaryFromString("ABC", kNone); }));
    EXPECT_EQ("Invalid char in hex string [ ]",
              MessageOf<CQzException>([] { CConversions::hexBinaryFromString(" AB C D ", kCollapse); }));
}

// ---- dates and durations -----------------------------------------------------------------------

// The date-like readers end in ParseXSDDate, so the text decides the type.
// Note: yearMonthFromString takes a full date and yields a date.
TEST(CConversionsDateTest, DateLikeReadersTakeTheTypeOfTheText) {
    EXPECT_EQ(CDateTime::dt_gYearMonth, CConversions::yearMonthFromString("2004-05", kNone).GetType());
    EXPECT_EQ(CDateTime::dt_date, CConversions::yearMonthFromString("2004-05-06", kNone).GetType());
    EXPECT_EQ(CDateTime::dt_gYear, CConversions::monthDayFromString("2004", kNone).GetType());
    EXPECT_EQ(CDateTime::dt_gDay, CConversions::dateFromString("---06", kNone).GetType());
    EXPECT_EQ("2004-05-06",
              CConversions::yearMonthToString(CConversions::yearMonthFromString("2004-05-06", kNone)));
}

TEST(CConversionsDateTest, BareNumbersComeOutOfDateTexts) {
    EXPECT_EQ(2004, CConversions::yearFromString("2004", kNone));
    EXPECT_EQ(2004, CConversions::yearFromString("2004-05-06", kNone));
    EXPECT_EQ(5, CConversions::monthFromString("--05", kNone));
    EXPECT_EQ(5, CConversions::monthFromString("--05--", kNone));
    EXPECT_EQ(5, CConversions::monthFromString("2004-05", kNone));
    EXPECT_EQ(6, CConversions::dayFromString("---06", kNone));
    EXPECT_EQ(6, CConversions::dayFromString("--05-06Z", kNone));
    // Note: the year is unsigned, so a negative one wraps.
    EXPECT_EQ(65531, CConversions::yearFromString("-0005", kNone));
}

// A text of a type without the field fails in the CDateTime getter.
TEST(CConversionsDateTest, MissingFieldFailsInTheGetter) {
    EXPECT_EQ("Failed to GetYear. Invalid Date Type: gMonth.",
              MessageOf<CQzInvalidStateException>([] { CConversions::yearFromString("--05", kNone); }));
    EXPECT_EQ("Failed to GetMonth. Invalid Date Type: gYear.",
              MessageOf<CQzInvalidStateException>([] { CConversions::monthFromString("2004", kNone); }));
    EXPECT_EQ("Failed to GetDay. Invalid Date Type: gYearMonth.",
              MessageOf<CQzInvalidStateException>([] { CConversions::dayFromString("2004-05", kNone); }));
}

TEST(CConversionsDateTest, ParserFailuresPassThrough) {
    EXPECT_EQ("Invalid XSD Date [2004/05/06] expected CCYY-MM-DD[Z|[+|-]hh:mm]",
              MessageOf<CQzInvalidValueException>([] { CConversions::dateFromString("2004/05/06", kNone); }));
    EXPECT_EQ("Invalid XSD DateTime [2004-05-06].", MessageOf<CQzInvalidValueException>([] {
                  CConversions::datetimeFromString("2004-05-06", kNone);
              }));
    EXPECT_EQ("Invalid XSD Time [24:00:00] expected hh:mm:ss[.ff]",
              MessageOf<CQzInvalidValueException>([] { CConversions::timeFromString("24:00:00", kNone); }));
    EXPECT_EQ("Invalid Date (Empty String)",
              MessageOf<CQzInvalidValueException>([] { CConversions::dateFromString("  ", kCollapse); }));
    EXPECT_EQ("Invalid XSD Duration [P] expected [-]P[nY][nM][nD][T[nH][nM][nS.ff]]",
              MessageOf<CQzInvalidValueException>([] { CConversions::durationFromString("P", kNone); }));
}

TEST(CConversionsDateTest, WritersUseTheLexicalForm) {
    EXPECT_EQ("2004-02-29T12:30:00.25Z", CConversions::datetimeToString(CConversions::datetimeFromString(
                                             "2004-02-29T12:30:00.250Z", kNone)));
    EXPECT_EQ("-0044-03-15", CConversions::dateToString(CConversions::dateFromString("-0044-03-15", kNone)));
    EXPECT_EQ("12:00:00+00:00",
              CConversions::timeToString(CConversions::timeFromString("12:00:00-24:00", kNone)));
    EXPECT_EQ("--02-29", CConversions::monthDayToString(CConversions::monthDayFromString("--02-29", kNone)));
    EXPECT_EQ("Error: Date Not Set", CConversions::dateToString(CDateTime()));
    EXPECT_EQ("-PT1M", CConversions::durationToString(CConversions::durationFromString("-PT1M", kNone)));
    // A zero span writes "P", a text the reader refuses.
    EXPECT_EQ("P", CConversions::durationToString(CDateTimeSpan()));
}

// ---- decimal and integer -----------------------------------------------------------------------

TEST(CConversionsDecimalTest, FormatIsANumberOfPlaces) {
    CDecimal value("3.14159");
    EXPECT_EQ("3.14159", CConversions::decimalToString(value));
    EXPECT_EQ("3.14159", CConversions::decimalToString(value, ""));
    EXPECT_EQ("3.14", CConversions::decimalToString(value, "2"));
    EXPECT_EQ("3.1416", CConversions::decimalToString(value, "4"));
    EXPECT_EQ("3.", CConversions::decimalToString(value, "0"));
    // strtol reads the format: no digits count as 0, a trailing word is ignored.
    EXPECT_EQ("3.", CConversions::decimalToString(value, "%.2f"));
    EXPECT_EQ("3.142", CConversions::decimalToString(value, "3 places"));
    // A negative count is taken as 0, a huge one as 1000.
    EXPECT_EQ("3.", CConversions::decimalToString(value, "-2"));
    EXPECT_EQ(CConversions::decimalToString(value, "1000"),
              CConversions::decimalToString(value, "99999999999999"));
}

TEST(CConversionsDecimalTest, ReadersUseTheValueParsers) {
    EXPECT_EQ("1000.5", CConversions::decimalToString(CConversions::decimalFromString("1 000.5", kNone)));
    EXPECT_EQ("150", CConversions::decimalToString(CConversions::decimalFromString("\t1.5E2\n", kCollapse)));
    EXPECT_EQ("The string representing a Decimal, contained an invalid char at position 1 [1,5].",
              MessageOf<CQzInvalidValueException>([] { CConversions::decimalFromString("1,5", kNone); }));
    EXPECT_EQ("-42", CConversions::integerToString(CConversions::integerFromString(" -42 ", kCollapse)));
    // A text with a "." goes through CDecimal and is rounded with ties towards zero.
    EXPECT_EQ("1", CConversions::integerToString(CConversions::integerFromString("1.5", kNone)));
    EXPECT_EQ("2", CConversions::integerToString(CConversions::integerFromString("1.51", kNone)));
    EXPECT_EQ("0", CConversions::integerToString(CConversions::integerFromString("", kNone)));
}

// ---- hostile text --------------------------------------------------------------------------------

// Random text from digits, signs, separators, letters the parsers look for, whitespace, a zero
// byte and high bytes: every reader either succeeds or raises an exception of the family.
TEST(CConversionsHostileTest, RandomTextRaisesOnlyLibraryExceptions) {
    const char alphabet[] = "0123456789+-.:TZPYMDHSeE-#NaIF \t\r\n\x80\xff=/A";
    std::mt19937 rng(99);
    std::vector<Reader> readers = AllReaders();
    for (int round = 0; round < 1000; ++round) {
        std::string text;
        size_t length = rng() % 40;
        for (size_t i = 0; i < length; ++i)
            text.push_back(alphabet[rng() % (sizeof(alphabet) - 1)]);
        if (round % 50 == 0)
            text.push_back('\0');
        for (const Reader& reader : readers) {
            for (CWhitespaceUtils::WhitespaceRule rule : {kNone, kCollapse}) {
                try {
                    reader.read(text, rule);
                } catch (const CQzException&) {
                } catch (...) {
                    ADD_FAILURE() << reader.name << " raised a foreign exception for "
                                  << ::testing::PrintToString(text);
                }
            }
        }
    }
}

// Very long texts: digits beyond any integer width, a long fraction, a long base64 text.
TEST(CConversionsHostileTest, HugeTextsFailCleanlyOrRead) {
    std::string digits(100000, '9');
    EXPECT_THROW(CConversions::i8FromString(digits, kNone), CQzInvalidValueException);
    EXPECT_THROW(CConversions::ui4FromString(digits, kNone), CQzInvalidValueException);
    EXPECT_EQ(std::numeric_limits<double>::infinity(), CConversions::r8FromString(digits, kNone));
    EXPECT_EQ(digits, CConversions::integerToString(CConversions::integerFromString(digits, kNone)));
    std::string base64(400000, 'A');
    EXPECT_EQ(300000u, CConversions::base64BinaryFromString(base64, kNone).GetLength());
    std::string blanks(1000000, ' ');
    EXPECT_EQ("", CConversions::stringFromString(blanks, kCollapse));
}
