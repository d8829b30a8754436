// QzZip.cpp - gzip/zlib wrapping over zlib's deflate and inflate.
#include "foundation/QzZip.h"

#include "foundation/Exceptions.h"
#include "values/BinaryData.h"

#include <zlib.h>

#include <climits>
#include <cstring>
#include <memory>

namespace QzXmlLib16 {

namespace {

// --- Constants ---------------------------------------------------------------

const int kCompressionLevel = 1;  // Z_BEST_SPEED: size traded for speed
const int kGzipWindowBits = 31;   // 15 bits of window + 16: gzip wrapper
const int kDetectWindowBits = 47; // 15 bits of window + 32: gzip or zlib, detected
const int kMemoryLevel = 8;
const unsigned long kInflateStart = 65536;   // first output block of Decompress
const unsigned long kMaxDeflateRatio = 1032; // deflate never expands more than ~1032:1
// zlib counts in uInt; larger buffers are fed in pieces of at most this size.
const unsigned long kMaxChunk = UINT_MAX;

const char* const kCompressFailed = "Failed to compress data. [Error Code: %d]";

// --- zlib stream guards ------------------------------------------------------

// Ends a deflate or inflate stream on every way out, also when an allocation throws.
struct DeflateGuard {
    z_stream* stream;
    ~DeflateGuard() { deflateEnd(stream); }
};
struct InflateGuard {
    z_stream* stream;
    ~InflateGuard() { inflateEnd(stream); }
};

// Moves the next piece of a range of unsigned long length into a uInt window of zlib.
//   [ consumed | window (avail) | left ... ]
//              ^next            ^pos
void TopUp(unsigned char*& pos, unsigned long& left, Bytef*& next, uInt& avail) {
    if (avail != 0 || left == 0)
        return;
    unsigned long piece = left < kMaxChunk ? left : kMaxChunk;
    next = pos;
    avail = static_cast<uInt>(piece);
    pos += piece;
    left -= piece;
}

// --- Inflate output ----------------------------------------------------------

// The growing new[] array that inflate writes into directly.
//   m_bytes <= next_out <= m_bytes + m_capacity
//   <--produced-->|<--free-->|
// It starts at 64 KB, so that bytes which are not compressed at all cost little. When the
// first block is full the stream has proved itself, and the array grows straight to the
// expected size; after that it doubles.
class InflateOutput {
public:
    InflateOutput(unsigned long capacity, unsigned long expected)
        : m_bytes(new unsigned char[capacity]), m_capacity(capacity), m_free(capacity), m_expected(expected) {
    }

    // Gives zlib the next piece of free space, growing the array when it is full.
    void Provide(z_stream& stream) {
        if (stream.avail_out != 0)
            return;
        unsigned long produced = Produced(stream);
        if (m_free == 0) {
            unsigned long capacity = m_capacity * 2 > m_expected ? m_capacity * 2 : m_expected;
            m_expected = 0;
            std::unique_ptr<unsigned char[]> bytes(new unsigned char[capacity]);
            std::memcpy(bytes.get(), m_bytes.get(), produced);
            m_bytes.swap(bytes);
            m_free = capacity - produced;
            m_capacity = capacity;
        }
        unsigned char* pos = m_bytes.get() + produced;
        TopUp(pos, m_free, stream.next_out, stream.avail_out);
    }

    unsigned long Produced(const z_stream& stream) const {
        return stream.next_out ? static_cast<unsigned long>(stream.next_out - m_bytes.get()) : 0;
    }

    unsigned char* Release() { return m_bytes.release(); }

private:
    std::unique_ptr<unsigned char[]> m_bytes;
    unsigned long m_capacity;
    unsigned long m_free;     // bytes not yet handed to zlib
    unsigned long m_expected; // size to grow to the first time; 0 afterwards
};

// The expected inflated size: the length a gzip member announces in its trailer (plus a
// little room to see the end of the stream), else eight times the input, which covers most
// XML at level 1. Bounded by what deflate can produce from this input at all, so that a
// forged trailer can't force a huge allocation.
unsigned long ExpectedInflateSize(const unsigned char* data, unsigned long length) {
    const unsigned long kGzipMinimum = 18; // 10 header + 8 trailer
    unsigned long bound = length * kMaxDeflateRatio;
    unsigned long expected = length * 8;
    if (length >= kGzipMinimum && data[0] == 0x1F && data[1] == 0x8B) {
        const unsigned char* trailer = data + length - 4; // ISIZE, little-endian, modulo 2^32
        expected = (static_cast<unsigned long>(trailer[0]) | (static_cast<unsigned long>(trailer[1]) << 8) |
                    (static_cast<unsigned long>(trailer[2]) << 16) |
                    (static_cast<unsigned long>(trailer[3]) << 24)) +
                   64;
    }
    return expected < bound ? expected : bound;
}

} // namespace

// --- CQzZip ------------------------------------------------------------------

CQzZip::CQzZip() : CInstanceMonitor("CQzZip") {}

CQzZip::~CQzZip() {}

void CQzZip::Compress(unsigned char** data, unsigned long* length, CompressionType type) {
    if (type != CompressionGzip && type != CompressionZlib)
        return;

    // The output may not grow past the input: there is no second attempt.
    unsigned long outLength = *length;
    std::unique_ptr<unsigned char[]> output(new unsigned char[outLength]);

    z_stream stream;
    std::memset(&stream, 0, sizeof(stream)); // default allocators
    // An initialisation failure shows as an error from deflate below.
    if (type == CompressionGzip)
        deflateInit2(&stream, kCompressionLevel, Z_DEFLATED, kGzipWindowBits, kMemoryLevel,
                     Z_DEFAULT_STRATEGY);
    else
        deflateInit(&stream, kCompressionLevel);
    DeflateGuard guard{&stream};

    unsigned char* inPos = *data;
    unsigned long inLeft = *length;
    unsigned char* outPos = output.get();
    unsigned long outLeft = outLength;
    stream.next_in = inPos; // also when there is nothing to read or no room to write
    stream.next_out = outPos;

    // One pass with Z_NO_FLUSH over the input, then Z_FINISH; inputs of 4 GB and more
    // take further passes, one per piece.
    int result;
    do {
        TopUp(inPos, inLeft, stream.next_in, stream.avail_in);
        TopUp(outPos, outLeft, stream.next_out, stream.avail_out);
        result = deflate(&stream, Z_NO_FLUSH);
    } while (result == Z_OK && inLeft > 0);
    do {
        TopUp(inPos, inLeft, stream.next_in, stream.avail_in);
        TopUp(outPos, outLeft, stream.next_out, stream.avail_out);
        result = deflate(&stream, Z_FINISH);
    } while (result == Z_OK && outLeft > 0);

    if (result != Z_STREAM_END)
        throw CQzException(FormatString(kCompressFailed, result));

    delete[] * data;
    *data = output.release();
    *length = stream.total_out;
}

void CQzZip::Decompress(unsigned char** data, unsigned long* length) {
    if (data == nullptr || length == nullptr || *data == nullptr)
        return;

    z_stream stream;
    std::memset(&stream, 0, sizeof(stream));
    if (inflateInit2(&stream, kDetectWindowBits) != Z_OK)
        return;
    InflateGuard guard{&stream};

    InflateOutput output(kInflateStart, ExpectedInflateSize(*data, *length));
    unsigned char* inPos = *data;
    unsigned long inLeft = *length;

    // Z_OK: more to come. Z_STREAM_END: done. Anything else (a preset dictionary, damaged
    // or cut-off data, or bytes that are no compressed stream at all): give up quietly.
    int result;
    do {
        TopUp(inPos, inLeft, stream.next_in, stream.avail_in);
        output.Provide(stream);
        result = inflate(&stream, Z_NO_FLUSH);
    } while (result == Z_OK);

    if (result != Z_STREAM_END)
        return;

    delete[] * data;
    *length = stream.total_out;
    *data = output.Release();
}

void CQzZip::CompressData(CBinaryData& data, CompressionType type) {
    if (data.GetLength() == 0)
        return;
    if (type != CompressionGzip && type != CompressionZlib)
        return;

    unsigned long length = data.GetLength();
    unsigned char* bytes = data.ReleaseData();
    try {
        Compress(&bytes, &length, type);
    } catch (...) {
        delete[] bytes; // not put back: the data object stays empty
        throw;
    }
    data = CBinaryData(bytes, length, true);
}

} // namespace QzXmlLib16
