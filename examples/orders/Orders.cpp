// Orders.cpp - reading the orders classes from the document tree: each class checks its
// attributes, then walks its child elements in sequence order.
#include "orders/Orders.h"

#include <cerrno>
#include <climits>
#include <cstdlib>

#include "foundation/Exceptions.h"
#include "tree/XmlDocument.h"

namespace QzOrders {

using QzXmlLib16::CQzInvalidParamException;
using QzXmlLib16::CQzValidationException;
using QzXmlLib16::CXmlAttribute;
using QzXmlLib16::FormatString;

const char kOrdersNamespace[] = "urn:example:orders";

namespace {

// Messages
const char kMsgMissingElement[] = "The mandatory element [%s] is missing";
const char kMsgUnexpectedElement[] = "The element [%s] is not expected here";
const char kMsgWrongElement[] = "The element [{%s}%s] was expected, found [{%s}%s]";
const char kMsgMissingAttribute[] = "The mandatory attribute [%s] is missing";
const char kMsgUnexpectedAttribute[] = "The attribute [%s] is not expected here";
const char kMsgBadInt[] = "The value [%s] is not a valid int";
const char kMsgBadBoolean[] = "The value [%s] is not a valid boolean";
const char kMsgChildInSimple[] = "The element [%s] may only hold text";

// Lexical forms

// Leading and trailing XML white space removed, as for the collapsed value types.
std::string Trimmed(const std::string& text) {
    const char* ws = " \t\r\n";
    size_t first = text.find_first_not_of(ws);
    if (first == std::string::npos)
        return std::string();
    size_t last = text.find_last_not_of(ws);
    return text.substr(first, last - first + 1);
}

// int: [+-]?[0-9]+ within 32 bits. The path of a node is made only for a message: it walks the
// siblings of every ancestor.
template <class Node> int ParseInt(const std::string& text, const Node* node) {
    std::string value = Trimmed(text);
    const char* start = value.c_str();
    bool digits = !value.empty() && value.find_first_not_of("+-0123456789") == std::string::npos;
    char* end = nullptr;
    errno = 0;
    long number = digits ? std::strtol(start, &end, 10) : 0;
    if (!digits || end == start || *end != '\0' || errno == ERANGE || number < INT_MIN || number > INT_MAX)
        throw CQzValidationException(FormatString(kMsgBadInt, value.c_str()), node->GetXPath());
    return static_cast<int>(number);
}

// boolean: true | false | 1 | 0.
bool ParseBoolean(const std::string& text, const CXmlElement* element) {
    std::string value = Trimmed(text);
    if (value == "true" || value == "1")
        return true;
    if (value == "false" || value == "0")
        return false;
    throw CQzValidationException(FormatString(kMsgBadBoolean, value.c_str()), element->GetXPath());
}

// Child cursor

// Walks the child elements of one element in sequence order. Elements are matched by local
// name and, unless the context ignores namespaces, by the orders namespace.
class ChildCursor {
public:
    ChildCursor(CXmlElement* parent, CXmlElement* first, const CSerializationContext& context)
        : m_parent(parent), m_pos(first), m_context(context) {}

    bool Is(const CXmlElement* element, const char* name) const {
        return element && element->GetLocalName() == name &&
               (m_context.GetIgnoreNamespaces() || element->GetNamespaceURI() == kOrdersNamespace);
    }

    // The next element if it has this name, or null. Unknown elements in front of it are
    // passed over when the context ignores them.
    CXmlElement* TakeOptional(const char* name) {
        CXmlElement* probe = m_pos;
        while (probe && !Is(probe, name) && m_context.GetIgnoreUnknownElements())
            probe = probe->GetNextSiblingElement();
        if (!Is(probe, name))
            return nullptr;
        m_pos = probe->GetNextSiblingElement();
        return probe;
    }

    // As TakeOptional, but a missing element is refused unless the context ignores that.
    CXmlElement* Take(const char* name) {
        CXmlElement* element = TakeOptional(name);
        if (!element && !m_context.GetIgnoreMissingMandatoryElements())
            throw CQzValidationException(FormatString(kMsgMissingElement, name), m_parent->GetXPath());
        return element;
    }

    // The text of a mandatory simple element; "" when it is missing and that is ignored.
    std::string TakeText(const char* name) {
        CXmlElement* element = Take(name);
        return element ? SimpleText(element) : std::string();
    }

    // What remains after the last member: refused unless the context ignores unknown elements.
    CXmlElement* Finish() {
        if (m_pos && !m_context.GetIgnoreUnknownElements())
            throw CQzValidationException(FormatString(kMsgUnexpectedElement, m_pos->GetQName().c_str()),
                                         m_pos->GetXPath());
        return m_context.GetIgnoreUnknownElements() ? nullptr : m_pos;
    }

    static std::string SimpleText(const CXmlElement* element) {
        if (element->GetFirstElement())
            throw CQzValidationException(FormatString(kMsgChildInSimple, element->GetQName().c_str()),
                                         element->GetFirstElement()->GetXPath());
        return element->GetText();
    }

private:
    CXmlElement* m_parent;
    CXmlElement* m_pos;
    const CSerializationContext& m_context;
};

// Attributes

// Refuses attributes other than the listed ones (a null-ended list) and the schema-instance
// ones, unless the context ignores unknown attributes.
void CheckAttributes(const CXmlElement* element, const char* const* known,
                     const CSerializationContext& context) {
    if (context.GetIgnoreUnknownAttributes())
        return;
    for (const CXmlAttribute* attribute : element->GetAttributes()) {
        if (attribute->IsNamespaceAttribute() || attribute->IsNilAttribute())
            continue;
        bool found = false;
        for (const char* const* name = known; *name && !found; ++name)
            found = attribute->GetNamespaceURI().empty() && attribute->GetLocalName() == *name;
        if (!found)
            throw CQzValidationException(
                FormatString(kMsgUnexpectedAttribute, attribute->GetLocalName().c_str()),
                attribute->GetXPath());
    }
}

// Starts the read of a class: the object takes the element's name.
void Begin(CXmlObjectBase* object, const CXmlElement* element) {
    object->SetElementName(element->GetLocalName().c_str());
}

// Reads a child object of class T from a mandatory element; null when it is missing and the
// context lets that pass.
template <class T> CSmartPtr<T> ReadElement(CXmlElement* element, const CSerializationContext& context) {
    CSmartPtr<T> child = new T();
    CXmlObjectBase::FromXml_Int(child, element, element->GetFirstElement(), context);
    return child;
}

template <class T>
CSmartPtr<T> ReadChild(ChildCursor& cursor, const char* name, const CSerializationContext& context) {
    CXmlElement* element = cursor.Take(name);
    return element ? ReadElement<T>(element, context) : CSmartPtr<T>();
}

// Reads one or more children of the name into `list`; a missing first one is reported by the
// cursor as for any mandatory child.
template <class T>
void ReadOneOrMore(ChildCursor& cursor, const char* name, const CSerializationContext& context,
                   std::vector<CSmartPtr<T>>& list) {
    if (CSmartPtr<T> first = ReadChild<T>(cursor, name, context))
        list.push_back(first);
    while (CXmlElement* next = cursor.TakeOptional(name))
        list.push_back(ReadElement<T>(next, context));
}

} // namespace

// --- Common base

std::string COrdersObject::GetTargetNamespace() const {
    return kOrdersNamespace;
}

std::string COrdersObject::GetNamespace() const {
    return kOrdersNamespace;
}

// --- Address

CAddress::CAddress() {
    SetElementName("address");
}

void CAddress::Init() {
    m_street.clear();
    m_city.clear();
    m_zip.clear();
}

CXmlElement* CAddress::FromXml_Int(CXmlElement* element, CXmlElement* firstChild,
                                   const CSerializationContext& context, bool) {
    Init();
    Begin(this, element);
    static const char* const kAttributes[] = {nullptr};
    CheckAttributes(element, kAttributes, context);
    ChildCursor cursor(element, firstChild, context);
    m_street = cursor.TakeText("street");
    m_city = cursor.TakeText("city");
    m_zip = cursor.TakeText("zip");
    return cursor.Finish();
}

// --- Customer

CCustomer::CCustomer() {
    SetElementName("customer");
}

void CCustomer::Init() {
    m_name.clear();
    m_email.clear();
    m_address = nullptr;
}

void CCustomer::SetAddress(CAddress* value) {
    Throw_IfPropertyIsNull(value, "Address");
    Throw_IfElementNameDiffers(value, "address");
    m_address = value;
}

CXmlElement* CCustomer::FromXml_Int(CXmlElement* element, CXmlElement* firstChild,
                                    const CSerializationContext& context, bool) {
    Init();
    Begin(this, element);
    static const char* const kAttributes[] = {nullptr};
    CheckAttributes(element, kAttributes, context);
    ChildCursor cursor(element, firstChild, context);
    m_name = cursor.TakeText("name");
    m_email = cursor.TakeText("email");
    m_address = ReadChild<CAddress>(cursor, "address", context);
    return cursor.Finish();
}

// --- Item

CItem::CItem() : m_qty(0), m_hasNote(false) {
    SetElementName("item");
}

void CItem::Init() {
    m_sku.clear();
    m_qty = 0;
    m_price.clear();
    ClearNote();
}

CXmlElement* CItem::FromXml_Int(CXmlElement* element, CXmlElement* firstChild,
                                const CSerializationContext& context, bool) {
    Init();
    Begin(this, element);
    static const char* const kAttributes[] = {nullptr};
    CheckAttributes(element, kAttributes, context);
    ChildCursor cursor(element, firstChild, context);
    m_sku = cursor.TakeText("sku");
    if (CXmlElement* qty = cursor.Take("qty"))
        m_qty = ParseInt(ChildCursor::SimpleText(qty), qty);
    m_price = Trimmed(cursor.TakeText("price"));
    if (CXmlElement* note = cursor.TakeOptional("note"))
        SetNote(ChildCursor::SimpleText(note));
    return cursor.Finish();
}

// --- Items

CItems::CItems() {
    SetElementName("items");
}

CXmlElement* CItems::FromXml_Int(CXmlElement* element, CXmlElement* firstChild,
                                 const CSerializationContext& context, bool) {
    m_items.clear();
    Begin(this, element);
    static const char* const kAttributes[] = {nullptr};
    CheckAttributes(element, kAttributes, context);
    ChildCursor cursor(element, firstChild, context);
    ReadOneOrMore(cursor, "item", context, m_items);
    return cursor.Finish();
}

// --- Order

COrder::COrder() : m_id(0), m_hasStatus(false), m_paid(false) {
    SetElementName("order");
}

void COrder::Init() {
    m_id = 0;
    m_status.clear();
    m_hasStatus = false;
    m_customer = nullptr;
    m_date.clear();
    m_items = nullptr;
    m_total.clear();
    m_paid = false;
}

void COrder::SetCustomer(CCustomer* value) {
    Throw_IfPropertyIsNull(value, "Customer");
    Throw_IfElementNameDiffers(value, "customer");
    m_customer = value;
}

void COrder::SetItems(CItems* value) {
    Throw_IfPropertyIsNull(value, "Items");
    Throw_IfElementNameDiffers(value, "items");
    m_items = value;
}

CXmlElement* COrder::FromXml_Int(CXmlElement* element, CXmlElement* firstChild,
                                 const CSerializationContext& context, bool) {
    Init();
    Begin(this, element);
    static const char* const kAttributes[] = {"id", "status", nullptr};
    CheckAttributes(element, kAttributes, context);
    bool hasId = false;
    for (const CXmlAttribute* attribute : element->GetAttributes()) {
        if (!attribute->GetNamespaceURI().empty())
            continue;
        if (attribute->GetLocalName() == "id") {
            m_id = ParseInt(attribute->GetValue(), attribute);
            hasId = true;
        } else if (attribute->GetLocalName() == "status") {
            SetStatus(attribute->GetValue());
        }
    }
    if (!hasId)
        throw CQzValidationException(FormatString(kMsgMissingAttribute, "id"), element->GetXPath());

    ChildCursor cursor(element, firstChild, context);
    m_customer = ReadChild<CCustomer>(cursor, "customer", context);
    m_date = Trimmed(cursor.TakeText("date"));
    m_items = ReadChild<CItems>(cursor, "items", context);
    m_total = Trimmed(cursor.TakeText("total"));
    if (CXmlElement* paid = cursor.Take("paid"))
        m_paid = ParseBoolean(ChildCursor::SimpleText(paid), paid);
    return cursor.Finish();
}

// --- Orders

COrders::COrders() {
    SetElementName("orders");
}

CXmlElement* COrders::FromXml_Int(CXmlElement* element, CXmlElement* firstChild,
                                  const CSerializationContext& context, bool) {
    m_orders.clear();
    ChildCursor root(nullptr, element, context);
    if (!root.Is(element, "orders"))
        throw CQzValidationException(FormatString(kMsgWrongElement, kOrdersNamespace, "orders",
                                                  element->GetNamespaceURI().c_str(),
                                                  element->GetLocalName().c_str()),
                                     element->GetXPath());
    Begin(this, element);
    static const char* const kAttributes[] = {nullptr};
    CheckAttributes(element, kAttributes, context);
    ChildCursor cursor(element, firstChild, context);
    ReadOneOrMore(cursor, "order", context, m_orders);
    return cursor.Finish();
}

} // namespace QzOrders
