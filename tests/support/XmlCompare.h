// XmlCompare.h - test helpers that parse XML with the library's expat reader
// (tree/XmlDocument.h) and compare the element trees of two documents.
#ifndef QZXML_TESTS_SUPPORT_XMLCOMPARE_H
#define QZXML_TESTS_SUPPORT_XMLCOMPARE_H

#include <gtest/gtest.h>

#include <string>

namespace QzXmlTest {

// How text is compared. Exact: every character of an element's text counts. Layout:
// leading and trailing white space of each element's text is dropped, so indentation
// and line ends between elements make no difference.
enum TextCompare { TextExact, TextIgnoreLayout };

// Success when `xml` parses; otherwise the parser's message.
::testing::AssertionResult IsWellFormed(const std::string& xml);
// Success when both documents parse and their element trees (names, namespaces, sorted
// attributes, text under `mode`) agree; otherwise both trees, one line per element.
::testing::AssertionResult SameElementTree(const std::string& expected, const std::string& actual,
                                           TextCompare mode = TextExact);

} // namespace QzXmlTest

#endif
