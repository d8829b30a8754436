// TextStream.h - CTextStream, the text sink of the output writers, and CFileTextStream,
// which writes it to a file as it goes.
//
// Text is collected in the local code page (see foundation/Encoder.h) in a CStringBuffer
// (foundation/StringBuffer.h) and is turned into bytes for the stream's XmlEncoding
// (foundation/StreamTypes.h) only when asked. Byte sinks are in foundation/BinaryStream.h.
#ifndef QZXML_FOUNDATION_TEXTSTREAM_H
#define QZXML_FOUNDATION_TEXTSTREAM_H

#include "foundation/InstanceMonitor.h"
#include "foundation/StreamTypes.h"
#include "foundation/StringBuffer.h"
#include "values/BinaryData.h"

#include <cstdio>
#include <string>

namespace QzXmlLib16 {

// Collects text in memory. Life: construct, Open, any number of Appends and Flushes, Close,
// then GetText or GetEncodedStream. A memory stream keeps its text after Close.
class CTextStream : public CInstanceMonitor {
public:
    // A stream for the to-string operations: encoding EncodingDefault.
    CTextStream();
    CTextStream(XmlEncoding encoding);
    // For subclasses: monitorName is the most derived class name.
    CTextStream(const char* monitorName, XmlEncoding encoding);
    ~CTextStream() override;

    // Empties the text.
    virtual void Open();
    // Nothing to do for a memory stream.
    virtual void Close();
    // Nothing to do for a memory stream.
    virtual void Flush();

    // Characters (bytes of the local code page) collected and not yet flushed.
    unsigned long GetLength() const { return m_text.GetLength(); }
    XmlEncoding GetEncoding() const { return m_encoding; }
    // The text as a NUL-terminated string, owned by the stream; valid until the next
    // Append, GetText, Flush or Open. Merges the buffer's blocks into one.
    const char* GetText() const;

    // The text as bytes of the stream's encoding, without a byte-order mark: UTF-8 for
    // EncodingUTF8, UTF-16LE for EncodingUTF16 and EncodingUnicode (characters above U+FFFF
    // as surrogate pairs). Throws CQzException "Unknown Encoding, select UTF-8 (contact our
    // support team)" for any other encoding.
    // Note: a default-constructed stream therefore refuses, although GetText works.
    CBinaryData GetEncodedStream() const;

    // Adds one character; stays in the fast path of the block being filled.
    void Append(char c) { m_text.Append(c); }
    // Adds a NUL-terminated text; null adds nothing.
    void Append(const char* text);
    // Adds the text up to its first NUL.
    void Append(const std::string& text);

protected:
    // GetText merges blocks, also through a const stream.
    mutable CStringBuffer m_text;
    XmlEncoding m_encoding;
};

// A text stream that writes to a file: Open creates the file (with the 0xFF 0xFE mark for
// UTF-16), each Flush writes the text collected since the previous one in the stream's
// encoding, Close writes the rest and closes. No file is touched before Open.
class CFileTextStream : public CTextStream {
public:
    // The path is copied; null counts as the empty path.
    CFileTextStream(const char* path, XmlEncoding encoding);
    // Closes a file that is still open, without Flush: unflushed text is lost.
    ~CFileTextStream() override;

    // Empties the text and creates the file (a file that was open is closed first).
    // Throws CQzException "Failed to write data to the file [<path>]." when the file can't
    // be created or the mark can't be written; the file is then closed.
    void Open() override;
    // Flush, then closes the file. Throws as Flush does, or "Failed to write data to the file
    // [<path>]." when closing reports a failed write; the file is closed in every case.
    void Close() override;
    // Encodes the text collected since the last Flush and writes it, then empties the text.
    // Nothing happens when there is no text. Throws CQzException "Failed to write data to
    // the file" when the write fails or no file is open; the file is then closed.
    // Note: in a multibyte code page, an incomplete character at the end stays in the text
    // for the next Flush, so a character is never split between two writes.
    void Flush() override;

protected:
    std::string m_path;
    CBinaryData m_encoded; // what Flush writes; emptied after each write
    FILE* m_file;

private:
    // Encodes the first `count` bytes of the text into m_encoded and writes them.
    void WriteEncoded(unsigned long count);
    // Closes the file without a check; the file field becomes null.
    void CloseQuietly();
};

} // namespace QzXmlLib16

#endif
