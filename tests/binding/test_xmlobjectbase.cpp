// Tests of CXmlObjectBase: reference counting and CSmartPtr, the choice and property helpers
// with their exact messages, and the From* entry points for XML.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <cstdio>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "binding/SmartPtr.h"
#include "binding/XmlObjectBase.h"
#include "foundation/Exceptions.h"
#include "tree/XmlDocument.h"
#include "values/BinaryData.h"
#include "support/TestSupport.h"

using namespace QzXmlLib16;

namespace {

using QzTest::MessageOf;

// The message numbers and the width of the count are part of the interface.
static_assert(IEventSink::MsgCollectionChange == 0 && IEventSink::MsgCollectionAdd == 1 &&
                  IEventSink::MsgCollectionAddComplete == 2 && IEventSink::MsgCollectionRemove == 3 &&
                  IEventSink::MsgCollectionRemoveComplete == 4,
              "message numbers");
static_assert(std::is_same<decltype(std::declval<CXmlObjectBase&>().AddRef()), int32_t>::value &&
                  std::is_same<decltype(std::declval<CXmlObjectBase&>().Release()), int32_t>::value,
              "32-bit counts");

// A minimal subclass: records what the entry points receive and counts destructions. GetBase
// answers m_base when one is set, as a class with several bases would.
class CProbe : public CXmlObjectBase {
public:
    explicit CProbe(int* destroyed = nullptr) : m_destroyed(destroyed) {}
    ~CProbe() override {
        if (m_destroyed)
            ++*m_destroyed;
    }
    CXmlObjectBase* GetBase() override { return m_base ? m_base : this; }
    std::string GetTargetNamespace() const override { return "urn:probe"; }
    std::string GetNamespace() const override { return "urn:probe"; }

    std::string m_rootName;
    std::string m_firstChildName;
    std::string m_text;
    const CSerializationContext* m_context = nullptr;
    int m_reads = 0;
    CXmlObjectBase* m_base = nullptr;
    mutable std::string m_writes;

protected:
    void AttributesToXml_Int(CXmlWriter*, const CSerializationContext&) const override {
        m_writes += "attributes;";
    }
    void ToXml_Int(CXmlWriter*, bool isRoot, const char* ns, const CSerializationContext&,
                   bool inChoice) const override {
        m_writes += std::string("element root=") + (isRoot ? "1" : "0") + " ns=" + ns +
                    " choice=" + (inChoice ? "1" : "0") + ";";
    }
    CXmlElement* FromXml_Int(CXmlElement* element, CXmlElement* firstChild,
                             const CSerializationContext& context, bool inChoice) override {
        EXPECT_FALSE(inChoice);
        ++m_reads;
        SetElementName(element->GetLocalName().c_str());
        m_rootName = element->GetLocalName();
        m_firstChildName = firstChild ? firstChild->GetLocalName() : "";
        m_text = element->GetText();
        m_context = &context;
        return firstChild;
    }

private:
    int* m_destroyed;
};

// Counts like an object but logs the order in which a smart pointer calls it.
class CLogged {
public:
    CLogged(const char* name, std::string* log) : m_name(name), m_log(log) {}
    int32_t AddRef() {
        *m_log += std::string("+") + m_name;
        return ++m_count;
    }
    int32_t Release() {
        *m_log += std::string("-") + m_name;
        return --m_count;
    }

private:
    const char* m_name;
    std::string* m_log;
    int32_t m_count = 0;
};

} // namespace

// --- Reference counting

// A new object and a copy each start at zero; the last release deletes. The copy takes the
// element name but not the count.
TEST(CXmlObjectBaseRefCount, NewObjectStartsAtZeroAndLastReleaseDeletes) {
    int destroyed = 0;
    CProbe* probe = new CProbe(&destroyed);
    EXPECT_EQ(1, probe->AddRef());
    EXPECT_EQ(2, probe->AddRef());
    probe->SetElementName("x");
    CProbe* copy = new CProbe(*probe);
    EXPECT_EQ("x", copy->GetElementName());
    EXPECT_EQ(1, copy->AddRef());
    EXPECT_EQ(0, copy->Release());
    EXPECT_EQ(1, destroyed);
    EXPECT_EQ(1, probe->Release());
    EXPECT_EQ(0, probe->Release());
    EXPECT_EQ(2, destroyed);
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
        // Assigning the only holder to itself, or to the pointer it owns, must not free the object:
        // the new one is taken before the old one is released.
        CSmartPtr<CProbe>& alias = a;
        a = alias;
        a = a.Get();
        EXPECT_EQ(0, destroyed);
        EXPECT_EQ("urn:probe", a->GetNamespace());
        a = new CProbe(&destroyed);
        EXPECT_EQ(1, destroyed);
    }
    EXPECT_EQ(2, destroyed);
}

// A null pointer in each spelling a raw pointer takes; a move takes over without counting.
TEST(CXmlObjectBaseRefCount, MovesAndNulls) {
    int destroyed = 0;
    CSmartPtr<CProbe> a = NULL;
    CSmartPtr<CProbe> b(0);
    CSmartPtr<CProbe> c = nullptr;
    EXPECT_TRUE(a == NULL && NULL == a && b == 0 && c == nullptr && !c);
    c = new CProbe(&destroyed);
    EXPECT_TRUE(c != NULL && c != 0 && c != nullptr);
    CProbe* raw = c;
    CXmlObjectBase* base = c;
    EXPECT_EQ(raw, base);
    c = 0;
    EXPECT_EQ(1, destroyed);
    c = new CProbe(&destroyed);
    CSmartPtr<CProbe> moved(std::move(c));
    EXPECT_EQ(nullptr, c.Get());
    EXPECT_EQ(2, moved->AddRef()); // the move took over the single reference
    moved->Release();
    std::vector<CSmartPtr<CProbe>> list(2, moved);
    moved = NULL;
    EXPECT_EQ(1, destroyed);
    list.clear();
    EXPECT_EQ(2, destroyed);
}

// Every assignment takes the new object before it releases the old one, the raw and the smart
// forms alike; the move takes over without counting.
TEST(CXmlObjectBaseRefCount, AssignmentTakesTheNewBeforeReleasingTheOld) {
    std::string log;
    CLogged a("a", &log), b("b", &log);
    auto logOf = [&log](const std::function<void()>& step) {
        log.clear();
        step();
        return log;
    };
    {
        CSmartPtr<CLogged> p = &a;
        CSmartPtr<CLogged> q = &b;
        EXPECT_EQ("+a+b", log);
        EXPECT_EQ("+b-a", logOf([&] { p = &b; }));
        EXPECT_EQ("+b-b", logOf([&] { p = q; }));
        EXPECT_EQ("-b", logOf([&] { p = std::move(q); }));
        EXPECT_EQ("-b", logOf([&] { p = NULL; }));
        log.clear();
    }
    EXPECT_EQ("", log); // both were null at the end
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

// --- Element name and property helpers

TEST(CXmlObjectBaseHelpers, ElementNameAndBase) {
    CSmartPtr<CProbe> probe = new CProbe();
    EXPECT_EQ("", probe->GetElementName());
    probe->SetElementName("order");
    probe->SetElementName(nullptr);
    EXPECT_EQ("", probe->GetElementName());
    const CXmlObjectBase* constView = probe;
    EXPECT_EQ(static_cast<CXmlObjectBase*>(probe), constView->GetBase());
}

TEST(CXmlObjectBaseHelpers, PropertyIsNull) {
    CSmartPtr<CProbe> probe = new CProbe();
    EXPECT_NO_THROW(CXmlObjectBase::Throw_IfPropertyIsNull(probe, "Customer"));
    EXPECT_EQ("The Property [Customer] is mandatory, it may node be NULL",
              MessageOf<CQzInvalidParamException>(
                  [] { CXmlObjectBase::Throw_IfPropertyIsNull(nullptr, "Customer"); }));
}

// A null object passes; the name that counts is that of the GetBase() object, not of the
// pointer given.
TEST(CXmlObjectBaseHelpers, ElementNameDiffers) {
    CSmartPtr<CProbe> inner = new CProbe();
    inner->SetElementName("billing");
    CSmartPtr<CProbe> outer = new CProbe();
    outer->SetElementName("outer");
    EXPECT_NO_THROW(CXmlObjectBase::Throw_IfElementNameDiffers(nullptr, "shipping"));
    EXPECT_NO_THROW(CXmlObjectBase::Throw_IfElementNameDiffers(inner, "billing"));
    EXPECT_EQ(
        "This property requires an element with the name shipping the element being set has the element "
        "name billing",
        MessageOf<CQzInvalidParamException>(
            [&] { CXmlObjectBase::Throw_IfElementNameDiffers(inner, "shipping"); }));
    outer->m_base = inner;
    EXPECT_NO_THROW(CXmlObjectBase::Throw_IfElementNameDiffers(outer, "billing"));
    EXPECT_EQ("This property requires an element with the name outer the element being set has the element "
              "name billing",
              MessageOf<CQzInvalidParamException>(
                  [&] { CXmlObjectBase::Throw_IfElementNameDiffers(outer, "outer"); }));
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

// A count above zero selects the member, zero or less clears it only when it is the current one.
TEST(CXmlObjectBaseChoice, CollectionChanged) {
    const struct {
        const char* name;
        int count;
        const char* after;
    } steps[] = {{"a", 0, ""}, {"a", -1, ""}, {"a", 2, "a"}, {"a", 5, "a"}, {"b", 0, "a"}};
    std::string current;
    for (const auto& step : steps) {
        CXmlObjectBase::Choice_CollectionChanged(step.name, step.count, current);
        EXPECT_EQ(step.after, current) << step.name << " " << step.count;
    }
    EXPECT_EQ("The Property [a] is already set. Only one element within this class bay be set at a time",
              MessageOf<CQzInvalidStateException>(
                  [&] { CXmlObjectBase::Choice_CollectionChanged("b", 1, current); }));
    CXmlObjectBase::Choice_CollectionChanged("a", 0, current);
    EXPECT_EQ("", current);
}

// --- Static forwarders

TEST(CXmlObjectBaseForwarders, StaticFormsReachTheProtectedVirtuals) {
    CSmartPtr<CProbe> probe = new CProbe();
    CSerializationContext context;
    CXmlObjectBase::AttributesToXml_Int(probe, nullptr, context);
    CXmlObjectBase::ToXml_Int(probe, nullptr, true, "urn:x", context, true);
    CXmlObjectBase::ToXml_Int(probe, nullptr, false, "", context, false);
    EXPECT_EQ("attributes;element root=1 ns=urn:x choice=1;element root=0 ns= choice=0;", probe->m_writes);

    // The read forwarder passes false as inChoice (checked in the probe) and hands back what the
    // object left unread.
    CXmlDocument doc;
    doc.LoadXml("<r><c/><d/></r>");
    CXmlElement* root = doc.GetDocumentElement();
    EXPECT_EQ(root->GetFirstElement(),
              CXmlObjectBase::FromXml_Int(probe, root, root->GetFirstElement(), context));
    EXPECT_EQ(&context, probe->m_context);
}

// --- From* entry points

TEST(CXmlObjectBaseRead, EveryXmlFormReachesFromXmlInt) {
    const std::string xml = "<root>t<![CDATA[x]]><first/><second/></root>";
    CSerializationContext context;
    context.SetStripCDATA(false); // the context reaches the parser
    CSmartPtr<CProbe> probe = new CProbe();

    probe->FromXml(xml.c_str(), context);
    EXPECT_EQ("root", probe->m_rootName);
    EXPECT_EQ("first", probe->m_firstChildName);
    EXPECT_EQ("t<![CDATA[x]]>", probe->m_text);
    EXPECT_EQ(&context, probe->m_context);
    EXPECT_EQ("root", probe->GetElementName());

    probe->FromXml(L"<wide><![CDATA[x]]><c/></wide>");
    EXPECT_EQ("wide", probe->m_rootName);
    EXPECT_EQ("x", probe->m_text);
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
    EXPECT_EQ("The element to read from is NULL", MessageOf<CQzInvalidParamException>([&] {
                  probe->FromXmlElement(static_cast<const CXmlElement*>(nullptr));
              }));
    EXPECT_EQ(1, probe->m_reads);
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
