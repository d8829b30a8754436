// Exact numbers: CDecimal parse and print of a typical price, CBigInteger parse and print
// of 20-, 1000- and 10000-digit values, and a few arithmetic operations; each text
// conversion beside its floor (strtod/snprintf for the price, strtoull and memcpy for digits).
#include "values/BigInteger.h"
#include "values/Decimal.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

using namespace QzXmlLib16;

namespace {

// --- Inputs ----------------------------------------------------------------------------

const char* const kPrice = "12345.67";

// A value of n pseudo-random digits, without a leading zero.
std::string Digits(size_t n) {
    std::string text;
    unsigned int seed = 77;
    for (size_t i = 0; i < n; ++i) {
        seed = seed * 1103515245u + 12345u;
        text.push_back(static_cast<char>('0' + (seed >> 16) % 10));
    }
    if (text[0] == '0') {
        text[0] = '7';
    }
    return text;
}

// --- Decimal ---------------------------------------------------------------------------

void BM_DecimalParsePrice(benchmark::State& state) {
    for (auto _ : state) {
        CDecimal value(kPrice);
        benchmark::DoNotOptimize(value);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DecimalParsePrice);

void BM_DecimalPrintPrice(benchmark::State& state) {
    CDecimal value(kPrice);
    for (auto _ : state) {
        std::string text = value.ToString();
        benchmark::DoNotOptimize(text);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DecimalPrintPrice);

void BM_DecimalParsePrintPrice(benchmark::State& state) {
    for (auto _ : state) {
        std::string text = CDecimal(kPrice).ToString();
        benchmark::DoNotOptimize(text);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DecimalParsePrintPrice);

void BM_DecimalPrintPriceTwoPlaces(benchmark::State& state) {
    CDecimal value(kPrice);
    for (auto _ : state) {
        std::string text = value.ToString(2);
        benchmark::DoNotOptimize(text);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DecimalPrintPriceTwoPlaces);

// Floor: the C library's double round trip of the same text.
void BM_FloorStrtodSnprintfPrice(benchmark::State& state) {
    char buffer[64];
    for (auto _ : state) {
        double value = std::strtod(kPrice, nullptr);
        std::snprintf(buffer, sizeof buffer, "%.2f", value);
        benchmark::DoNotOptimize(buffer);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_FloorStrtodSnprintfPrice);

void BM_DecimalAddPrices(benchmark::State& state) {
    CDecimal a(kPrice);
    CDecimal b("0.33");
    for (auto _ : state) {
        CDecimal sum = a + b;
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DecimalAddPrices);

void BM_DecimalMultiplyPrices(benchmark::State& state) {
    CDecimal a(kPrice);
    CDecimal b("1.19");
    for (auto _ : state) {
        CDecimal product = a * b;
        benchmark::DoNotOptimize(product);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DecimalMultiplyPrices);

void BM_DecimalDividePrices(benchmark::State& state) {
    CDecimal a(kPrice);
    CDecimal b("3");
    for (auto _ : state) {
        CDecimal quotient = a / b;
        benchmark::DoNotOptimize(quotient);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DecimalDividePrices);

// --- BigInteger ------------------------------------------------------------------------

void BM_BigIntegerParse(benchmark::State& state) {
    std::string text = Digits(static_cast<size_t>(state.range(0)));
    for (auto _ : state) {
        CBigInteger value(text.c_str());
        benchmark::DoNotOptimize(value);
    }
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}
BENCHMARK(BM_BigIntegerParse)->Arg(20)->Arg(1000)->Arg(10000);

void BM_BigIntegerPrint(benchmark::State& state) {
    CBigInteger value(Digits(static_cast<size_t>(state.range(0))).c_str());
    for (auto _ : state) {
        std::string text = value.ToString();
        benchmark::DoNotOptimize(text);
    }
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_BigIntegerPrint)->Arg(20)->Arg(1000)->Arg(10000);

void BM_BigIntegerParsePrint(benchmark::State& state) {
    std::string text = Digits(static_cast<size_t>(state.range(0)));
    for (auto _ : state) {
        std::string out = CBigInteger(text.c_str()).ToString();
        benchmark::DoNotOptimize(out);
    }
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}
BENCHMARK(BM_BigIntegerParsePrint)->Arg(20)->Arg(1000)->Arg(10000);

// A 10,000-digit decimal with a fraction goes through the CDecimal reader and printer.
void BM_DecimalParsePrintLong(benchmark::State& state) {
    std::string text = Digits(10000) + "." + Digits(30);
    for (auto _ : state) {
        std::string out = CDecimal(text.c_str()).ToString();
        benchmark::DoNotOptimize(out);
    }
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}
BENCHMARK(BM_DecimalParsePrintLong);

// Floors: a 20-digit strtoull round trip (19 digits fit), and a copy of the digit text.
void BM_FloorStrtoullSnprintf19(benchmark::State& state) {
    std::string text = Digits(19);
    char buffer[32];
    for (auto _ : state) {
        unsigned long long value = std::strtoull(text.c_str(), nullptr, 10);
        std::snprintf(buffer, sizeof buffer, "%llu", value);
        benchmark::DoNotOptimize(buffer);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_FloorStrtoullSnprintf19);

void BM_FloorCopyDigits(benchmark::State& state) {
    std::string text = Digits(static_cast<size_t>(state.range(0)));
    for (auto _ : state) {
        std::string copy(text);
        benchmark::DoNotOptimize(copy);
    }
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_FloorCopyDigits)->Arg(1000)->Arg(10000);

void BM_BigIntegerMultiply(benchmark::State& state) {
    CBigInteger a(Digits(static_cast<size_t>(state.range(0))).c_str());
    CBigInteger b((Digits(static_cast<size_t>(state.range(0)) + 3).substr(3)).c_str());
    for (auto _ : state) {
        CBigInteger product = a * b;
        benchmark::DoNotOptimize(product);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_BigIntegerMultiply)->Arg(20)->Arg(1000);

void BM_BigIntegerDivide(benchmark::State& state) {
    size_t n = static_cast<size_t>(state.range(0));
    CBigInteger a(Digits(2 * n).c_str());
    CBigInteger b((Digits(n + 3).substr(3)).c_str());
    for (auto _ : state) {
        CBigInteger quotient = a / b;
        benchmark::DoNotOptimize(quotient);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_BigIntegerDivide)->Arg(20)->Arg(1000);

} // namespace

BENCHMARK_MAIN();
