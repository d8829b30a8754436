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

// Collects escaped output on the stack and hands it to the stream in NUL-terminated
// pieces, so that escaping costs no call per character and no allocation.
class CStagingBuffer {
public:
    explicit CStagingBuffer(CTextStream& stream) : m_stream(stream), m_used(0) {}
    void Put(const char* text, size_t length) {
        while (length > 0) {
            size_t room = kCapacity - m_used;
            size_t n = length < room ? length : room;
            memcpy(m_buffer + m_used, text, n);
            m_used += n;
            text += n;
            length -= n;
            if (m_used == kCapacity)
                Flush();
        }
    }
    void Flush() {
        if (m_used == 0)
            return;
        m_buffer[m_used] = '\0';
        m_stream.Append(static_cast<const char*>(m_buffer));
        m_used = 0;
    }

private:
    static const size_t kCapacity = 1024;
    CTextStream& m_stream;
    size_t m_used;
    char m_buffer[kCapacity + 1];
};

} // namespace

CXmlTextWriter::CXmlTextWriter(CTextStream& stream)
    : CXmlWriter("CXmlTextWriter"), m_writeDefaultElementValues(false), m_indentChars("\t"), m_eolChars("\n"),
      m_eolType(EOLLf), m_format(true), m_pStream(&stream) {}

CXmlTextWriter::~CXmlTextWriter() {}

void CXmlTextWriter::Open() {
    CXmlWriter::Open();
    m_pStream->Open();
}

void CXmlTextWriter::Close() {
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
    m_pStream->Append("<?xml version=\"1.0\"");
    switch (m_pStream->GetEncoding()) {
    case EncodingUTF8:
        m_pStream->Append(" encoding=\"UTF-8\"");
        break;
    case EncodingUTF16:
        m_pStream->Append(" encoding=\"UTF-16\"");
        break;
    default:
        break;
    }
    m_pStream->Append("?>");
    WriteLineEnd();
    FlushIfFull();
}

void CXmlTextWriter::WriteHeaderDirective(const std::string& text) {
    if (m_pContext != nullptr)
        throw CQzException(kMsgHeaderDirective);
    m_pStream->Append(text);
    WriteLineEnd();
    FlushIfFull();
}

void CXmlTextWriter::WriteRawElement(const std::string& text) {
    m_pStream->Append(text);
    if (m_format)
        WriteLineEnd();
}

void CXmlTextWriter::WriteComment(const std::string& text) {
    m_pStream->Append("<!--");
    PadAndAppend(text.c_str(), false);
    m_pStream->Append("-->");
    WriteLineEnd();
    FlushIfFull();
}

void CXmlTextWriter::WritePI(const std::string& text) {
    m_pStream->Append(text);
    WriteLineEnd();
    WriteLineEnd();
    FlushIfFull();
}

void CXmlTextWriter::WriteInlineSchema(const std::string& schema) {
    m_pStream->Append(' ');
    WriteLineEnd();
    m_pStream->Append(schema);
    WriteLineEnd();
    FlushIfFull();
}

// ---------------------------------------------------------------------------
// Elements

void CXmlTextWriter::CloseParentElm() {
    if (m_pContext == nullptr)
        return;
    m_pContext->IncrementChildCount();
    if (m_pContext->IsStartTagOpen()) {
        m_pContext->CloseStartTag();
        m_pStream->Append('>');
        if (m_format)
            WriteLineEnd();
    }
}

void CXmlTextWriter::WriteStartElement(const std::string& localName, const std::string& uri) {
    CloseParentElm();
    const bool isDocumentElement = m_pContext == nullptr;
    std::unique_ptr<CXmlWriterContext> context(NewContext(localName, uri));

    if (m_format)
        WriteIndent(context->GetDepth());
    m_pStream->Append('<');
    if (uri.empty() || uri == context->GetDefaultNamespace()) {
        m_pStream->Append(localName);
    } else {
        bool declare = false;
        std::map<std::string, std::string>* map = context->GetNamespaceMap();
        if (map->find(uri) == map->end()) {
            context->SetNamespaceMapValue(uri, GetUniquePrefix(*map));
            declare = true;
        }
        const std::string& prefix = context->GetNamespaceMapValue(uri);
        m_pStream->Append(prefix);
        m_pStream->Append(':');
        m_pStream->Append(localName);
        if (declare) {
            m_pStream->Append(" xmlns:");
            m_pStream->Append(prefix);
            m_pStream->Append("=\"");
            m_pStream->Append(uri);
            m_pStream->Append('"');
        }
    }

    if (isDocumentElement) {
        if (!m_defaultNamespace.empty()) {
            m_pStream->Append(" xmlns=\"");
            m_pStream->Append(m_defaultNamespace);
            m_pStream->Append('"');
        }
        const size_t xmlNamespaceLength = strlen(XML_NAMESPACE);
        for (const auto& entry : m_namespaces) {
            if (entry.first.compare(0, xmlNamespaceLength, XML_NAMESPACE) == 0)
                continue;
            m_pStream->Append(" xmlns:");
            m_pStream->Append(entry.second);
            m_pStream->Append("=\"");
            m_pStream->Append(entry.first);
            m_pStream->Append('"');
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
    if (m_pContext != nullptr && m_pContext->IsStartTagOpen()) {
        m_pContext->CloseStartTag();
        m_pStream->Append('>');
    }
    // Text read with its CDATA markers kept goes back out as it came in.
    if (text.compare(0, kCDataMarkerLength, kCDataMarker) == 0)
        m_pStream->Append(text);
    else
        PadAndAppend(text.c_str(), false);
    FlushIfFull();
}

void CXmlTextWriter::WriteEndElement() {
    CXmlWriterContext* context = m_pContext;
    if (context == nullptr)
        throw CQzException(kMsgNoOpenElement);
    if (context->IsStartTagOpen()) {
        context->CloseStartTag();
        m_pStream->Append("/>");
    } else {
        // An element with text alone gets no indent, so "<a>text</a>" stays on one line.
        if (m_format && context->GetChildCount() != 0)
            WriteIndent(context->GetDepth());
        m_pStream->Append("</");
        const std::string& uri = context->GetNamespaceURI();
        if (!uri.empty() && uri != context->GetDefaultNamespace()) {
            m_pStream->Append(context->GetNamespaceMapValue(uri));
            m_pStream->Append(':');
        }
        m_pStream->Append(context->GetLocalName());
        m_pStream->Append('>');
    }
    if (m_format)
        WriteLineEnd();
    FlushIfFull();
    PopContext();
}

// ---------------------------------------------------------------------------
// Attributes

void CXmlTextWriter::ThrowAttributesAfterContent() const {
    throw CQzException(kMsgAttributesBeforeElements);
}

void CXmlTextWriter::WriteAttributeString(const std::string& localName, const std::string& uri,
                                          const std::string& value, ItemType /*type*/) {
    CXmlWriterContext* context = m_pContext;
    if (context == nullptr || !context->IsStartTagOpen())
        ThrowAttributesAfterContent();
    m_pStream->Append(' ');
    if (!uri.empty()) {
        std::map<std::string, std::string>* map = context->GetNamespaceMap();
        if (map->find(uri) == map->end()) {
            const std::string prefix = GetUniquePrefix(*map);
            context->SetNamespaceMapValue(uri, prefix);
            m_pStream->Append("xmlns:");
            m_pStream->Append(prefix);
            m_pStream->Append("=\"");
            m_pStream->Append(uri);
            m_pStream->Append("\" ");
        }
        m_pStream->Append(context->GetNamespaceMapValue(uri));
        m_pStream->Append(':');
    }
    m_pStream->Append(localName);
    m_pStream->Append("=\"");
    PadAndAppend(value.c_str(), true);
    m_pStream->Append('"');
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
            m_pStream->Append(" xmlns:");
            m_pStream->Append(prefix);
            m_pStream->Append("=\"");
            m_pStream->Append(uri);
            m_pStream->Append("\" ");
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
    const unsigned char stopMask = isAttribute ? kStopInAttribute : kStopInText;
    const char* p = text;
    while ((kEscape.stop[static_cast<unsigned char>(*p)] & stopMask) == 0)
        ++p;
    // Fast path: nothing to escape, the text goes to the stream in one piece.
    if (*p == '\0') {
        if (p != text)
            m_pStream->Append(text);
        return;
    }

    CStagingBuffer staging(*m_pStream);
    const char* run = text;
    for (;;) {
        staging.Put(run, static_cast<size_t>(p - run));
        switch (*p) {
        case '\n':
            if (isAttribute) {
                staging.Put("&#xA;", 5);
            } else if (m_eolType == EOLCrLf) {
                staging.Put("\r\n", 2);
            } else if (m_eolType == EOLLf) {
                staging.Put("\n", 1);
            } else {
                staging.Flush();
                throw CQzException(kMsgInvalidEOLType);
            }
            break;
        case '"':
            staging.Put("&quot;", 6);
            break;
        case '&':
            staging.Put("&amp;", 5);
            break;
        case '<':
            staging.Put("&lt;", 4);
            break;
        case '>':
            staging.Put("&gt;", 4);
            break;
        default: // '\r' is dropped
            break;
        }
        run = p + 1;
        p = run;
        while ((kEscape.stop[static_cast<unsigned char>(*p)] & stopMask) == 0)
            ++p;
        if (*p == '\0')
            break;
    }
    // The last run ends at the NUL and can go to the stream without staging.
    staging.Flush();
    if (p != run)
        m_pStream->Append(run);
}

void CXmlTextWriter::WriteLineEnd() {
    m_pStream->Append(m_eolChars);
}

void CXmlTextWriter::WriteIndent(int depth) {
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
    m_pStream->Append(m_indentCache.c_str() + (m_indentCache.size() - needed));
}

void CXmlTextWriter::FlushIfFull() {
    if (m_pStream->GetLength() >= kFlushThreshold)
        m_pStream->Flush();
}

} // namespace QzXmlLib16
