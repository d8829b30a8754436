// QzZip.h - CQzZip, gzip and zlib wrapping of finished output and unwrapping of input.
//
// A thin static layer over zlib (which only QzZip.cpp includes). The CompressionType
// enumeration lives in foundation/StreamTypes.h; the byte buffer is values/BinaryData.h.
#ifndef QZXML_FOUNDATION_QZZIP_H
#define QZXML_FOUNDATION_QZZIP_H

#include "foundation/InstanceMonitor.h"
#include "foundation/StreamTypes.h"
#include "values/BinaryData.h"

namespace QzXmlLib16 {

// All operations are static; an instance holds nothing.
class CQzZip : public CInstanceMonitor {
public:
    CQzZip();
    ~CQzZip() override;

    // Wraps the *length bytes at *data as a gzip member (CompressionGzip) or a zlib stream
    // (CompressionZlib), deflate level 1; any other type leaves both untouched. On success
    // the old buffer is delete[]d and *data becomes a new[] buffer owned by the caller.
    // Throws CQzException "Failed to compress data. [Error Code: %d]" (zlib's result) and
    // leaves *data and *length as they were when the output does not fit in *length bytes.
    // Note: the output may never be larger than the input, so a small or incompressible
    // input can't be compressed at all and always raises.
    static void Compress(unsigned char** data, unsigned long* length, CompressionType type);

    // Inflates a gzip or zlib wrapped buffer (the wrapper is detected). On success the old
    // buffer is delete[]d and *data becomes a new[] buffer of the inflated *length bytes,
    // owned by the caller; bytes behind the end of the compressed stream are dropped.
    // Note: anything that does not inflate to its end (plain text, a truncated or damaged
    // compressed file) is left exactly as it was, and nothing is reported; never throws
    // except for allocation failure.
    static void Decompress(unsigned char** data, unsigned long* length);

    // Compress on the bytes of a CBinaryData, which then holds the compressed bytes. An
    // empty data object stays empty; types other than gzip and zlib leave it unchanged.
    // Note: when the compression raises, the data object is left empty.
    static void CompressData(CBinaryData& data, CompressionType type);
};

} // namespace QzXmlLib16

#endif
