// XmlCompare.h - test helpers that parse XML with the library's expat reader
// (tree/XmlDocument.h) and compare or print the element trees of two documents.
#ifndef QZXML_TESTS_SUPPORT_XMLCOMPARE_H
#define QZXML_TESTS_SUPPORT_XMLCOMPARE_H

#include <gtest/gtest.h>

#include <string>

namespace QzXmlTest {

// How text is compared. Exact: every character of an element's text counts. Layout:
// leading and trailing white space of each element's text is dropped, so indentation
// and line ends between elements make no difference.
enum TextCompare { TextExact, TextIgnoreLayout };

// One line per element, depth-first: "{uri}name @{uri}attr=\"value\" ... text=\"...\"";
// attributes sorted by namespace and name. Throws the parser's CQzException when the
// text is not well-formed.
std::string DumpElementTree(const std::string& xml, TextCompare mode = TextExact);
// The same for encoded bytes (a BOM or the declaration tells the parser the encoding).
std::string DumpElementTreeBytes(const unsigned char* bytes, unsigned long length,
                                 TextCompare mode = TextExact);

// Success when `xml` parses; otherwise the parser's message.
::testing::AssertionResult IsWellFormed(const std::string& xml);
// Success when both documents parse and their element trees agree under `mode`.
::testing::AssertionResult SameElementTree(const std::string& expected, const std::string& actual,
                                           TextCompare mode = TextExact);

} // namespace QzXmlTest

#endif
