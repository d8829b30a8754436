// Heavy tests of the tree: a document nested a million levels deep (load, path, destruction,
// callback) and a 200 MB document read whole and through the element callback.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "foundation/Exceptions.h"
#include "tree/XmlDocument.h"

using namespace QzXmlLib16;

namespace {

const int kDepth = 1000000;

std::string DeepDocument(int depth) {
    std::string xml;
    xml.reserve(static_cast<size_t>(depth) * 8 + 16);
    for (int i = 0; i < depth; ++i)
        xml += "<d>";
    xml += "leaf";
    for (int i = 0; i < depth; ++i)
        xml += "</d>";
    return xml;
}

// One order of about 600 bytes; repeated to the wanted size inside <orders>.
const char kOrderBlock[] = "  <order id=\"100000\" status=\"shipped\">\n"
                           "    <customer>\n"
                           "      <name>Emma Wilson</name>\n"
                           "      <email>emma.wilson83@example.com</email>\n"
                           "      <address>\n"
                           "        <street>1187 Cedar Lane</street>\n"
                           "        <city>Z\xC3\xBCrich</city>\n"
                           "        <zip>66510</zip>\n"
                           "      </address>\n"
                           "    </customer>\n"
                           "    <date>2018-01-03</date>\n"
                           "    <items>\n"
                           "      <item>\n"
                           "        <sku>EL-577814</sku>\n"
                           "        <qty>4</qty>\n"
                           "        <price>39.72</price>\n"
                           "        <note>Check size &lt; 42 before dispatch.</note>\n"
                           "      </item>\n"
                           "    </items>\n"
                           "    <total>158.88</total>\n"
                           "    <paid>true</paid>\n"
                           "  </order>\n";
const size_t kElementsPerOrder = 17;

std::string LargeDocument(size_t wantedBytes, size_t* orders) {
    std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<orders xmlns=\"urn:example:orders\">\n";
    const size_t block = sizeof(kOrderBlock) - 1;
    *orders = wantedBytes / block;
    xml.reserve(*orders * block + 128);
    for (size_t i = 0; i < *orders; ++i)
        xml.append(kOrderBlock, block);
    xml += "</orders>\n";
    return xml;
}

size_t g_elements = 0;
size_t g_maxChildren = 0;

// Counts every element and drops it, so the tree never grows beyond one order.
bool CountAndDrop(CXmlElement* element) {
    ++g_elements;
    size_t children = 0;
    for (CXmlElement* c = element->GetFirstElement(); c; c = c->GetNextSiblingElement())
        ++children;
    if (children > g_maxChildren)
        g_maxChildren = children;
    return true;
}

} // namespace

// Loading, the path of the innermost element and the destruction all run without recursion.
TEST(TreeHeavy, MillionLevelsDeep) {
    std::string xml = DeepDocument(kDepth);
    CXmlDocument doc;
    doc.LoadXml(xml.c_str());
    CXmlElement* leaf = doc.GetDocumentElement();
    int depth = 1;
    while (leaf->GetFirstElement()) {
        leaf = leaf->GetFirstElement();
        ++depth;
    }
    EXPECT_EQ(kDepth, depth);
    EXPECT_EQ("leaf", leaf->GetText());
    std::string path = leaf->GetXPath();
    EXPECT_EQ(static_cast<size_t>(kDepth) * 2, path.size());
    EXPECT_EQ("/d/d/d", path.substr(0, 6));
    // A second load destroys the deep tree first.
    doc.LoadXml("<small/>");
    EXPECT_EQ("small", doc.GetDocumentElement()->GetLocalName());
}

TEST(TreeHeavy, MillionLevelsDeepThroughCallback) {
    std::string xml = DeepDocument(kDepth);
    g_elements = 0;
    g_maxChildren = 0;
    CXmlDocument doc(&CountAndDrop);
    std::vector<unsigned char> bytes(xml.begin(), xml.end());
    doc.LoadXmlStream(bytes.data(), static_cast<unsigned long>(bytes.size()));
    EXPECT_EQ(static_cast<size_t>(kDepth), g_elements);
    EXPECT_EQ(0u, g_maxChildren);
    EXPECT_EQ(nullptr, doc.GetDocumentElement()->GetFirstElement());
}

// A deep document that breaks off is reported, and the partial deep tree is destroyed cleanly.
TEST(TreeHeavy, MillionLevelsDeepTruncated) {
    std::string xml = DeepDocument(kDepth);
    xml.resize(xml.size() - 4);
    CXmlDocument doc;
    try {
        doc.LoadXml(xml.c_str());
        FAIL() << "no exception";
    } catch (const CQzException& e) {
        EXPECT_EQ("no element found at line 1", e.GetMessage());
    }
}

// 200 MB through the element callback: memory stays bounded by one order.
TEST(TreeHeavy, TwoHundredMegabytesThroughCallback) {
    size_t orders = 0;
    std::string xml = LargeDocument(200u * 1024u * 1024u, &orders);
    g_elements = 0;
    g_maxChildren = 0;
    CXmlDocument doc(&CountAndDrop);
    doc.LoadXmlStream(reinterpret_cast<unsigned char*>(&xml[0]), static_cast<unsigned long>(xml.size()));
    EXPECT_EQ(orders * kElementsPerOrder + 1, g_elements);
    EXPECT_EQ(0u, g_maxChildren); // every child was dropped before its parent ended
}

// 200 MB from a file into a whole tree.
TEST(TreeHeavy, TwoHundredMegabytesFromFile) {
    size_t orders = 0;
    std::string path = ::testing::TempDir() + "qzxml_tree_heavy.xml";
    {
        std::string xml = LargeDocument(200u * 1024u * 1024u, &orders);
        FILE* file = std::fopen(path.c_str(), "wb");
        ASSERT_NE(nullptr, file);
        ASSERT_EQ(xml.size(), std::fwrite(xml.data(), 1, xml.size(), file));
        std::fclose(file);
    }
    CXmlDocument doc;
    doc.Load(path.c_str());
    std::remove(path.c_str());
    size_t count = 0;
    CXmlElement* last = nullptr;
    for (CXmlElement* order = doc.GetDocumentElement()->GetFirstElement(); order;
         order = order->GetNextSiblingElement()) {
        ++count;
        last = order;
    }
    EXPECT_EQ(orders, count);
    ASSERT_NE(nullptr, last);
    EXPECT_EQ("158.88", last->GetFirstElement()
                            ->GetNextSiblingElement()
                            ->GetNextSiblingElement()
                            ->GetNextSiblingElement()
                            ->GetText());
}

// A 200 MB document that is cut short fails with the parser's message, not a crash.
TEST(TreeHeavy, TwoHundredMegabytesTruncated) {
    size_t orders = 0;
    std::string xml = LargeDocument(200u * 1024u * 1024u, &orders);
    xml.resize(xml.size() - 100);
    CXmlDocument doc(&CountAndDrop);
    EXPECT_THROW(
        doc.LoadXmlStream(reinterpret_cast<unsigned char*>(&xml[0]), static_cast<unsigned long>(xml.size())),
        CQzException);
}
