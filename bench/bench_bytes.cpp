// Byte-level throughput: base64 and hex, CStringBuffer's single-character append, gzip
// compression and decompression of a 20 MB document, and CBinaryData handle copies; each
// beside its floor (memcpy of the same bytes, zlib called directly at the same settings).
#include "foundation/QzZip.h"
#include "foundation/StringBuffer.h"
#include "foundation/TextStream.h"
#include "values/BinaryData.h"

#include <benchmark/benchmark.h>
#include <zlib.h>

#include <clocale>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

using namespace QzXmlLib16;

namespace {

// --- Inputs ----------------------------------------------------------------------------------

const size_t kCodecBytes = 1 << 20;      // base64, hex, append: 1 MB
const size_t kDocumentBytes = 20u << 20; // compression: 20 MB

unsigned int g_seed = 2024;
unsigned int Next() {
    g_seed = g_seed * 1103515245u + 12345u;
    return g_seed >> 8;
}

std::vector<unsigned char> RandomBytes(size_t n) {
    std::vector<unsigned char> bytes(n);
    for (auto& b : bytes)
        b = static_cast<unsigned char>(Next());
    return bytes;
}

// An orders document like the ones the data-binding benchmarks load: pretty-printed,
// mostly ASCII, varied numbers and names, so that level-1 deflate sees realistic text.
const std::string& Document() {
    static const std::string document = [] {
        static const char* const names[] = {"Alice Smith",   "Bob Johnson", "Carol Williams", "José Núñez",
                                            "Jürgen Müller", "Grace Lee",   "Henry Clark",    "Zoë Brontë"};
        static const char* const cities[] = {"Springfield", "Riverside", "Zürich", "Oxford", "Kraków"};
        static const char* const statuses[] = {"new", "processing", "shipped", "delivered"};
        std::string text =
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<orders xmlns=\"urn:example:orders\">\n";
        text.reserve(kDocumentBytes + 4096);
        for (unsigned int id = 10000; text.size() < kDocumentBytes; ++id) {
            text += "  <order id=\"" + std::to_string(id) + "\" status=\"" + statuses[Next() % 4] + "\">\n";
            text += "    <customer id=\"C" + std::to_string(Next() % 100000) + "\">\n";
            text += std::string("      <name>") + names[Next() % 8] + "</name>\n";
            text += "      <email>user" + std::to_string(Next() % 50000) + "@example.com</email>\n";
            text += "      <address><street>" + std::to_string(Next() % 999) + " Main St</street><city>" +
                    cities[Next() % 5] + "</city><zip>" + std::to_string(10000 + Next() % 89999) +
                    "</zip></address>\n    </customer>\n";
            unsigned int items = 1 + Next() % 4;
            for (unsigned int i = 0; i < items; ++i)
                text += "    <item sku=\"BK-" + std::to_string(Next() % 10000) + "\" qty=\"" +
                        std::to_string(1 + Next() % 9) + "\"><price>" + std::to_string(Next() % 500) + "." +
                        std::to_string(10 + Next() % 90) + "</price></item>\n";
            text += "    <date>2024-0" + std::to_string(1 + Next() % 9) + "-1" + std::to_string(Next() % 10) +
                    "</date>\n  </order>\n";
        }
        return text + "</orders>\n";
    }();
    return document;
}

unsigned char* Copy(const std::string& text) {
    unsigned char* bytes = new unsigned char[text.size()];
    std::memcpy(bytes, text.data(), text.size());
    return bytes;
}

// --- Floors ----------------------------------------------------------------------------------

void BM_Floor_Memcpy1MB(benchmark::State& state) {
    std::vector<unsigned char> source = RandomBytes(kCodecBytes), target(kCodecBytes);
    for (auto _ : state) {
        std::memcpy(target.data(), source.data(), source.size());
        benchmark::DoNotOptimize(target.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * source.size()));
}
BENCHMARK(BM_Floor_Memcpy1MB);

void BM_Floor_Memcpy20MB(benchmark::State& state) {
    const std::string& text = Document();
    std::unique_ptr<char[]> target(new char[text.size()]);
    for (auto _ : state) {
        std::memcpy(target.get(), text.data(), text.size());
        benchmark::DoNotOptimize(target.get());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_Floor_Memcpy20MB)->Unit(benchmark::kMillisecond);

// zlib at the library's settings: level 1, gzip wrapper, output no larger than the input.
void BM_Floor_ZlibDeflateLevel1(benchmark::State& state) {
    const std::string& text = Document();
    std::unique_ptr<unsigned char[]> out(new unsigned char[text.size()]);
    uLong produced = 0;
    for (auto _ : state) {
        z_stream stream;
        std::memset(&stream, 0, sizeof(stream));
        deflateInit2(&stream, 1, Z_DEFLATED, 31, 8, Z_DEFAULT_STRATEGY);
        stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
        stream.avail_in = static_cast<uInt>(text.size());
        stream.next_out = out.get();
        stream.avail_out = static_cast<uInt>(text.size());
        if (deflate(&stream, Z_FINISH) != Z_STREAM_END)
            state.SkipWithError("deflate failed");
        produced = stream.total_out;
        deflateEnd(&stream);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
    state.counters["ratio"] = static_cast<double>(produced) / static_cast<double>(text.size());
}
BENCHMARK(BM_Floor_ZlibDeflateLevel1)->Unit(benchmark::kMillisecond);

// zlib inflate into an output buffer of the known size; bytes counted are the inflated ones.
void BM_Floor_ZlibInflate(benchmark::State& state) {
    const std::string& text = Document();
    CBinaryData compressed(Copy(text), text.size(), true);
    CQzZip::CompressData(compressed, CompressionGzip);
    std::unique_ptr<unsigned char[]> out(new unsigned char[text.size()]);
    for (auto _ : state) {
        z_stream stream;
        std::memset(&stream, 0, sizeof(stream));
        inflateInit2(&stream, 47);
        stream.next_in = compressed.GetData();
        stream.avail_in = static_cast<uInt>(compressed.GetLength());
        stream.next_out = out.get();
        stream.avail_out = static_cast<uInt>(text.size());
        if (inflate(&stream, Z_FINISH) != Z_STREAM_END)
            state.SkipWithError("inflate failed");
        inflateEnd(&stream);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_Floor_ZlibInflate)->Unit(benchmark::kMillisecond);

// --- Compression -----------------------------------------------------------------------------

// Includes taking the buffer out of the handle and putting the result back.
void BM_CompressDataGzip20MB(benchmark::State& state) {
    const std::string& text = Document();
    for (auto _ : state) {
        state.PauseTiming();
        CBinaryData data(Copy(text), text.size(), true);
        state.ResumeTiming();
        CQzZip::CompressData(data, CompressionGzip);
        benchmark::DoNotOptimize(data.GetData());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_CompressDataGzip20MB)->Unit(benchmark::kMillisecond);

// Bytes counted are the inflated ones, as for the floor. The gzip trailer announces the
// length; the zlib wrapper carries none, so its output grows by doubling.
void BM_Decompress20MB(benchmark::State& state, CompressionType type) {
    const std::string& text = Document();
    CBinaryData compressed(Copy(text), text.size(), true);
    CQzZip::CompressData(compressed, type);
    for (auto _ : state) {
        state.PauseTiming();
        unsigned long length = compressed.GetLength();
        unsigned char* data = new unsigned char[length];
        std::memcpy(data, compressed.GetData(), length);
        state.ResumeTiming();
        CQzZip::Decompress(&data, &length);
        if (length != text.size())
            state.SkipWithError("wrong length");
        delete[] data;
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK_CAPTURE(BM_Decompress20MB, Gzip, CompressionGzip)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Decompress20MB, Zlib, CompressionZlib)->Unit(benchmark::kMillisecond);

// Plain XML given to Decompress: the cost of finding out that it is not compressed.
void BM_DecompressPlain20MB(benchmark::State& state) {
    const std::string& text = Document();
    unsigned char* data = Copy(text);
    unsigned long length = text.size();
    for (auto _ : state) {
        CQzZip::Decompress(&data, &length);
        benchmark::DoNotOptimize(data);
    }
    delete[] data;
}
BENCHMARK(BM_DecompressPlain20MB);

// --- Base64 and hex (1 MB of bytes; MB/s of binary bytes) -------------------------------------

void BM_Base64Encode(benchmark::State& state) {
    std::vector<unsigned char> bytes = RandomBytes(kCodecBytes);
    CBinaryData data(bytes.data(), bytes.size(), false);
    for (auto _ : state)
        benchmark::DoNotOptimize(data.GetAsBase64());
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes.size()));
}
BENCHMARK(BM_Base64Encode)->Unit(benchmark::kMillisecond);

void BM_Base64Decode(benchmark::State& state) {
    std::vector<unsigned char> bytes = RandomBytes(kCodecBytes);
    std::string text = CBinaryData(bytes.data(), bytes.size(), false).GetAsBase64();
    CBinaryData data;
    for (auto _ : state) {
        data.SetAsBase64(text.c_str());
        if (data.GetLength() != bytes.size())
            state.SkipWithError("wrong length");
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes.size()));
}
BENCHMARK(BM_Base64Decode)->Unit(benchmark::kMillisecond);

void BM_HexEncode(benchmark::State& state) {
    std::vector<unsigned char> bytes = RandomBytes(kCodecBytes);
    CBinaryData data(bytes.data(), bytes.size(), false);
    for (auto _ : state)
        benchmark::DoNotOptimize(data.GetAsHexString());
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes.size()));
}
BENCHMARK(BM_HexEncode)->Unit(benchmark::kMillisecond);

void BM_HexDecode(benchmark::State& state) {
    std::vector<unsigned char> bytes = RandomBytes(kCodecBytes);
    std::string text = CBinaryData(bytes.data(), bytes.size(), false).GetAsHexString();
    CBinaryData data;
    for (auto _ : state) {
        data.SetAsHexString(text.c_str());
        if (data.GetLength() != bytes.size())
            state.SkipWithError("wrong length");
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes.size()));
}
BENCHMARK(BM_HexDecode)->Unit(benchmark::kMillisecond);

// --- CStringBuffer ---------------------------------------------------------------------------

// 1 MB appended one character at a time, as the text writers pad and escape.
void BM_StringBufferAppendChar(benchmark::State& state) {
    std::vector<unsigned char> bytes = RandomBytes(kCodecBytes);
    for (auto& b : bytes)
        b = static_cast<unsigned char>('a' + b % 26);
    for (auto _ : state) {
        CStringBuffer buffer;
        for (unsigned char c : bytes)
            buffer.Append(static_cast<char>(c));
        benchmark::DoNotOptimize(buffer.GetLength());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes.size()));
}
BENCHMARK(BM_StringBufferAppendChar)->Unit(benchmark::kMillisecond);

// The same bytes into a std::string, reserved: the floor for a per-character append.
void BM_Floor_StdStringPushBack(benchmark::State& state) {
    std::vector<unsigned char> bytes = RandomBytes(kCodecBytes);
    for (auto& b : bytes)
        b = static_cast<unsigned char>('a' + b % 26);
    for (auto _ : state) {
        std::string text;
        text.reserve(bytes.size());
        for (unsigned char c : bytes)
            text.push_back(static_cast<char>(c));
        benchmark::DoNotOptimize(text.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes.size()));
}
BENCHMARK(BM_Floor_StdStringPushBack)->Unit(benchmark::kMillisecond);

// --- Text stream encoding ---------------------------------------------------------------------

// The 20 MB document collected in a text stream in 4 KB pieces, as the writers leave it, then
// encoded once, in a UTF-8 locale. MB/s of text.
void EncodeDocument(benchmark::State& state, XmlEncoding encoding) {
    const char* old = std::setlocale(LC_ALL, "C.UTF-8");
    std::string saved = old ? old : "C";
    const std::string& text = Document();
    CTextStream stream(encoding);
    for (size_t pos = 0; pos < text.size(); pos += 4096)
        stream.Append(text.substr(pos, 4096));
    stream.GetText(); // merge the blocks before timing
    for (auto _ : state) {
        CBinaryData bytes = stream.GetEncodedStream();
        benchmark::DoNotOptimize(bytes.GetData());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
    std::setlocale(LC_ALL, saved.c_str());
}

void BM_TextStreamEncodeUtf8(benchmark::State& state) {
    EncodeDocument(state, EncodingUTF8);
}
BENCHMARK(BM_TextStreamEncodeUtf8)->Unit(benchmark::kMillisecond);

void BM_TextStreamEncodeUtf16(benchmark::State& state) {
    EncodeDocument(state, EncodingUTF16);
}
BENCHMARK(BM_TextStreamEncodeUtf16)->Unit(benchmark::kMillisecond);

// --- CBinaryData handles -----------------------------------------------------------------------

// A copy shares the holder: the time must not depend on the size (1 KB and 20 MB).
void BM_BinaryDataHandleCopy(benchmark::State& state) {
    std::vector<unsigned char> bytes = RandomBytes(static_cast<size_t>(state.range(0)));
    CBinaryData data(bytes.data(), bytes.size(), false);
    for (auto _ : state) {
        CBinaryData copy(data);
        benchmark::DoNotOptimize(copy.GetData());
    }
}
BENCHMARK(BM_BinaryDataHandleCopy)->Arg(1 << 10)->Arg(20 << 20);

} // namespace

BENCHMARK_MAIN();
