// OrdersWrite.cpp - the writing half of the orders classes: each ToXml_Int sends its element
// as CXmlWriter events, in the order the schema gives, as generated code does.
#include "orders/Orders.h"

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

// Member output

// <name>text</name> in the orders namespace.
void WriteSimple(CXmlWriter* writer, const char* name, const std::string& text, ItemType type) {
    writer->WriteStartElement(name, kOrdersNamespace);
    writer->WriteString(text, type, false);
    writer->WriteEndElement();
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
    writer->WriteStartElement(GetElementName(), ns);
    WriteSimple(writer, "street", m_street, ItemString);
    WriteSimple(writer, "city", m_city, ItemString);
    WriteSimple(writer, "zip", m_zip, ItemString);
    writer->WriteEndElement();
}

void CCustomer::ToXml_Int(CXmlWriter* writer, bool, const char* ns, const CSerializationContext& context,
                          bool) const {
    writer->WriteStartElement(GetElementName(), ns);
    WriteSimple(writer, "name", m_name, ItemString);
    WriteSimple(writer, "email", m_email, ItemString);
    if (m_address)
        CXmlObjectBase::ToXml_Int(m_address, writer, false, kOrdersNamespace, context, false);
    writer->WriteEndElement();
}

void CItem::ToXml_Int(CXmlWriter* writer, bool, const char* ns, const CSerializationContext&, bool) const {
    writer->WriteStartElement(GetElementName(), ns);
    WriteSimple(writer, "sku", m_sku, ItemString);
    WriteSimple(writer, "qty", std::to_string(m_qty), ItemI4);
    WriteSimple(writer, "price", m_price, ItemDecimal);
    if (m_hasNote)
        WriteSimple(writer, "note", m_note, ItemString);
    writer->WriteEndElement();
}

void CItems::ToXml_Int(CXmlWriter* writer, bool, const char* ns, const CSerializationContext& context,
                       bool) const {
    writer->WriteStartElement(GetElementName(), ns);
    for (const CSmartPtr<CItem>& item : m_items)
        CXmlObjectBase::ToXml_Int(item, writer, false, kOrdersNamespace, context, false);
    writer->WriteEndElement();
}

void COrder::ToXml_Int(CXmlWriter* writer, bool, const char* ns, const CSerializationContext& context,
                       bool) const {
    writer->WriteStartElement(GetElementName(), ns);
    writer->WriteAttributeString("id", "", std::to_string(m_id), ItemI4);
    if (m_hasStatus)
        writer->WriteAttributeString("status", "", m_status, ItemString);
    if (m_customer)
        CXmlObjectBase::ToXml_Int(m_customer, writer, false, kOrdersNamespace, context, false);
    WriteSimple(writer, "date", m_date, ItemDate);
    if (m_items)
        CXmlObjectBase::ToXml_Int(m_items, writer, false, kOrdersNamespace, context, false);
    WriteSimple(writer, "total", m_total, ItemDecimal);
    WriteSimple(writer, "paid", m_paid ? "true" : "false", ItemBoolean);
    writer->WriteEndElement();
}

void COrders::ToXml_Int(CXmlWriter* writer, bool isRoot, const char* ns, const CSerializationContext& context,
                        bool) const {
    if (isRoot)
        WriteRootPrologue(writer, context);
    writer->WriteStartElement(GetElementName(), ns);
    for (const CSmartPtr<COrder>& order : m_orders)
        CXmlObjectBase::ToXml_Int(order, writer, false, kOrdersNamespace, context, false);
    writer->WriteEndElement();
}

} // namespace QzOrders
