// Tests of CQzZip: gzip/zlib wrapping, the no-growth rule, and the quiet pass-through of
// bytes that do not inflate (plain text, cut-off and damaged compressed data).
#include "foundation/QzZip.h"

#include "foundation/Exceptions.h"
#include "values/BinaryData.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <cstring>
#include <regex>
#include <string>

using namespace QzXmlLib16;

namespace {

// A new[] buffer as Compress and Decompress take it, freed at the end of the test.
struct Buffer {
    unsigned char* data = nullptr;
    unsigned long length = 0;

    explicit Buffer(const std::string& bytes) : data(new unsigned char[bytes.size()]), length(bytes.size()) {
        std::memcpy(data, bytes.data(), bytes.size());
    }
    ~Buffer() { delete[] data; }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    std::string Str() const { return std::string(reinterpret_cast<const char*>(data), length); }
};

// An XML-like text of about n bytes that compresses well.
std::string Document(size_t n) {
    std::string text = "<?xml version=\"1.0\"?>\n<orders>\n";
    for (int i = 0; text.size() < n; ++i)
        text += "  <order id=\"" + std::to_string(i) + "\"><item sku=\"BK-" + std::to_string(i % 97) +
                "\" qty=\"" + std::to_string(i % 7) + "\"/></order>\n";
    return text + "</orders>\n";
}

// Bytes that deflate cannot shrink.
std::string Noise(size_t n) {
    std::string bytes(n, '\0');
    unsigned int state = 12345;
    for (auto& b : bytes) {
        state = state * 1103515245u + 12345u;
        b = static_cast<char>(state >> 23);
    }
    return bytes;
}

std::string Compressed(const std::string& text, CompressionType type) {
    Buffer buffer(text);
    CQzZip::Compress(&buffer.data, &buffer.length, type);
    return buffer.Str();
}

// Decompress on a copy of the bytes; reports whether the buffer was replaced.
std::string Inflated(const std::string& bytes, bool* replaced = nullptr) {
    Buffer buffer(bytes);
    unsigned char* before = buffer.data;
    CQzZip::Decompress(&buffer.data, &buffer.length);
    if (replaced)
        *replaced = buffer.data != before;
    return buffer.Str();
}

// The compression message with zlib's result, which depends on where deflate ran out of
// room; never Z_STREAM_END (1), which is success.
bool IsCompressError(const std::string& message) {
    std::smatch match;
    return std::regex_match(message, match,
                            std::regex(R"(Failed to compress data\. \[Error Code: (-?[0-9]+)\])")) &&
           match[1] != "1";
}

// The gzip member of an empty text: header, an empty final fixed block, CRC 0, size 0.
const std::string
    kEmptyGzip("\x1F\x8B\x08\x00\x00\x00\x00\x00\x00\x03\x03\x00\x00\x00\x00\x00\x00\x00\x00\x00", 20);

} // namespace

// Types other than gzip and zlib leave pointer and length exactly as they were.
TEST(CQzZipCompressTest, OtherTypesLeaveBufferAlone) {
    for (int type : {0, 3}) {
        SCOPED_TRACE(type);
        Buffer buffer("abc");
        unsigned char* before = buffer.data;
        CQzZip::Compress(&buffer.data, &buffer.length, static_cast<CompressionType>(type));
        EXPECT_EQ(before, buffer.data);
        EXPECT_EQ(3u, buffer.length);
    }
}

// A gzip member starts with the magic bytes and deflate's method; a zlib stream with a
// valid header; both come back whole, also far beyond one 64 KB block of output.
TEST(CQzZipCompressTest, RoundTripBothWrappers) {
    const std::string text = Document(300000);
    std::string gzip = Compressed(text, CompressionGzip);
    ASSERT_GT(gzip.size(), 10u);
    EXPECT_LT(gzip.size(), text.size() / 4);
    EXPECT_EQ('\x1F', gzip[0]);
    EXPECT_EQ('\x8B', gzip[1]);
    EXPECT_EQ('\x08', gzip[2]);
    EXPECT_EQ(text, Inflated(gzip));

    std::string zlib = Compressed(text, CompressionZlib);
    unsigned char cmf = zlib[0], flg = zlib[1];
    EXPECT_EQ(0x78, cmf); // deflate, 32 KB window
    EXPECT_EQ(0, (cmf * 256 + flg) % 31);
    EXPECT_EQ(0, flg & 0x20); // no preset dictionary
    EXPECT_EQ(text, Inflated(zlib));
}

// The output may not outgrow the input: a few bytes can't hold gzip's header and trailer,
// noise can't shrink. The error carries zlib's result and the buffer stays the caller's.
TEST(CQzZipCompressTest, InputThatDoesNotShrinkRaises) {
    struct Row {
        std::string input;
        CompressionType type;
    } rows[] = {{"abc", CompressionGzip},
                {"abc", CompressionZlib},
                {std::string(), CompressionGzip},
                {Noise(4096), CompressionGzip},
                {Noise(100000), CompressionZlib}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.input.size());
        Buffer buffer(row.input);
        unsigned char* before = buffer.data;
        std::string message =
            QzTest::MessageOf([&] { CQzZip::Compress(&buffer.data, &buffer.length, row.type); });
        EXPECT_TRUE(IsCompressError(message)) << message;
        EXPECT_EQ(before, buffer.data);
        EXPECT_EQ(row.input, buffer.Str());
    }
}

// Plain XML, JSON and Fast Infoset bytes pass through untouched, the same pointer included; so
// does a zlib stream that needs a preset dictionary.
TEST(CQzZipDecompressTest, UncompressedBytesPassThrough) {
    const std::string inputs[] = {"<a>text</a>",
                                  "{\"a\":1}",
                                  std::string("\xE0\x00\x00\x01", 4),
                                  "x",
                                  std::string("\x1F\x8B", 2),
                                  std::string("\x78\x01", 2),
                                  std::string("\x78\x20\x00\x00\x00\x01\x4B\x04\x00", 9)};
    for (const std::string& input : inputs) {
        SCOPED_TRACE(input);
        bool replaced = true;
        EXPECT_EQ(input, Inflated(input, &replaced));
        EXPECT_FALSE(replaced);
    }
}

// An empty buffer and a null pointer are left alone; a gzip member that holds nothing inflates
// to zero bytes, with a buffer the caller can free.
TEST(CQzZipDecompressTest, EmptyAndNullInput) {
    unsigned char* data = nullptr;
    unsigned long length = 0;
    CQzZip::Decompress(&data, &length);
    EXPECT_EQ(nullptr, data);
    EXPECT_EQ(0u, length);

    data = new unsigned char[1];
    CQzZip::Decompress(&data, &length);
    EXPECT_EQ(0u, length);
    delete[] data;

    Buffer buffer(kEmptyGzip);
    CQzZip::Decompress(&buffer.data, &buffer.length);
    EXPECT_EQ(0u, buffer.length);
    EXPECT_NE(nullptr, buffer.data);
}

// A gzip file cut short at any point, or damaged in its data or its check, is not reported
// here: the compressed bytes stay as they are for the reader above to refuse.
TEST(CQzZipDecompressTest, TruncatedOrCorruptedGzipStaysAsItIs) {
    const std::string gzip = Compressed(Document(200000), CompressionGzip);
    for (size_t cut : {size_t(1), size_t(9), size_t(10), gzip.size() / 2, gzip.size() - 8, gzip.size() - 1}) {
        SCOPED_TRACE(cut);
        std::string truncated = gzip.substr(0, cut);
        bool replaced = true;
        EXPECT_EQ(truncated, Inflated(truncated, &replaced));
        EXPECT_FALSE(replaced);
    }
    struct Damage {
        size_t offset;
        const char* what;
    } damages[] = {{2, "compression method"}, {gzip.size() - 8, "CRC"}, {gzip.size() - 3, "length"}};
    for (const Damage& damage : damages) {
        SCOPED_TRACE(damage.what);
        std::string corrupted = gzip;
        corrupted[damage.offset] ^= 0x5A;
        EXPECT_EQ(corrupted, Inflated(corrupted));
    }
    std::string zlib = Compressed(Document(200000), CompressionZlib);
    zlib[zlib.size() - 1] ^= 1; // Adler-32
    EXPECT_EQ(zlib, Inflated(zlib));
}

// Whatever follows the end of the compressed stream is dropped, also when its last four
// bytes pose as a gzip size field announcing 4 GB.
TEST(CQzZipDecompressTest, BytesBehindTheStreamAreDropped) {
    const std::string text = Document(100000);
    EXPECT_EQ(text, Inflated(Compressed(text, CompressionGzip) + "trailing garbage"));
    EXPECT_EQ(text, Inflated(Compressed(text, CompressionGzip) + std::string(4, '\xFF')));
    EXPECT_EQ(text, Inflated(Compressed(text, CompressionZlib) + kEmptyGzip));
}

// CompressData: empty stays empty, type 0 keeps the bytes, gzip round-trips, and a copy
// made before is not touched.
TEST(CQzZipCompressDataTest, WrapsTheBytesOfABinaryData) {
    for (int type : {0, 1, 2}) {
        CBinaryData empty;
        CQzZip::CompressData(empty, static_cast<CompressionType>(type));
        EXPECT_EQ(0u, empty.GetLength());
        EXPECT_EQ(nullptr, empty.GetData());
    }

    const std::string text = Document(100000);
    CBinaryData data(text.c_str());
    CQzZip::CompressData(data, CompressionNone);
    EXPECT_EQ(text, std::string(reinterpret_cast<const char*>(data.GetData()), data.GetLength()));

    CBinaryData before(data);
    CQzZip::CompressData(data, CompressionGzip);
    ASSERT_GT(data.GetLength(), 2u);
    EXPECT_LT(data.GetLength(), text.size());
    EXPECT_EQ(0x1F, data[0]);
    EXPECT_EQ(text.size(), before.GetLength());
    EXPECT_EQ(text, Inflated(std::string(reinterpret_cast<const char*>(data.GetData()), data.GetLength())));
}

// Note pinned: a failed compression leaves the data object empty, not as it was.
TEST(CQzZipCompressDataTest, FailureLeavesDataEmpty) {
    CBinaryData data("abc");
    std::string message = QzTest::MessageOf([&] { CQzZip::CompressData(data, CompressionGzip); });
    EXPECT_TRUE(IsCompressError(message)) << message;
    EXPECT_EQ(0u, data.GetLength());
    EXPECT_EQ(nullptr, data.GetData());
}
