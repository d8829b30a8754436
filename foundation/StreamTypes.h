// StreamTypes.h - the small enumerations that the public To* operations take:
// text encoding, end-of-line form and compression. Included by TextStream.h,
// BinaryStream.h and QzZip.h; applications normally include those instead.
#ifndef QZXML_FOUNDATION_STREAMTYPES_H
#define QZXML_FOUNDATION_STREAMTYPES_H

namespace QzXmlLib16 {

// Encoding of text output.
enum XmlEncoding {
    EncodingDefault = 0, // no encoding pseudo-attribute; refused when bytes are asked for
    EncodingUTF8 = 1,
    EncodingUTF16 = 2,   // UTF-16LE behind the 0xFF 0xFE mark in files
    EncodingUnicode = 3  // as EncodingUTF16, without the encoding pseudo-attribute
};

// Line end written by the text writers.
enum EOLType {
    EOLCrLf = 0, // "\r\n"
    EOLLf = 1    // "\n"
};

// Wrapper around finished output bytes.
enum CompressionType {
    CompressionNone = 0,
    CompressionGzip = 1, // gzip member
    CompressionZlib = 2  // zlib stream; never written to a file
};

} // namespace QzXmlLib16

#endif
