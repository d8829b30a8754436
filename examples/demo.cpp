// demo.cpp - reads an orders document into the example classes with FromXmlFile, then prints
// the path and text of every element of the same file, walking a CXmlDocument.
//
// Usage: qzxml_demo orders.xml   (tools/demo.sh makes one with examples/orders/gen_orders.py)
#include <cstdio>
#include <cstring>
#include <string>

#include "foundation/Exceptions.h"
#include "orders/Orders.h"
#include "tree/XmlDocument.h"

using namespace QzXmlLib16;

namespace {

// The text with layout white space around it removed; "" for white space only.
std::string Trimmed(const std::string& text) {
    size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos)
        return std::string();
    return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

// Prints each element in document order, without recursion: after an element come its
// children, then its next sibling, then the next sibling of the nearest ancestor that has one.
void PrintTree(const CXmlElement* element) {
    while (element) {
        std::string text = Trimmed(element->GetText());
        if (text.empty())
            std::printf("%s\n", element->GetXPath().c_str());
        else
            std::printf("%s = %s\n", element->GetXPath().c_str(), text.c_str());
        if (element->GetFirstElement()) {
            element = element->GetFirstElement();
            continue;
        }
        while (element && !element->GetNextSiblingElement())
            element = element->GetParentElement();
        if (element)
            element = element->GetNextSiblingElement();
    }
}

} // namespace

int main(int argc, char** argv) {
    // --gzip may stand before or after the file name.
    bool gzip = false;
    const char* path = nullptr;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--gzip") == 0)
            gzip = true;
        else if (path == nullptr)
            path = argv[i];
        else
            path = "";
    }
    if (path == nullptr || *path == '\0') {
        std::fprintf(stderr, "usage: %s [--gzip] orders.xml\n", argv[0]);
        return 2;
    }
    try {
        CSmartPtr<QzOrders::COrders> orders = new QzOrders::COrders();
        orders->FromXmlFile(path);
        size_t items = 0;
        for (const auto& order : orders->GetOrders())
            items += order->GetItems() ? order->GetItems()->GetItems().size() : 0;
        std::printf("%zu orders, %zu items\n", orders->GetOrders().size(), items);

        CXmlDocument document;
        document.Load(path);
        PrintTree(document.GetDocumentElement());

        // Written back in the orders namespace as default, one tab per level.
        CSerializationContext context;
        context.SetDefaultNamespaceURI(QzOrders::kOrdersNamespace);
        std::printf("%s", orders->ToXml(true, true, EOLLf, context).c_str());

        if (gzip) {
            const std::string packed = std::string(path) + ".out.gz";
            orders->ToXmlFile(packed.c_str(), true, true, EncodingUTF8, EOLLf, context, CompressionGzip);
            CSmartPtr<QzOrders::COrders> again = new QzOrders::COrders();
            again->FromXmlFile(packed.c_str(), context);
            std::printf("%s: %zu orders read back, %s\n", packed.c_str(), again->GetOrders().size(),
                        again->ToXml(true, true, EOLLf, context) == orders->ToXml(true, true, EOLLf, context)
                            ? "identical"
                            : "DIFFERENT");
        }
    } catch (const CQzException& e) {
        std::fprintf(stderr, "%s\n", e.GetFullMessage().c_str());
        return 1;
    }
    return 0;
}
