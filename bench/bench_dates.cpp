// bench_dates.cpp - parse and print speed of dateTime values (with zone and fraction) and of
// durations, beside the floor of copying the same texts into a std::string.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>
#include <vector>

#include "values/DateTime.h"
#include "values/DateTimeSpan.h"

using namespace QzXmlLib16;

namespace {

// 64 dateTime texts with fractions of 1 to 9 digits and "Z" or an offset.
const std::vector<std::string>& DateTimeTexts() {
    static const std::vector<std::string> texts = [] {
        std::vector<std::string> out;
        const char* zones[] = {"Z", "+05:30", "-08:00", "+14:00"};
        for (int i = 0; i < 64; ++i) {
            char fraction[16];
            std::snprintf(fraction, sizeof fraction, "%.*d", 1 + i % 9, 123456789 % (i * 7919 + 1));
            char text[64];
            std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.%s%s", 1900 + i * 3, 1 + i % 12,
                          1 + i % 28, i % 24, (i * 7) % 60, (i * 13) % 60, fraction, zones[i % 4]);
            out.push_back(text);
        }
        return out;
    }();
    return texts;
}

// 64 duration texts, from short ones to all fields with a nine-digit fraction.
const std::vector<std::string>& DurationTexts() {
    static const std::vector<std::string> texts = [] {
        std::vector<std::string> out;
        for (int i = 0; i < 64; ++i) {
            char text[96];
            switch (i % 4) {
            case 0:
                std::snprintf(text, sizeof text, "P%dY%dM%dDT%dH%dM%d.%dS", i, i % 12, i % 28, i % 24, i, i,
                              i * 7);
                break;
            case 1:
                std::snprintf(text, sizeof text, "-PT%dM", i * 61);
                break;
            case 2:
                std::snprintf(text, sizeof text, "P%dD", i * 1000 + 1);
                break;
            default:
                std::snprintf(text, sizeof text, "PT%d.123456789S", i);
                break;
            }
            out.push_back(text);
        }
        return out;
    }();
    return texts;
}

// Floor: copying the text alone.
void BM_FloorCopyText(benchmark::State& state) {
    const auto& texts = DateTimeTexts();
    size_t i = 0;
    for (auto _ : state) {
        std::string copy(texts[i++ & 63].c_str());
        benchmark::DoNotOptimize(copy);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_FloorCopyText);

void BM_DateTimeParse(benchmark::State& state) {
    const auto& texts = DateTimeTexts();
    size_t i = 0;
    CDateTime value;
    for (auto _ : state) {
        value.ParseXSDDateTime(texts[i++ & 63].c_str());
        benchmark::DoNotOptimize(value);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DateTimeParse);

void BM_DateTimePrint(benchmark::State& state) {
    std::vector<CDateTime> values;
    for (const auto& text : DateTimeTexts())
        values.emplace_back(text.c_str());
    size_t i = 0;
    for (auto _ : state) {
        std::string text = values[i++ & 63].ToString();
        benchmark::DoNotOptimize(text);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DateTimePrint);

void BM_DateTimeParsePrint(benchmark::State& state) {
    const auto& texts = DateTimeTexts();
    size_t i = 0;
    CDateTime value;
    for (auto _ : state) {
        value.ParseXSDDateTime(texts[i++ & 63].c_str());
        std::string text = value.ToString();
        benchmark::DoNotOptimize(text);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DateTimeParsePrint);

void BM_DurationParse(benchmark::State& state) {
    const auto& texts = DurationTexts();
    size_t i = 0;
    CDateTimeSpan span;
    for (auto _ : state) {
        span.ParseXSDDuration(texts[i++ & 63].c_str());
        benchmark::DoNotOptimize(span);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DurationParse);

void BM_DurationParsePrint(benchmark::State& state) {
    const auto& texts = DurationTexts();
    size_t i = 0;
    CDateTimeSpan span;
    for (auto _ : state) {
        span.ParseXSDDuration(texts[i++ & 63].c_str());
        std::string text = span.ToString();
        benchmark::DoNotOptimize(text);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DurationParsePrint);

// Zone normalisation and the one-sided comparison, which add spans internally.
void BM_DateTimeCompareZoned(benchmark::State& state) {
    std::vector<CDateTime> values;
    for (const auto& text : DateTimeTexts())
        values.emplace_back(text.c_str());
    size_t i = 0;
    for (auto _ : state) {
        const int r = values[i & 63].CompareTo(values[(i + 1) & 63]);
        ++i;
        benchmark::DoNotOptimize(r);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DateTimeCompareZoned);

} // namespace

BENCHMARK_MAIN();
