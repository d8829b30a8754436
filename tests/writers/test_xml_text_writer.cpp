// Tests of the XML text writer: layout, escaping, namespace declarations, messages, flushing.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "foundation/Exceptions.h"
#include "foundation/TextStream.h"
#include "support/TestSupport.h"
#include "support/XmlCompare.h"
#include "writers/XmlTextWriter.h"

using namespace QzXmlLib16;
using QzTest::MessageOf;
using QzXmlTest::IsWellFormed;

namespace {

const char* const kXsi = "http://www.w3.org/2001/XMLSchema-instance";

// A memory stream with an open writer on it.
class XmlTextWriterTest : public ::testing::Test {
protected:
    XmlTextWriterTest() : m_writer(m_stream) { m_writer.Open(); }
    std::string Text() const { return m_stream.GetText(); }
    // Closes the writer and returns everything written, which must parse unless the test
    // writes a fragment on purpose.
    std::string Finish(bool wellFormed = true) {
        m_writer.Close();
        std::string text = Text();
        if (wellFormed) {
            EXPECT_TRUE(IsWellFormed(text));
        }
        return text;
    }
    void Element(const std::string& name, const std::string& uri = "", const std::string& text = "") {
        m_writer.WriteStartElement(name, uri);
        m_writer.WriteString(text, ItemString, false);
        m_writer.WriteEndElement();
    }

    CTextStream m_stream;
    CXmlTextWriter m_writer;
};

// A memory stream that records the length it held at each Flush, then empties itself
// as a file stream would.
class CFlushRecordingStream : public CTextStream {
public:
    void Flush() override {
        m_flushedAt.push_back(GetLength());
        m_flushed += GetText();
        m_text.Empty();
    }
    std::vector<unsigned long> m_flushedAt;
    std::string m_flushed;
};

} // namespace

// ---------------------------------------------------------------------------
// Layout

// Default layout: children on own lines indented by a tab per level, text on one line, an
// empty element self-closed; empty text keeps the start tag open for attributes.
TEST_F(XmlTextWriterTest, DefaultLayoutIndentsChildren) {
    m_writer.WriteStartElement("root", "");
    Element("a", "", "text");
    m_writer.WriteStartElement("b", "");
    Element("c");
    m_writer.WriteEndElement();
    m_writer.WriteStartElement("d", "");
    m_writer.WriteString("", ItemString, false);
    m_writer.WriteAttributeString("x", "", "1", ItemString);
    m_writer.WriteEndElement();
    m_writer.WriteEndElement();
    EXPECT_EQ("<root>\n\t<a>text</a>\n\t<b>\n\t\t<c/>\n\t</b>\n\t<d x=\"1\"/>\n</root>\n", Finish());
}

// Format off: no indent and no line ends between elements; declaration and comments
// still end their lines.
TEST_F(XmlTextWriterTest, FormatOffWritesOneLine) {
    CTextStream stream(EncodingUTF8);
    CXmlTextWriter writer(stream);
    writer.Open();
    writer.SetFormat(false);
    writer.WriteStartDocument();
    writer.WriteComment("c");
    writer.WriteStartElement("root", "");
    writer.WriteStartElement("a", "");
    writer.WriteString("x", ItemString, false);
    writer.WriteEndElement();
    writer.WriteStartElement("b", "");
    writer.WriteEndElement();
    writer.WriteEndElement();
    writer.Close();
    EXPECT_EQ("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!--c-->\n<root><a>x</a><b/></root>",
              std::string(stream.GetText()));
}

// Mixed content: the end tag is indented because a child was written.
TEST_F(XmlTextWriterTest, MixedContentIndentsEndTag) {
    m_writer.WriteStartElement("a", "");
    m_writer.WriteString("x", ItemString, false);
    Element("b");
    m_writer.WriteString("y", ItemString, false);
    m_writer.WriteEndElement();
    EXPECT_EQ("<a>x\t<b/>\ny</a>\n", Finish());
}

// Indent characters are repeated per level, also past the cached run.
TEST_F(XmlTextWriterTest, CustomIndentAtDepth) {
    m_writer.SetIndentChars("  ");
    const int depth = 40;
    for (int i = 0; i <= depth; ++i)
        m_writer.WriteStartElement("e", "");
    for (int i = 0; i <= depth; ++i)
        m_writer.WriteEndElement();
    std::string text = Finish();
    std::string deepest = std::string(2 * depth, ' ') + "<e/>\n";
    EXPECT_NE(std::string::npos, text.find("\n" + deepest));
    EXPECT_EQ(std::string::npos, text.find("\n " + deepest));

    m_writer.SetIndentChars(nullptr);
    EXPECT_EQ("", m_writer.GetIndentChars());
}

// CR LF ends every line, also inside text; an invalid type leaves the setting as it was.
TEST_F(XmlTextWriterTest, EolTypeCrLfAndInvalidType) {
    m_writer.SetEOLType(EOLCrLf);
    EXPECT_EQ("Invalid EOL type.", MessageOf([&] { m_writer.SetEOLType(static_cast<EOLType>(2)); }));
    EXPECT_EQ(EOLCrLf, m_writer.GetEOLType());
    m_writer.WriteStartElement("a", "");
    Element("b", "", "1\n2");
    m_writer.WriteEndElement();
    EXPECT_EQ("<a>\r\n\t<b>1\r\n2</b>\r\n</a>\r\n", Finish());
}

// ---------------------------------------------------------------------------
// Escaping

TEST_F(XmlTextWriterTest, PadAndAppendTextAndAttributeRules) {
    struct Row {
        const char* input;
        const char* inText;
        const char* inAttribute;
    } rows[] = {
        {"a\"b", "a\"b", "a&quot;b"},
        {"<&>", "&lt;&amp;&gt;", "&lt;&amp;&gt;"},
        {"it's\ta", "it's\ta", "it's\ta"},
        {"1\n2", "1\n2", "1&#xA;2"},
        {"1\r\n2\r", "1\n2", "1&#xA;2"},
        {"]]>", "]]&gt;", "]]&gt;"},
        {"\xC3\xA9\xFF", "\xC3\xA9\xFF", "\xC3\xA9\xFF"},
        {"", "", ""},
        {"&&&&", "&amp;&amp;&amp;&amp;", "&amp;&amp;&amp;&amp;"},
    };
    auto pad = [](const char* input, bool attribute) {
        CTextStream stream;
        CXmlTextWriter(stream).PadAndAppend(input, attribute);
        return std::string(stream.GetText());
    };
    for (const Row& row : rows) {
        EXPECT_EQ(row.inText, pad(row.input, false)) << row.input;
        EXPECT_EQ(row.inAttribute, pad(row.input, true)) << row.input;
    }
}

// Long texts go through the staging of escaped output in several pieces.
TEST_F(XmlTextWriterTest, PadAndAppendLongTextsKeepEveryCharacter) {
    std::string input;
    std::string expected;
    for (int i = 0; i < 5000; ++i) {
        input += "ab<";
        expected += "ab&lt;";
        if (i % 7 == 0) {
            input += std::string(3000, 'x');
            expected += std::string(3000, 'x');
        }
    }
    input += "tail";
    expected += "tail";
    m_writer.PadAndAppend(input.c_str(), false);
    EXPECT_EQ(expected, Text());
}

TEST_F(XmlTextWriterTest, AttributeLineFeedSurvivesParsing) {
    m_writer.WriteStartElement("a", "");
    m_writer.WriteAttributeString("x", "", "1\n2\"3", ItemString);
    m_writer.WriteEndElement();
    std::string text = Finish();
    EXPECT_EQ("<a x=\"1&#xA;2&quot;3\"/>\n", text);
    EXPECT_TRUE(QzXmlTest::SameElementTree("<a x='1&#10;2&#34;3'/>", text));
}

// Text that starts with the CDATA marker is written as it is; anything in front of the
// marker makes the whole text escaped.
TEST_F(XmlTextWriterTest, CDataMarkerAtStartPassesThrough) {
    m_writer.WriteStartElement("r", "");
    Element("a", "", "<![CDATA[1<2]]>");
    Element("b", "", " <![CDATA[1<2]]>");
    m_writer.WriteEndElement();
    EXPECT_EQ("<r>\n\t<a><![CDATA[1<2]]></a>\n\t<b> &lt;![CDATA[1&lt;2]]&gt;</b>\n</r>\n", Finish());
}

TEST_F(XmlTextWriterTest, DefaultValuesFollowTheSwitch) {
    m_writer.WriteStartElement("r", "");
    m_writer.WriteStartElement("a", "");
    m_writer.WriteString("d", ItemString, true);
    m_writer.WriteEndElement();
    m_writer.SetWriteDefaultElementValues(true);
    m_writer.WriteStartElement("b", "");
    m_writer.WriteString("d", ItemString, true);
    m_writer.WriteEndElement();
    m_writer.WriteEndElement();
    EXPECT_EQ("<r>\n\t<a/>\n\t<b>d</b>\n</r>\n", Finish());
}

// ---------------------------------------------------------------------------
// Namespaces

TEST_F(XmlTextWriterTest, ElementInNewNamespaceIsDeclaredOnItself) {
    m_writer.WriteStartElement("root", "");
    Element("a", "urn:a");
    Element("b", "urn:a");
    m_writer.WriteEndElement();
    std::string text = Finish();
    // The second child allocates the same prefix again: the first child's map has died.
    EXPECT_EQ("<root>\n\t<AA:a xmlns:AA=\"urn:a\"/>\n\t<AA:b xmlns:AA=\"urn:a\"/>\n</root>\n", text);
    EXPECT_TRUE(QzXmlTest::SameElementTree("<root><a xmlns='urn:a'/><b xmlns='urn:a'/></root>", text,
                                           QzXmlTest::TextIgnoreLayout));
}

// Mappings added before the document element are declared there and reused below;
// the XML namespace is never declared.
TEST_F(XmlTextWriterTest, NamespacesAddedBeforeRootAreDeclaredOnRoot) {
    m_writer.SetDefaultNamespace("urn:d");
    m_writer.AddNamespace("p", "urn:p");
    m_writer.AddNamespace("b", "urn:b");
    m_writer.WriteStartElement("root", "urn:d");
    m_writer.WriteAttributeString("lang", CXmlWriter::XML_NAMESPACE, "en", ItemString);
    Element("child", "urn:p", "1");
    Element("plain", "", "2");
    m_writer.WriteEndElement();
    std::string text = Finish();
    EXPECT_EQ("<root xmlns=\"urn:d\" xmlns:b=\"urn:b\" xmlns:p=\"urn:p\" xml:lang=\"en\">\n"
              "\t<p:child>1</p:child>\n\t<plain>2</plain>\n</root>\n",
              text);
    // An element without namespace under a default namespace reads back in the default.
    EXPECT_TRUE(QzXmlTest::SameElementTree(
        "<root xmlns='urn:d' xml:lang='en'><child xmlns='urn:p'>1</child><plain>2</plain></root>", text,
        QzXmlTest::TextIgnoreLayout));
}

// The document element's own new prefix is declared once, ahead of the writer's mappings.
TEST_F(XmlTextWriterTest, DocumentElementInUndeclaredNamespace) {
    m_writer.AddNamespace("p", "urn:p");
    Element("root", "urn:r");
    EXPECT_EQ("<AA:root xmlns:AA=\"urn:r\" xmlns:p=\"urn:p\"/>\n", Finish());
}

TEST_F(XmlTextWriterTest, AttributeInNewNamespaceIsDeclaredFirst) {
    m_writer.WriteStartElement("a", "");
    m_writer.WriteAttributeString("x", "urn:u", "1", ItemString);
    m_writer.WriteAttributeString("y", "urn:u", "2", ItemString);
    m_writer.WriteEndElement();
    EXPECT_EQ("<a xmlns:AA=\"urn:u\" AA:x=\"1\" AA:y=\"2\"/>\n", Finish());
}

// An attribute in the default namespace still needs a prefix.
TEST_F(XmlTextWriterTest, AttributeInDefaultNamespaceGetsPrefix) {
    m_writer.SetDefaultNamespace("urn:d");
    m_writer.WriteStartElement("a", "urn:d");
    m_writer.WriteAttributeString("x", "urn:d", "1", ItemString);
    m_writer.WriteEndElement();
    std::string text = Finish();
    EXPECT_EQ("<a xmlns=\"urn:d\" xmlns:AA=\"urn:d\" AA:x=\"1\"/>\n", text);
    EXPECT_TRUE(QzXmlTest::SameElementTree("<a xmlns='urn:d' xmlns:q='urn:d' q:x='1'/>", text));
}

// xsi:nil declares the instance namespace once and reuses it below.
TEST_F(XmlTextWriterTest, NilDeclaresInstanceNamespaceOnce) {
    m_writer.WriteStartElement("a", "");
    m_writer.WriteAttributeNil();
    m_writer.WriteStartElement("b", "");
    m_writer.WriteAttributeNil();
    m_writer.WriteEndElement();
    m_writer.WriteEndElement();
    EXPECT_EQ(std::string("<a xmlns:AA=\"") + kXsi + "\" AA:nil=\"true\">\n\t<b AA:nil=\"true\"/>\n</a>\n",
              Finish());
}

// Note: the type's namespace declaration ends in a blank, and the attribute adds its own.
TEST_F(XmlTextWriterTest, TypeAttributeForms) {
    m_writer.SetDefaultNamespace("urn:d");
    m_writer.WriteStartElement("r", "urn:d");
    m_writer.WriteStartElement("a", "urn:d");
    m_writer.WriteAttributeType("urn:t", "T", ItemString);
    m_writer.WriteEndElement();
    m_writer.WriteStartElement("b", "urn:d");
    m_writer.WriteAttributeType("urn:d", "D", ItemString);
    m_writer.WriteEndElement();
    m_writer.WriteStartElement("c", "");
    m_writer.WriteAttributeType("", "E", ItemString);
    m_writer.WriteEndElement();
    m_writer.WriteEndElement();
    EXPECT_EQ(std::string("<r xmlns=\"urn:d\">\n") + "\t<a xmlns:AA=\"urn:t\"  xmlns:AB=\"" + kXsi +
                  "\" AB:type=\"AA:T\"/>\n" + "\t<b xmlns:AA=\"" + kXsi + "\" AA:type=\"D\"/>\n" +
                  "\t<c xmlns:AA=\"" + kXsi + "\" AA:type=\"E\"/>\n</r>\n",
              Finish());
}

// ---------------------------------------------------------------------------
// Document-level output

TEST_F(XmlTextWriterTest, StartDocumentPerEncoding) {
    const char* expected[] = {"<?xml version=\"1.0\"?>\n", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n",
                              "<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n", "<?xml version=\"1.0\"?>\n"};
    for (int encoding = 0; encoding < 4; ++encoding) {
        SCOPED_TRACE(encoding);
        CTextStream stream(static_cast<XmlEncoding>(encoding));
        CXmlTextWriter writer(stream);
        writer.Open();
        writer.SetEOLType(EOLLf);
        writer.WriteStartDocument();
        writer.Close();
        EXPECT_EQ(expected[encoding], std::string(stream.GetText()));
    }
}

TEST_F(XmlTextWriterTest, DirectivesCommentsAndInstructions) {
    m_writer.WriteHeaderDirective("<!DOCTYPE r>");
    m_writer.WritePI("<?pi data?>");
    m_writer.WriteComment("a<b");
    m_writer.WriteStartElement("r", "");
    m_writer.WriteInlineSchema("<s/>");
    m_writer.WriteRawElement("<raw a='1'/>");
    m_writer.WriteEndElement();
    m_writer.WriteHeaderDirective("<!-- after -->");
    std::string text = Finish(false);
    // The in-line schema lands inside the open start tag; the raw element after it.
    EXPECT_EQ("<!DOCTYPE r>\n<?pi data?>\n\n<!--a&lt;b-->\n<r \n<s/>\n<raw a='1'/>\n/>\n<!-- after -->\n",
              text);
}

TEST_F(XmlTextWriterTest, CloseParentElmCountsChildren) {
    m_writer.CloseParentElm(); // no element: nothing
    m_writer.WriteStartElement("r", "");
    m_writer.CloseParentElm();
    EXPECT_EQ(1, m_writer.GetContext()->GetChildCount());
    EXPECT_FALSE(m_writer.GetContext()->IsStartTagOpen());
    m_writer.WriteEndElement();
    EXPECT_EQ("<r>\n</r>\n", Finish());
}

// ---------------------------------------------------------------------------
// Failures

TEST_F(XmlTextWriterTest, AttributesAfterContentAreRefused) {
    const std::string message = "Attributes must be added before elements";
    m_writer.WriteStartElement("r", "");
    m_writer.WriteString("t", ItemString, false);
    EXPECT_EQ(message, MessageOf([&] { m_writer.WriteAttributeString("x", "", "1", ItemString); }));
    EXPECT_EQ(message, MessageOf([&] { m_writer.WriteAttributeType("", "T", ItemString); }));
    EXPECT_EQ(message, MessageOf([&] { m_writer.WriteAttributeNil(); }));
    Element("c");
    EXPECT_EQ(message, MessageOf([&] { m_writer.WriteAttributeNil(); }));
    m_writer.WriteEndElement();
    // No element at all.
    EXPECT_EQ(message, MessageOf([&] { m_writer.WriteAttributeString("x", "", "1", ItemString); }));
    EXPECT_EQ("<r>t\t<c/>\n</r>\n", Finish());
}

// Outside the document element there is nothing to end and no place for text; empty text
// and a skipped default value still write nothing there.
TEST_F(XmlTextWriterTest, NoOpenElementToEndOrHoldText) {
    EXPECT_EQ("There is no open Element to end.", MessageOf([&] { m_writer.WriteEndElement(); }));
    const std::string noElement = "There is no open Element to hold the text.";
    EXPECT_EQ(noElement, MessageOf([&] { m_writer.WriteString("x", ItemString, false); }));
    EXPECT_NO_THROW(m_writer.WriteString("", ItemString, false));
    EXPECT_NO_THROW(m_writer.WriteString("d", ItemString, true));
    Element("r", "", "t");
    EXPECT_EQ(noElement, MessageOf([&] { m_writer.WriteString("after", ItemString, false); }));
    EXPECT_EQ("<r>t</r>\n", Finish());
}

// Close closes the stream first, then complains about the open element.
TEST_F(XmlTextWriterTest, CloseWithOpenElement) {
    struct ClosingStream : CFlushRecordingStream {
        bool closed = false;
        void Close() override { closed = true; }
    } closing;
    CXmlTextWriter writer(closing);
    writer.Open();
    writer.WriteStartElement("r", "");
    EXPECT_EQ("An Element has not been closed.", MessageOf([&] { writer.Close(); }));
    EXPECT_TRUE(closing.closed);
    writer.WriteEndElement();
    EXPECT_NO_THROW(writer.Close());
}

// ---------------------------------------------------------------------------
// Flushing

// Each write operation flushes once the stream holds 4096 characters; raw elements do not.
TEST_F(XmlTextWriterTest, FlushAtThreshold) {
    CFlushRecordingStream stream;
    CXmlTextWriter writer(stream);
    writer.Open();
    writer.SetFormat(false);
    writer.WriteStartElement("r", "");                             // "<r"
    writer.WriteString(std::string(4092, 'x'), ItemString, false); // ">" + 4092: 4095
    EXPECT_TRUE(stream.m_flushedAt.empty());
    writer.WriteRawElement(std::string(10, 'y')); // 4105, no check
    EXPECT_TRUE(stream.m_flushedAt.empty());
    writer.WriteString("z", ItemString, false);
    ASSERT_EQ(1u, stream.m_flushedAt.size());
    EXPECT_EQ(4106u, stream.m_flushedAt[0]);
    writer.WriteEndElement();
    writer.Close();
    EXPECT_EQ("<r>" + std::string(4092, 'x') + std::string(10, 'y') + "z</r>",
              stream.m_flushed + stream.GetText());
}

// A long document through a flushing stream comes out whole and in order.
TEST_F(XmlTextWriterTest, FlushingKeepsDocumentWhole) {
    CFlushRecordingStream stream;
    CXmlTextWriter writer(stream);
    writer.Open();
    writer.WriteStartElement("r", "urn:r");
    for (int i = 0; i < 2000; ++i) {
        writer.WriteStartElement("item", "urn:r");
        writer.WriteAttributeString("n", "", std::to_string(i), ItemI4);
        writer.WriteString("v<" + std::to_string(i), ItemString, false);
        writer.WriteEndElement();
    }
    writer.WriteEndElement();
    writer.Close();
    EXPECT_GT(stream.m_flushedAt.size(), 10u);
    for (unsigned long length : stream.m_flushedAt)
        EXPECT_LT(length, 4096u + 200u);
    std::string text = stream.m_flushed + stream.GetText();
    EXPECT_TRUE(IsWellFormed(text));
    EXPECT_NE(std::string::npos, text.find("<AA:item n=\"1999\">v&lt;1999</AA:item>"));
}

// A very deep document is written without recursion; each level costs no map copy.
TEST_F(XmlTextWriterTest, DeepDocumentWithFormatOff) {
    const int depth = 1000000;
    m_writer.SetFormat(false);
    for (int i = 0; i < depth; ++i)
        m_writer.WriteStartElement("e", "urn:deep");
    EXPECT_TRUE(m_writer.GetContext()->GetInherits());
    for (int i = 0; i < depth; ++i)
        m_writer.WriteEndElement();
    std::string text = Finish(false); // parsing a million levels is the reader's test
    EXPECT_EQ(0u, text.find("<AA:e xmlns:AA=\"urn:deep\"><AA:e><AA:e>"));
    EXPECT_EQ(text.size() - 14, text.rfind("</AA:e></AA:e>"));
    EXPECT_EQ(text.find("xmlns"), text.rfind("xmlns")); // declared once, on the outermost element
}

// ---------------------------------------------------------------------------
// Staging

// Between operations a memory stream holds everything written so far: a start tag still
// open, a comment or schema written where the stream stands, and the text ahead of a
// failure; a header directive is refused inside an element and accepted after it.
TEST(XmlTextWriterStagingTest, MemoryStreamHoldsTextAfterEveryOperation) {
    CTextStream stream;
    CXmlTextWriter writer(stream);
    writer.Open();
    writer.WriteStartElement("r", "");
    EXPECT_EQ("<r", std::string(stream.GetText()));
    writer.WriteComment("c--d"); // not escaped, and the start tag stays open
    EXPECT_EQ("<r<!--c--d-->\n", std::string(stream.GetText()));
    writer.WriteInlineSchema("<s/>");
    EXPECT_EQ("<r<!--c--d-->\n \n<s/>\n", std::string(stream.GetText()));
    writer.WriteString("x", ItemString, false);
    EXPECT_EQ("Attributes must be added before elements", MessageOf([&] { writer.WriteAttributeNil(); }));
    EXPECT_EQ("<r<!--c--d-->\n \n<s/>\n>x", std::string(stream.GetText()));
    EXPECT_EQ("Headed directives must appear before an Element has been added.",
              MessageOf([&] { writer.WriteHeaderDirective("<!DOCTYPE r>"); }));
    writer.WriteEndElement();
    EXPECT_EQ("<r<!--c--d-->\n \n<s/>\n>x</r>\n", std::string(stream.GetText()));
    writer.WriteHeaderDirective("<!-- after -->"); // no context again: accepted
    EXPECT_EQ("<r<!--c--d-->\n \n<s/>\n>x</r>\n<!-- after -->\n", std::string(stream.GetText()));
}

// Texts longer than the staging area arrive whole and in order, around staged pieces.
TEST(XmlTextWriterStagingTest, LongTextsPassTheStaging) {
    CTextStream stream;
    CXmlTextWriter writer(stream);
    writer.Open();
    writer.SetFormat(false);
    std::string expected = "<r>";
    writer.WriteStartElement("r", "");
    for (size_t size : {1u, 2047u, 2048u, 2049u, 10000u}) {
        std::string clean(size, 'c');
        std::string escaped(size, '&');
        writer.WriteStartElement("a", "");
        writer.WriteAttributeString("v", "", clean, ItemString);
        writer.WriteString(escaped, ItemString, false);
        writer.WriteEndElement();
        expected += "<a v=\"" + clean + "\">";
        for (size_t i = 0; i < size; ++i)
            expected += "&amp;";
        expected += "</a>";
    }
    writer.WriteEndElement();
    writer.Close();
    EXPECT_EQ(expected + "</r>", std::string(stream.GetText()));
}
