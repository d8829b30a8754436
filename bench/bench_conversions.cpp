// bench_conversions - text to value and value to text for every item type, through
// QzVariant::FromString and ToString, beside the C library floors they stand on (strtol,
// strtod, snprintf). The counter "allocs" is heap allocations per operation, counted by a
// replaced operator new: the integer and boolean readers must show 0 when the whiteSpace rule
// leaves the text unchanged.
#include "values/Conversions.h"
#include "values/QzVariant.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

// GCC pairs the replaced operator new below with the library's delete when it inlines, and
// warns of a mismatch that the replacement of both sides rules out.
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"

namespace {

std::atomic<long long> g_allocations{0};

} // namespace

void* operator new(std::size_t size) {
    g_allocations.fetch_add(1, std::memory_order_relaxed);
    if (void* p = std::malloc(size ? size : 1))
        return p;
    throw std::bad_alloc();
}
void operator delete(void* p) noexcept {
    std::free(p);
}
void operator delete(void* p, std::size_t) noexcept {
    std::free(p);
}

using namespace QzXmlLib16;

namespace {

// One sample text per item type, in the form its writer produces. The texts are long enough
// to leave the small-string buffer where that matters (base64, string, integer).
struct Sample {
    ItemType type;
    const char* name;
    const char* text;
};

const Sample kSamples[] = {
    {ItemHexBinary, "hexBinary", "00112233445566778899AABBCCDDEEFF"},
    {ItemBase64Binary, "base64Binary", "AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8="},
    {ItemI1, "i1", "-123"},
    {ItemI2, "i2", "-31234"},
    {ItemI4, "i4", "-2012345678"},
    {ItemI8, "i8", "-9012345678901234567"},
    {ItemUI1, "ui1", "234"},
    {ItemUI2, "ui2", "61234"},
    {ItemUI4, "ui4", "4012345678"},
    {ItemUI8, "ui8", "18012345678901234567"},
    {ItemR4, "r4", "3.141593"},
    {ItemR8, "r8", "2.718281828459045"},
    {ItemDuration, "duration", "P1Y2M3DT4H5M6.789S"},
    {ItemYearMonth, "yearMonth", "2004-05"},
    {ItemMonthDay, "monthDay", "--05-06"},
    {ItemYear, "year", "2004"},
    {ItemMonth, "month", "--05"},
    {ItemDay, "day", "---06"},
    {ItemDate, "date", "2004-05-06"},
    {ItemDateTime, "datetime", "2004-05-06T07:08:09.123+01:00"},
    {ItemTime, "time", "07:08:09.123Z"},
    {ItemChar, "char", "x"},
    {ItemString, "string", "a string longer than the small-string buffer"},
    {ItemBoolean, "boolean", "true"},
    {ItemDecimal, "decimal", "-12345.6789"},
    {ItemInteger, "integer", "-123456789012345678901234567890"},
};

void SetAllocs(benchmark::State& state, long long before) {
    state.counters["allocs"] = benchmark::Counter(static_cast<double>(g_allocations.load() - before),
                                                  benchmark::Counter::kAvgIterations);
}

void FromStringBench(benchmark::State& state, const Sample& sample) {
    std::string text = sample.text;
    QzVariant value;
    long long before = g_allocations.load();
    for (auto _ : state) {
        value.FromString(text, sample.type, CWhitespaceUtils::Collapse);
        benchmark::DoNotOptimize(value);
    }
    SetAllocs(state, before);
}

void ToStringBench(benchmark::State& state, const Sample& sample) {
    QzVariant value;
    value.FromString(sample.text, sample.type, CWhitespaceUtils::Collapse);
    long long before = g_allocations.load();
    for (auto _ : state) {
        std::string text = value.ToString(nullptr);
        benchmark::DoNotOptimize(text);
    }
    SetAllocs(state, before);
}

// The readers that must not allocate, called directly, with text the rule leaves alone and
// with text it has to change (then the rule's one result string is the only allocation,
// and only if it leaves the small-string buffer).
void BM_ReaderI4(benchmark::State& state) {
    std::string text = state.range(0) ? "   -2012345678     \t\n            " : "-2012345678";
    long long before = g_allocations.load();
    for (auto _ : state)
        benchmark::DoNotOptimize(CConversions::i4FromString(text, CWhitespaceUtils::Collapse));
    SetAllocs(state, before);
}
BENCHMARK(BM_ReaderI4)->Arg(0)->Arg(1);

void BM_ReaderUI8(benchmark::State& state) {
    std::string text = "18012345678901234567";
    long long before = g_allocations.load();
    for (auto _ : state)
        benchmark::DoNotOptimize(CConversions::ui8FromString(text, CWhitespaceUtils::Collapse));
    SetAllocs(state, before);
}
BENCHMARK(BM_ReaderUI8);

void BM_ReaderBoolean(benchmark::State& state) {
    std::string text = state.range(0) ? "\n      false                  \n" : "false";
    long long before = g_allocations.load();
    for (auto _ : state)
        benchmark::DoNotOptimize(CConversions::booleanFromString(text, CWhitespaceUtils::Collapse));
    SetAllocs(state, before);
}
BENCHMARK(BM_ReaderBoolean)->Arg(0)->Arg(1);

// Floors: the C library calls the readers and writers are built on.
void BM_FloorStrtol(benchmark::State& state) {
    const char* text = "-2012345678";
    for (auto _ : state) {
        char* end;
        benchmark::DoNotOptimize(std::strtol(text, &end, 10));
    }
}
BENCHMARK(BM_FloorStrtol);

void BM_FloorStrtod(benchmark::State& state) {
    const char* text = "2.718281828459045";
    for (auto _ : state) {
        char* end;
        benchmark::DoNotOptimize(std::strtod(text, &end));
    }
}
BENCHMARK(BM_FloorStrtod);

void BM_FloorSnprintfG16(benchmark::State& state) {
    double value = 2.718281828459045;
    char buffer[48];
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::snprintf(buffer, sizeof(buffer), "%.16g", value));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_FloorSnprintfG16);

void BM_FloorSnprintfD(benchmark::State& state) {
    int value = -2012345678;
    char buffer[24];
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::snprintf(buffer, sizeof(buffer), "%d", value));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_FloorSnprintfD);

// The whiteSpace rule alone on text that needs collapsing.
void BM_CollapseRule(benchmark::State& state) {
    std::string text = "  a text\twith\r\n  runs   of   blanks  to   collapse  ";
    for (auto _ : state)
        benchmark::DoNotOptimize(CWhitespaceUtils::ApplyRule(CWhitespaceUtils::Collapse, text));
}
BENCHMARK(BM_CollapseRule);

} // namespace

int main(int argc, char** argv) {
    for (const Sample& sample : kSamples) {
        benchmark::RegisterBenchmark((std::string("BM_FromString/") + sample.name).c_str(),
                                     [&sample](benchmark::State& state) { FromStringBench(state, sample); });
        benchmark::RegisterBenchmark((std::string("BM_ToString/") + sample.name).c_str(),
                                     [&sample](benchmark::State& state) { ToStringBench(state, sample); });
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
