// Tests of CXmlDocument loading: every load form, text and CDATA handling, the namespace map,
// the element callback and every failure message.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <string>
#include <unistd.h>
#include <vector>

#include "foundation/Encoder.h"
#include "foundation/Exceptions.h"
#include "tree/ExpatReader.h"
#include "tree/XmlDocument.h"
#include "support/TestSupport.h"

using namespace QzXmlLib16;

namespace {

using QzTest::Child;
using QzTest::MessageOf;

// A file under the test temp directory, removed at the end of the test.
class TempFile {
public:
    explicit TempFile(const std::string& content, const char* name = "qzxml_tree_doc.xml")
        : m_path(::testing::TempDir() + name) {
        FILE* file = std::fopen(m_path.c_str(), "wb");
        if (file) {
            std::fwrite(content.data(), 1, content.size(), file);
            std::fclose(file);
        }
    }
    ~TempFile() { std::remove(m_path.c_str()); }
    const char* Path() const { return m_path.c_str(); }

private:
    std::string m_path;
};

// A compact picture of an element and its subtree: {uri}name, then @{uri}name=value for each
// attribute in order, the text in quotes and the children in brackets.
std::string Dump(CXmlElement* e) {
    std::string out = "{" + e->GetNamespaceURI() + "}" + e->GetLocalName();
    for (const auto& a : e->GetAttributes())
        out += " @{" + a->GetNamespaceURI() + "}" + a->GetLocalName() + "=" + a->GetValue();
    if (!e->GetText().empty())
        out += " '" + e->GetText() + "'";
    std::string children;
    for (CXmlElement* c = e->GetFirstElement(); c; c = c->GetNextSiblingElement())
        children += (children.empty() ? "" : ", ") + Dump(c);
    return children.empty() ? out : out + " [" + children + "]";
}

} // namespace

// --- Text content

// Text around children is concatenated; comments and processing instructions leave no
// trace; line ends are normalised; a carriage return written as a reference is dropped from
// text but kept in attribute values; entities are resolved in both.
TEST(CXmlDocumentText, TextAndAttributeValues) {
    const struct {
        const char* xml;
        const char* text;
        const char* attribute; // value of "v"
    } cases[] = {
        {"<a>x<b/>y</a>", "xy", ""},
        {"<a>\n <b/>\n</a>", "\n \n", ""},
        {"<?xml version=\"1.0\"?><!DOCTYPE a><!-- c --><a>one<!-- m -->two<?pi data?>three</a><!-- e -->",
         "onetwothree", ""},
        {"<a v=\"1&#13;2\">x&#13;&#10;y&#13;</a>", "x\ny", "1\r2"},
        {"<a>1\r\n2\r3</a>", "1\n2\n3", ""},
        {"<a v=\"&lt;&amp;&quot;\">&lt;&gt;&amp;&apos;&#65;</a>", "<>&'A", "<&\""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.xml);
        CXmlDocument doc;
        doc.LoadXml(c.xml);
        CXmlElement* a = doc.GetDocumentElement();
        EXPECT_EQ("a", a->GetLocalName());
        EXPECT_EQ(c.text, a->GetText());
        EXPECT_EQ(c.attribute, a->GetAttribute("v", ""));
    }
    CXmlDocument doc;
    doc.LoadXml("<a>x<b/>y</a>");
    ASSERT_NE(nullptr, Child(doc.GetDocumentElement(), 0));
    EXPECT_EQ("b", Child(doc.GetDocumentElement(), 0)->GetLocalName());
    EXPECT_EQ(nullptr, Child(doc.GetDocumentElement(), 1));
}

TEST(CXmlDocumentText, LongTextArrivingInPiecesIsWhole) {
    std::string body, expected;
    for (int i = 0; i < 20000; ++i) {
        body += (i % 7 == 0) ? "&amp;" : "abcdefgh";
        expected += (i % 7 == 0) ? "&" : "abcdefgh";
    }
    CXmlDocument doc;
    doc.LoadXml(("<a>" + body + "</a>").c_str());
    EXPECT_EQ(expected, doc.GetDocumentElement()->GetText());
}

// --- CDATA

TEST(CXmlDocumentCdata, StrippedByDefaultMarkersKeptOnRequest) {
    CXmlDocument plain;
    plain.LoadXml("<a><![CDATA[1<2]]></a>");
    EXPECT_EQ("1<2", plain.GetDocumentElement()->GetText());
    CSerializationContext context;
    context.SetStripCDATA(false);
    CXmlDocument doc(context);
    doc.LoadXml("<a>x<![CDATA[1<2]]>y</a>");
    EXPECT_EQ("x<![CDATA[1<2]]>y", doc.GetDocumentElement()->GetText());
    doc.LoadXml("<a><![CDATA[]]></a>");
    EXPECT_EQ("<![CDATA[]]>", doc.GetDocumentElement()->GetText());
}

// --- Names and namespaces

// Namespace and local name are split; an unprefixed attribute is in no namespace whatever the
// default is; declarations are no attributes; attributes keep document order; undeclaring the
// default namespace maps it to empty; the last declaration of a prefix stands for the whole
// document but the elements keep their own URIs. Without namespace processing prefixes and
// declarations stay in the names, and an undeclared prefix is no error.
TEST(CXmlDocumentNames, NamespaceAndLocalNameAreSplit) {
    const struct {
        bool noNamespaces;
        const char* xml;
        const char* tree;
    } cases[] = {
        {false, "<p:a xmlns:p=\"urn:p\" xmlns=\"urn:d\"><b p:x=\"1\" y=\"2\"/></p:a>",
         "{urn:p}a [{urn:d}b @{urn:p}x=1 @{}y=2]"},
        {false, "<a z=\"1\" b=\"2\" m=\"3\"/>", "{}a @{}z=1 @{}b=2 @{}m=3"},
        {false, "<a xmlns=\"urn:d\"><b xmlns=\"\"/></a>", "{urn:d}a [{}b]"},
        {false, "<r><p:a xmlns:p=\"urn:old\"/><p:b xmlns:p=\"urn:new\"/></r>",
         "{}r [{urn:old}a, {urn:new}b]"},
        {true, "<p:a xmlns:p=\"urn:p\" xmlns=\"urn:d\" p:x=\"1\"/>",
         "{}p:a @{}xmlns:p=urn:p @{}xmlns=urn:d @{}p:x=1"},
        {true, "<q:a/>", "{}q:a"},
    };
    for (const auto& c : cases) {
        CSerializationContext context;
        if (c.noNamespaces)
            context.SetSchemaType(SchemaTypeNoNamespaces);
        CXmlDocument doc(context);
        doc.LoadXml(c.xml);
        EXPECT_EQ(c.tree, Dump(doc.GetDocumentElement())) << c.xml;
        EXPECT_TRUE(!c.noNamespaces || doc.GetNamespaceMap().empty()) << c.xml;
    }
}

TEST(CXmlDocumentNames, MapCollectsEveryDeclaration) {
    CXmlDocument doc;
    doc.LoadXml("<a xmlns=\"urn:d\" xmlns:p=\"urn:p\"><b xmlns:q=\"urn:q\"/></a>");
    EXPECT_EQ("urn:d", doc.LookupNamespaceFromAlias(""));
    EXPECT_EQ("urn:p", doc.LookupNamespaceFromAlias("p"));
    // The map does not follow scope: q is known although its element has ended.
    EXPECT_EQ("urn:q", doc.LookupNamespaceFromAlias("q"));
    EXPECT_EQ("", doc.LookupNamespaceFromAlias("none"));
    EXPECT_EQ("p", doc.LookupAliasFromNamespace("urn:p"));
    EXPECT_EQ("", doc.LookupAliasFromNamespace("urn:unknown"));
    EXPECT_EQ(3u, doc.GetNamespaceMap().size());
}

// The last declaration of a prefix names the earlier elements too; an undeclared default stays
// in the map as empty.
TEST(CXmlDocumentNames, RedeclaredPrefixChangesEarlierElements) {
    CXmlDocument doc;
    doc.LoadXml("<r><p:a xmlns:p=\"urn:old\"/><p:b xmlns:p=\"urn:new\"/></r>");
    CXmlElement* a = Child(doc.GetDocumentElement(), 0);
    CXmlElement* b = Child(doc.GetDocumentElement(), 1);
    EXPECT_EQ("a", a->GetQName());
    EXPECT_EQ("p:b", b->GetQName());
    EXPECT_EQ("urn:new", doc.LookupNamespaceFromAlias("p"));
    doc.LoadXml("<a xmlns=\"urn:d\"><b xmlns=\"\"/></a>");
    ASSERT_EQ(1u, doc.GetNamespaceMap().count(""));
    EXPECT_EQ("", doc.LookupNamespaceFromAlias(""));
}

// Where one URI has several prefixes the smallest key wins; "" wins over all.
TEST(CXmlDocumentNames, SmallestPrefixWinsForAUri) {
    CXmlDocument doc;
    doc.LoadXml("<z:a xmlns:z=\"urn:x\" xmlns:b=\"urn:x\"/>");
    EXPECT_EQ("b", doc.LookupAliasFromNamespace("urn:x"));
    EXPECT_EQ("b:a", doc.GetDocumentElement()->GetQName());
    doc.LoadXml("<z:a xmlns:z=\"urn:x\" xmlns=\"urn:x\"/>");
    EXPECT_EQ("", doc.LookupAliasFromNamespace("urn:x"));
    EXPECT_EQ("a", doc.GetDocumentElement()->GetQName());
}

TEST(CXmlDocumentNames, AttributeKnowsItsElement) {
    CXmlDocument doc;
    doc.LoadXml("<a z=\"1\"/>");
    EXPECT_EQ(doc.GetDocumentElement(), doc.GetDocumentElement()->GetAttributes()[0]->GetElement());
}

// Non-ASCII passes through unchanged when the library is told to hold UTF-8.
TEST(CXmlDocumentNames, NonAsciiWithAsciiOnlyHoldsUtf8) {
    ASCIIOnly(true);
    CXmlDocument doc;
    doc.LoadXml("<\xC3\xA9l xmlns=\"urn:\xC3\xBC\" \xC3\xA4=\"Z\xC3\xBCrich\">S\xC3\xA3o</\xC3\xA9l>");
    ASCIIOnly(false);
    EXPECT_EQ("{urn:\xC3\xBC}\xC3\xA9l @{}\xC3\xA4=Z\xC3\xBCrich 'S\xC3\xA3o'",
              Dump(doc.GetDocumentElement()));
    EXPECT_EQ("", doc.LookupAliasFromNamespace("urn:\xC3\xBC"));
    EXPECT_EQ("urn:\xC3\xBC", doc.LookupNamespaceFromAlias(""));
}

// In the "C" locale a character beyond ASCII has no local form and becomes "?".
TEST(CXmlDocumentNames, NonAsciiInTheCLocaleBecomesQuestionMark) {
    CXmlDocument doc;
    doc.LoadXml("<a b=\"\xC3\xA4x\">Z\xC3\xBCrich</a>");
    EXPECT_EQ("Z?rich", doc.GetDocumentElement()->GetText());
    EXPECT_EQ("?x", doc.GetDocumentElement()->GetAttribute("b", ""));
}

// --- Load forms

TEST(CXmlDocumentLoad, StreamAndFileGiveTheSameTree) {
    const std::string xml =
        "<?xml version=\"1.0\"?>\n<a xmlns=\"urn:a\"><b id=\"1\">t</b><b id=\"2\"/></a>\n";
    TempFile file(xml);
    CXmlDocument fromFile;
    fromFile.Load(file.Path());
    CXmlDocument fromStream;
    std::vector<unsigned char> bytes(xml.begin(), xml.end());
    fromStream.LoadXmlStream(bytes.data(), static_cast<unsigned long>(bytes.size()));
    for (CXmlDocument* doc : {&fromFile, &fromStream}) {
        ASSERT_NE(nullptr, doc->GetDocumentElement());
        EXPECT_EQ("{urn:a}a [{urn:a}b @{}id=1 't', {urn:a}b @{}id=2]", Dump(doc->GetDocumentElement()));
        EXPECT_EQ(xml.size(), doc->GetBufferSize());
    }
}

// The stream is copied: the caller may change or free its bytes after the load.
TEST(CXmlDocumentLoad, StreamBytesAreCopied) {
    std::string xml = "<a>text</a>";
    CXmlDocument doc;
    doc.LoadXmlStream(reinterpret_cast<unsigned char*>(&xml[0]), static_cast<unsigned long>(xml.size()));
    xml.assign(xml.size(), 'x');
    EXPECT_EQ('<', doc.GetBuffer()[0]);
    EXPECT_EQ("text", doc.GetDocumentElement()->GetText());
}

// With ASCIIOnly the tree holds UTF-8 whatever the input: a UTF-16 stream with its mark, wide
// text (where a character above U+FFFF keeps its low 16 bits: U+1F600 becomes U+F600) and a
// narrow text, which is never taken to be in the local code page: its declaration decides.
TEST(CXmlDocumentLoad, InputEncodings) {
    std::vector<unsigned char> bytes = {0xFF, 0xFE};
    for (const char16_t* p = u"<a>\u00e9t\u00e9</a>"; *p; ++p) {
        bytes.push_back(static_cast<unsigned char>(*p & 0xFF));
        bytes.push_back(static_cast<unsigned char>(*p >> 8));
    }
    const wchar_t above[] = {L'<', L'a', L'>', static_cast<wchar_t>(0x1F600), L'<', L'/', L'a', L'>', 0};
    ASCIIOnly(true);
    CXmlDocument utf16, wide, narrow;
    utf16.LoadXmlStream(bytes.data(), static_cast<unsigned long>(bytes.size()));
    wide.LoadXml(above);
    narrow.LoadXml("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a>\xE9</a>");
    ASCIIOnly(false);
    EXPECT_EQ("\xC3\xA9t\xC3\xA9", utf16.GetDocumentElement()->GetText());
    EXPECT_EQ("\xEF\x98\x80", wide.GetDocumentElement()->GetText());
    EXPECT_EQ("\xC3\xA9", narrow.GetDocumentElement()->GetText());

    // Wide text is stored as UTF-16: two bytes of mark and two bytes per character.
    const wchar_t* text = L"<a x=\"1\">wide</a>";
    wide.LoadXml(text);
    EXPECT_EQ("{}a @{}x=1 'wide'", Dump(wide.GetDocumentElement()));
    EXPECT_EQ(2u + 2u * std::wcslen(text), wide.GetBufferSize());
    EXPECT_EQ(0xFF, wide.GetBuffer()[0]);
    EXPECT_EQ(0xFE, wide.GetBuffer()[1]);
}

// Reloading, Cleanup and Init each release what the document held (the sanitizer build sees
// any leak).
TEST(CXmlDocumentLoad, DocumentCanBeLoadedAgainAndCleared) {
    CXmlDocument doc;
    doc.LoadXml("<a xmlns:p=\"urn:p\"><b/></a>");
    doc.LoadXml("<c/>");
    EXPECT_EQ("c", doc.GetDocumentElement()->GetLocalName());
    EXPECT_EQ(nullptr, doc.GetDocumentElement()->GetFirstElement());
    EXPECT_TRUE(doc.GetNamespaceMap().empty());
    for (bool init : {false, true}) {
        doc.LoadXml("<a><b/></a>");
        init ? doc.Init() : doc.Cleanup();
        EXPECT_EQ(nullptr, doc.GetDocumentElement());
        EXPECT_EQ(nullptr, doc.GetBuffer());
        EXPECT_EQ(0u, doc.GetBufferSize());
        EXPECT_EQ(nullptr, doc.GetOpenElement());
    }
}

TEST(CXmlDocumentLoad, AsyncFromXmlFileOnlyStoresTheFlag) {
    AsyncFromXmlFile(true);
    EXPECT_TRUE(ASYNC_FROMXMLFILE);
    TempFile file("<a>sync</a>");
    CXmlDocument doc;
    doc.Load(file.Path());
    EXPECT_EQ("sync", doc.GetDocumentElement()->GetText());
    AsyncFromXmlFile(false);
    EXPECT_FALSE(ASYNC_FROMXMLFILE);
}

// The length of a file leaves its position alone; a pipe has no length.
TEST(CXmlDocumentLoad, FileLength) {
    TempFile file("0123456789");
    FILE* f = std::fopen(file.Path(), "rb");
    ASSERT_NE(nullptr, f);
    std::fseek(f, 3, SEEK_SET);
    EXPECT_EQ(10, _filelength(f));
    EXPECT_EQ(3, std::ftell(f));
    std::fclose(f);
    int fds[2];
    ASSERT_EQ(0, pipe(fds));
    f = fdopen(fds[0], "r");
    ASSERT_NE(nullptr, f);
    EXPECT_EQ(-1, _filelength(f));
    std::fclose(f);
    close(fds[1]);
}

// --- Failures

TEST(CXmlDocumentErrors, EmptyStringAndStream) {
    CXmlDocument doc;
    doc.LoadXml("<a/>");
    EXPECT_EQ("XML String is empty!", MessageOf([&] { doc.LoadXml(""); }));
    // The old tree was cleaned up before the failure.
    EXPECT_EQ(nullptr, doc.GetDocumentElement());
    EXPECT_EQ("XML String is empty!", MessageOf([&] { doc.LoadXml(static_cast<const char*>(nullptr)); }));
    EXPECT_EQ("XML String is empty!", MessageOf([&] { doc.LoadXml(L""); }));
    unsigned char byte = '<';
    EXPECT_EQ("XML Stream is empty!", MessageOf([&] { doc.LoadXmlStream(&byte, 0); }));
    EXPECT_EQ("XML Stream is empty!", MessageOf([&] { doc.LoadXmlStream(nullptr, 5); }));
}

// Malformed text, undeclared prefixes and bad UTF-8 (the last an overlong "<") report the
// parser's text and line.
TEST(CXmlDocumentErrors, MalformedXmlReportsParserTextAndLine) {
    const struct {
        const char* xml;
        const char* message;
    } cases[] = {
        {"<a>\n<b>\n</a>", "mismatched tag at line 3"},
        {"<a/><b/>", "junk after document element at line 1"},
        {"<a>", "no element found at line 1"},
        {"   ", "no element found at line 1"},
        {"hello", "syntax error at line 1"},
        {"<a x='1' x='2'/>", "duplicate attribute at line 1"},
        {"<a>\n&nope;</a>", "undefined entity at line 2"},
        {"<p:a/>", "unbound prefix at line 1"},
        {"<r>\n<a q:x='1'/></r>", "unbound prefix at line 2"},
        {"<a>\xC3\x28</a>", "not well-formed (invalid token) at line 1"},
        {"<a>\xFF</a>", "not well-formed (invalid token) at line 1"},
        {"<a>\xC0\xBC</a>", "not well-formed (invalid token) at line 1"},
    };
    CXmlDocument doc;
    for (const auto& c : cases)
        EXPECT_EQ(c.message, MessageOf([&] { doc.LoadXml(c.xml); })) << c.xml;
}

// A failed parse leaves the partial tree in place until the next load or cleanup.
TEST(CXmlDocumentErrors, FailedParseKeepsPartialTree) {
    CXmlDocument doc;
    EXPECT_THROW(doc.LoadXml("<a><b>text</b><c></a>"), CQzException);
    ASSERT_NE(nullptr, doc.GetDocumentElement());
    EXPECT_EQ("text", doc.GetDocumentElement()->GetFirstElement()->GetText());
    doc.LoadXml("<ok/>");
    EXPECT_EQ("ok", doc.GetDocumentElement()->GetLocalName());
}

TEST(CXmlDocumentErrors, MissingFile) {
    CXmlDocument doc;
    std::string path = ::testing::TempDir() + "qzxml_no_such_file.xml";
    EXPECT_EQ("Failed to open the file [" + path + "].", MessageOf([&] { doc.Load(path.c_str()); }));
    EXPECT_EQ("Failed to open the file [].", MessageOf([&] { doc.Load(nullptr); }));
}

// An empty file is a read failure with no error number; a directory fails with its own.
TEST(CXmlDocumentErrors, UnreadableAndMalformedFiles) {
    CXmlDocument doc;
    TempFile empty("");
    EXPECT_EQ(std::string("Failed to read the contents of the file [") + empty.Path() + "] Error [0]",
              MessageOf([&] { doc.Load(empty.Path()); }));
    std::string dir = ::testing::TempDir();
    EXPECT_EQ("Failed to read the contents of the file [" + dir + "] Error [" + std::to_string(EISDIR) + "]",
              MessageOf([&] { doc.Load(dir.c_str()); }));
    TempFile bad("<a>\n\n<b></a>", "qzxml_tree_bad.xml");
    EXPECT_EQ("mismatched tag at line 3", MessageOf([&] { doc.Load(bad.Path()); }));
}

// An entity that expands without end is stopped by the parser.
TEST(CXmlDocumentErrors, EntityExpansionIsBounded) {
    std::string xml = "<!DOCTYPE a [<!ENTITY e0 \"xxxxxxxxxxxxxxxx\">";
    for (int i = 1; i < 12; ++i) {
        std::string prev = "&e" + std::to_string(i - 1) + ";";
        xml += "<!ENTITY e" + std::to_string(i) + " \"" + prev + prev + prev + prev + prev + prev + prev +
               prev + prev + prev + "\">";
    }
    xml += "]><a>&e11;</a>";
    CXmlDocument doc;
    EXPECT_THROW(doc.LoadXml(xml.c_str()), CQzException);
}

// --- Element callback

namespace {

std::vector<std::string> g_seen;

bool RecordAndDrop(CXmlElement* element) {
    g_seen.push_back(element->GetLocalName() + "=" + element->GetText());
    return true;
}

bool RecordAndKeep(CXmlElement* element) {
    g_seen.push_back(element->GetLocalName());
    return false;
}

bool DropOnlyB(CXmlElement* element) {
    return element->GetLocalName() == "b";
}

bool ThrowOnC(CXmlElement* element) {
    if (element->GetLocalName() == "c")
        throw CQzInvalidValueException("stop at c");
    return false;
}

} // namespace

// Dropping every element leaves the document element alone; children end first.
TEST(CXmlDocumentCallback, DroppingEveryElementKeepsTheRoot) {
    g_seen.clear();
    CXmlDocument doc(&RecordAndDrop);
    doc.LoadXml("<r>0<a>1<b>2</b></a><c>3</c></r>");
    EXPECT_EQ((std::vector<std::string>{"b=2", "a=1", "c=3", "r=0"}), g_seen);
    ASSERT_NE(nullptr, doc.GetDocumentElement());
    EXPECT_EQ("{}r '0'", Dump(doc.GetDocumentElement()));
}

TEST(CXmlDocumentCallback, KeptElementsStayInOrder) {
    g_seen.clear();
    CXmlDocument doc(&RecordAndKeep);
    doc.LoadXml("<r><a><b/></a><c/></r>");
    EXPECT_EQ((std::vector<std::string>{"b", "a", "c", "r"}), g_seen);
    EXPECT_EQ("b", doc.GetDocumentElement()->GetFirstElement()->GetFirstElement()->GetLocalName());
    CSerializationContext context;
    CXmlDocument selective(&DropOnlyB, context);
    selective.LoadXml("<r><a/><b/><c/><b/><d/></r>");
    std::string names;
    for (int i = 0; Child(selective.GetDocumentElement(), i); ++i)
        names += Child(selective.GetDocumentElement(), i)->GetLocalName();
    EXPECT_EQ("acd", names);
}

// An exception from the callback comes out of the load unchanged, with expat left in order.
TEST(CXmlDocumentCallback, ExceptionFromCallbackPassesThrough) {
    CXmlDocument doc(&ThrowOnC);
    EXPECT_EQ("stop at c", MessageOf<CQzInvalidValueException>([&] { doc.LoadXml("<r><a/><c/><d/></r>"); }));
    // The document remains usable.
    doc.LoadXml("<r><a/></r>");
    EXPECT_EQ("a", doc.GetDocumentElement()->GetFirstElement()->GetLocalName());
}

// --- Building operations used directly

TEST(CXmlDocumentBuild, BuildingOperationsMakeATree) {
    CXmlDocument doc;
    CXmlElement* root = doc.AddDocElement("urn:r", "root");
    CXmlElement* child = doc.AddChildElement("", "child");
    doc.AddElementAttribute(child, "k", "v", "");
    doc.AppendTextExcludingCR(child, "a\rb\r");
    doc.AppendTextExcludingCR(child, "cd\0ef", 5);
    doc.AppendTextExcludingCR(child, "xyz", 2);
    doc.EndElement();
    doc.EndElement();
    doc.EndElement(); // one too many: nothing open, nothing happens
    EXPECT_EQ(root, doc.GetDocumentElement());
    EXPECT_EQ(child, root->GetFirstElement());
    EXPECT_EQ(root, child->GetParentElement());
    EXPECT_EQ("abcdxy", child->GetText());
    EXPECT_EQ("v", child->GetAttribute("k", ""));
    EXPECT_EQ(nullptr, doc.GetOpenElement());
    EXPECT_EQ("An element can only be added inside an open element",
              MessageOf([&] { doc.AddChildElement("", "late"); }));
    EXPECT_EQ("Failed to open the file [x].", MessageOf([&] { doc.Load("x"); }));
    EXPECT_EQ(nullptr, doc.GetDocumentElement());
}

// --- The reader's handlers, driven by hand as a parser would

TEST(CExpatReaderHandlers, HandlersBuildTheTreeWithoutAParse) {
    ASCIIOnly(true);
    CXmlDocument doc;
    CExpatReader reader(doc);
    const char* atts[] = {"urn:p|k", "v\xC3\xA9", "plain", "1", nullptr};
    CExpatReader::FnStartNamespace(&reader, nullptr, "urn:d");
    CExpatReader::FnStartNamespace(&reader, "p", nullptr);
    CExpatReader::FnStartElement(&reader, "urn:d|r\xC3\xA9", atts);
    CExpatReader::FnText(&reader, "a\xC3\xA9\r", 4);
    CExpatReader::FnText(&reader, "ignored", 0);
    CExpatReader::FnStartCDATA(&reader);
    CExpatReader::FnText(&reader, "<", 1);
    CExpatReader::FnEndCDATA(&reader);
    CExpatReader::FnStartElement(&reader, "c", nullptr);
    // A NUL ends the text as it ends a conversion, before or after other characters.
    CExpatReader::FnText(&reader, "x\0y", 3);
    CExpatReader::FnText(&reader, "\xC3\xA9\0z", 4);
    CExpatReader::FnEndElement(&reader, "c");
    CExpatReader::FnEndNamespace(&reader, "p");
    CExpatReader::FnEndElement(&reader, "urn:d|r\xC3\xA9");
    ASCIIOnly(false);

    ASSERT_NE(nullptr, doc.GetDocumentElement());
    EXPECT_EQ("{urn:d}r\xC3\xA9 @{urn:p}k=v\xC3\xA9 @{}plain=1 'a\xC3\xA9<![CDATA[<]]>' [{}c 'x\xC3\xA9']",
              Dump(doc.GetDocumentElement()));
    // A null prefix is the default one, a null URI the empty one.
    EXPECT_EQ("urn:d", doc.LookupNamespaceFromAlias(""));
    EXPECT_EQ(1u, doc.GetNamespaceMap().count("p"));
    EXPECT_EQ("", doc.LookupNamespaceFromAlias("p"));
    EXPECT_EQ(nullptr, doc.GetOpenElement());
}

// Outside a parse there is no parser to stop, so a handler's failure reaches the caller.
TEST(CExpatReaderHandlers, FailureOutsideAParseReachesTheCaller) {
    CXmlDocument doc;
    CExpatReader reader(doc);
    CExpatReader::FnStartElement(&reader, "r", nullptr);
    CExpatReader::FnEndElement(&reader, "r");
    EXPECT_EQ("An element can only be added inside an open element",
              MessageOf([&] { CExpatReader::FnStartElement(&reader, "late", nullptr); }));
}

TEST(CExpatReaderHandlers, ParseOfAnEmptyDocumentReportsNoElement) {
    CXmlDocument doc;
    CExpatReader reader(doc);
    reader.CreateParser();
    EXPECT_EQ("no element found at line 1", MessageOf([&] { reader.Parse(true); }));
    // The reader can make a new parser after the failure.
    reader.CreateParser();
    EXPECT_THROW(reader.Parse(true), CQzException);
}
