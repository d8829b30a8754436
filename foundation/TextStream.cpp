// TextStream.cpp - text collection, its encoding to UTF-8 or UTF-16LE, and file output.
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

// --- Messages ----------------------------------------------------------------

const char* const kUnknownEncoding = "Unknown Encoding, select UTF-8 (contact our support team)";
const char* const kWriteFailedPath = "Failed to write data to the file [%s].";
const char* const kWriteFailed = "Failed to write data to the file";

const unsigned char kUtf16Mark[2] = {0xFF, 0xFE};

// --- Encoded output ----------------------------------------------------------

// Bytes of UTF-8 or UTF-16LE under construction. One input byte never gives more than
// four output bytes (a character of one local byte is at most U+FFFF: three bytes of
// UTF-8, one unit of UTF-16), so the array is sized once.
class EncodedWriter {
public:
    EncodedWriter(size_t inputBytes, bool utf16)
        : m_bytes(new unsigned char[inputBytes * 4 + 4]), m_pos(m_bytes.get()), m_utf16(utf16) {}

    // A run of ASCII: copied for UTF-8, widened for UTF-16.
    void PutAscii(const unsigned char* p, size_t n) {
        if (!m_utf16) {
            std::memcpy(m_pos, p, n);
            m_pos += n;
            return;
        }
        for (size_t i = 0; i < n; ++i) {
            m_pos[2 * i] = p[i];
            m_pos[2 * i + 1] = 0;
        }
        m_pos += 2 * n;
    }

    // A code point. A lone surrogate has no form in either encoding and becomes "?"; beyond
    // U+10FFFF, UTF-8 gets U+FFFD (as CEncoder writes it) and UTF-16 gets "?".
    void Put(uint32_t c) {
        if (c >= 0xD800 && c <= 0xDFFF)
            c = '?';
        if (m_utf16)
            PutUtf16(c);
        else
            PutUtf8(c);
    }

    // A handle that takes the bytes over; empty when nothing was put.
    CBinaryData Finish() {
        unsigned long length = static_cast<unsigned long>(m_pos - m_bytes.get());
        if (length == 0)
            return CBinaryData();
        return CBinaryData(m_bytes.release(), length, true);
    }

private:
    void PutUtf8(uint32_t c) {
        if (c < 0x80) { // U+0000..U+007F -> 0xxxxxxx
            *m_pos++ = static_cast<unsigned char>(c);
        } else if (c < 0x800) { // U+0080..U+07FF -> 110xxxxx 10xxxxxx
            *m_pos++ = static_cast<unsigned char>(0xC0 | (c >> 6));
            *m_pos++ = static_cast<unsigned char>(0x80 | (c & 0x3F));
        } else if (c < 0x10000) { // U+0800..U+FFFF -> 1110xxxx + 2
            *m_pos++ = static_cast<unsigned char>(0xE0 | (c >> 12));
            *m_pos++ = static_cast<unsigned char>(0x80 | ((c >> 6) & 0x3F));
            *m_pos++ = static_cast<unsigned char>(0x80 | (c & 0x3F));
        } else if (c <= 0x10FFFF) { // U+10000..U+10FFFF -> 11110xxx + 3
            *m_pos++ = static_cast<unsigned char>(0xF0 | (c >> 18));
            *m_pos++ = static_cast<unsigned char>(0x80 | ((c >> 12) & 0x3F));
            *m_pos++ = static_cast<unsigned char>(0x80 | ((c >> 6) & 0x3F));
            *m_pos++ = static_cast<unsigned char>(0x80 | (c & 0x3F));
        } else {
            PutUtf8(0xFFFD);
        }
    }

    void PutUtf16(uint32_t c) {
        if (c < 0x10000) {
            PutUnit(c);
        } else if (c <= 0x10FFFF) { // a surrogate pair, high unit first
            c -= 0x10000;
            PutUnit(0xD800 + (c >> 10));
            PutUnit(0xDC00 + (c & 0x3FF));
        } else {
            PutUnit('?');
        }
    }

    void PutUnit(uint32_t unit) {
        m_pos[0] = static_cast<unsigned char>(unit);
        m_pos[1] = static_cast<unsigned char>(unit >> 8);
        m_pos += 2;
    }

    std::unique_ptr<unsigned char[]> m_bytes;
    unsigned char* m_pos;
    bool m_utf16;
};

// Length of a well-formed UTF-8 sequence at p (before end), or 0. Overlong forms,
// surrogates and values above U+10FFFF are not well-formed.
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

// End of the run of ASCII bytes that starts at p, eight bytes a step where it can.
const unsigned char* SkipAscii(const unsigned char* p, const unsigned char* end) {
    const uint64_t kHighBits = 0x8080808080808080ull;
    while (end - p >= 8) {
        uint64_t word;
        std::memcpy(&word, p, 8);
        if (word & kHighBits)
            break;
        p += 8;
    }
    while (p != end && *p < 0x80)
        ++p;
    return p;
}

// The text as UTF-8 or UTF-16LE, with the same result as going through CEncoder's
// LocalCodePageToUtf8Binary, or LocalCodePageToUnicodeBinary and narrowing each 32-bit
// unit to UTF-16, but in one pass without the wide array:
// - ASCII runs are copied or widened directly (every locale of this platform maps ASCII
//   to itself, and a run starts and ends on character boundaries);
// - other characters are read with mbrtowc, as CEncoder does: a byte that starts no
//   character of the locale becomes "?" and counts as one;
// - with ASCII_ONLY the text is UTF-8 already: UTF-8 output is the bytes themselves,
//   UTF-16 output decodes them, each byte of a malformed sequence becoming "?".
CBinaryData EncodeText(const char* text, bool utf16) {
    if (!utf16 && ASCII_ONLY)
        return CEncoder::LocalCodePageToUtf8Binary(text);

    const unsigned char* p = reinterpret_cast<const unsigned char*>(text);
    const unsigned char* end = p + std::strlen(text);
    EncodedWriter out(static_cast<size_t>(end - p), utf16);
    std::mbstate_t state;
    std::memset(&state, 0, sizeof(state));
    while (p != end) {
        const unsigned char* run = SkipAscii(p, end);
        out.PutAscii(p, static_cast<size_t>(run - p));
        p = run;
        if (p == end)
            break;
        uint32_t c = '?';
        size_t n;
        if (ASCII_ONLY) {
            n = static_cast<size_t>(Utf8SequenceLength(p, end, &c));
        } else {
            wchar_t wide;
            n = std::mbrtowc(&wide, reinterpret_cast<const char*>(p), static_cast<size_t>(end - p), &state);
            if (n == static_cast<size_t>(-1) || n == static_cast<size_t>(-2))
                std::memset(&state, 0, sizeof(state));
            else
                c = static_cast<uint32_t>(wide);
        }
        if (n == 0 || n > static_cast<size_t>(end - p)) {
            c = '?';
            n = 1;
        }
        out.Put(c);
        p += n;
    }
    return out.Finish();
}

// --- Character boundaries ----------------------------------------------------

// Length of the longest prefix of text that ends on a character boundary: only a character
// cut off by the end of the text is left out. With ASCII_ONLY the text is UTF-8, which only
// UTF-16 output decodes; otherwise the characters are those of the local code page.
unsigned long CompleteLength(const char* text, unsigned long length, bool utf16) {
    const unsigned char* begin = reinterpret_cast<const unsigned char*>(text);
    const unsigned char* end = begin + length;
    if (ASCII_ONLY) {
        if (!utf16)
            return length; // the bytes pass through unchanged
        // Back over at most three continuation bytes (10xxxxxx) to a lead byte that wants more.
        const unsigned char* lead = end;
        while (lead != begin && end - lead < 4 && (lead[-1] & 0xC0) == 0x80)
            --lead;
        if (lead == begin)
            return length;
        --lead;
        long wanted = *lead >= 0xF0 ? 4 : *lead >= 0xE0 ? 3 : *lead >= 0xC0 ? 2 : 1;
        return end - lead < wanted ? static_cast<unsigned long>(lead - begin) : length;
    }
    if (MB_CUR_MAX == 1)
        return length; // every byte is a character
    std::mbstate_t state;
    std::memset(&state, 0, sizeof(state));
    const unsigned char* p = begin;
    while ((p = SkipAscii(p, end)) != end) {
        wchar_t c;
        size_t n = std::mbrtowc(&c, reinterpret_cast<const char*>(p), static_cast<size_t>(end - p), &state);
        if (n == static_cast<size_t>(-2))
            return static_cast<unsigned long>(p - begin);
        if (n == static_cast<size_t>(-1) || n == 0 || n > static_cast<size_t>(end - p)) {
            std::memset(&state, 0, sizeof(state));
            n = 1;
        }
        p += n;
    }
    return length;
}

} // namespace

// --- CTextStream -------------------------------------------------------------

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
        return EncodeText(GetText(), false);
    case EncodingUTF16:
    case EncodingUnicode:
        return EncodeText(GetText(), true);
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

// --- CFileTextStream ---------------------------------------------------------

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
    unsigned long complete =
        CompleteLength(GetText(), length, m_encoding == EncodingUTF16 || m_encoding == EncodingUnicode);
    if (complete != 0)
        WriteEncoded(complete);
}

void CFileTextStream::Close() {
    Flush();
    // What Flush held back is a character that will never be completed: write it as it is.
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

    // Encode the first count bytes: cut the text there for the encoder, keep the rest.
    //   text: [ count bytes to write | tail held back ] NUL
    unsigned long length = m_text.GetLength();
    char* text = const_cast<char*>(GetText());
    std::string tail;
    if (count < length) {
        tail.assign(text + count, length - count);
        text[count] = '\0';
    }
    {
        // Puts the cut byte back, also when the encoding is refused.
        struct Restore {
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
