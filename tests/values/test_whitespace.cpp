// Tests of the whiteSpace rules: the three text operations, the dispatch and its failure, and
// the promise that unchanged text is handed back without a copy.
#include "values/WhitespaceUtils.h"

#include "foundation/Exceptions.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

using namespace QzXmlLib16;

namespace {

std::string S(const char* text, size_t n) {
    return std::string(text, n);
}

} // namespace

// Only the four XML whitespace characters count; vertical tab, form feed, NUL and NBSP do not.
TEST(CWhitespaceUtilsTest, IsWhiteSpaceKnowsExactlyFourCharacters) {
    for (int c = -128; c < 128; ++c) {
        bool expected = c == ' ' || c == '\t' || c == '\r' || c == '\n';
        EXPECT_EQ(expected, CWhitespaceUtils::IsWhiteSpace(static_cast<char>(c))) << c;
    }
}

TEST(CWhitespaceUtilsTest, PreserveNormalisesLineEndsOnly) {
    EXPECT_EQ("a\nb\nc", CWhitespaceUtils::PreserveText(std::string("a\rb\r\nc")));
    EXPECT_EQ("\n\n", CWhitespaceUtils::PreserveText(std::string("\r\r\n")));
    EXPECT_EQ("\n\n", CWhitespaceUtils::PreserveText(std::string("\n\r")));
    EXPECT_EQ(" \t a \n", CWhitespaceUtils::PreserveText(std::string(" \t a \n")));
    EXPECT_EQ("", CWhitespaceUtils::PreserveText(std::string()));
}

// The pointer form reads the given length, stops at a zero byte, and may split a CR LF pair.
TEST(CWhitespaceUtilsTest, PreservePointerFormHonoursLengthAndZeroByte) {
    const char text[] = "ab\r\ncd\0ef";
    EXPECT_EQ("ab\ncd", CWhitespaceUtils::PreserveText(text, static_cast<int>(sizeof(text) - 1)));
    EXPECT_EQ("ab\n", CWhitespaceUtils::PreserveText(text, 3));
    EXPECT_EQ("", CWhitespaceUtils::PreserveText(text, 0));
    EXPECT_EQ("ab\ncd", CWhitespaceUtils::PreserveText(text, -1));
    EXPECT_EQ("", CWhitespaceUtils::PreserveText(nullptr, 5));
}

TEST(CWhitespaceUtilsTest, ReplaceTurnsEachLineEndAndTabIntoOneSpace) {
    EXPECT_EQ("a b", CWhitespaceUtils::ReplaceText("a\r\nb"));
    EXPECT_EQ("a b", CWhitespaceUtils::ReplaceText("a\tb"));
    EXPECT_EQ("a  b", CWhitespaceUtils::ReplaceText("a\n\rb"));
    EXPECT_EQ("  a  ", CWhitespaceUtils::ReplaceText("\r\n\ta\r\r"));
    EXPECT_EQ("  keep  runs  ", CWhitespaceUtils::ReplaceText("  keep  runs  "));
}

TEST(CWhitespaceUtilsTest, CollapseTrimsAndShrinksRuns) {
    EXPECT_EQ("a b", CWhitespaceUtils::CollapseText("  a \t\r\n b  "));
    EXPECT_EQ("", CWhitespaceUtils::CollapseText("   "));
    EXPECT_EQ("", CWhitespaceUtils::CollapseText(""));
    EXPECT_EQ("x", CWhitespaceUtils::CollapseText("\n\nx\r\n"));
    EXPECT_EQ("a b c", CWhitespaceUtils::CollapseText("a b c"));
    // Non-XML blanks are content.
    EXPECT_EQ("\va\f", CWhitespaceUtils::CollapseText(" \va\f "));
    EXPECT_EQ(S("a\0 b", 4), CWhitespaceUtils::CollapseText(S(" a\0  b ", 7)));
}

// Collapse over random mixtures: no tab, CR or LF left, no space at the ends or doubled, the
// other characters kept in order; a second collapse changes nothing.
TEST(CWhitespaceUtilsTest, CollapseInvariantsOverRandomText) {
    std::mt19937 rng(20261121);
    const char alphabet[] = {' ', '\t', '\r', '\n', 'a', 'b', '\0', '\v'};
    for (int round = 0; round < 2000; ++round) {
        std::string text;
        size_t length = rng() % 24;
        for (size_t i = 0; i < length; ++i)
            text.push_back(alphabet[rng() % sizeof(alphabet)]);
        std::string result = CWhitespaceUtils::CollapseText(text);
        SCOPED_TRACE(::testing::PrintToString(text));
        EXPECT_EQ(std::string::npos, result.find_first_of("\t\r\n"));
        EXPECT_EQ(std::string::npos, result.find("  "));
        if (!result.empty()) {
            EXPECT_NE(' ', result.front());
            EXPECT_NE(' ', result.back());
        }
        std::string contentIn, contentOut;
        for (char c : text)
            if (!CWhitespaceUtils::IsWhiteSpace(c))
                contentIn.push_back(c);
        for (char c : result)
            if (c != ' ')
                contentOut.push_back(c);
        EXPECT_EQ(contentIn, contentOut);
        EXPECT_EQ(result, CWhitespaceUtils::CollapseText(result));
        EXPECT_EQ(result, CWhitespaceUtils::ApplyRule(CWhitespaceUtils::Collapse, text));
    }
}

TEST(CWhitespaceUtilsTest, ApplyRuleDispatchesByNumber) {
    const std::string text = " a\r\n\tb ";
    EXPECT_EQ(text, CWhitespaceUtils::ApplyRule(CWhitespaceUtils::None, text));
    EXPECT_EQ(" a\n\tb ", CWhitespaceUtils::ApplyRule(CWhitespaceUtils::Preserve, text));
    EXPECT_EQ(" a  b ", CWhitespaceUtils::ApplyRule(CWhitespaceUtils::Replace, text));
    EXPECT_EQ("a b", CWhitespaceUtils::ApplyRule(CWhitespaceUtils::Collapse, text));
    EXPECT_EQ(0, CWhitespaceUtils::None);
    EXPECT_EQ(1, CWhitespaceUtils::Preserve);
    EXPECT_EQ(2, CWhitespaceUtils::Replace);
    EXPECT_EQ(3, CWhitespaceUtils::Collapse);
}

TEST(CWhitespaceUtilsTest, ApplyRuleRefusesUnknownRule) {
    for (int rule : {-1, 4, 1000}) {
        try {
            CWhitespaceUtils::ApplyRule(static_cast<CWhitespaceUtils::WhitespaceRule>(rule), "x");
            ADD_FAILURE() << "no exception for rule " << rule;
        } catch (const CQzException& e) {
            EXPECT_EQ("Unknown WhitespaceRule", e.GetMessage());
            EXPECT_EQ(nullptr, dynamic_cast<const CQzValidationException*>(&e));
        }
        std::string buffer;
        EXPECT_THROW(
            CWhitespaceUtils::ApplyRule(static_cast<CWhitespaceUtils::WhitespaceRule>(rule), "x", buffer),
            CQzException);
    }
}

// The readers rely on this: text the rule leaves alone comes back as the same object, and the
// buffer is only touched when the rule changes something.
TEST(CWhitespaceUtilsTest, BufferFormReturnsInputWhenUnchanged) {
    struct Row {
        CWhitespaceUtils::WhitespaceRule rule;
        const char* unchanged;
        const char* changed;
    };
    const Row rows[] = {{CWhitespaceUtils::None, " a\r\n ", nullptr},
                        {CWhitespaceUtils::Preserve, " a\n\t ", "a\r"},
                        {CWhitespaceUtils::Replace, "  a  b ", "a\nb"},
                        {CWhitespaceUtils::Collapse, "a b", "a  b"}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.rule);
        std::string buffer;
        std::string text = row.unchanged;
        EXPECT_EQ(&text, &CWhitespaceUtils::ApplyRule(row.rule, text, buffer));
        EXPECT_TRUE(buffer.empty());
        if (row.changed) {
            std::string changed = row.changed;
            EXPECT_EQ(&buffer, &CWhitespaceUtils::ApplyRule(row.rule, changed, buffer));
        }
    }
    // A buffer with old content is overwritten, not appended to.
    std::string buffer = "old";
    EXPECT_EQ("a b", CWhitespaceUtils::ApplyRule(CWhitespaceUtils::Collapse, std::string(" a b"), buffer));
}

namespace {

// Preserve, Replace and Collapse serve both as rule values and as callable operations.
TEST(WhitespaceRuleNames, NameBothTheRuleAndItsOperation) {
    using namespace QzXmlLib16;
    CWhitespaceUtils::WhitespaceRule rule = CWhitespaceUtils::Collapse;
    EXPECT_EQ(3, rule);
    EXPECT_EQ(1, static_cast<int>(CWhitespaceUtils::Preserve));
    EXPECT_EQ(2, static_cast<int>(CWhitespaceUtils::Replace));
    EXPECT_EQ("a b", CWhitespaceUtils::Collapse("  a \n b "));
    EXPECT_EQ("  a   b ", CWhitespaceUtils::Replace("  a \n\tb "));
    EXPECT_EQ("a\nb", CWhitespaceUtils::Preserve("a\r\nb"));
    EXPECT_EQ("a\n", CWhitespaceUtils::Preserve("a\r\nb", 3));
    EXPECT_EQ(CWhitespaceUtils::Collapse("\tx\t"), CWhitespaceUtils::ApplyRule(CWhitespaceUtils::Collapse, "\tx\t"));
    switch (rule) {
    case CWhitespaceUtils::Collapse:
        break;
    default:
        ADD_FAILURE() << "a rule constant must serve as a case label";
    }
}

} // namespace
