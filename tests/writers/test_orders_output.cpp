// Tests of the orders example classes writing themselves: the output keeps the element
// tree of the source, and writer-formatted text survives text -> objects -> text unchanged.
#include <gtest/gtest.h>

#include <string>

#include "binding/SmartPtr.h"
#include "foundation/Exceptions.h"
#include "orders/Orders.h"
#include "support/XmlCompare.h"
#include "writers/OutputTestHelpers.h"

using namespace QzXmlLib16;
using namespace QzOrders;

namespace {

const char* const kOrders =
    "<?xml version='1.0' encoding='UTF-8'?>\n"
    "<orders xmlns='urn:example:orders'>\n"
    "  <order id='100000' status='new &amp; &quot;urgent&quot;'>\n"
    "    <customer><name>Zo\xC3\xAB Bront\xC3\xAB</name><email>z@example.com</email>\n"
    "      <address><street>1 Main St</street><city>Z\xC3\xBCrich</city>"
    "<zip>00100</zip></address></customer>\n"
    "    <date>2018-01-03</date>\n"
    "    <items><item><sku>EL-1</sku><qty>4</qty><price>39.72</price>"
    "<note>Check size &lt; 42 &amp; wrap</note></item>\n"
    "      <item><sku>EL-2</sku><qty>12</qty><price>0.99</price></item></items>\n"
    "    <total>170.76</total><paid>true</paid>\n"
    "  </order>\n"
    "  <order id='100001'><customer><name>Bob</name><email>b@example.com</email>"
    "<address><street>2 Oak Ave</street><city>Salem</city><zip>12345</zip></address>"
    "</customer><date>2020-12-31</date><items><item><sku>BK-9</sku><qty>1</qty>"
    "<price>5.00</price></item></items><total>5.00</total><paid>false</paid></order>\n"
    "</orders>\n";

CSmartPtr<COrders> LoadOrders(const std::string& xml) {
    CSmartPtr<COrders> orders(new COrders());
    orders->FromXml(xml.c_str());
    return orders;
}

CSerializationContext DefaultNamespaceContext() {
    CSerializationContext context;
    context.SetDefaultNamespaceURI(kOrdersNamespace);
    return context;
}

} // namespace

// With the orders namespace as default the output reads like the source, tab-indented.
TEST(OrdersOutputTest, WritesDocumentInSchemaOrder) {
    CSmartPtr<COrders> orders = LoadOrders(kOrders);
    const std::string text = orders->ToXml(true, true, EOLLf, DefaultNamespaceContext());
    EXPECT_TRUE(QzXmlTest::SameElementTree(kOrders, text, QzXmlTest::TextIgnoreLayout));
    EXPECT_EQ(0u, text.find("<?xml version=\"1.0\"?>\n<orders xmlns=\"urn:example:orders\">\n"
                            "\t<order id=\"100000\" status=\"new &amp; &quot;urgent&quot;\">\n"
                            "\t\t<customer>\n\t\t\t<name>"));
    EXPECT_NE(std::string::npos, text.find("\t\t\t\t<note>Check size &lt; 42 &amp; wrap</note>\n"));
    EXPECT_NE(std::string::npos, text.find("\t<order id=\"100001\">\n"));
    // Without a default namespace every element carries the generated prefix.
    const std::string prefixed = LoadOrders(kOrders)->ToXml(false, false);
    EXPECT_EQ(0u, prefixed.find("<AA:orders xmlns:AA=\"urn:example:orders\"><AA:order id=\"100000\""));
    EXPECT_TRUE(QzXmlTest::SameElementTree(kOrders, prefixed, QzXmlTest::TextIgnoreLayout));
}

// Writer-formatted text goes through the objects unchanged: every layout, both contexts.
TEST(OrdersOutputTest, RoundTripIsByteIdentical) {
    const CSerializationContext withDefault = DefaultNamespaceContext();
    const CSerializationContext plain;
    for (const CSerializationContext* context : {&withDefault, &plain}) {
        for (bool format : {true, false}) {
            for (EOLType eol : {EOLLf, EOLCrLf}) {
                SCOPED_TRACE(std::to_string(format) + "/" + std::to_string(eol));
                const std::string canonical = LoadOrders(kOrders)->ToXml(true, format, eol, *context);
                CSmartPtr<COrders> again(new COrders());
                again->FromXml(canonical.c_str(), *context);
                EXPECT_EQ(canonical, again->ToXml(true, format, eol, *context));
            }
        }
    }
}

// Every encoding through bytes: the second write gives the same bytes as the first.
TEST(OrdersOutputTest, StreamRoundTripForEveryEncoding) {
    const CSerializationContext context = DefaultNamespaceContext();
    for (XmlEncoding encoding : {EncodingUTF8, EncodingUTF16, EncodingUnicode}) {
        SCOPED_TRACE(encoding);
        CBinaryData bytes = LoadOrders(kOrders)->ToXmlStream(true, true, encoding, EOLCrLf, context);
        CSmartPtr<COrders> again(new COrders());
        again->FromXmlStream(bytes, context);
        EXPECT_TRUE(bytes == again->ToXmlStream(true, true, encoding, EOLCrLf, context));
    }
}

// Processing instructions and prefixes of the context reach the root element.
TEST(OrdersOutputTest, RootTakesInstructionsAndAliases) {
    CSerializationContext context;
    context.GetProcessingInstructions().push_back("<?xml-stylesheet href=\"o.xsl\"?>");
    context.GetNamespaceAliases().Add("o", kOrdersNamespace);
    const std::string text = LoadOrders(kOrders)->ToXml(true, false, EOLLf, context);
    EXPECT_EQ(0u, text.find("<?xml version=\"1.0\"?>\n<?xml-stylesheet href=\"o.xsl\"?>\n\n"
                            "<o:orders xmlns:o=\"urn:example:orders\"><o:order id=\"100000\""));
    EXPECT_TRUE(QzXmlTest::IsWellFormed(text));
}
