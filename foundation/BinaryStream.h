// BinaryStream.h - CBinaryStream, the byte sink of the binary writers, and
// CFileBinaryStream, which writes finished bytes to a file.
//
// The bytes are collected in a CBinaryData (values/BinaryData.h). Text sinks are in
// foundation/TextStream.h; the XmlEncoding enumeration in foundation/StreamTypes.h.
#ifndef QZXML_FOUNDATION_BINARYSTREAM_H
#define QZXML_FOUNDATION_BINARYSTREAM_H

#include "foundation/InstanceMonitor.h"
#include "foundation/StreamTypes.h"
#include "values/BinaryData.h"

#include <string>

namespace QzXmlLib16 {

// Collects bytes in memory.
class CBinaryStream : public CInstanceMonitor {
public:
    CBinaryStream();
    // Starts with the given bytes, shared with the caller's handle until either side writes.
    CBinaryStream(CBinaryData& data);
    // For subclasses: monitorName is the most derived class name.
    CBinaryStream(const char* monitorName);
    CBinaryStream(const char* monitorName, CBinaryData& data);
    ~CBinaryStream() override;

    // A handle on the bytes collected so far; copying it copies no bytes.
    CBinaryData GetBinaryStream() const;

    void Append(unsigned char byte);
    void Append(const CBinaryData& data);
    // Adds length bytes from data; a null pointer adds nothing.
    void Append(unsigned char* data, unsigned long length);

protected:
    CBinaryData m_data;
};

// Bytes destined for one file, written at once by ToFile.
class CFileBinaryStream : public CBinaryStream {
public:
    // The path is copied; null counts as the empty path. No file is touched here.
    CFileBinaryStream(const char* path, XmlEncoding encoding);
    CFileBinaryStream(const char* path, XmlEncoding encoding, CBinaryData& data);
    ~CFileBinaryStream() override;

    // Creates the file and writes the 0xFF 0xFE mark (EncodingUTF16 and EncodingUnicode
    // only) and then the bytes, unchanged. Throws CQzException "Failed to write data to the
    // file [<path>]." when the file can't be created or a write or the close fails.
    // Note: empty data counts as a failed write: the file is left behind empty, or holding
    // only the mark, and the call throws.
    void ToFile();

protected:
    std::string m_path;
    XmlEncoding m_encoding;
};

} // namespace QzXmlLib16

#endif
