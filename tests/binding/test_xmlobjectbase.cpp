// Tests of CXmlObjectBase: reference counting and CSmartPtr, the choice and property helpers
// with their exact messages, and the From* entry points for XML.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "binding/SmartPtr.h"
#include "binding/XmlObjectBase.h"
#include "foundation/Exceptions.h"
#include "tree/XmlDocument.h"
#include "values/BinaryData.h"

using namespace QzXmlLib16;

namespace {

// A minimal subclass: records what the read entry point receives and counts destructions.
class CProbe : public CXmlObjectBase {
public:
    explicit CProbe(int* destroyed = nullptr) : m_destroyed(destroyed) {}
    ~CProbe() override {
        if (m_destroyed)
            ++*m_destroyed;
    }
    CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override { return "urn:probe"; }
    std::string GetNamespace() const override { return "urn:probe"; }

    std::string m_rootName;
    std::string m_firstChildName;
    std::string m_text;
    const CSerializationContext* m_context = nullptr;
    int m_reads = 0;

protected:
    void ToXml_Int(CXmlWriter*, bool, const char*, const CSerializationContext&, bool) const override {}
    CXmlElement* FromXml_Int(CXmlElement* element, CXmlElement* firstChild,
                             const CSerializationContext& context, bool inChoice) override {
        EXPECT_FALSE(inChoice);
        ++m_reads;
        SetElementName(element->GetLocalName().c_str());
        m_rootName = element->GetLocalName();
        m_firstChildName = firstChild ? firstChild->GetLocalName() : "";
        m_text = element->GetText();
        m_context = &context;
        return nullptr;
    }

private:
    int* m_destroyed;
};

template <class E, class F> std::string MessageOf(F call) {
    try {
        call();
    } catch (const E& e) {
        return e.GetMessage();
    }
    return "<no exception>";
}

} // namespace

// --- Reference counting

TEST(CXmlObjectBaseRefCount, NewObjectStartsAtZeroAndLastReleaseDeletes) {
    int destroyed = 0;
    CProbe* probe = new CProbe(&destroyed);
    EXPECT_EQ(1, probe->AddRef());
    EXPECT_EQ(2, probe->AddRef());
    EXPECT_EQ(1, probe->Release());
    EXPECT_EQ(0, destroyed);
    EXPECT_EQ(0, probe->Release());
    EXPECT_EQ(1, destroyed);
}

TEST(CXmlObjectBaseRefCount, SmartPointerHoldsAndReleases) {
    int destroyed = 0;
    {
        CSmartPtr<CProbe> a = new CProbe(&destroyed);
        CSmartPtr<CProbe> b = a;
        CSmartPtr<CXmlObjectBase> base = a; // to a base class
        EXPECT_EQ(a, b);
        EXPECT_TRUE(base == static_cast<CXmlObjectBase*>(a));
        b = nullptr;
        base = nullptr;
        EXPECT_EQ(0, destroyed);
        EXPECT_NE(nullptr, a);
        EXPECT_EQ("urn:probe", a->GetNamespace());
        EXPECT_EQ("urn:probe", (*a).GetTargetNamespace());
    }
    EXPECT_EQ(1, destroyed);
}

// Assigning the only holder of an object to itself, or to a pointer it owns, must not free the
// object first: the new one is taken before the old one is released.
TEST(CXmlObjectBaseRefCount, SelfAssignmentKeepsTheObject) {
    int destroyed = 0;
    CSmartPtr<CProbe> a = new CProbe(&destroyed);
    CSmartPtr<CProbe>& alias = a;
    a = alias;
    a = a.Get();
    EXPECT_EQ(0, destroyed);
    EXPECT_EQ("urn:probe", a->GetNamespace());
    a = new CProbe(&destroyed);
    EXPECT_EQ(1, destroyed);
}

TEST(CXmlObjectBaseRefCount, MovesAndNulls) {
    int destroyed = 0;
    CSmartPtr<CProbe> empty;
    EXPECT_TRUE(empty == nullptr);
    EXPECT_FALSE(empty);
    CSmartPtr<CProbe> a = new CProbe(&destroyed);
    CSmartPtr<CProbe> b(std::move(a));
    EXPECT_EQ(nullptr, a.Get());
    EXPECT_EQ(2, b->AddRef()); // the move took over the single reference
    b->Release();
    std::vector<CSmartPtr<CProbe>> list;
    list.push_back(b);
    list.push_back(b);
    b = nullptr;
    list.clear();
    EXPECT_EQ(1, destroyed);
}

TEST(CXmlObjectBaseRefCount, CountsSurviveConcurrentCopies) {
    int destroyed = 0;
    CSmartPtr<CProbe> shared = new CProbe(&destroyed);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&shared] {
            for (int i = 0; i < 20000; ++i) {
                CSmartPtr<CProbe> copy = shared;
                CSmartPtr<CProbe> another = copy;
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(0, destroyed);
    EXPECT_EQ(2, shared->AddRef());
    shared->Release();
    shared = nullptr;
    EXPECT_EQ(1, destroyed);
}

TEST(CXmlObjectBaseRefCount, CopyStartsWithItsOwnCount) {
    CSmartPtr<CProbe> a = new CProbe();
    a->SetElementName("x");
    CProbe* copy = new CProbe(*a);
    EXPECT_EQ("x", copy->GetElementName());
    EXPECT_EQ(1, copy->AddRef());
    copy->Release();
    EXPECT_EQ(2, a->AddRef());
    a->Release();
}

// --- Element name and base

TEST(CXmlObjectBaseNames, ElementNameAndBase) {
    CSmartPtr<CProbe> probe = new CProbe();
    EXPECT_EQ("", probe->GetElementName());
    probe->SetElementName("order");
    EXPECT_EQ("order", probe->GetElementName());
    probe->SetElementName(nullptr);
    EXPECT_EQ("", probe->GetElementName());
    const CXmlObjectBase* constView = probe;
    EXPECT_EQ(static_cast<CXmlObjectBase*>(probe), constView->GetBase());
}

// --- Property helpers

TEST(CXmlObjectBaseHelpers, PropertyIsNull) {
    CSmartPtr<CProbe> probe = new CProbe();
    EXPECT_NO_THROW(CXmlObjectBase::Throw_IfPropertyIsNull(probe, "Customer"));
    EXPECT_EQ("The Property [Customer] is mandatory, it may node be NULL",
              MessageOf<CQzInvalidParamException>(
                  [] { CXmlObjectBase::Throw_IfPropertyIsNull(nullptr, "Customer"); }));
}

TEST(CXmlObjectBaseHelpers, ElementNameDiffers) {
    CSmartPtr<CProbe> probe = new CProbe();
    probe->SetElementName("billing");
    EXPECT_NO_THROW(CXmlObjectBase::Throw_IfElementNameDiffers(nullptr, "shipping"));
    EXPECT_NO_THROW(CXmlObjectBase::Throw_IfElementNameDiffers(probe, "billing"));
    EXPECT_EQ(
        "This property requires an element with the name shipping the element being set has the element "
        "name billing",
        MessageOf<CQzInvalidParamException>(
            [&] { CXmlObjectBase::Throw_IfElementNameDiffers(probe, "shipping"); }));
}

// --- Choice helpers

TEST(CXmlObjectBaseChoice, SetElementValid) {
    std::string current = "a";
    CXmlObjectBase::Choice_SetElementValid(true, "a", current);
    EXPECT_EQ("a", current);
    CXmlObjectBase::Choice_SetElementValid(false, "b", current);
    EXPECT_EQ("", current);
    // Note pinned: a true on an empty choice refuses, with nothing between "Property " and " is".
    EXPECT_EQ("The Property  is already set. Only one element within this class bay be set at a time",
              MessageOf<CQzInvalidStateException>(
                  [&] { CXmlObjectBase::Choice_SetElementValid(true, "a", current); }));
    current = "b";
    EXPECT_EQ("The Property b is already set. Only one element within this class bay be set at a time",
              MessageOf<CQzInvalidStateException>(
                  [&] { CXmlObjectBase::Choice_SetElementValid(true, "a", current); }));
    EXPECT_EQ("b", current);
}

TEST(CXmlObjectBaseChoice, SelectElement) {
    CSmartPtr<CProbe> value = new CProbe();
    std::string current;
    // Note pinned: nulling a member of an empty choice selects it.
    CXmlObjectBase::Choice_SelectElement("a", nullptr, current);
    EXPECT_EQ("a", current);
    CXmlObjectBase::Choice_SelectElement("a", value, current);
    EXPECT_EQ("a", current);
    CXmlObjectBase::Choice_SelectElement("b", nullptr, current);
    EXPECT_EQ("a", current);
    EXPECT_EQ("The Property [a] is already set. Only one element within this class bay be set at a time",
              MessageOf<CQzInvalidStateException>(
                  [&] { CXmlObjectBase::Choice_SelectElement("b", value, current); }));
    EXPECT_EQ("a", current);
    CXmlObjectBase::Choice_SelectElement("a", nullptr, current);
    EXPECT_EQ("", current);
    CXmlObjectBase::Choice_SelectElement("b", value, current);
    EXPECT_EQ("b", current);
}

TEST(CXmlObjectBaseChoice, CollectionChanged) {
    std::string current;
    CXmlObjectBase::Choice_CollectionChanged("a", 0, current);
    EXPECT_EQ("", current);
    CXmlObjectBase::Choice_CollectionChanged("a", -1, current);
    EXPECT_EQ("", current);
    CXmlObjectBase::Choice_CollectionChanged("a", 2, current);
    EXPECT_EQ("a", current);
    CXmlObjectBase::Choice_CollectionChanged("a", 5, current);
    EXPECT_EQ("a", current);
    CXmlObjectBase::Choice_CollectionChanged("b", 0, current);
    EXPECT_EQ("a", current);
    EXPECT_EQ("The Property [a] is already set. Only one element within this class bay be set at a time",
              MessageOf<CQzInvalidStateException>(
                  [&] { CXmlObjectBase::Choice_CollectionChanged("b", 1, current); }));
    CXmlObjectBase::Choice_CollectionChanged("a", 0, current);
    EXPECT_EQ("", current);
}

// --- From* entry points

TEST(CXmlObjectBaseRead, EveryXmlFormReachesFromXmlInt) {
    const std::string xml = "<root>t<first/><second/></root>";
    CSerializationContext context;
    CSmartPtr<CProbe> probe = new CProbe();

    probe->FromXml(xml.c_str(), context);
    EXPECT_EQ("root", probe->m_rootName);
    EXPECT_EQ("first", probe->m_firstChildName);
    EXPECT_EQ("t", probe->m_text);
    EXPECT_EQ(&context, probe->m_context);
    EXPECT_EQ("root", probe->GetElementName());

    probe->FromXml(L"<wide><c/></wide>");
    EXPECT_EQ("wide", probe->m_rootName);
    EXPECT_EQ(&CSerializationContext::m_defaultContext, probe->m_context);

    std::vector<unsigned char> bytes(xml.begin(), xml.end());
    probe->FromXmlStream(bytes.data(), static_cast<unsigned long>(bytes.size()), context);
    EXPECT_EQ("first", probe->m_firstChildName);

    CBinaryData data(bytes.data(), static_cast<unsigned long>(bytes.size()), false);
    probe->m_rootName.clear();
    probe->FromXmlStream(data, context);
    EXPECT_EQ("root", probe->m_rootName);

    std::string path = ::testing::TempDir() + "qzxml_binding_probe.xml";
    FILE* file = std::fopen(path.c_str(), "wb");
    ASSERT_NE(nullptr, file);
    std::fwrite(xml.data(), 1, xml.size(), file);
    std::fclose(file);
    probe->m_rootName.clear();
    probe->FromXmlFile(path.c_str(), context);
    std::remove(path.c_str());
    EXPECT_EQ("root", probe->m_rootName);
    EXPECT_EQ(5, probe->m_reads);
}

TEST(CXmlObjectBaseRead, FromXmlElementReadsASubtree) {
    CXmlDocument doc;
    doc.LoadXml("<r><inner>x<leaf/></inner></r>");
    CSmartPtr<CProbe> probe = new CProbe();
    probe->FromXmlElement(doc.GetDocumentElement()->GetFirstElement());
    EXPECT_EQ("inner", probe->m_rootName);
    EXPECT_EQ("leaf", probe->m_firstChildName);
    EXPECT_EQ("x", probe->m_text);
}

// Load failures pass through unchanged and the object is not called.
TEST(CXmlObjectBaseRead, LoadFailuresPassThrough) {
    CSmartPtr<CProbe> probe = new CProbe();
    EXPECT_EQ("XML String is empty!", MessageOf<CQzException>([&] { probe->FromXml(""); }));
    EXPECT_EQ("XML Stream is empty!", MessageOf<CQzException>([&] { probe->FromXmlStream(nullptr, 0); }));
    EXPECT_EQ("mismatched tag at line 1", MessageOf<CQzException>([&] { probe->FromXml("<a></b>"); }));
    EXPECT_EQ("Failed to open the file [/nonexistent/qzxml.xml].",
              MessageOf<CQzException>([&] { probe->FromXmlFile("/nonexistent/qzxml.xml"); }));
    EXPECT_EQ(0, probe->m_reads);
}

// The context reaches the parser: CDATA markers stay when they are not stripped.
TEST(CXmlObjectBaseRead, ContextReachesTheParser) {
    CSerializationContext context;
    context.SetStripCDATA(false);
    CSmartPtr<CProbe> probe = new CProbe();
    probe->FromXml("<a><![CDATA[x]]></a>", context);
    EXPECT_EQ("<![CDATA[x]]>", probe->m_text);
    probe->FromXml("<a><![CDATA[x]]></a>");
    EXPECT_EQ("x", probe->m_text);
}
