// TextStream.cpp - text collection, its encoding to UTF-8 or UTF-16LE, and file
// output.
#include "foundation/TextStream.h"

#include "foundation/Encoder.h"
#include "foundation/Exceptions.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <memory>

namespace QzXmlLib16 {

namespace {

// --- Messages
// --------------------------------------------------------------------------------

const char* const kUnknownEncoding = "Unknown Encoding, select UTF-8 (contact our support team)";
const char* const kWriteFailedPath = "Failed to write data to the file [%s].";
const char* const kWriteFailed = "Failed to write data to the file";

const unsigned char kUtf16Mark[2] = {0xFF, 0xFE};

// --- UTF-16LE output
// -------------------------------------------------------------------------

// Bytes of UTF-16LE under construction; at most 4 bytes per input unit are
// needed.
class Utf16Writer {
public:
    explicit Utf16Writer(size_t units) : m_bytes(new unsigned char[units * 4 + 1]), m_pos(m_bytes.get()) {}

    // U+0000..U+FFFF -> one unit; U+10000..U+10FFFF -> a surrogate pair; anything
    // else (a lone surrogate, beyond Unicode) has no UTF-16 form and becomes "?".
    void Put(uint32_t c) {
        if (c >= 0xD800 && c <= 0xDFFF)
            c = '?';
        if (c < 0x10000) {
            PutUnit(c);
        } else if (c <= 0x10FFFF) {
            c -= 0x10000;
            PutUnit(0xD800 + (c >> 10));
            PutUnit(0xDC00 + (c & 0x3FF));
        } else {
            PutUnit('?');
        }
    }

    // A handle that takes the bytes over; empty when nothing was put.
    CBinaryData Finish() {
        unsigned long length = static_cast<unsigned long>(m_pos - m_bytes.get());
        if (length == 0)
            return CBinaryData();
        return CBinaryData(m_bytes.release(), length, true);
    }

    unsigned char* Raw() { return m_pos; }
    void Advance(size_t n) { m_pos += n; }

private:
    void PutUnit(uint32_t unit) {
        m_pos[0] = static_cast<unsigned char>(unit);
        m_pos[1] = static_cast<unsigned char>(unit >> 8);
        m_pos += 2;
    }

    std::unique_ptr<unsigned char[]> m_bytes;
    unsigned char* m_pos;
};

// Length of a well-formed UTF-8 sequence at p (before end), or 0. Overlong
// forms, surrogates and values above U+10FFFF are not well-formed.
int Utf8SequenceLength(const unsigned char* p, const unsigned char* end, uint32_t* value) {
    unsigned char b = p[0];
    int n;
    uint32_t c, minimum;
    if (b >= 0xC2 && b <= 0xDF) { // 110xxxxx -> U+0080..U+07FF
        n = 2, c = b & 0x1F, minimum = 0x80;
    } else if (b >= 0xE0 && b <= 0xEF) { // 1110xxxx -> U+0800..U+FFFF
        n = 3, c = b & 0x0F, minimum = 0x800;
    } else if (b >= 0xF0 && b <= 0xF4) { // 11110xxx -> U+10000..U+10FFFF
        n = 4, c = b & 0x07, minimum = 0x10000;
    } else {
        return 0;
    }
    if (end - p < n)
        return 0;
    for (int i = 1; i < n; ++i) {
        if ((p[i] & 0xC0) != 0x80)
            return 0;
        c = (c << 6) | (p[i] & 0x3F);
    }
    if (c < minimum || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF))
        return 0;
    *value = c;
    return n;
}

// The text as UTF-16LE. ASCII is widened directly (every locale of this
// platform maps it to itself). With ASCII_ONLY the text is UTF-8 already and is
// decoded as such, each byte of a malformed sequence becoming "?". Otherwise
// the local code page goes through CEncoder's wide form and its 32-bit units
// are narrowed here.
CBinaryData EncodeUtf16(const char* text) {
    const unsigned char* p = reinterpret_cast<const unsigned char*>(text);
    size_t length = std::strlen(text);
    const unsigned char* end = p + length;
    Utf16Writer out(length);

    // ASCII prefix, the whole text in the common case.
    const unsigned char* ascii = p;
    unsigned char* raw = out.Raw();
    while (ascii != end && *ascii < 0x80) {
        raw[0] = *ascii++;
        raw[1] = 0;
        raw += 2;
    }
    out.Advance(static_cast<size_t>(raw - out.Raw()));
    if (ascii == end)
        return out.Finish();

    if (ASCII_ONLY) {
        for (p = ascii; p != end;) {
            uint32_t c = *p;
            int n = c < 0x80 ? 1 : Utf8SequenceLength(p, end, &c);
            if (n == 0)
                c = '?', n = 1;
            out.Put(c);
            p += n;
        }
        return out.Finish();
    }

    // The rest of the text, from the start of the non-ASCII part (the ASCII
    // prefix ends on a character boundary).
    CBinaryData wide = CEncoder::LocalCodePageToUnicodeBinary(reinterpret_cast<const char*>(ascii));
    const unsigned char* units = wide.GetData();
    unsigned long count = wide.GetLength() / sizeof(wchar_t);
    for (unsigned long i = 0; i < count; ++i) {
        wchar_t c;
        std::memcpy(&c, units + i * sizeof(wchar_t), sizeof(wchar_t));
        out.Put(static_cast<uint32_t>(c));
    }
    return out.Finish();
}

// --- Character boundaries
// --------------------------------------------------------------------

// Length of the longest prefix of text that ends on a character boundary of the
// local code page: only a character cut off by the end of the text is left out.
unsigned long CompleteLength(const char* text, unsigned long length) {
    if (ASCII_ONLY || MB_CUR_MAX == 1)
        return length; // bytes pass through, or every byte is a character
    const char* p = text;
    const char* end = text + length;
    std::mbstate_t state;
    std::memset(&state, 0, sizeof(state));
    while (p != end) {
        if (static_cast<unsigned char>(*p) < 0x80) {
            ++p;
            continue;
        }
        wchar_t c;
        size_t n = std::mbrtowc(&c, p, static_cast<size_t>(end - p), &state);
        if (n == static_cast<size_t>(-2))
            return static_cast<unsigned long>(p - text);
        if (n == static_cast<size_t>(-1) || n == 0) {
            std::memset(&state, 0, sizeof(state));
            n = 1;
        }
        p += n;
    }
    return length;
}

} // namespace

// --- CTextStream
// -----------------------------------------------------------------------------

CTextStream::CTextStream() : CInstanceMonitor("CTextStream"), m_encoding(EncodingDefault) {}

CTextStream::CTextStream(XmlEncoding encoding) : CInstanceMonitor("CTextStream"), m_encoding(encoding) {}

CTextStream::CTextStream(const char* monitorName, XmlEncoding encoding)
    : CInstanceMonitor(monitorName), m_encoding(encoding) {}

CTextStream::~CTextStream() {}

void CTextStream::Open() {
    m_text.Empty();
}

void CTextStream::Close() {}

void CTextStream::Flush() {}

const char* CTextStream::GetText() const {
    return m_text.GetText();
}

CBinaryData CTextStream::GetEncodedStream() const {
    switch (m_encoding) {
    case EncodingUTF8:
        return CEncoder::LocalCodePageToUtf8Binary(GetText());
    case EncodingUTF16:
    case EncodingUnicode:
        return EncodeUtf16(GetText());
    default:
        throw CQzException(kUnknownEncoding);
    }
}

void CTextStream::Append(const char* text) {
    if (text != nullptr)
        m_text.Append(text);
}

void CTextStream::Append(const std::string& text) {
    m_text.Append(text);
}

// --- CFileTextStream
// -------------------------------------------------------------------------

CFileTextStream::CFileTextStream(const char* path, XmlEncoding encoding)
    : CTextStream("CFileTextStream", encoding), m_path(path ? path : ""), m_file(nullptr) {}

CFileTextStream::~CFileTextStream() {
    if (m_file != nullptr)
        std::fclose(m_file);
}

void CFileTextStream::Open() {
    CTextStream::Open();
    CloseQuietly();
    // "b" and "t" are the same on this platform: the bytes go out unchanged.
    m_file = std::fopen(m_path.c_str(), "wb");
    if (m_file == nullptr)
        throw CQzException(FormatString(kWriteFailedPath, m_path.c_str()));
    if (m_encoding == EncodingUTF16 || m_encoding == EncodingUnicode) {
        if (std::fwrite(kUtf16Mark, 1, sizeof(kUtf16Mark), m_file) != sizeof(kUtf16Mark)) {
            CloseQuietly();
            throw CQzException(FormatString(kWriteFailedPath, m_path.c_str()));
        }
    }
}

void CFileTextStream::Flush() {
    unsigned long length = m_text.GetLength();
    if (length == 0)
        return;
    unsigned long complete = CompleteLength(GetText(), length);
    if (complete != 0)
        WriteEncoded(complete);
}

void CFileTextStream::Close() {
    Flush();
    // What Flush held back is a character that will never be completed: write it
    // as it is.
    if (m_text.GetLength() != 0)
        WriteEncoded(m_text.GetLength());
    if (m_file != nullptr) {
        FILE* file = m_file;
        m_file = nullptr;
        // The close flushes stdio's buffer, so it is where a full disk shows.
        if (std::fclose(file) != 0)
            throw CQzException(FormatString(kWriteFailedPath, m_path.c_str()));
    }
    CTextStream::Close();
}

void CFileTextStream::WriteEncoded(unsigned long count) {
    if (m_file == nullptr)
        throw CQzException(kWriteFailed);

    // Encode the first count bytes: cut the text there for the encoder, keep the
    // rest.
    //   text: [ count bytes to write | tail held back ] NUL
    unsigned long length = m_text.GetLength();
    char* text = const_cast<char*>(GetText());
    std::string tail;
    if (count < length) {
        tail.assign(text + count, length - count);
        text[count] = '\0';
    }
    {
        struct Restore { // puts the cut byte back, also when the encoding is
                         // refused
            char* at;
            char byte;
            ~Restore() {
                if (at != nullptr)
                    *at = byte;
            }
        } restore{tail.empty() ? nullptr : text + count, tail.empty() ? '\0' : tail[0]};
        m_encoded = GetEncodedStream();
    }

    unsigned long size = m_encoded.GetLength();
    bool written = size == 0 || std::fwrite(m_encoded.GetData(), 1, size, m_file) == size;
    m_encoded.Clear();
    if (!written) {
        CloseQuietly();
        throw CQzException(kWriteFailed);
    }
    m_text.Empty();
    if (!tail.empty())
        m_text.Append(tail);
}

void CFileTextStream::CloseQuietly() {
    if (m_file != nullptr)
        std::fclose(m_file);
    m_file = nullptr;
}

} // namespace QzXmlLib16
