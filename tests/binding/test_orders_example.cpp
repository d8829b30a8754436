// Tests of the hand-written orders classes: a full read through FromXml and FromXmlFile, and the
// context flags that decide what a read lets through.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "foundation/Exceptions.h"
#include "orders/Orders.h"
#include "support/TestSupport.h"

using namespace QzXmlLib16;
using namespace QzOrders;

namespace {

const char kOrder[] =
    "<order id=\"7\" status=\"new\">"
    "<customer><name>Ann</name><email>a@x</email>"
    "<address><street>1 Main St</street><city>Dover</city><zip>01234</zip></address></customer>"
    "<date>2020-02-29</date>"
    "<items><item><sku>BK-1</sku><qty> 2 </qty><price>1.50</price></item>"
    "<item><sku>BK-2</sku><qty>1</qty><price>3</price><note>&lt;gift&gt;</note></item></items>"
    "<total>6.00</total><paid>true</paid></order>";

std::string Document(const std::string& orders) {
    return "<?xml version=\"1.0\"?><orders xmlns=\"urn:example:orders\">" + orders + "</orders>";
}

// The message of the read failure, or "<no exception>".
std::string ReadFailure(const std::string& xml,
                        const CSerializationContext& context = CSerializationContext()) {
    CSmartPtr<COrders> orders = new COrders();
    return QzTest::MessageOf([&] { orders->FromXml(xml.c_str(), context); });
}

} // namespace

TEST(OrdersExample, ReadsEveryMember) {
    CSmartPtr<COrders> orders = new COrders();
    orders->FromXml(Document(kOrder).c_str());
    ASSERT_EQ(1u, orders->GetOrders().size());
    COrder* order = orders->GetOrders()[0];
    EXPECT_EQ("order", order->GetElementName());
    EXPECT_EQ(7, order->GetId());
    EXPECT_TRUE(order->HasStatus());
    EXPECT_EQ("new", order->GetStatus());
    EXPECT_EQ("Ann", order->GetCustomer()->GetName());
    EXPECT_EQ("a@x", order->GetCustomer()->GetEmail());
    EXPECT_EQ("Dover", order->GetCustomer()->GetAddress()->GetCity());
    EXPECT_EQ("01234", order->GetCustomer()->GetAddress()->GetZip());
    EXPECT_EQ("2020-02-29", order->GetDate());
    ASSERT_EQ(2u, order->GetItems()->GetItems().size());
    CItem* first = order->GetItems()->GetItems()[0];
    CItem* second = order->GetItems()->GetItems()[1];
    EXPECT_EQ(2, first->GetQty());
    EXPECT_EQ("1.50", first->GetPrice());
    EXPECT_FALSE(first->HasNote());
    EXPECT_TRUE(second->HasNote());
    EXPECT_EQ("<gift>", second->GetNote());
    EXPECT_EQ("6.00", order->GetTotal());
    EXPECT_TRUE(order->GetPaid());
}

// Reading again replaces what was read before.
TEST(OrdersExample, SecondReadResets) {
    CSmartPtr<COrders> orders = new COrders();
    orders->FromXml(Document(std::string(kOrder) + kOrder).c_str());
    EXPECT_EQ(2u, orders->GetOrders().size());
    orders->FromXml(Document(kOrder).c_str());
    EXPECT_EQ(1u, orders->GetOrders().size());
}

TEST(OrdersExample, GeneratedDocumentFromFile) {
    std::string path = ::testing::TempDir() + "qzxml_orders_example.xml";
    std::string command =
        std::string("python3 ") + QZXML_BENCH_DIR + "/../examples/orders/gen_orders.py 40 " + path;
    ASSERT_EQ(0, std::system(command.c_str()));
    CSmartPtr<COrders> orders = new COrders();
    orders->FromXmlFile(path.c_str());
    std::remove(path.c_str());
    ASSERT_EQ(40u, orders->GetOrders().size());
    EXPECT_EQ(100000, orders->GetOrders()[0]->GetId());
    EXPECT_EQ(100039, orders->GetOrders()[39]->GetId());
    for (const auto& order : orders->GetOrders()) {
        EXPECT_FALSE(order->GetItems()->GetItems().empty());
        EXPECT_FALSE(order->GetCustomer()->GetEmail().empty());
    }
}

TEST(OrdersExample, ValidationFailuresCarryPaths) {
    const struct {
        const char* find;
        size_t length;
        const char* replacement;
        const char* message;
    } edits[] = {
        {"<date>", 23, "", "The mandatory element [date] is missing\nPath: /orders/order"},
        {" 2 ", 3, "two", "The value [two] is not a valid int\nPath: /orders/order/items/item[1]/qty"},
        {" id=\"7\"", 7, "", "The mandatory attribute [id] is missing\nPath: /orders/order"},
        {" status", 0, " rush=\"yes\"",
         "The attribute [rush] is not expected here\nPath: /orders/order/@rush"},
    };
    for (const auto& edit : edits) {
        std::string xml = kOrder;
        xml.replace(xml.find(edit.find), edit.length, edit.replacement);
        EXPECT_EQ(edit.message, ReadFailure(Document(xml)));
    }
    EXPECT_EQ("The mandatory element [order] is missing\nPath: /orders", ReadFailure(Document("")));
    EXPECT_EQ("The element [{urn:example:orders}orders] was expected, found [{}order]\nPath: /order",
              ReadFailure(kOrder));
}

TEST(OrdersExample, UnknownElementsRefusedOrSkipped) {
    std::string extra = kOrder;
    extra.insert(extra.find("<date>"), "<gift>yes</gift>");
    EXPECT_EQ("The mandatory element [date] is missing\nPath: /orders/order", ReadFailure(Document(extra)));

    std::string trailing = kOrder;
    trailing.insert(trailing.find("</order>"), "<gift/>");
    EXPECT_EQ("The element [gift] is not expected here\nPath: /orders/order/gift",
              ReadFailure(Document(trailing)));

    CSerializationContext lenient;
    lenient.SetIgnoreUnknownElements(true);
    EXPECT_EQ("<no exception>", ReadFailure(Document(extra), lenient));
    EXPECT_EQ("<no exception>", ReadFailure(Document(trailing), lenient));
}

// Elements are matched in the orders namespace unless the context ignores namespaces.
TEST(OrdersExample, NamespaceDecidesUnlessIgnored) {
    std::string noNamespace = "<orders>" + std::string(kOrder) + "</orders>";
    EXPECT_EQ("The element [{urn:example:orders}orders] was expected, found [{}orders]\nPath: /orders",
              ReadFailure(noNamespace));
    CSerializationContext ignoring;
    ignoring.SetIgnoreNamespaces(true);
    EXPECT_EQ("<no exception>", ReadFailure(noNamespace, ignoring));
    CSerializationContext noNamespaces;
    noNamespaces.SetSchemaType(SchemaTypeNoNamespaces);
    EXPECT_EQ("<no exception>", ReadFailure(noNamespace, noNamespaces));
}

TEST(OrdersExample, SettersCheckNullAndName) {
    CSmartPtr<COrder> order = new COrder();
    EXPECT_THROW(order->SetCustomer(nullptr), CQzInvalidParamException);
    CSmartPtr<CCustomer> customer = new CCustomer();
    order->SetCustomer(customer);
    EXPECT_EQ(customer.Get(), order->GetCustomer());
    customer->SetElementName("buyer");
    EXPECT_EQ("This property requires an element with the name customer the element being set has the "
              "element name buyer",
              QzTest::MessageOf<CQzInvalidParamException>([&] { order->SetCustomer(customer); }));
}
