// Tests of CXmlElement and CXmlAttribute: names with prefixes, position predicates, paths,
// attribute look-up, unlinking children and the schema-instance attribute tests.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "tree/XmlDocument.h"
#include "support/TestSupport.h"

using namespace QzXmlLib16;

using QzTest::Child;

// --- Predicates and paths

namespace {
// The paths of `element` and its descendants in document order, each followed by a space.
std::string Paths(CXmlElement* element) {
    std::string out = element->GetXPath() + " ";
    for (CXmlElement* c = element->GetFirstElement(); c; c = c->GetNextSiblingElement())
        out += Paths(c);
    return out;
}
} // namespace

// A predicate only where qualified names repeat among the siblings: the same local name in two
// namespaces counts apart; the default namespace gives no prefix.
TEST(CXmlElementPath, XPathWithPrefixesAndPositions) {
    const struct {
        const char* xml;
        const char* paths;
    } cases[] = {
        {"<a><b/><c/><b/></a>", "/a /a/b[1] /a/c /a/b[2] "},
        {"<a><b/></a>", "/a /a/b "},
        {"<root xmlns:p=\"urn:p\"><item/><item><p:name/><name/></item></root>",
         "/root /root/item[1] /root/item[2] /root/item[2]/p:name /root/item[2]/name "},
        {"<r xmlns:p=\"urn:p\" xmlns:q=\"urn:q\"><p:x/><q:x/><p:x/></r>", "/r /r/p:x[1] /r/q:x /r/p:x[2] "},
        {"<orders xmlns=\"urn:example:orders\"><order/><order/></orders>",
         "/orders /orders/order[1] /orders/order[2] "},
    };
    CXmlDocument doc;
    for (const auto& c : cases) {
        doc.LoadXml(c.xml);
        EXPECT_EQ(c.paths, Paths(doc.GetDocumentElement())) << c.xml;
    }
    doc.LoadXml("<a><b/><c/><b/></a>");
    EXPECT_EQ("a", doc.GetDocumentElement()->GetNameWithPredicate());
    EXPECT_EQ("b[2]", Child(doc.GetDocumentElement(), 2)->GetNameWithPredicate());
    EXPECT_EQ("c", Child(doc.GetDocumentElement(), 1)->GetNameWithPredicate());
}

TEST(CXmlElementPath, AttributePathPutsAliasBeforeAt) {
    CXmlDocument doc;
    doc.LoadXml("<root xmlns:p=\"urn:p\"><item/><item p:name=\"1\" plain=\"2\"/></root>");
    CXmlElement* item2 = Child(doc.GetDocumentElement(), 1);
    ASSERT_EQ(2u, item2->GetAttributes().size());
    EXPECT_EQ("/root/item[2]/p:@name", item2->GetAttributes()[0]->GetXPath());
    EXPECT_EQ("/root/item[2]/@plain", item2->GetAttributes()[1]->GetXPath());
}

TEST(CXmlElementPath, StandaloneNodes) {
    CXmlAttribute lone(nullptr, "x", "1", "urn:x");
    EXPECT_EQ("@x", lone.GetXPath());
    // Without a document there is no map and so no prefix.
    CXmlElement root(nullptr, nullptr);
    root.SetElementName("r");
    root.SetNamespace("urn:r");
    CXmlElement* child = root.CreateNewChildElement();
    child->SetElementName("c");
    EXPECT_EQ("r", root.GetQName());
    EXPECT_EQ("/r/c", child->GetXPath());
    root.AddAttribute("a", "v", "urn:a");
    EXPECT_EQ("/r/@a", root.GetAttributes()[0]->GetXPath());
    // In a document, an element whose URI the map does not know has no prefix either.
    CXmlDocument doc;
    doc.LoadXml("<r xmlns:p=\"urn:p\"/>");
    CXmlElement* x = doc.GetDocumentElement()->CreateNewChildElement();
    x->SetNamespace("urn:elsewhere");
    x->SetElementName("x");
    EXPECT_EQ("x", x->GetQName());
    x->SetNamespace("urn:p");
    EXPECT_EQ("p:x", x->GetQName());
}

// --- Attributes

TEST(CXmlElementAttributes, LookupByNameAndNamespace) {
    CXmlDocument doc;
    doc.LoadXml("<a xmlns:p=\"urn:p\" x=\"plain\" p:x=\"qualified\" e=\"\"/>");
    CXmlElement* a = doc.GetDocumentElement();
    EXPECT_EQ("plain", a->GetAttribute("x", ""));
    EXPECT_EQ("qualified", a->GetAttribute("x", "urn:p"));
    EXPECT_EQ("", a->GetAttribute("e", ""));
    // A missing attribute gives one shared empty string, the same on every call.
    const std::string& missing1 = a->GetAttribute("missing", "");
    const std::string& missing2 = a->GetAttribute("x", "urn:other");
    EXPECT_EQ("", missing1);
    EXPECT_EQ(&missing1, &missing2);
    // Duplicates are not checked when added by hand; the first one answers.
    a->AddAttribute("x", "2", "");
    EXPECT_EQ(4u, a->GetAttributes().size());
    EXPECT_EQ("plain", a->GetAttribute("x", ""));
}

TEST(CXmlElementAttributes, SchemaInstanceAttributes) {
    const std::string xsi = "http://www.w3.org/2001/XMLSchema-instance";
    const std::string xmlns = "http://www.w3.org/2000/xmlns/";
    struct Row {
        std::string name, uri;
        bool isNamespace, isNil;
    } rows[] = {
        {"type", xsi, true, false},
        {"schemaLocation", xsi, true, false},
        {"noNamespaceSchemaLocation", xsi, true, false},
        {"xmlns", xsi, true, false},
        {"nil", xsi, false, true},
        {"nil", xmlns, false, true},
        {"type", xmlns, true, false},
        {"type", "", false, false},
        {"nil", "", false, false},
        {"nil", "urn:other", false, false},
        {"Type", xsi, false, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name + " in " + row.uri);
        CXmlAttribute attribute(nullptr, row.name, "false", row.uri);
        EXPECT_EQ(row.isNamespace, attribute.IsNamespaceAttribute());
        EXPECT_EQ(row.isNil, attribute.IsNilAttribute());
    }
}

// --- Building by hand

// Text appends; children link in order and unlink from the end.
TEST(CXmlElementBuild, TextAppendsAndChildrenLink) {
    CXmlElement e(nullptr, nullptr);
    e.AppendText("ab");
    e.AppendText(nullptr);
    e.AppendText("cdef", 2);
    e.AppendText("zz", 0);
    e.AppendText("zz", -1);
    EXPECT_EQ("abcd", e.GetText());
    CXmlElement* c1 = e.CreateNewChildElement();
    CXmlElement* c2 = e.CreateNewChildElement();
    EXPECT_EQ(c1, e.GetFirstElement());
    EXPECT_EQ(c2, c1->GetNextSiblingElement());
    EXPECT_EQ(&e, c2->GetParentElement());

    CXmlElement* c3 = e.CreateNewChildElement();
    CXmlElement* removed = e.RemoveLastChildElement();
    EXPECT_EQ(c3, removed);
    EXPECT_EQ(nullptr, c2->GetNextSiblingElement());
    delete removed;
    // The list still appends at its new end, and empties to nothing.
    CXmlElement* c4 = e.CreateNewChildElement();
    EXPECT_EQ(c4, c2->GetNextSiblingElement());
    for (int i = 0; i < 3; ++i)
        delete e.RemoveLastChildElement();
    EXPECT_EQ(nullptr, e.GetFirstElement());
    EXPECT_EQ(nullptr, e.RemoveLastChildElement());
    CXmlElement lone(nullptr, nullptr);
    EXPECT_EQ(nullptr, lone.RemoveLastChildElement());
}

// Destroying and walking a deep chain uses no recursion (the full million levels are in the
// heavy suite).
TEST(CXmlElementBuild, DeepChainPathAndDestruction) {
    const int depth = 50000;
    CXmlElement* root = new CXmlElement(nullptr, nullptr);
    root->SetElementName("d");
    CXmlElement* leaf = root;
    for (int i = 0; i < depth; ++i) {
        leaf = leaf->CreateNewChildElement();
        leaf->SetElementName("d");
        leaf->CreateNewChildElement()->SetElementName("s"); // a sibling subtree at each level
    }
    std::string path = leaf->GetXPath();
    EXPECT_EQ(static_cast<size_t>(depth + 1) * 2, path.size());
    delete root;
}

// Elements that a load builds share the document's copy of each namespace URI; a removed
// subtree takes its own copies and so stays whole after the document is loaded again.
TEST(CXmlElementBuild, RemovedSubtreeKeepsItsNamespacesAcrossAReload) {
    CXmlDocument doc;
    doc.LoadXml("<r xmlns='urn:a-namespace-longer-than-inline'>"
                "<x/><y xmlns:q='urn:q-namespace-longer-than-inline' q:at='1'><q:z/><w/></y></r>");
    CXmlElement* root = doc.GetDocumentElement();
    EXPECT_EQ(&root->GetNamespaceURI(), &root->GetFirstElement()->GetNamespaceURI());
    CXmlElement* removed = root->RemoveLastChildElement();
    ASSERT_NE(nullptr, removed);
    doc.LoadXml("<other xmlns='urn:another-namespace-longer-than-inline'/>");
    EXPECT_EQ("urn:a-namespace-longer-than-inline", removed->GetNamespaceURI());
    EXPECT_EQ("urn:q-namespace-longer-than-inline", removed->GetAttributes()[0]->GetNamespaceURI());
    CXmlElement* z = removed->GetFirstElement();
    EXPECT_EQ("urn:q-namespace-longer-than-inline", z->GetNamespaceURI());
    EXPECT_EQ("urn:a-namespace-longer-than-inline", z->GetNextSiblingElement()->GetNamespaceURI());
    // A namespace set by hand replaces the shared one for that element only.
    z->SetNamespace("urn:set-by-hand");
    EXPECT_EQ("urn:set-by-hand", z->GetNamespaceURI());
    delete removed;
}

// The storage of a removed subtree stays valid after its document is gone (the sanitizer build
// checks the reads and that nothing leaks); only GetQName and the paths need the document.
TEST(CXmlElementBuild, RemovedSubtreeOutlivesItsDocument) {
    CXmlDocument* doc = new CXmlDocument();
    doc->LoadXml("<r><keep/><gone a='1'>text<c/><c/></gone></r>");
    CXmlElement* removed = doc->GetDocumentElement()->RemoveLastChildElement();
    CXmlElement* byHand = removed->CreateNewChildElement();
    byHand->SetElementName("made");
    delete doc;
    EXPECT_EQ("gone", removed->GetLocalName());
    EXPECT_EQ("text", removed->GetText());
    EXPECT_EQ("1", removed->GetAttribute("a", ""));
    EXPECT_EQ("c", removed->GetFirstElement()->GetNextSiblingElement()->GetLocalName());
    EXPECT_EQ(byHand, removed->GetFirstElement()->GetNextSiblingElement()->GetNextSiblingElement());
    delete removed;
}

// Removed elements of one document, destroyed on two threads while the document loads again:
// each only counts its storage block down.
TEST(CXmlElementBuild, RemovedElementsDieOnOtherThreads) {
    CXmlDocument doc;
    std::string xml = "<r>";
    for (int i = 0; i < 600; ++i)
        xml += "<e><c/></e>";
    xml += "</r>";
    doc.LoadXml(xml.c_str());
    std::vector<CXmlElement*> removed[2];
    for (int i = 0; i < 600; ++i)
        removed[i % 2].push_back(doc.GetDocumentElement()->RemoveLastChildElement());
    std::thread first([&] {
        for (CXmlElement* element : removed[0])
            delete element;
    });
    std::thread second([&] {
        for (CXmlElement* element : removed[1])
            delete element;
    });
    doc.LoadXml("<other/>");
    first.join();
    second.join();
    EXPECT_EQ("other", doc.GetDocumentElement()->GetLocalName());
}

namespace {

std::vector<CXmlElement*> g_dropped;

bool RecordAddressAndDrop(CXmlElement* element) {
    g_dropped.push_back(element);
    return true;
}

} // namespace

// Dropping elements through the callback frees their storage for the next ones, which is what
// keeps a long document in bounded memory.
TEST(CXmlElementBuild, DroppedElementsStorageIsReused) {
    g_dropped.clear();
    CXmlDocument doc(&RecordAddressAndDrop);
    doc.LoadXml("<r><a/><b/><c><d/></c></r>");
    ASSERT_EQ(5u, g_dropped.size());
    EXPECT_EQ(g_dropped[0], g_dropped[1]); // b took the place of a
    EXPECT_EQ(g_dropped[0], g_dropped[3]); // then c, after d had ended inside it
}
