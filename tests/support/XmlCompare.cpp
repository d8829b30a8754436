// XmlCompare.cpp - element tree dumps through CXmlDocument, for comparing documents.
#include "support/XmlCompare.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "foundation/Exceptions.h"
#include "tree/XmlAttribute.h"
#include "tree/XmlDocument.h"
#include "tree/XmlElement.h"

using namespace QzXmlLib16;

namespace QzXmlTest {

namespace {

// Tree printing

std::string Trim(const std::string& text) {
    size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos)
        return std::string();
    return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

// Makes control characters visible, so that a difference in line ends shows in a diff.
std::string Visible(const std::string& text) {
    std::string out;
    for (char c : text)
        out += c == '\n' ? "\\n" : c == '\r' ? "\\r" : c == '\t' ? "\\t" : std::string(1, c);
    return out;
}

// One line per element, depth-first: "{uri}name @{uri}attr=\"value\" ... text=\"...\"",
// attributes sorted. Throws the parser's CQzException when the text is not well-formed.
std::string DumpElementTree(const std::string& xml, TextCompare mode) {
    CXmlDocument document;
    document.LoadXml(xml.c_str());
    std::string out;
    // Explicit stack: (element, depth); siblings are pushed in reverse to keep order.
    std::vector<std::pair<const CXmlElement*, int>> stack;
    if (document.GetDocumentElement() != nullptr)
        stack.emplace_back(document.GetDocumentElement(), 0);
    while (!stack.empty()) {
        const CXmlElement* element = stack.back().first;
        int depth = stack.back().second;
        stack.pop_back();
        out.append(static_cast<size_t>(depth) * 2, ' ');
        out += "{" + element->GetNamespaceURI() + "}" + element->GetLocalName();
        std::vector<std::string> attributes;
        for (const CXmlAttribute* attribute : element->GetAttributes())
            attributes.push_back("@{" + attribute->GetNamespaceURI() + "}" + attribute->GetLocalName() +
                                 "=\"" + Visible(attribute->GetValue()) + "\"");
        std::sort(attributes.begin(), attributes.end());
        for (const std::string& attribute : attributes)
            out += " " + attribute;
        std::string text = mode == TextExact ? element->GetText() : Trim(element->GetText());
        if (!text.empty())
            out += " text=\"" + Visible(text) + "\"";
        out += "\n";
        std::vector<const CXmlElement*> children;
        for (const CXmlElement* child = element->GetFirstElement(); child != nullptr;
             child = child->GetNextSiblingElement())
            children.push_back(child);
        for (auto it = children.rbegin(); it != children.rend(); ++it)
            stack.emplace_back(*it, depth + 1);
    }
    return out;
}

} // namespace

::testing::AssertionResult IsWellFormed(const std::string& xml) {
    try {
        DumpElementTree(xml, TextExact);
    } catch (const CQzException& e) {
        return ::testing::AssertionFailure() << e.GetFullMessage() << "\nin:\n" << xml;
    }
    return ::testing::AssertionSuccess();
}

::testing::AssertionResult SameElementTree(const std::string& expected, const std::string& actual,
                                           TextCompare mode) {
    std::string trees[2];
    const std::string* documents[2] = {&expected, &actual};
    for (int i = 0; i < 2; ++i) {
        try {
            trees[i] = DumpElementTree(*documents[i], mode);
        } catch (const CQzException& e) {
            return ::testing::AssertionFailure()
                   << (i == 0 ? "expected " : "") << "document does not parse: " << e.GetFullMessage() << "\n"
                   << *documents[i];
        }
    }
    if (trees[0] == trees[1])
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "element trees differ\nexpected:\n"
                                         << trees[0] << "actual:\n"
                                         << trees[1];
}

} // namespace QzXmlTest
