// XML text output: ToXml of the orders document (12,500 orders, read once into the example
// classes) beside its floor, a minimal serializer that walks the same objects and appends
// the same text to a std::string. Both are checked to produce identical text first.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "binding/SerializationContext.h"
#include "foundation/Exceptions.h"
#include "orders/Orders.h"

#include "OrdersDocument.h"

using namespace QzXmlLib16;
using namespace QzOrders;

namespace {

// --- Input -------------------------------------------------------------------------------

const int kOrderCount = 12500;

std::string DocumentPath() { return QzBench::OrdersDocumentPath(kOrderCount); }

// The writer's context: the orders namespace as default, so the output looks like the input.
const CSerializationContext& Context() {
    static CSerializationContext context = [] {
        CSerializationContext c;
        c.SetDefaultNamespaceURI(kOrdersNamespace);
        return c;
    }();
    return context;
}

const COrders& Orders() {
    static CSmartPtr<COrders> orders = [] {
        CSmartPtr<COrders> o(new COrders());
        try {
            o->FromXmlFile(DocumentPath().c_str());
        } catch (const CQzException& e) {
            std::fprintf(stderr, "loading the orders failed: %s\n", e.GetFullMessage().c_str());
            std::exit(1);
        }
        return o;
    }();
    return *orders;
}

// --- Floor: the same text, appended to a std::string with no writer in between -----------

class CFloorWriter {
public:
    std::string m_out;

    void Document(const COrders& orders) {
        m_out.clear();
        m_out += "<?xml version=\"1.0\"?>\n<orders xmlns=\"urn:example:orders\">\n";
        for (const CSmartPtr<COrder>& order : orders.GetOrders())
            Order(*order);
        m_out += "</orders>\n";
    }

private:
    void Escaped(const std::string& text, bool attribute) {
        for (char c : text) {
            switch (c) {
            case '&':
                m_out += "&amp;";
                break;
            case '<':
                m_out += "&lt;";
                break;
            case '>':
                m_out += "&gt;";
                break;
            case '"':
                if (attribute)
                    m_out += "&quot;";
                else
                    m_out += c;
                break;
            case '\r':
                break;
            case '\n':
                m_out += attribute ? "&#xA;" : "\n";
                break;
            default:
                m_out += c;
                break;
            }
        }
    }
    void Simple(int depth, const char* name, const std::string& text) {
        m_out.append(static_cast<size_t>(depth), '\t');
        m_out += '<';
        m_out += name;
        m_out += '>';
        Escaped(text, false);
        m_out += "</";
        m_out += name;
        m_out += ">\n";
    }
    void Open(int depth, const char* name) {
        m_out.append(static_cast<size_t>(depth), '\t');
        m_out += '<';
        m_out += name;
        m_out += ">\n";
    }
    void Close(int depth, const char* name) {
        m_out.append(static_cast<size_t>(depth), '\t');
        m_out += "</";
        m_out += name;
        m_out += ">\n";
    }
    void Order(const COrder& order) {
        m_out += "\t<order id=\"";
        m_out += std::to_string(order.GetId());
        m_out += '"';
        if (order.HasStatus()) {
            m_out += " status=\"";
            Escaped(order.GetStatus(), true);
            m_out += '"';
        }
        m_out += ">\n";
        const CCustomer& customer = *order.GetCustomer();
        Open(2, "customer");
        Simple(3, "name", customer.GetName());
        Simple(3, "email", customer.GetEmail());
        const CAddress& address = *customer.GetAddress();
        Open(3, "address");
        Simple(4, "street", address.GetStreet());
        Simple(4, "city", address.GetCity());
        Simple(4, "zip", address.GetZip());
        Close(3, "address");
        Close(2, "customer");
        Simple(2, "date", order.GetDate());
        Open(2, "items");
        for (const CSmartPtr<CItem>& item : order.GetItems()->GetItems()) {
            Open(3, "item");
            Simple(4, "sku", item->GetSku());
            Simple(4, "qty", std::to_string(item->GetQty()));
            Simple(4, "price", item->GetPrice());
            if (item->HasNote())
                Simple(4, "note", item->GetNote());
            Close(3, "item");
        }
        Close(2, "items");
        Simple(2, "total", order.GetTotal());
        Simple(2, "paid", order.GetPaid() ? "true" : "false");
        Close(1, "order");
    }
};

// --- Benchmarks --------------------------------------------------------------------------

void BM_ToXml(benchmark::State& state) {
    const COrders& orders = Orders();
    size_t bytes = 0;
    for (auto _ : state) {
        std::string text = orders.ToXml(true, true, EOLLf, Context());
        bytes = text.size();
        benchmark::DoNotOptimize(text.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
    state.counters["output_MB"] = static_cast<double>(bytes) / 1e6;
}

void BM_FloorStdString(benchmark::State& state) {
    const COrders& orders = Orders();
    CFloorWriter floor;
    for (auto _ : state) {
        floor.Document(orders);
        benchmark::DoNotOptimize(floor.m_out.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * floor.m_out.size()));
}

// Both serializers must agree before their times mean anything.
void CheckSameText() {
    CFloorWriter floor;
    floor.Document(Orders());
    if (floor.m_out != Orders().ToXml(true, true, EOLLf, Context())) {
        std::fprintf(stderr, "floor and ToXml differ\n");
        std::exit(1);
    }
}

} // namespace

BENCHMARK(BM_ToXml)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_FloorStdString)->Unit(benchmark::kMillisecond)->MinTime(2.0);

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    CheckSameText();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
