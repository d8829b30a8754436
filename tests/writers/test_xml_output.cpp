// Tests of ToXml, ToXmlStream and ToXmlFile on a hand-written object class: round trips
// for every layout, line end, encoding and compression, files, and failures.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "support/XmlCompare.h"
#include "writers/OutputTestHelpers.h"

using namespace QzXmlLib16;
using QzXmlTest::SameElementTree;
using QzXmlTest::TextIgnoreLayout;

namespace {

using namespace QzXmlTest;

// A document with namespaces, attributes that need escaping and text with line ends.
const char* const kSource = "<o:orders xmlns:o='urn:example:orders' xmlns:x='urn:x' version='2'>"
                            "<o:order id='1' note='a&quot;b&#10;c'><o:name>Ann &amp; Bob</o:name>"
                            "<o:memo>line1\nline2 &lt;3 'q'</o:memo><o:empty/>"
                            "<x:ext x:flag='true'>1</x:ext></o:order>"
                            "<o:order id='2'><o:name>Z</o:name><plain>no namespace</plain></o:order>"
                            "</o:orders>";

struct Layout {
    bool format;
    EOLType eol;
};
const Layout kLayouts[] = {{true, EOLLf}, {true, EOLCrLf}, {false, EOLLf}, {false, EOLCrLf}};

} // namespace

// ---------------------------------------------------------------------------
// ToXml

TEST(XmlOutputTest, ToXmlDefaultForm) {
    CSmartPtr<CTreeObject> object = Load("<r xmlns='urn:r'><a k='v'>t</a><b/></r>");
    EXPECT_EQ(
        "<?xml version=\"1.0\"?>\n<AA:r xmlns:AA=\"urn:r\">\n\t<AA:a k=\"v\">t</AA:a>\n\t<AA:b/>\n</AA:r>\n",
        object->ToXml());
    EXPECT_EQ("<AA:r xmlns:AA=\"urn:r\"><AA:a k=\"v\">t</AA:a><AA:b/></AA:r>", object->ToXml(false, false));
    EXPECT_EQ("Invalid EOL type.", MessageOf([&] { object->ToXml(true, true, static_cast<EOLType>(7)); }));
}

// The context's default namespace, indent characters and default-value switch reach the writer.
TEST(XmlOutputTest, ToXmlTakesContextSettings) {
    CSmartPtr<CTreeObject> object = Load("<r><a><b/></a></r>");
    CSerializationContext context;
    context.SetIndentChars("  ");
    EXPECT_EQ("<r>\r\n  <a>\r\n    <b/>\r\n  </a>\r\n</r>\r\n", object->ToXml(false, true, EOLCrLf, context));
    context.SetIndentChars("");
    EXPECT_EQ("<r>\n<a>\n<b/>\n</a>\n</r>\n", object->ToXml(false, true, EOLLf, context));
}

// text -> object -> text is byte-identical once the text is in the writer's form, for
// every layout; the writer's output keeps the element tree of the source.
TEST(XmlOutputTest, RoundTripIsByteIdenticalForEveryLayout) {
    for (const Layout& layout : kLayouts) {
        for (bool decl : {true, false}) {
            SCOPED_TRACE(std::to_string(layout.format) + "/" + std::to_string(layout.eol) + "/" +
                         std::to_string(decl));
            std::string canonical = Load(kSource)->ToXml(decl, layout.format, layout.eol);
            EXPECT_TRUE(SameElementTree(kSource, canonical, TextIgnoreLayout));
            EXPECT_EQ(canonical, Load(canonical)->ToXml(decl, layout.format, layout.eol));
            EXPECT_EQ(layout.eol == EOLCrLf, canonical.find("\r\n") != std::string::npos);
        }
    }
}

// ---------------------------------------------------------------------------
// ToXmlStream

// Every encoding: the bytes read back give the same bytes again.
TEST(XmlOutputTest, StreamRoundTripForEveryEncoding) {
    const std::string canonical = Load(kSource)->ToXml(false, true, EOLLf);
    for (XmlEncoding encoding : {EncodingUTF8, EncodingUTF16, EncodingUnicode}) {
        for (const Layout& layout : kLayouts) {
            SCOPED_TRACE(std::to_string(encoding) + "/" + std::to_string(layout.format) + "/" +
                         std::to_string(layout.eol));
            CSmartPtr<CTreeObject> object = Load(canonical);
            CBinaryData bytes = object->ToXmlStream(true, layout.format, encoding, layout.eol);
            CSmartPtr<CTreeObject> again(new CTreeObject());
            again->FromXmlStream(bytes);
            CBinaryData bytesAgain = again->ToXmlStream(true, layout.format, encoding, layout.eol);
            EXPECT_TRUE(bytes == bytesAgain);
            EXPECT_EQ(object->ToXml(false, layout.format, layout.eol),
                      again->ToXml(false, layout.format, layout.eol));
        }
    }
}

// Encodings 2 and 3 give UTF-16LE without a mark; UTF-8 gives the text's bytes. Encoding 0
// is refused, and a tiny document cannot shrink, so the compressor refuses it.
TEST(XmlOutputTest, StreamEncodingsProduceExpectedBytes) {
    CSmartPtr<CTreeObject> object = Load("<r>x</r>");
    EXPECT_EQ("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<r>x</r>\n", ToString(object->ToXmlStream()));
    std::string utf16 = ToString(object->ToXmlStream(false, false, EncodingUnicode));
    EXPECT_EQ(std::string("<\0r\0>\0x\0<\0/\0r\0>\0", 16), utf16);
    std::string wide;
    for (char c : std::string("<?xml version=\"1.0\" encoding=\"UTF-16\"?>"))
        wide += {c, '\0'};
    EXPECT_EQ(0u, ToString(object->ToXmlStream(true, false, EncodingUTF16)).find(wide));
    EXPECT_EQ("Unknown Encoding, select UTF-8 (contact our support team)",
              MessageOf([&] { object->ToXmlStream(true, true, EncodingDefault); }));
    EXPECT_EQ("Failed to compress data. [Error Code: -5]", MessageOf([&] {
                  Load("<r/>")->ToXmlStream(false, false, EncodingUTF8, EOLLf,
                                            CSerializationContext::m_defaultContext, CompressionGzip);
              }));
}

// ---------------------------------------------------------------------------
// ToXmlFile

// Files of encodings 2 and 3 start with the 0xFF 0xFE mark and read back.
TEST(XmlOutputTest, FileRoundTripForEveryEncoding) {
    const std::string canonical = Load(kSource)->ToXml(true, true, EOLLf);
    for (bool direct : {false, true}) {
        AsyncGuard async(direct);
        for (XmlEncoding encoding : {EncodingUTF8, EncodingUTF16, EncodingUnicode}) {
            SCOPED_TRACE(std::to_string(direct) + "/" + std::to_string(encoding));
            const std::string path = TempPath("encoding.xml");
            Load(canonical)->ToXmlFile(path.c_str(), true, true, encoding, EOLLf);
            const std::string bytes = ReadFile(path);
            ASSERT_GE(bytes.size(), 2u);
            const bool marked =
                static_cast<unsigned char>(bytes[0]) == 0xFF && static_cast<unsigned char>(bytes[1]) == 0xFE;
            EXPECT_EQ(encoding != EncodingUTF8, marked);
            CSmartPtr<CTreeObject> again(new CTreeObject());
            again->FromXmlFile(path.c_str());
            EXPECT_EQ(canonical, again->ToXml(true, true, EOLLf));
            std::remove(path.c_str());
        }
    }
}

// The direct branch writes the same bytes as the buffered one, also past many flushes.
TEST(XmlOutputTest, DirectAndBufferedFilesAgree) {
    std::string source = "<r>";
    for (int i = 0; i < 3000; ++i)
        source += "<i a='" + std::to_string(i) + "'>t&lt;" + std::to_string(i) + "</i>";
    source += "</r>";
    CSmartPtr<CTreeObject> object = Load(source);
    const std::string buffered = TempPath("buffered.xml");
    const std::string direct = TempPath("direct.xml");
    for (XmlEncoding encoding : {EncodingUTF8, EncodingUTF16}) {
        SCOPED_TRACE(encoding);
        object->ToXmlFile(buffered.c_str(), true, true, encoding, EOLCrLf);
        {
            AsyncGuard async(true);
            object->ToXmlFile(direct.c_str(), true, true, encoding, EOLCrLf);
        }
        const std::string bytes = ReadFile(buffered);
        EXPECT_GT(bytes.size(), 60000u);
        EXPECT_TRUE(bytes == ReadFile(direct));
    }
    std::remove(buffered.c_str());
    std::remove(direct.c_str());
}

// zlib never goes to a file: refused before any file is touched, in both branches; a file
// in a missing directory fails in both branches too.
TEST(XmlOutputTest, FileRefusals) {
    CSmartPtr<CTreeObject> object = Load("<r/>");
    const std::string path = TempPath("zlib.xml");
    WriteFile(path, "old content");
    for (bool direct : {false, true}) {
        AsyncGuard async(direct);
        EXPECT_EQ("ZLIB Compression only available for To Stream methods.", MessageOf([&] {
                      object->ToXmlFile(path.c_str(), true, true, EncodingUTF8, EOLLf,
                                        CSerializationContext::m_defaultContext, CompressionZlib);
                  }));
        EXPECT_EQ("old content", ReadFile(path));
        const std::string absent = TempPath("zlib-absent.xml");
        std::remove(absent.c_str());
        EXPECT_THROW(object->ToXmlFile(absent.c_str(), true, true, EncodingUTF8, EOLLf,
                                       CSerializationContext::m_defaultContext, CompressionZlib),
                     CQzException);
        EXPECT_EQ(nullptr, std::fopen(absent.c_str(), "rb"));
        const std::string missing = TempPath("missing/dir/file.xml");
        EXPECT_EQ("Failed to write data to the file [" + missing + "].",
                  MessageOf([&] { object->ToXmlFile(missing.c_str()); }));
    }
    std::remove(path.c_str());
}

// A failed serialisation leaves an existing file untouched on the buffered road, and a
// partial file on the direct one.
TEST(XmlOutputTest, FailedSerialisationAndExistingFile) {
    std::string source = "<r>";
    for (int i = 0; i < 400; ++i)
        source += "<i>some text to pass the flush size " + std::to_string(i) + "</i>";
    source += "</r>";
    CSmartPtr<CTreeObject> object = Load(source);
    object->m_failAfter = 300;
    const std::string path = TempPath("failed.xml");

    WriteFile(path, "previous document");
    EXPECT_EQ("boom", MessageOf([&] { object->ToXmlFile(path.c_str()); }));
    EXPECT_EQ("previous document", ReadFile(path));

    AsyncGuard async(true);
    EXPECT_EQ("boom", MessageOf([&] { object->ToXmlFile(path.c_str()); }));
    const std::string partial = ReadFile(path);
    EXPECT_EQ(0u, partial.find("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<r>\n\t<i>"));
    EXPECT_EQ(std::string::npos, partial.find("</r>"));
    std::remove(path.c_str());
}
