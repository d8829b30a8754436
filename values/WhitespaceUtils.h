// WhitespaceUtils.h - the XSD whiteSpace rules (none, preserve, replace, collapse).
//
// Every conversion from text in values/Conversions.h applies one of these rules first;
// generated records, collections and the variant (values/QzVariant.h) carry the rule there.
#ifndef QZXML_VALUES_WHITESPACEUTILS_H
#define QZXML_VALUES_WHITESPACEUTILS_H

#include <string>

namespace QzXmlLib16 {

class CWhitespaceUtils {
public:
    // The rule that a reader applies to its text before parsing it. The type is int-based, so
    // any number is a value and ApplyRule can refuse it.
    enum WhitespaceRule : int {
        None = 0,               // the text unchanged
        WhitespacePreserve = 1, // only line ends normalised
        WhitespaceReplace = 2,  // tab, line feed and carriage return each become a space
        WhitespaceCollapse = 3  // as replace, then runs of spaces shrink to one and the ends are trimmed
    };

    // Note: Preserve, Replace and Collapse name both a rule and the text operation that carries
    // it out. Each is a constant that converts to its WhitespaceRule value
    // (ApplyRule(CWhitespaceUtils::Collapse, text)) and that can be called
    // (CWhitespaceUtils::Collapse(text)). A class cannot hold an enumerator and a function of one
    // name, so the enumerators above carry a prefix and these constants stand in for both.
    struct PreserveRule {
        constexpr operator WhitespaceRule() const { return WhitespacePreserve; }
        std::string operator()(const char* text, int length) const { return PreserveText(text, length); }
        std::string operator()(const std::string& text) const { return PreserveText(text); }
    };
    struct ReplaceRule {
        constexpr operator WhitespaceRule() const { return WhitespaceReplace; }
        std::string operator()(const std::string& text) const { return ReplaceText(text); }
    };
    struct CollapseRule {
        constexpr operator WhitespaceRule() const { return WhitespaceCollapse; }
        std::string operator()(const std::string& text) const { return CollapseText(text); }
    };
    static constexpr PreserveRule Preserve{};
    static constexpr ReplaceRule Replace{};
    static constexpr CollapseRule Collapse{};

    // True for space, tab, carriage return and line feed; nothing else counts as whitespace.
    static bool IsWhiteSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

    // Line ends normalised: CR LF becomes LF, a lone CR becomes LF, all else stays.
    // The pointer form reads up to `length` bytes (a negative length means up to the
    // terminating zero) and stops early at a zero byte; a null text gives "".
    static std::string PreserveText(const char* text, int length);
    // As above for a whole string; returns the text as it is when it holds no CR.
    static std::string PreserveText(const std::string& text);
    // CR LF becomes one space; a lone CR, a tab or a LF becomes one space. Unchanged text is
    // returned as it stands.
    static std::string ReplaceText(const std::string& text);
    // XSD collapse: whitespace runs become one space, leading and trailing whitespace goes.
    static std::string CollapseText(const std::string& text);

    // The text after `rule`. Throws CQzException "Unknown WhitespaceRule" for a value outside 0-3.
    static std::string ApplyRule(WhitespaceRule rule, const std::string& text);

    // Allocation-free form used by the readers: returns `text` itself when the rule leaves it
    // unchanged, otherwise the result written into `buffer` (and then returns `buffer`).
    // The returned reference is borrowed from one of the two arguments.
    // Throws CQzException "Unknown WhitespaceRule" for a value outside 0-3.
    static const std::string& ApplyRule(WhitespaceRule rule, const std::string& text, std::string& buffer);
};

} // namespace QzXmlLib16

#endif
