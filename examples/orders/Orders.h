// Orders.h - hand-written classes for the orders document (orders.xsd beside this file), in the
// style of generated code: one CXmlObjectBase subclass per complex type, child objects held
// through CSmartPtr, values as plain members.
//
// Reading walks the tree of tree/XmlDocument.h (Orders.cpp); writing is in OrdersWrite.cpp.
#ifndef QZXML_EXAMPLES_ORDERS_H
#define QZXML_EXAMPLES_ORDERS_H

#include <string>
#include <vector>

#include "binding/SmartPtr.h"
#include "binding/XmlObjectBase.h"

namespace QzOrders {

using QzXmlLib16::CSerializationContext;
using QzXmlLib16::CSmartPtr;
using QzXmlLib16::CXmlElement;
using QzXmlLib16::CXmlObjectBase;
using QzXmlLib16::CXmlWriter;

// The namespace of every element of the document.
extern const char kOrdersNamespace[];

// Common base of the six classes: both namespaces are the orders namespace.
class COrdersObject : public CXmlObjectBase {
public:
    CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override;
    std::string GetNamespace() const override;
};

// <address>: street, city, zip.
class CAddress : public COrdersObject {
public:
    CAddress();
    const std::string& GetStreet() const { return m_street; }
    void SetStreet(const std::string& value) { m_street = value; }
    const std::string& GetCity() const { return m_city; }
    void SetCity(const std::string& value) { m_city = value; }
    const std::string& GetZip() const { return m_zip; }
    void SetZip(const std::string& value) { m_zip = value; }

protected:
    void ToXml_Int(CXmlWriter* writer, bool isRoot, const char* ns, const CSerializationContext& context,
                   bool inChoice) const override;
    CXmlElement* FromXml_Int(CXmlElement* element, CXmlElement* firstChild,
                             const CSerializationContext& context, bool inChoice) override;

private:
    void Init();

    std::string m_street;
    std::string m_city;
    std::string m_zip;
};

// <customer>: name, email and a mandatory address.
class CCustomer : public COrdersObject {
public:
    CCustomer();
    const std::string& GetName() const { return m_name; }
    void SetName(const std::string& value) { m_name = value; }
    const std::string& GetEmail() const { return m_email; }
    void SetEmail(const std::string& value) { m_email = value; }
    // Borrowed; null only before the first read or set.
    CAddress* GetAddress() const { return m_address; }
    // Throws CQzInvalidParamException for null or for an object of another element name.
    void SetAddress(CAddress* value);

protected:
    void ToXml_Int(CXmlWriter* writer, bool isRoot, const char* ns, const CSerializationContext& context,
                   bool inChoice) const override;
    CXmlElement* FromXml_Int(CXmlElement* element, CXmlElement* firstChild,
                             const CSerializationContext& context, bool inChoice) override;

private:
    void Init();

    std::string m_name;
    std::string m_email;
    CSmartPtr<CAddress> m_address;
};

// <item>: sku, qty, price and an optional note.
class CItem : public COrdersObject {
public:
    CItem();
    const std::string& GetSku() const { return m_sku; }
    void SetSku(const std::string& value) { m_sku = value; }
    int GetQty() const { return m_qty; }
    void SetQty(int value) { m_qty = value; }
    // The decimal as written, e.g. "39.72".
    const std::string& GetPrice() const { return m_price; }
    void SetPrice(const std::string& value) { m_price = value; }
    bool HasNote() const { return m_hasNote; }
    const std::string& GetNote() const { return m_note; }
    void SetNote(const std::string& value) {
        m_note = value;
        m_hasNote = true;
    }
    void ClearNote() {
        m_note.clear();
        m_hasNote = false;
    }

protected:
    void ToXml_Int(CXmlWriter* writer, bool isRoot, const char* ns, const CSerializationContext& context,
                   bool inChoice) const override;
    CXmlElement* FromXml_Int(CXmlElement* element, CXmlElement* firstChild,
                             const CSerializationContext& context, bool inChoice) override;

private:
    void Init();

    std::string m_sku;
    int m_qty;
    std::string m_price;
    std::string m_note;
    bool m_hasNote;
};

// <items>: one or more items.
class CItems : public COrdersObject {
public:
    CItems();
    std::vector<CSmartPtr<CItem>>& GetItems() { return m_items; }
    const std::vector<CSmartPtr<CItem>>& GetItems() const { return m_items; }

protected:
    void ToXml_Int(CXmlWriter* writer, bool isRoot, const char* ns, const CSerializationContext& context,
                   bool inChoice) const override;
    CXmlElement* FromXml_Int(CXmlElement* element, CXmlElement* firstChild,
                             const CSerializationContext& context, bool inChoice) override;

private:
    std::vector<CSmartPtr<CItem>> m_items;
};

// <order id="..." status="...">: customer, date, items, total, paid.
class COrder : public COrdersObject {
public:
    COrder();
    int GetId() const { return m_id; }
    void SetId(int value) { m_id = value; }
    bool HasStatus() const { return m_hasStatus; }
    const std::string& GetStatus() const { return m_status; }
    void SetStatus(const std::string& value) {
        m_status = value;
        m_hasStatus = true;
    }
    CCustomer* GetCustomer() const { return m_customer; }
    // Throws CQzInvalidParamException for null or for an object of another element name.
    void SetCustomer(CCustomer* value);
    // The date as written, e.g. "2018-01-03".
    const std::string& GetDate() const { return m_date; }
    void SetDate(const std::string& value) { m_date = value; }
    CItems* GetItems() const { return m_items; }
    void SetItems(CItems* value);
    // The decimal as written.
    const std::string& GetTotal() const { return m_total; }
    void SetTotal(const std::string& value) { m_total = value; }
    bool GetPaid() const { return m_paid; }
    void SetPaid(bool value) { m_paid = value; }

protected:
    void ToXml_Int(CXmlWriter* writer, bool isRoot, const char* ns, const CSerializationContext& context,
                   bool inChoice) const override;
    CXmlElement* FromXml_Int(CXmlElement* element, CXmlElement* firstChild,
                             const CSerializationContext& context, bool inChoice) override;

private:
    void Init();

    int m_id;
    std::string m_status;
    bool m_hasStatus;
    CSmartPtr<CCustomer> m_customer;
    std::string m_date;
    CSmartPtr<CItems> m_items;
    std::string m_total;
    bool m_paid;
};

// <orders>, the document element: one or more orders.
class COrders : public COrdersObject {
public:
    COrders();
    std::vector<CSmartPtr<COrder>>& GetOrders() { return m_orders; }
    const std::vector<CSmartPtr<COrder>>& GetOrders() const { return m_orders; }

protected:
    void ToXml_Int(CXmlWriter* writer, bool isRoot, const char* ns, const CSerializationContext& context,
                   bool inChoice) const override;
    CXmlElement* FromXml_Int(CXmlElement* element, CXmlElement* firstChild,
                             const CSerializationContext& context, bool inChoice) override;

private:
    std::vector<CSmartPtr<COrder>> m_orders;
};

} // namespace QzOrders

#endif
