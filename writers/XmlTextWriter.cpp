// XmlTextWriter.cpp - XML text output: tags, namespace declarations, escaping, layout.
#include "writers/XmlTextWriter.h"

#include <cstring>
#include <memory>

#include "foundation/Exceptions.h"
#include "foundation/TextStream.h"

namespace QzXmlLib16 {

namespace {

// Messages
const char* const kMsgInvalidEOLType = "Invalid EOL type.";
const char* const kMsgHeaderDirective = "Headed directives must appear before an Element has been added.";
const char* const kMsgAttributesBeforeElements = "Attributes must be added before elements";
const char* const kMsgNoOpenElement = "There is no open Element to end.";
const char* const kMsgNoElementForText = "There is no open Element to hold the text.";

// Names and limits
const char* const kXsiNamespace = "http://www.w3.org/2001/XMLSchema-instance";
const char* const kCDataMarker = "<![CDATA[";
const size_t kCDataMarkerLength = 9;
// A file stream is flushed once it holds this many characters.
const unsigned long kFlushThreshold = 4096;

// Escaping table: one bit per context in which a byte needs attention. The NUL byte is
// marked in both so that the run scanner stops at the end of the text.
const unsigned char kStopInText = 1;
const unsigned char kStopInAttribute = 2;

struct EscapeTable {
    unsigned char stop[256];
    EscapeTable() : stop() {
        const unsigned char both = kStopInText | kStopInAttribute;
        stop[0] = both;
        stop[static_cast<unsigned char>('\n')] = both;
        stop[static_cast<unsigned char>('\r')] = both;
        stop[static_cast<unsigned char>('&')] = both;
        stop[static_cast<unsigned char>('<')] = both;
        stop[static_cast<unsigned char>('>')] = both;
        stop[static_cast<unsigned char>('"')] = kStopInAttribute;
    }
};

const EscapeTable kEscape;

} // namespace

// The staging fast paths; the rare overflow goes out of line.
inline void CXmlTextWriter::Put(char c) {
    if (m_staged == kStageCapacity)
        Drain();
    m_stage[m_staged++] = c;
}

inline void CXmlTextWriter::Put(const char* text, size_t length) {
    if (length <= kStageCapacity - m_staged) {
        std::memcpy(m_stage + m_staged, text, length);
        m_staged += length;
    } else {
        PutSlow(text, length);
    }
}

inline void CXmlTextWriter::Put(const char* text) {
    PutTerminated(text, std::strlen(text));
}

// As the stream's Append of a std::string: the text ends at its first NUL.
inline void CXmlTextWriter::Put(const std::string& text) {
    const void* nul = std::memchr(text.data(), '\0', text.size());
    size_t length =
        nul != nullptr ? static_cast<size_t>(static_cast<const char*>(nul) - text.data()) : text.size();
    PutTerminated(text.c_str(), length);
}

CXmlTextWriter::CXmlTextWriter(CTextStream& stream)
    : CXmlWriter("CXmlTextWriter"), m_writeDefaultElementValues(false), m_indentChars("\t"), m_eolChars("\n"),
      m_eolType(EOLLf), m_format(true), m_pStream(&stream), m_staged(0) {}

CXmlTextWriter::~CXmlTextWriter() {
    // Text of a document abandoned half-way still reaches the stream.
    try {
        Drain();
    } catch (...) {
    }
}

void CXmlTextWriter::Open() {
    m_staged = 0;
    CXmlWriter::Open();
    m_pStream->Open();
}

void CXmlTextWriter::Close() {
    Drain();
    m_pStream->Close();
    CXmlWriter::Close();
}

void CXmlTextWriter::SetEOLType(EOLType type) {
    switch (type) {
    case EOLCrLf:
        m_eolChars = "\r\n";
        break;
    case EOLLf:
        m_eolChars = "\n";
        break;
    default:
        throw CQzException(kMsgInvalidEOLType);
    }
    m_eolType = type;
}

void CXmlTextWriter::SetIndentChars(const char* chars) {
    m_indentChars = chars != nullptr ? chars : "";
    m_indentCache.clear();
}

// ---------------------------------------------------------------------------
// Document-level output

void CXmlTextWriter::WriteStartDocument() {
    Put("<?xml version=\"1.0\"");
    switch (m_pStream->GetEncoding()) {
    case EncodingUTF8:
        Put(" encoding=\"UTF-8\"");
        break;
    case EncodingUTF16:
        Put(" encoding=\"UTF-16\"");
        break;
    default:
        break;
    }
    Put("?>");
    WriteLineEnd();
    FlushIfFull();
}

void CXmlTextWriter::WriteHeaderDirective(const std::string& text) {
    if (m_pContext != nullptr) {
        Drain();
        throw CQzException(kMsgHeaderDirective);
    }
    Put(text);
    WriteLineEnd();
    FlushIfFull();
}

void CXmlTextWriter::WriteRawElement(const std::string& text) {
    Put(text);
    if (m_format)
        WriteLineEnd();
    Drain();
}

void CXmlTextWriter::WriteComment(const std::string& text) {
    Put("<!--");
    EscapeInto(text.c_str(), false);
    Put("-->");
    WriteLineEnd();
    FlushIfFull();
}

void CXmlTextWriter::WritePI(const std::string& text) {
    Put(text);
    WriteLineEnd();
    WriteLineEnd();
    FlushIfFull();
}

void CXmlTextWriter::WriteInlineSchema(const std::string& schema) {
    Put(' ');
    WriteLineEnd();
    Put(schema);
    WriteLineEnd();
    FlushIfFull();
}

// ---------------------------------------------------------------------------
// Elements

void CXmlTextWriter::CloseParentElm() {
    CloseParent();
    Drain();
}

inline void CXmlTextWriter::CloseParent() {
    if (m_pContext == nullptr)
        return;
    m_pContext->IncrementChildCount();
    if (m_pContext->IsStartTagOpen()) {
        m_pContext->CloseStartTag();
        Put('>');
        if (m_format)
            WriteLineEnd();
    }
}

void CXmlTextWriter::WriteStartElement(const std::string& localName, const std::string& uri) {
    CloseParent();
    const bool isDocumentElement = m_pContext == nullptr;
    std::unique_ptr<CXmlWriterContext, void (*)(CXmlWriterContext*)> context(NewContext(localName, uri),
                                                                             &CXmlWriter::DiscardContext);

    if (m_format)
        WriteIndent(context->GetDepth());
    Put('<');
    if (uri.empty() || uri == context->GetDefaultNamespace()) {
        Put(localName);
    } else {
        bool declare = false;
        std::map<std::string, std::string>* map = context->GetNamespaceMap();
        if (map->find(uri) == map->end()) {
            context->SetNamespaceMapValue(uri, GetUniquePrefix(*map));
            declare = true;
        }
        const std::string& prefix = context->GetNamespaceMapValue(uri);
        Put(prefix);
        Put(':');
        Put(localName);
        if (declare) {
            Put(" xmlns:");
            Put(prefix);
            Put("=\"");
            Put(uri);
            Put('"');
        }
    }

    if (isDocumentElement) {
        if (!m_defaultNamespace.empty()) {
            Put(" xmlns=\"");
            Put(m_defaultNamespace);
            Put('"');
        }
        const size_t xmlNamespaceLength = strlen(XML_NAMESPACE);
        for (const auto& entry : m_namespaces) {
            if (entry.first.compare(0, xmlNamespaceLength, XML_NAMESPACE) == 0)
                continue;
            Put(" xmlns:");
            Put(entry.second);
            Put("=\"");
            Put(entry.first);
            Put('"');
        }
    }

    FlushIfFull();
    PushContext(context.release());
}

void CXmlTextWriter::WriteString(const std::string& text, ItemType /*type*/, bool isDefaultValue) {
    if (text.empty())
        return;
    if (isDefaultValue && !m_writeDefaultElementValues)
        return;
    if (m_pContext == nullptr)
        throw CQzException(kMsgNoElementForText);
    if (m_pContext->IsStartTagOpen()) {
        m_pContext->CloseStartTag();
        Put('>');
    }
    // Text read with its CDATA markers kept goes back out as it came in.
    if (text.compare(0, kCDataMarkerLength, kCDataMarker) == 0)
        Put(text);
    else
        EscapeInto(text.c_str(), false);
    FlushIfFull();
}

void CXmlTextWriter::WriteEndElement() {
    CXmlWriterContext* context = m_pContext;
    if (context == nullptr) {
        Drain();
        throw CQzException(kMsgNoOpenElement);
    }
    if (context->IsStartTagOpen()) {
        context->CloseStartTag();
        Put("/>");
    } else {
        // An element with text alone gets no indent, so "<a>text</a>" stays on one line.
        if (m_format && context->GetChildCount() != 0)
            WriteIndent(context->GetDepth());
        Put("</");
        const std::string& uri = context->GetNamespaceURI();
        if (!uri.empty() && uri != context->GetDefaultNamespace()) {
            Put(context->GetNamespaceMapValue(uri));
            Put(':');
        }
        Put(context->GetLocalName());
        Put('>');
    }
    if (m_format)
        WriteLineEnd();
    FlushIfFull();
    PopContext();
}

// ---------------------------------------------------------------------------
// Attributes

void CXmlTextWriter::ThrowAttributesAfterContent() {
    // Text written before the failure stays in the stream.
    Drain();
    throw CQzException(kMsgAttributesBeforeElements);
}

void CXmlTextWriter::WriteAttributeString(const std::string& localName, const std::string& uri,
                                          const std::string& value, ItemType /*type*/) {
    CXmlWriterContext* context = m_pContext;
    if (context == nullptr || !context->IsStartTagOpen())
        ThrowAttributesAfterContent();
    Put(' ');
    if (!uri.empty()) {
        std::map<std::string, std::string>* map = context->GetNamespaceMap();
        if (map->find(uri) == map->end()) {
            const std::string prefix = GetUniquePrefix(*map);
            context->SetNamespaceMapValue(uri, prefix);
            Put("xmlns:");
            Put(prefix);
            Put("=\"");
            Put(uri);
            Put("\" ");
        }
        Put(context->GetNamespaceMapValue(uri));
        Put(':');
    }
    Put(localName);
    Put("=\"");
    EscapeInto(value.c_str(), true);
    Put('"');
    FlushIfFull();
}

void CXmlTextWriter::WriteAttributeType(const std::string& uri, const std::string& typeName, ItemType type) {
    CXmlWriterContext* context = m_pContext;
    if (context == nullptr || !context->IsStartTagOpen())
        ThrowAttributesAfterContent();
    std::string value;
    if (!uri.empty() && uri != context->GetDefaultNamespace()) {
        std::map<std::string, std::string>* map = context->GetNamespaceMap();
        if (map->find(uri) == map->end()) {
            const std::string prefix = GetUniquePrefix(*map);
            context->SetNamespaceMapValue(uri, prefix);
            Put(" xmlns:");
            Put(prefix);
            Put("=\"");
            Put(uri);
            Put("\" ");
        }
        value = context->GetNamespaceMapValue(uri);
        value += ':';
        value += typeName;
    } else {
        value = typeName;
    }
    WriteAttributeString("type", kXsiNamespace, value, type);
}

void CXmlTextWriter::WriteAttributeNil() {
    if (m_pContext == nullptr || !m_pContext->IsStartTagOpen())
        ThrowAttributesAfterContent();
    WriteAttributeString("nil", kXsiNamespace, "true", ItemBoolean);
}

// ---------------------------------------------------------------------------
// Escaping and layout

void CXmlTextWriter::PadAndAppend(const char* text, bool isAttribute) {
    EscapeInto(text, isAttribute);
    Drain();
}

inline void CXmlTextWriter::EscapeInto(const char* text, bool isAttribute) {
    const unsigned char stopMask = isAttribute ? kStopInAttribute : kStopInText;
    const char* run = text;
    const char* p = text;
    for (;;) {
        // Scan a run of bytes that pass unchanged; it is copied whole.
        while ((kEscape.stop[static_cast<unsigned char>(*p)] & stopMask) == 0)
            ++p;
        if (*p == '\0')
            break;
        Put(run, static_cast<size_t>(p - run));
        switch (*p) {
        case '\n':
            if (isAttribute) {
                Put("&#xA;", 5);
            } else if (m_eolType == EOLCrLf) {
                Put("\r\n", 2);
            } else if (m_eolType == EOLLf) {
                Put('\n');
            } else {
                Drain();
                throw CQzException(kMsgInvalidEOLType);
            }
            break;
        case '"':
            Put("&quot;", 6);
            break;
        case '&':
            Put("&amp;", 5);
            break;
        case '<':
            Put("&lt;", 4);
            break;
        case '>':
            Put("&gt;", 4);
            break;
        default: // '\r' is dropped
            break;
        }
        run = ++p;
    }
    PutTerminated(run, static_cast<size_t>(p - run));
}

inline void CXmlTextWriter::WriteLineEnd() {
    PutTerminated(m_eolChars.c_str(), m_eolChars.size());
}

inline void CXmlTextWriter::WriteIndent(int depth) {
    if (depth <= 0 || m_indentChars.empty())
        return;
    const size_t needed = static_cast<size_t>(depth) * m_indentChars.size();
    if (m_indentCache.size() < needed) {
        // Grow by doubling, so that a deep document rebuilds the cache only a few times.
        size_t levels = m_indentCache.size() / m_indentChars.size();
        if (levels < 16)
            levels = 16;
        while (levels * m_indentChars.size() < needed)
            levels *= 2;
        m_indentCache.clear();
        m_indentCache.reserve(levels * m_indentChars.size());
        for (size_t i = 0; i < levels; ++i)
            m_indentCache += m_indentChars;
    }
    // A suffix of the cache is a NUL-terminated run of exactly `depth` levels.
    PutTerminated(m_indentCache.c_str() + (m_indentCache.size() - needed), needed);
}

inline void CXmlTextWriter::FlushIfFull() {
    Drain();
    if (m_pStream->GetLength() >= kFlushThreshold)
        m_pStream->Flush();
}

// ---------------------------------------------------------------------------
// Staging
//
//   m_stage: [ text staged by the current operation | free ... ]  m_staged <= kStageCapacity
//
// Every public operation ends with Drain, so between operations the stream holds all
// text and the flush rule sees the true length.

void CXmlTextWriter::Drain() {
    if (m_staged == 0)
        return;
    m_stage[m_staged] = '\0';
    m_staged = 0;
    m_pStream->Append(static_cast<const char*>(m_stage));
}

void CXmlTextWriter::PutSlow(const char* text, size_t length) {
    while (length > 0) {
        if (m_staged == kStageCapacity)
            Drain();
        size_t room = kStageCapacity - m_staged;
        size_t n = length < room ? length : room;
        std::memcpy(m_stage + m_staged, text, n);
        m_staged += n;
        text += n;
        length -= n;
    }
}

inline void CXmlTextWriter::PutTerminated(const char* text, size_t length) {
    if (length <= kStageCapacity - m_staged) {
        std::memcpy(m_stage + m_staged, text, length);
        m_staged += length;
        return;
    }
    // Too long to stage: the text ends in a NUL and goes to the stream as it is.
    Drain();
    m_pStream->Append(text);
}

} // namespace QzXmlLib16
