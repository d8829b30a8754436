// Tests of the writer base: prefix allocation, copy-on-write namespace scopes, Close.
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "foundation/Exceptions.h"
#include "support/TestSupport.h"
#include "writers/XmlWriter.h"

using namespace QzXmlLib16;

namespace {

// A writer that only keeps the element chain, so the base's scoping can be seen alone.
class CScopeWriter : public CXmlWriter {
public:
    CScopeWriter() : CXmlWriter("CScopeWriter") {}
    void WriteComment(const std::string&) override {}
    void WritePI(const std::string&) override {}
    void WriteInlineSchema(const std::string&) override {}
    void WriteStartElement(const std::string& localName, const std::string& uri) override {
        PushContext(NewContext(localName, uri));
    }
    void WriteString(const std::string&, ItemType, bool) override {}
    void WriteEndElement() override { PopContext(); }
    void WriteAttributeString(const std::string&, const std::string&, const std::string&, ItemType) override {
    }
    void WriteAttributeType(const std::string&, const std::string&, ItemType) override {}
    void WriteAttributeNil() override {}
};

using Map = std::map<std::string, std::string>;

} // namespace

// Prefix names: two capitals, running past 'Z' unchecked at 676.
TEST(CXmlWriterTest, NsIntToStringFormsTwoLetters) {
    const std::pair<int, const char*> rows[] = {{0, "AA"},  {1, "AB"},   {25, "AZ"},
                                                {26, "BA"}, {675, "ZZ"}, {676, "[A"}};
    for (const auto& row : rows)
        EXPECT_EQ(row.second, CXmlWriter::NsIntToString(row.first)) << row.first;
}

// The first free generated name wins, gaps included; user prefixes other than such forms
// never collide, and keys are URIs, not prefixes.
TEST(CXmlWriterTest, GetUniquePrefixSkipsTakenNames) {
    const std::pair<Map, const char*> rows[] = {
        {Map(), "AA"},
        {Map{{"u1", "p"}, {"u2", "xml"}, {"u3", "A"}}, "AA"},
        {Map{{"u1", "AA"}}, "AB"},
        {Map{{"u1", "AB"}, {"u2", "AA"}}, "AC"},
        {Map{{"u1", "AB"}}, "AA"},
        {Map{{"AA", "p"}}, "AA"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.second, CXmlWriter::GetUniquePrefix(row.first)) << row.second;
    // All 676 two-letter names taken: the allocator runs past "ZZ" into '['.
    Map map;
    for (int n = 0; n < 676; ++n)
        map["urn:" + std::to_string(n)] = CXmlWriter::NsIntToString(n);
    EXPECT_EQ("[A", CXmlWriter::GetUniquePrefix(map));
}

TEST(CXmlWriterTest, XmlNamespaceIsPremappedAndCloseRefusesOpenElement) {
    CScopeWriter writer;
    EXPECT_STREQ("http://www.w3.org/XML/1998/namespace", CXmlWriter::XML_NAMESPACE);
    ASSERT_EQ(1u, writer.GetWriterNamespaces().size());
    EXPECT_EQ("xml", writer.GetWriterNamespaces().at(CXmlWriter::XML_NAMESPACE));
    writer.Open();
    writer.WriteStartElement("a", "");
    EXPECT_EQ("xml", writer.GetContext()->GetNamespaceMapValue(std::string(CXmlWriter::XML_NAMESPACE)));
    EXPECT_EQ("An Element has not been closed.", QzTest::MessageOf([&] { writer.Close(); }));
    writer.WriteEndElement();
    EXPECT_NO_THROW(writer.Close());
}

// Before the document element the writer's own state changes; inside it the context's.
TEST(CXmlWriterTest, NamespaceCallsGoToWriterOrContext) {
    CScopeWriter writer;
    writer.SetDefaultNamespace("urn:d");
    writer.AddNamespace("p", "urn:p");
    EXPECT_EQ("urn:d", writer.GetWriterDefaultNamespace());
    EXPECT_EQ("p", writer.GetWriterNamespaces().at("urn:p"));

    writer.WriteStartElement("root", "urn:d");
    writer.AddNamespace("q", "urn:q");
    writer.SetDefaultNamespace("urn:other");
    EXPECT_EQ(0u, writer.GetWriterNamespaces().count("urn:q"));
    EXPECT_EQ("urn:d", writer.GetWriterDefaultNamespace());
    EXPECT_EQ("q", writer.GetContext()->GetNamespaceMap()->at("urn:q"));
    EXPECT_EQ("urn:other", writer.GetContext()->GetDefaultNamespace());
    writer.WriteEndElement();
}

// The document element copies the writer's state once; children share it until they write.
TEST(CXmlWriterTest, ChildContextsShareUntilFirstWrite) {
    CScopeWriter writer;
    writer.SetDefaultNamespace("urn:d");
    writer.AddNamespace("p", "urn:p");
    writer.WriteStartElement("root", "");
    CXmlWriter::CXmlWriterContext* root = writer.GetContext();
    EXPECT_EQ(0, root->GetDepth());
    EXPECT_FALSE(root->GetInherits());
    EXPECT_TRUE(root->GetOwnsMap());
    EXPECT_NE(&writer.GetWriterNamespaces(), root->GetNamespaceMap());

    writer.WriteStartElement("child", "");
    CXmlWriter::CXmlWriterContext* child = writer.GetContext();
    EXPECT_EQ(1, child->GetDepth());
    EXPECT_EQ(root, child->GetParent());
    EXPECT_TRUE(child->GetInherits());
    EXPECT_FALSE(child->GetOwnsMap());
    EXPECT_EQ(root->GetNamespaceMap(), child->GetNamespaceMap());
    EXPECT_EQ("urn:d", child->GetDefaultNamespace());
    EXPECT_EQ(0, child->GetChildCount());
    EXPECT_TRUE(child->IsStartTagOpen());
    EXPECT_FALSE(child->GetHasAttributes());
    EXPECT_EQ(CXmlWriter::ContextStateNone, child->GetState());
    // Index access inserts an empty prefix into the map the child shares, without a copy.
    EXPECT_EQ("", child->GetNamespaceMapValue("urn:unknown"));
    EXPECT_TRUE(child->GetInherits());
    EXPECT_EQ("", root->GetNamespaceMap()->at("urn:unknown"));

    // First write: own copy of map and default namespace; the parent is untouched.
    child->SetNamespaceMapValue("urn:c", "c");
    EXPECT_FALSE(child->GetInherits());
    EXPECT_TRUE(child->GetOwnsMap());
    EXPECT_NE(root->GetNamespaceMap(), child->GetNamespaceMap());
    EXPECT_EQ("c", child->GetNamespaceMap()->at("urn:c"));
    EXPECT_EQ("p", child->GetNamespaceMap()->at("urn:p"));
    EXPECT_EQ("urn:d", child->GetDefaultNamespace());
    EXPECT_EQ(0u, root->GetNamespaceMap()->count("urn:c"));

    // A grandchild inherits from the nearest context with own state.
    writer.WriteStartElement("grandchild", "");
    EXPECT_EQ(child->GetNamespaceMap(), writer.GetContext()->GetNamespaceMap());
    writer.WriteEndElement();
    writer.WriteEndElement();
    writer.WriteEndElement();
}

// State set on a child (default namespace, mappings) reaches its descendants and dies
// with it: the parent and the next sibling do not see it.
TEST(CXmlWriterTest, ChildStateScopesToElement) {
    CScopeWriter writer;
    writer.SetDefaultNamespace("urn:d");
    writer.WriteStartElement("root", "");
    writer.WriteStartElement("first", "");
    writer.GetContext()->SetDefaultNamespace("urn:inner");
    writer.AddNamespace("c", "urn:c");
    EXPECT_FALSE(writer.GetContext()->GetInherits());
    writer.WriteStartElement("grandchild", "");
    EXPECT_EQ("urn:inner", writer.GetContext()->GetDefaultNamespace());
    EXPECT_EQ("c", writer.GetContext()->GetNamespaceMap()->at("urn:c"));
    writer.WriteEndElement();
    writer.WriteEndElement();
    EXPECT_EQ("urn:d", writer.GetContext()->GetDefaultNamespace());
    writer.WriteStartElement("second", "");
    EXPECT_EQ(0u, writer.GetContext()->GetNamespaceMap()->count("urn:c"));
    EXPECT_EQ("urn:d", writer.GetContext()->GetDefaultNamespace());
    writer.WriteEndElement();
    writer.WriteEndElement();
}

TEST(CXmlWriterTest, SetContextStateNeedsOpenElement) {
    CScopeWriter writer;
    EXPECT_NO_THROW(writer.SetContextState(CXmlWriter::ContextStateCollection));
    writer.WriteStartElement("root", "");
    EXPECT_EQ(CXmlWriter::ContextStateNone, writer.GetContext()->GetState());
    writer.SetContextState(CXmlWriter::ContextStateCollectionEnd);
    EXPECT_EQ(CXmlWriter::ContextStateCollectionEnd, writer.GetContext()->GetState());
    writer.SetContextState(1); // a plain number as the collection writer passes it
    EXPECT_EQ(1, writer.GetContext()->GetState());
    writer.WriteEndElement();
}

// A writer destroyed with a very deep chain open frees it without recursion.
TEST(CXmlWriterTest, DeepOpenChainIsDestroyedWithWriter) {
    CScopeWriter* writer = new CScopeWriter();
    writer->WriteStartElement("root", "");
    for (int i = 0; i < 1000000; ++i)
        writer->WriteStartElement("e", "");
    EXPECT_EQ(1000000, writer->GetContext()->GetDepth());
    delete writer;
}

// Contexts built by hand: an ancestor that gets state of its own after its descendants
// exist is what they answer from, as a walk up the chain would find it.
TEST(CXmlWriterTest, DescendantsFollowAnAncestorThatBecomesIndependent) {
    using Context = CXmlWriter::CXmlWriterContext;
    Map declared{{"urn:r", "r"}};
    Context* root = new Context("root", "", "urn:def", &declared, nullptr);
    Context* child = new Context("child", "", root);
    Context* grandchild = new Context("grandchild", "", child);
    EXPECT_EQ(root->GetNamespaceMap(), grandchild->GetNamespaceMap());

    child->SetNamespaceMapValue("urn:c", "c");
    EXPECT_FALSE(child->GetInherits());
    EXPECT_TRUE(grandchild->GetInherits());
    EXPECT_EQ(child->GetNamespaceMap(), grandchild->GetNamespaceMap());
    EXPECT_EQ("c", grandchild->GetNamespaceMapValue("urn:c"));
    EXPECT_EQ("r", grandchild->GetNamespaceMapValue("urn:r"));
    EXPECT_EQ("urn:def", grandchild->GetDefaultNamespace()); // copied from the root
    EXPECT_EQ(0u, root->GetNamespaceMap()->count("urn:c"));

    // An unknown URI lands, with an empty prefix, in the nearest map with own state.
    EXPECT_EQ("", grandchild->GetNamespaceMapValue(std::string("urn:unknown")));
    EXPECT_EQ(1u, child->GetNamespaceMap()->count("urn:unknown"));
    EXPECT_EQ(0u, root->GetNamespaceMap()->count("urn:unknown"));

    child->SetDefaultNamespace("urn:other");
    EXPECT_EQ("urn:other", grandchild->GetDefaultNamespace());
    EXPECT_EQ("urn:def", root->GetDefaultNamespace());
    EXPECT_EQ(1u, declared.size()); // the document element copied the map it was given

    delete grandchild; // takes the chain above it along
}
