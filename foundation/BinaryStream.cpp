// BinaryStream.cpp - in-memory byte collection and writing it to a file.
#include "foundation/BinaryStream.h"

#include "foundation/Exceptions.h"

#include <cstdio>

namespace QzXmlLib16 {

namespace {

// --- File output -------------------------------------------------------------

const char* const kWriteFailed = "Failed to write data to the file [%s].";
const unsigned char kUtf16Mark[2] = {0xFF, 0xFE};

[[noreturn]] void ThrowWriteFailed(const std::string& path) {
    throw CQzException(FormatString(kWriteFailed, path.c_str()));
}

} // namespace

// --- CBinaryStream -----------------------------------------------------------

CBinaryStream::CBinaryStream() : CInstanceMonitor("CBinaryStream") {}

CBinaryStream::CBinaryStream(CBinaryData& data) : CInstanceMonitor("CBinaryStream") {
    m_data = data;
}

CBinaryStream::CBinaryStream(const char* monitorName) : CInstanceMonitor(monitorName) {}

CBinaryStream::CBinaryStream(const char* monitorName, CBinaryData& data) : CInstanceMonitor(monitorName) {
    m_data = data;
}

CBinaryStream::~CBinaryStream() {}

CBinaryData CBinaryStream::GetBinaryStream() const {
    return m_data;
}

void CBinaryStream::Append(unsigned char byte) {
    m_data.Append(byte);
}

void CBinaryStream::Append(const CBinaryData& data) {
    if (&data == &m_data) {
        // Appending the stream to itself: read from a second handle.
        CBinaryData copy(data);
        m_data.Append(copy);
        return;
    }
    m_data.Append(data);
}

void CBinaryStream::Append(unsigned char* data, unsigned long length) {
    if (data == nullptr || length == 0)
        return;
    m_data.Append(data, length);
}

// --- CFileBinaryStream -------------------------------------------------------

CFileBinaryStream::CFileBinaryStream(const char* path, XmlEncoding encoding)
    : CBinaryStream("CFileBinaryStream"), m_path(path ? path : ""), m_encoding(encoding) {}

CFileBinaryStream::CFileBinaryStream(const char* path, XmlEncoding encoding, CBinaryData& data)
    : CBinaryStream("CFileBinaryStream", data), m_path(path ? path : ""), m_encoding(encoding) {}

CFileBinaryStream::~CFileBinaryStream() {}

void CFileBinaryStream::ToFile() {
    // "b" and "t" are the same on this platform: the bytes go out unchanged.
    FILE* file = std::fopen(m_path.c_str(), "wb");
    if (file == nullptr)
        ThrowWriteFailed(m_path);

    bool written = true;
    if (m_encoding == EncodingUTF16 || m_encoding == EncodingUnicode)
        written = std::fwrite(kUtf16Mark, 1, sizeof(kUtf16Mark), file) == sizeof(kUtf16Mark);
    // An empty data object writes nothing, which counts as a failure like any short write.
    unsigned long length = m_data.GetLength();
    if (written)
        written = length != 0 && std::fwrite(m_data.GetData(), 1, length, file) == length;

    // The close flushes stdio's buffer, so it is where a full disk shows.
    bool closed = std::fclose(file) == 0;
    if (!written || !closed)
        ThrowWriteFailed(m_path);
}

} // namespace QzXmlLib16
