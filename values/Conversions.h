// Conversions.h - CConversions, the one place where every primitive item type becomes text
// and comes back from text.
//
// Each reader applies a whiteSpace rule first (values/WhitespaceUtils.h). The value classes
// come from values/BinaryData.h, values/BigInteger.h, values/Decimal.h, values/DateTime.h and
// values/DateTimeSpan.h; values/QzVariant.h dispatches on the item type into these functions.
#ifndef QZXML_VALUES_CONVERSIONS_H
#define QZXML_VALUES_CONVERSIONS_H

#include "foundation/Exceptions.h"
#include "values/BigInteger.h"
#include "values/BinaryData.h"
#include "values/DateTime.h"
#include "values/DateTimeSpan.h"
#include "values/Decimal.h"
#include "values/WhitespaceUtils.h"

#include <cstdint>
#include <string>

namespace QzXmlLib16 {

// Static To/From string pairs, one per item type. The readers throw CQzInvalidValueException
// with the texts listed at each one; date, duration, decimal, integer and binary texts fail
// with the exceptions of their own parsers. An unknown whiteSpace rule throws CQzException
// "Unknown WhitespaceRule". All results are new values owned by the caller.
class CConversions {
public:
    typedef CWhitespaceUtils::WhitespaceRule WhitespaceRule;

    // ---- writers --------------------------------------------------------------------------

    // Upper-case hex digits, two per byte; "" for no data.
    static std::string hexBinaryToString(const CBinaryData& value);
    // Base64 text of the bytes.
    static std::string base64BinaryToString(const CBinaryData& value);
    // Plain decimal ("%d", "%lld", "%u", "%llu").
    static std::string i1ToString(char value);
    static std::string i2ToString(short value);
    static std::string i4ToString(int32_t value);
    static std::string i8ToString(long long value);
    static std::string ui1ToString(unsigned char value);
    static std::string ui2ToString(unsigned short value);
    static std::string ui4ToString(uint32_t value);
    static std::string ui8ToString(unsigned long long value);
    // "NaN", "INF" and "-INF" for those values; otherwise "%.7g" (r4) or "%.16g" (r8), or the
    // printf format given, which must hold at most one floating conversion (%f %e %g %a, upper
    // or lower case, with flags, width and precision, no '*'); any other format throws
    // CQzInvalidParamException "Invalid number format [<format>]". The text is never cut.
    static std::string r4ToString(float value);
    static std::string r4ToString(float value, const std::string& format);
    static std::string r8ToString(double value);
    static std::string r8ToString(double value, const std::string& format);
    // The XSD lexical forms of the date and duration values.
    static std::string durationToString(const CDateTimeSpan& value);
    static std::string yearMonthToString(const CDateTime& value);
    static std::string monthDayToString(const CDateTime& value);
    static std::string dateToString(const CDateTime& value);
    static std::string datetimeToString(const CDateTime& value);
    static std::string timeToString(const CDateTime& value);
    // A bare year number "%u" (never negative, no padding), month "--%02u", day "---%02u".
    static std::string yearToString(unsigned short value);
    static std::string monthToString(unsigned char value);
    static std::string dayToString(unsigned char value);
    // A one-character string.
    static std::string charToString(char value);
    // The text as it is.
    static std::string stringToString(const std::string& value);
    // "true" or "false".
    static std::string booleanToString(bool value);
    // With an empty format the decimal's own text; otherwise the format is a number of places
    // (read with strtol) handed to CDecimal::ToString(int), which rounds to that many places.
    static std::string decimalToString(const CDecimal& value);
    static std::string decimalToString(const CDecimal& value, const std::string& format);
    // Plain decimal, any length.
    static std::string integerToString(const CBigInteger& value);

    // ---- readers: each applies `rule` to `text` first and parses the result ---------------

    // Hex and base64 texts, parsed by CBinaryData.
    static CBinaryData hexBinaryFromString(const std::string& text, WhitespaceRule rule);
    static CBinaryData base64BinaryFromString(const std::string& text, WhitespaceRule rule);

    // Decimal integers over strtol/strtoul (base 10, leading blanks and a sign allowed). Throw
    // "The value [<text>] can not be converted to a i4" for an empty text or trailing junk and
    // "The value [<text>] is to large to fit in a i4" out of range ("a i8", "a ui4", "a ui8" in
    // the sibling readers), with the text after the rule.
    // Note: the unsigned readers take a "-" as the C library does and negate in the unsigned
    // type, so "-1" reads as 4294967295 (ui4) without error.
    static int32_t i4FromString(const std::string& text, WhitespaceRule rule);
    static long long i8FromString(const std::string& text, WhitespaceRule rule);
    static uint32_t ui4FromString(const std::string& text, WhitespaceRule rule);
    static unsigned long long ui8FromString(const std::string& text, WhitespaceRule rule);
    // The 32-bit reader, then a range test that throws "The value [<text>] is to large to fit
    // in a i1" (i2, ui1, ui2) with the text as passed in, before the rule. Failures of the
    // 32-bit reader keep its own "a i4" / "a ui4" texts.
    static char i1FromString(const std::string& text, WhitespaceRule rule);
    static short i2FromString(const std::string& text, WhitespaceRule rule);
    static unsigned char ui1FromString(const std::string& text, WhitespaceRule rule);
    static unsigned short ui2FromString(const std::string& text, WhitespaceRule rule);

    // "NaN", "1.#QNAN" and "-NAN" read as quiet NaN, "INF" and "-INF" as the infinities (exact
    // case); anything else through strtod. An empty text or trailing junk throws "The value
    // [<text>] can not be converted to a r4" ("a r8"). r4 narrows the double to float.
    static float r4FromString(const std::string& text, WhitespaceRule rule);
    static double r8FromString(const std::string& text, WhitespaceRule rule);

    // XSD duration, through CDateTimeSpan::ParseXSDDuration.
    static CDateTimeSpan durationFromString(const std::string& text, WhitespaceRule rule);
    // The date-like readers all end in CDateTime::ParseXSDDate, which accepts every date-like
    // form and sets the type from the text.
    // Note: so yearMonthFromString("2004-05-06") yields a date, not a gYearMonth.
    static CDateTime yearMonthFromString(const std::string& text, WhitespaceRule rule);
    static CDateTime monthDayFromString(const std::string& text, WhitespaceRule rule);
    static CDateTime dateFromString(const std::string& text, WhitespaceRule rule);
    // Through ParseXSDDateTime and ParseXSDTime.
    static CDateTime datetimeFromString(const std::string& text, WhitespaceRule rule);
    static CDateTime timeFromString(const std::string& text, WhitespaceRule rule);
    // The date text's year, month or day. A text of a type without that field throws the
    // CQzInvalidStateException of the CDateTime getter.
    // Note: a negative year wraps in the unsigned result ("-0005" gives 65531).
    static unsigned short yearFromString(const std::string& text, WhitespaceRule rule);
    static unsigned char monthFromString(const std::string& text, WhitespaceRule rule);
    static unsigned char dayFromString(const std::string& text, WhitespaceRule rule);

    // Exactly one character after the rule, else "The value [<text>] can not be a char as it is
    // either empty of greater than 1 char long" with the text after the rule.
    static char charFromString(const std::string& text, WhitespaceRule rule);
    // The text after the rule.
    static std::string stringFromString(const std::string& text, WhitespaceRule rule);
    // "true", "false", "1", "0", compared without regard to case ("TRUE" is true). Anything
    // else throws "A Boolean Value read from an XML document was invalid [<text>]. Valid values
    // are 'true', 'false', '1', or '0'" with the text as passed in.
    static bool booleanFromString(const std::string& text, WhitespaceRule rule);
    // Through CDecimal::Parse and CBigInteger::Parse.
    static CDecimal decimalFromString(const std::string& text, WhitespaceRule rule);
    static CBigInteger integerFromString(const std::string& text, WhitespaceRule rule);
};

} // namespace QzXmlLib16

#endif
