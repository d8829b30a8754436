// OrdersWrite.cpp - the writing half of the orders classes: each ToXml_Int sends its element
// as CXmlWriter events, in the order the schema gives, as generated code does.
#include "orders/Orders.h"

#include <cstring>
#include <string>

#include "binding/SerializationContext.h"
#include "values/ItemType.h"
#include "writers/XmlWriter.h"

namespace QzOrders {

using QzXmlLib16::ItemBoolean;
using QzXmlLib16::ItemDate;
using QzXmlLib16::ItemDecimal;
using QzXmlLib16::ItemI4;
using QzXmlLib16::ItemString;
using QzXmlLib16::ItemType;

namespace {

// Names

// The element names and the namespace as strings made once, as a class's meta-data records
// hold them, so that writing an element builds no string.
struct Names {
    const std::string ns{kOrdersNamespace};
    const std::string street{"street"}, city{"city"}, zip{"zip"};
    const std::string name{"name"}, email{"email"};
    const std::string sku{"sku"}, qty{"qty"}, price{"price"}, note{"note"};
    const std::string id{"id"}, status{"status"}, date{"date"}, total{"total"}, paid{"paid"};
    const std::string empty, trueText{"true"}, falseText{"false"};
};

const Names& N() {
    static const Names names;
    return names;
}

// Member output

// <name>text</name> in the orders namespace.
void WriteSimple(CXmlWriter* writer, const std::string& name, const std::string& text, ItemType type) {
    writer->WriteStartElement(name, N().ns);
    writer->WriteString(text, type, false);
    writer->WriteEndElement();
}

// The start of a class's own element in namespace `ns`.
void WriteStart(CXmlWriter* writer, const std::string& name, const char* ns) {
    if (std::strcmp(ns, kOrdersNamespace) == 0)
        writer->WriteStartElement(name, N().ns);
    else
        writer->WriteStartElement(name, ns);
}

// What the engine does for a root element before it starts: processing instructions, the
// default namespace and the caller's prefixes.
void WriteRootPrologue(CXmlWriter* writer, const CSerializationContext& context) {
    for (const std::string& instruction : context.GetProcessingInstructions())
        writer->WritePI(instruction);
    const std::string defaultNamespace = context.GetDefaultNamespaceURI();
    if (!defaultNamespace.empty())
        writer->SetDefaultNamespace(defaultNamespace);
    const QzXmlLib16::CNamespaceAliasMap& aliases = context.GetNamespaceAliases();
    for (int i = 0; i < aliases.GetNamespaceCount(); ++i) {
        const std::string uri = aliases.GetNamespaceAt(i);
        writer->AddNamespace(aliases.GetAliasFromNamespace(uri.c_str()), uri);
    }
}

} // namespace

void CAddress::ToXml_Int(CXmlWriter* writer, bool, const char* ns, const CSerializationContext&, bool) const {
    WriteStart(writer, GetElementName(), ns);
    WriteSimple(writer, N().street, m_street, ItemString);
    WriteSimple(writer, N().city, m_city, ItemString);
    WriteSimple(writer, N().zip, m_zip, ItemString);
    writer->WriteEndElement();
}

void CCustomer::ToXml_Int(CXmlWriter* writer, bool, const char* ns, const CSerializationContext& context,
                          bool) const {
    WriteStart(writer, GetElementName(), ns);
    WriteSimple(writer, N().name, m_name, ItemString);
    WriteSimple(writer, N().email, m_email, ItemString);
    if (m_address)
        CXmlObjectBase::ToXml_Int(m_address, writer, false, kOrdersNamespace, context, false);
    writer->WriteEndElement();
}

void CItem::ToXml_Int(CXmlWriter* writer, bool, const char* ns, const CSerializationContext&, bool) const {
    WriteStart(writer, GetElementName(), ns);
    WriteSimple(writer, N().sku, m_sku, ItemString);
    WriteSimple(writer, N().qty, std::to_string(m_qty), ItemI4);
    WriteSimple(writer, N().price, m_price, ItemDecimal);
    if (m_hasNote)
        WriteSimple(writer, N().note, m_note, ItemString);
    writer->WriteEndElement();
}

void CItems::ToXml_Int(CXmlWriter* writer, bool, const char* ns, const CSerializationContext& context,
                       bool) const {
    WriteStart(writer, GetElementName(), ns);
    for (const CSmartPtr<CItem>& item : m_items)
        CXmlObjectBase::ToXml_Int(item, writer, false, kOrdersNamespace, context, false);
    writer->WriteEndElement();
}

void COrder::ToXml_Int(CXmlWriter* writer, bool, const char* ns, const CSerializationContext& context,
                       bool) const {
    WriteStart(writer, GetElementName(), ns);
    writer->WriteAttributeString(N().id, N().empty, std::to_string(m_id), ItemI4);
    if (m_hasStatus)
        writer->WriteAttributeString(N().status, N().empty, m_status, ItemString);
    if (m_customer)
        CXmlObjectBase::ToXml_Int(m_customer, writer, false, kOrdersNamespace, context, false);
    WriteSimple(writer, N().date, m_date, ItemDate);
    if (m_items)
        CXmlObjectBase::ToXml_Int(m_items, writer, false, kOrdersNamespace, context, false);
    WriteSimple(writer, N().total, m_total, ItemDecimal);
    WriteSimple(writer, N().paid, m_paid ? N().trueText : N().falseText, ItemBoolean);
    writer->WriteEndElement();
}

void COrders::ToXml_Int(CXmlWriter* writer, bool isRoot, const char* ns, const CSerializationContext& context,
                        bool) const {
    if (isRoot)
        WriteRootPrologue(writer, context);
    WriteStart(writer, GetElementName(), ns);
    for (const CSmartPtr<COrder>& order : m_orders)
        CXmlObjectBase::ToXml_Int(order, writer, false, kOrdersNamespace, context, false);
    writer->WriteEndElement();
}

} // namespace QzOrders
