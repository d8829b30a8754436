// ExpatReader.cpp - drives expat over a document's buffer and turns its callbacks into the
// building operations of CXmlDocument.
#include "tree/ExpatReader.h"

#include <cstdint>
#include <cstring>
#include <expat.h>

#include "foundation/Encoder.h"
#include "foundation/Exceptions.h"
#include "tree/XmlDocument.h"

namespace QzXmlLib16 {

namespace {

// Sizes
const unsigned long kScratchSize = 1024;
// The first half of the scratch buffer holds wide characters, counted as its size / 8 units;
// the second half holds the narrow result.
const unsigned long kWideUnits = kScratchSize / 8;
const unsigned long kNarrowSize = kScratchSize / 2;
// The buffer goes to expat in one call; only a buffer beyond this size, which expat's int
// length cannot express, goes in pieces of it.
const unsigned long kPieceSize = 1024 * 1024 * 1024;

// Messages
const char kMsgParseError[] = "%s at line %d";
const char kMsgParserNotCreated[] = "Failed to create the XML parser";

// The separator expat puts between namespace URI and local name.
const char kNamespaceSeparator = '|';

// ASCII test, eight bytes at a time. ASCII text is the same in every local code page, so it
// skips the conversion with an identical result.
inline bool IsAscii(const char* text, size_t length) {
    const char* p = text;
    const char* end = text + length;
    while (end - p >= 8) {
        uint64_t word;
        std::memcpy(&word, p, 8);
        if (word & 0x8080808080808080ULL)
            return false;
        p += 8;
    }
    unsigned char any = 0;
    while (p < end)
        any |= static_cast<unsigned char>(*p++);
    return (any & 0x80) == 0;
}

// The length of the leading part of the text that is ASCII without carriage returns and NULs:
// the part that goes to the element as it is. Eight bytes at a time while they are plain.
inline size_t PlainAsciiPrefix(const char* text, size_t length) {
    const uint64_t kHigh = 0x8080808080808080ULL;
    const uint64_t kOnes = 0x0101010101010101ULL;
    const uint64_t kCR = 0x0D0D0D0D0D0D0D0DULL;
    size_t i = 0;
    while (length - i >= 8) {
        uint64_t word;
        std::memcpy(&word, text + i, 8);
        uint64_t x = word ^ kCR; // a zero byte where a carriage return stands
        if ((word & kHigh) || ((x - kOnes) & ~x & kHigh) || ((word - kOnes) & ~word & kHigh))
            break;
        i += 8;
    }
    while (i < length && static_cast<unsigned char>(text[i] - 1) < 0x7F && text[i] != '\r')
        ++i;
    return i;
}

// One pass over a NUL-terminated name: its length, the first separator (or null) and whether it
// is all ASCII. Names are short; a call to strlen and memchr costs more than the loop.
struct NameScan {
    size_t length;
    const char* bar;
    bool ascii;
};

inline NameScan ScanName(const char* name) {
    const char* p = name;
    const char* bar = nullptr;
    unsigned char any = 0;
    for (; *p; ++p) {
        unsigned char c = static_cast<unsigned char>(*p);
        any |= c;
        if (c == static_cast<unsigned char>(kNamespaceSeparator) && !bar)
            bar = p;
    }
    return NameScan{static_cast<size_t>(p - name), bar, (any & 0x80) == 0};
}

// A name as expat gives it: "uri|local" or "local". The parts point into the given text.
struct SplitName {
    const char* uri;
    size_t uriLength;
    const char* local;
    size_t localLength;
};

inline SplitName Split(const char* name, size_t length) {
    const char* bar = static_cast<const char*>(std::memchr(name, kNamespaceSeparator, length));
    if (!bar)
        return SplitName{"", 0, name, length};
    return SplitName{name, static_cast<size_t>(bar - name), bar + 1,
                     length - static_cast<size_t>(bar - name) - 1};
}

} // namespace

// --- Life of the reader

CExpatReader::CExpatReader(CXmlDocument& document)
    : CInstanceMonitor("CExpatReader"), m_pDocument(&document), m_pScratch(nullptr), m_scratchSize(0),
      m_parser(nullptr) {}

CExpatReader::~CExpatReader() {
    FreeParser();
    Cleanup();
}

void CExpatReader::Cleanup() {
    delete[] m_pScratch;
    m_pScratch = nullptr;
    m_scratchSize = 0;
}

void CExpatReader::FreeParser() {
    if (m_parser) {
        XML_ParserFree(m_parser);
        m_parser = nullptr;
    }
}

void CExpatReader::CreateParser() {
    FreeParser();
    if (!m_pScratch) {
        m_pScratch = new char[kScratchSize];
        m_scratchSize = kScratchSize;
    }
    if (m_pDocument->GetSchemaType() == SchemaTypeNoNamespaces)
        m_parser = XML_ParserCreate(nullptr);
    else
        m_parser = XML_ParserCreateNS(nullptr, kNamespaceSeparator);
    if (!m_parser)
        throw CQzException(kMsgParserNotCreated);
    XML_SetUserData(m_parser, this);
    XML_SetElementHandler(m_parser, &CExpatReader::FnStartElement, &CExpatReader::FnEndElement);
    XML_SetNamespaceDeclHandler(m_parser, &CExpatReader::FnStartNamespace, &CExpatReader::FnEndNamespace);
    XML_SetCharacterDataHandler(m_parser, &CExpatReader::FnText);
    if (!m_pDocument->GetContext().GetStripCDATA())
        XML_SetCdataSectionHandler(m_parser, &CExpatReader::FnStartCDATA, &CExpatReader::FnEndCDATA);
}

// --- Parsing

void CExpatReader::Parse(bool isFinal) {
    if (!m_parser)
        CreateParser();
    const char* data = reinterpret_cast<const char*>(m_pDocument->GetBuffer());
    unsigned long remaining = m_pDocument->GetBufferSize();
    XML_Status status = XML_STATUS_OK;
    do {
        unsigned long piece = remaining < kPieceSize ? remaining : kPieceSize;
        remaining -= piece;
        status = XML_Parse(m_parser, data, static_cast<int>(piece), (isFinal && remaining == 0) ? 1 : 0);
        data += piece;
    } while (status == XML_STATUS_OK && remaining > 0 && !m_pending);

    if (m_pending) {
        std::exception_ptr pending = m_pending;
        m_pending = nullptr;
        Cleanup();
        FreeParser();
        std::rethrow_exception(pending);
    }
    if (status != XML_STATUS_OK) {
        std::string message = FormatString(kMsgParseError, XML_ErrorString(XML_GetErrorCode(m_parser)),
                                           static_cast<int>(XML_GetCurrentLineNumber(m_parser)));
        Cleanup();
        FreeParser();
        throw CQzException(message);
    }
    if (isFinal)
        FreeParser();
}

void CExpatReader::Fail() {
    // A handler called directly, outside a parse, has no parser to stop: its failure goes
    // straight to the caller.
    if (!m_parser)
        throw;
    if (!m_pending)
        m_pending = std::current_exception();
    XML_StopParser(m_parser, XML_FALSE);
}

// --- Handlers. Each trampoline keeps exceptions away from expat.

void CExpatReader::FnStartElement(void* reader, const char* name, const char** atts) {
    CExpatReader* self = static_cast<CExpatReader*>(reader);
    if (self->m_pending)
        return;
    try {
        self->StartElement(name, atts);
    } catch (...) {
        self->Fail();
    }
}

void CExpatReader::FnEndElement(void* reader, const char*) {
    CExpatReader* self = static_cast<CExpatReader*>(reader);
    if (self->m_pending)
        return;
    try {
        self->m_pDocument->EndElement();
    } catch (...) {
        self->Fail();
    }
}

void CExpatReader::FnStartNamespace(void* reader, const char* prefix, const char* uri) {
    CExpatReader* self = static_cast<CExpatReader*>(reader);
    if (self->m_pending)
        return;
    try {
        self->StartNamespace(prefix, uri);
    } catch (...) {
        self->Fail();
    }
}

void CExpatReader::FnEndNamespace(void*, const char*) {}

void CExpatReader::FnText(void* reader, const char* text, int length) {
    CExpatReader* self = static_cast<CExpatReader*>(reader);
    if (self->m_pending || length <= 0)
        return;
    try {
        self->Text(text, length);
    } catch (...) {
        self->Fail();
    }
}

void CExpatReader::FnStartCDATA(void* reader) {
    CExpatReader* self = static_cast<CExpatReader*>(reader);
    if (self->m_pending)
        return;
    try {
        self->m_pDocument->AppendTextExcludingCR(self->m_pDocument->GetOpenElement(), "<![CDATA[");
    } catch (...) {
        self->Fail();
    }
}

void CExpatReader::FnEndCDATA(void* reader) {
    CExpatReader* self = static_cast<CExpatReader*>(reader);
    if (self->m_pending)
        return;
    try {
        self->m_pDocument->AppendTextExcludingCR(self->m_pDocument->GetOpenElement(), "]]>");
    } catch (...) {
        self->Fail();
    }
}

// --- Handler bodies

// UTF-8 to the local code page through the scratch buffer, or through the heap when the
// handlers are called before CreateParser has made it.
std::string CExpatReader::ToLocal(const char* text, size_t length) {
    unsigned char* bytes = reinterpret_cast<unsigned char*>(const_cast<char*>(text));
    if (!m_pScratch)
        return CEncoder::Utf8ToLocalCodePage(bytes, static_cast<int>(length), nullptr, 0, nullptr, 0);
    return CEncoder::Utf8ToLocalCodePage(bytes, static_cast<int>(length),
                                         reinterpret_cast<wchar_t*>(m_pScratch), kWideUnits,
                                         m_pScratch + kNarrowSize, kNarrowSize);
}

void CExpatReader::StartElement(const char* name, const char** atts) {
    CXmlElement* element;
    NameScan scan = ScanName(name);
    size_t nameLength = scan.length;
    if (scan.ascii) {
        if (scan.bar) {
            size_t uriLength = static_cast<size_t>(scan.bar - name);
            element = m_pDocument->OpenElement(name, uriLength, scan.bar + 1, nameLength - uriLength - 1);
        } else {
            element = m_pDocument->OpenElement("", 0, name, nameLength);
        }
    } else {
        std::string converted = ToLocal(name, nameLength);
        SplitName parts = Split(converted.data(), converted.size());
        element = m_pDocument->OpenElement(parts.uri, parts.uriLength, parts.local, parts.localLength);
    }

    for (const char** pair = atts; pair && pair[0]; pair += 2) {
        const char* attName = pair[0];
        const char* attValue = pair[1];
        size_t attNameLength = std::strlen(attName);
        size_t attValueLength = std::strlen(attValue);
        std::string convertedName;
        SplitName parts;
        if (IsAscii(attName, attNameLength)) {
            parts = Split(attName, attNameLength);
        } else {
            convertedName = ToLocal(attName, attNameLength);
            parts = Split(convertedName.data(), convertedName.size());
        }
        std::string value;
        if (IsAscii(attValue, attValueLength))
            value.assign(attValue, attValueLength);
        else
            value = ToLocal(attValue, attValueLength);
        // AddElementAttribute without the copies: the URI is shared and the value taken over.
        m_pDocument->AddReaderAttribute(element, parts.uri, parts.uriLength, parts.local, parts.localLength,
                                        value);
    }
}

void CExpatReader::StartNamespace(const char* prefix, const char* uri) {
    m_pDocument->AddNamespace(CEncoder::Utf8ToLocalCodePage(prefix ? prefix : ""),
                              CEncoder::Utf8ToLocalCodePage(uri ? uri : ""));
}

// Plain ASCII runs go to the element as they are and a carriage return is dropped (expat has
// normalised line ends, so one here was written as a reference). From the first character
// beyond ASCII the rest is converted in one piece; ASCII is the same in every local code page,
// so the result equals a conversion of the whole text. A NUL, which expat never passes, ends
// the text as it ends a conversion.
void CExpatReader::Text(const char* text, int length) {
    CXmlElement* element = m_pDocument->GetOpenElement();
    if (!element)
        return;
    const char* p = text;
    const char* end = text + length;
    while (p < end) {
        size_t plain = PlainAsciiPrefix(p, static_cast<size_t>(end - p));
        if (plain > 0)
            element->AppendText(p, static_cast<int>(plain));
        p += plain;
        if (p == end || *p == '\0')
            return;
        if (*p == '\r') {
            ++p;
            continue;
        }
        std::string converted = ToLocal(p, static_cast<size_t>(end - p));
        m_pDocument->AppendTextExcludingCR(element, converted.data(),
                                           static_cast<unsigned long>(converted.size()));
        return;
    }
}

} // namespace QzXmlLib16
