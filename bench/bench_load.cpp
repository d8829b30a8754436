// XML text input: CXmlDocument::LoadXmlStream of the orders document (12,500 orders, about
// 10 MB, held in memory) beside its floor, a bare expat parse with the namespace parser,
// no-op handlers and one XML_Parse call. BM_LoadXmlStream is the whole life of a document
// (load and release of the tree); BM_LoadXmlStreamBuildOnly leaves the release out of the
// timing; BM_FromXmlStreamOrders adds the example classes. All report MB/s of input and their
// time ratio to the floor at the end. QZXML_BENCH_ORDERS may name another document.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <expat.h>
#include <string>
#include <vector>

#include "foundation/Exceptions.h"
#include "orders/Orders.h"
#include "tree/XmlDocument.h"

#include "OrdersDocument.h"

using namespace QzXmlLib16;

namespace {

// --- Input -------------------------------------------------------------------------------

const int kOrderCount = 12500;

const std::vector<unsigned char>& Document() {
    static const std::vector<unsigned char> bytes = QzBench::ReadFileBytes(QzBench::OrdersDocumentPath(kOrderCount));
    return bytes;
}

// --- Floor: bare expat -------------------------------------------------------------------

void XMLCALL NoStart(void*, const XML_Char*, const XML_Char**) {}
void XMLCALL NoEnd(void*, const XML_Char*) {}
void XMLCALL NoText(void*, const XML_Char*, int) {}

void BM_ExpatBare(benchmark::State& state) {
    const std::vector<unsigned char>& doc = Document();
    for (auto _ : state) {
        XML_Parser parser = XML_ParserCreateNS(nullptr, '|');
        XML_SetElementHandler(parser, NoStart, NoEnd);
        XML_SetCharacterDataHandler(parser, NoText);
        if (XML_Parse(parser, reinterpret_cast<const char*>(doc.data()), static_cast<int>(doc.size()), 1) !=
            XML_STATUS_OK)
            state.SkipWithError("expat failed");
        XML_ParserFree(parser);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(doc.size()));
}

// --- The library -------------------------------------------------------------------------

void BM_LoadXmlStream(benchmark::State& state) {
    const std::vector<unsigned char>& doc = Document();
    std::vector<unsigned char> copy(doc);
    for (auto _ : state) {
        CXmlDocument document;
        try {
            document.LoadXmlStream(copy.data(), static_cast<unsigned long>(copy.size()));
        } catch (const CQzException& e) {
            state.SkipWithError(e.GetMessage().c_str());
        }
        benchmark::DoNotOptimize(document.GetDocumentElement());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(doc.size()));
}

// The load alone: each document is destroyed outside the timed part, so this is parse and
// build without the release of the previous tree.
void BM_LoadXmlStreamBuildOnly(benchmark::State& state) {
    const std::vector<unsigned char>& doc = Document();
    std::vector<unsigned char> copy(doc);
    for (auto _ : state) {
        CXmlDocument* document = new CXmlDocument();
        try {
            document->LoadXmlStream(copy.data(), static_cast<unsigned long>(copy.size()));
        } catch (const CQzException& e) {
            state.SkipWithError(e.GetMessage().c_str());
        }
        benchmark::DoNotOptimize(document->GetDocumentElement());
        state.PauseTiming();
        delete document;
        state.ResumeTiming();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(doc.size()));
}

// The same load into the example classes: tree plus FromXml_Int.
void BM_FromXmlStreamOrders(benchmark::State& state) {
    const std::vector<unsigned char>& doc = Document();
    std::vector<unsigned char> copy(doc);
    for (auto _ : state) {
        CSmartPtr<QzOrders::COrders> orders = new QzOrders::COrders();
        try {
            orders->FromXmlStream(copy.data(), static_cast<unsigned long>(copy.size()));
        } catch (const CQzException& e) {
            state.SkipWithError(e.GetMessage().c_str());
        }
        benchmark::DoNotOptimize(orders.Get());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(doc.size()));
}

BENCHMARK(BM_ExpatBare)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_LoadXmlStream)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_LoadXmlStreamBuildOnly)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_FromXmlStreamOrders)->Unit(benchmark::kMillisecond)->MinTime(2.0);

// Prints MB/s of the floor and the load and their ratio after the runs.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration || run.iterations == 0)
                continue;
            double seconds = run.GetAdjustedCPUTime() / benchmark::GetTimeUnitMultiplier(run.time_unit);
            double mbps = static_cast<double>(Document().size()) / seconds / 1e6;
            m_mbps.push_back({run.benchmark_name(), mbps});
        }
    }
    void Finalize() override {
        ConsoleReporter::Finalize();
        double floor = 0;
        for (const auto& entry : m_mbps) {
            if (entry.first.find("ExpatBare") != std::string::npos)
                floor = entry.second;
        }
        std::printf("\nDocument: %.1f MB\n", static_cast<double>(Document().size()) / 1e6);
        for (const auto& entry : m_mbps) {
            std::printf("%-28s %8.1f MB/s", entry.first.c_str(), entry.second);
            if (floor > 0)
                std::printf("   time ratio to bare expat: %.2fx", floor / entry.second);
            std::printf("\n");
        }
    }

private:
    std::vector<std::pair<std::string, double>> m_mbps;
};

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
