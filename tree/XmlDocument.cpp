// XmlDocument.cpp - the document: loading files, byte streams and text, and the building
// operations through which the readers fill the tree.
#include "tree/XmlDocument.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <cwchar>
#include <memory>
#include <new>
#include <string_view>
#include <sys/stat.h>

#include "foundation/Exceptions.h"
#include "foundation/QzZip.h"
#include "tree/ExpatReader.h"

namespace QzXmlLib16 {

bool ASYNC_FROMXMLFILE = false;

void AsyncFromXmlFile(bool async) {
    ASYNC_FROMXMLFILE = async;
}

long _filelength(FILE* file) {
    long here = std::ftell(file);
    if (here < 0 || std::fseek(file, 0, SEEK_END) != 0)
        return -1;
    long end = std::ftell(file);
    if (end < 0 || std::fseek(file, here, SEEK_SET) != 0)
        return -1;
    return end;
}

namespace {

// Messages
const char kMsgOpenFailed[] = "Failed to open the file [%s].";
const char kMsgSizeFailed[] = "Failed to get the size of the file [%s] Error [%n]";
const char kMsgReadFailed[] = "Failed to read the contents of the file [%s] Error [%n]";
const char kMsgStreamEmpty[] = "XML Stream is empty!";
const char kMsgStringEmpty[] = "XML String is empty!";
const char kMsgNoOpenElement[] = "An element can only be added inside an open element";

// Sizes
const size_t kMaxAppend = static_cast<size_t>(INT_MAX);

inline const char* OrEmpty(const char* text) {
    return text ? text : "";
}

// Files
struct FileCloser {
    void operator()(FILE* file) const { std::fclose(file); }
};
typedef std::unique_ptr<FILE, FileCloser> FilePtr;

// The error number of a failed file operation; a failure that set none (an empty file) gives 0.
[[noreturn]] void ThrowFileError(const char* format, const char* path, int error) {
    throw CQzException(FormatString(format, path, error));
}

} // namespace

// --- Construction and cleanup

CXmlDocument::CXmlDocument()
    : CInstanceMonitor("CXmlDocument"), m_pElementCallback(nullptr),
      m_pContext(&CSerializationContext::m_defaultContext) {
    Init();
}

CXmlDocument::CXmlDocument(const CSerializationContext& context)
    : CInstanceMonitor("CXmlDocument"), m_pElementCallback(nullptr), m_pContext(&context) {
    Init();
}

CXmlDocument::CXmlDocument(ElementCallback callback)
    : CInstanceMonitor("CXmlDocument"), m_pElementCallback(callback),
      m_pContext(&CSerializationContext::m_defaultContext) {
    Init();
}

CXmlDocument::CXmlDocument(ElementCallback callback, const CSerializationContext& context)
    : CInstanceMonitor("CXmlDocument"), m_pElementCallback(callback), m_pContext(&context) {
    Init();
}

CXmlDocument::~CXmlDocument() {
    CXmlDocument::Cleanup();
}

void CXmlDocument::Init() {
    delete[] m_pBuffer;
    m_pBuffer = nullptr;
    m_bufferSize = 0;
    delete m_pDocumentElement;
    m_pDocumentElement = nullptr;
    m_openElements.clear();
    m_schemaType = m_pContext->GetSchemaType();
}

void CXmlDocument::Cleanup() {
    delete[] m_pBuffer;
    m_pBuffer = nullptr;
    m_bufferSize = 0;
    delete m_pDocumentElement;
    m_pDocumentElement = nullptr;
    m_openElements.clear();
    m_namespaceMap.clear();
    m_sharedURIs.clear();
    m_pLastSharedURI = nullptr;
    m_elementPool.Release();
}

void CXmlDocument::TakeBuffer(unsigned char* buffer, unsigned long size) {
    delete[] m_pBuffer;
    m_pBuffer = buffer;
    m_bufferSize = size;
}

// --- Loading

void CXmlDocument::Load(const char* path) {
    Cleanup();
    const char* name = OrEmpty(path);
    FilePtr file(std::fopen(name, "rt"));
    if (!file)
        throw CQzException(FormatString(kMsgOpenFailed, name));

    // A directory opens for reading on Linux, but its "size" is no byte count.
    struct stat info;
    if (fstat(fileno(file.get()), &info) == 0 && S_ISDIR(info.st_mode)) {
        file.reset();
        ThrowFileError(kMsgReadFailed, name, EISDIR);
    }

    errno = 0;
    long size = _filelength(file.get());
    if (size < 0) {
        int error = errno;
        file.reset();
        ThrowFileError(kMsgSizeFailed, name, error);
    }

    std::unique_ptr<unsigned char[]> buffer;
    try {
        buffer.reset(new unsigned char[size > 0 ? static_cast<size_t>(size) : 1]);
    } catch (const std::bad_alloc&) {
        file.reset();
        ThrowFileError(kMsgReadFailed, name, ENOMEM);
    }
    errno = 0;
    size_t read = size > 0 ? std::fread(buffer.get(), 1, static_cast<size_t>(size), file.get()) : 0;
    int error = errno;
    file.reset();
    if (read == 0 || read != static_cast<size_t>(size))
        ThrowFileError(kMsgReadFailed, name, error);

    TakeBuffer(buffer.release(), static_cast<unsigned long>(size));
    Parse();
}

void CXmlDocument::LoadXmlStream(unsigned char* bytes, unsigned long size) {
    Cleanup();
    if (size == 0 || bytes == nullptr)
        throw CQzException(kMsgStreamEmpty);
    unsigned char* copy = new unsigned char[size];
    std::memcpy(copy, bytes, size);
    TakeBuffer(copy, size);
    Parse();
}

void CXmlDocument::LoadXml(const char* text) {
    Cleanup();
    size_t length = text ? std::strlen(text) : 0;
    if (length == 0)
        throw CQzException(kMsgStringEmpty);
    unsigned char* copy = new unsigned char[length];
    std::memcpy(copy, text, length);
    TakeBuffer(copy, static_cast<unsigned long>(length));
    ParseText();
}

// UTF-16LE behind its byte-order mark; each character keeps its low 16 bits only.
void CXmlDocument::LoadXml(const wchar_t* text) {
    Cleanup();
    size_t length = text ? std::wcslen(text) : 0;
    if (length == 0)
        throw CQzException(kMsgStringEmpty);
    unsigned long size = static_cast<unsigned long>(2 * length + 2);
    unsigned char* bytes = new unsigned char[size];
    bytes[0] = 0xFF;
    bytes[1] = 0xFE;
    for (size_t i = 0; i < length; ++i) {
        uint32_t unit = static_cast<uint32_t>(text[i]);
        bytes[2 + 2 * i] = static_cast<unsigned char>(unit & 0xFF);
        bytes[3 + 2 * i] = static_cast<unsigned char>((unit >> 8) & 0xFF);
    }
    TakeBuffer(bytes, size);
    ParseText();
}

void CXmlDocument::Parse() {
    // Compressed input (gzip or zlib) is inflated first; other bytes stay as they are.
    CQzZip::Decompress(&m_pBuffer, &m_bufferSize);
    ParseText();
}

void CXmlDocument::ParseText() {
    CExpatReader reader(*this);
    reader.CreateParser();
    reader.Parse(true);
}

// --- Namespace map

std::string CXmlDocument::LookupNamespaceFromAlias(const char* alias) const {
    auto it = m_namespaceMap.find(OrEmpty(alias));
    return it == m_namespaceMap.end() ? std::string() : it->second;
}

std::string CXmlDocument::LookupAliasFromNamespace(const char* uri) const {
    const char* wanted = OrEmpty(uri);
    for (const auto& entry : m_namespaceMap) {
        if (entry.second == wanted)
            return entry.first;
    }
    return std::string();
}

void CXmlDocument::AddNamespace(const std::string& prefix, const std::string& uri) {
    m_namespaceMap[prefix] = uri;
}

// --- Building

CXmlElement* CXmlDocument::OpenElement(const char* uri, size_t uriLength, const char* localName,
                                       size_t localLength) {
    CXmlElement* element;
    if (!m_pDocumentElement) {
        element = new (m_elementPool) CXmlElement(this, nullptr);
        m_pDocumentElement = element;
    } else {
        if (m_openElements.empty())
            throw CQzException(kMsgNoOpenElement);
        CXmlElement* parent = m_openElements.back();
        element = new (m_elementPool) CXmlElement(this, parent);
        parent->AppendChild(element);
    }
    if (uriLength > 0)
        element->m_pNamespaceURI = ShareNamespaceURI(uri, uriLength);
    element->m_localName.assign(localName, localLength);
    m_openElements.push_back(element);
    return element;
}

CXmlElement* CXmlDocument::AddDocElement(const char* uri, const char* localName) {
    // A second document element replaces the first rather than leaking it.
    delete m_pDocumentElement;
    m_pDocumentElement = nullptr;
    m_openElements.clear();
    const char* u = OrEmpty(uri);
    const char* n = OrEmpty(localName);
    return OpenElement(u, std::strlen(u), n, std::strlen(n));
}

CXmlElement* CXmlDocument::AddChildElement(const char* uri, const char* localName) {
    const char* u = OrEmpty(uri);
    const char* n = OrEmpty(localName);
    return OpenElement(u, std::strlen(u), n, std::strlen(n));
}

// The stack is popped before the callback runs; for the document element the new top is empty
// and the answer is not acted on.
void CXmlDocument::EndElement() {
    if (m_openElements.empty())
        return;
    CXmlElement* element = m_openElements.back();
    m_openElements.pop_back();
    if (m_pElementCallback && m_pElementCallback(element) && !m_openElements.empty())
        delete m_openElements.back()->UnlinkLastChild();
}

void CXmlDocument::AddElementAttribute(CXmlElement* element, const std::string& localName,
                                       const std::string& value, const std::string& uri) {
    if (element)
        element->AddAttribute(localName, value, uri);
}

void CXmlDocument::AddReaderAttribute(CXmlElement* element, const char* uri, size_t uriLength,
                                      const char* localName, size_t localLength, std::string& value) {
    static const std::string kEmpty;
    std::unique_ptr<CXmlAttribute> attribute(new CXmlAttribute(element, kEmpty, kEmpty, kEmpty));
    attribute->m_localName.assign(localName, localLength);
    attribute->m_value.swap(value);
    if (uriLength > 0)
        attribute->m_pNamespaceURI = ShareNamespaceURI(uri, uriLength);
    element->Attributes().push_back(attribute.get());
    attribute.release();
}

const std::string* CXmlDocument::ShareNamespaceURI(const char* uri, size_t length) {
    if (m_pLastSharedURI && m_pLastSharedURI->size() == length &&
        std::memcmp(m_pLastSharedURI->data(), uri, length) == 0)
        return m_pLastSharedURI;
    std::string_view key(uri, length);
    auto it = m_sharedURIs.find(key);
    if (it == m_sharedURIs.end())
        it = m_sharedURIs.emplace(key).first;
    m_pLastSharedURI = &*it;
    return m_pLastSharedURI;
}

void CXmlDocument::AppendTextExcludingCR(CXmlElement* element, const char* text, unsigned long length) {
    if (!element || !text)
        return;
    const char* end = text + strnlen(text, length);
    while (text < end) {
        const char* cr = static_cast<const char*>(std::memchr(text, '\r', static_cast<size_t>(end - text)));
        const char* runEnd = cr ? cr : end;
        // AppendText counts in int: a run beyond its range goes in several pieces.
        while (runEnd > text) {
            size_t piece = std::min(static_cast<size_t>(runEnd - text), kMaxAppend);
            element->AppendText(text, static_cast<int>(piece));
            text += piece;
        }
        text = cr ? cr + 1 : end;
    }
}

void CXmlDocument::AppendTextExcludingCR(CXmlElement* element, const char* text) {
    AppendTextExcludingCR(element, text, static_cast<unsigned long>(-1));
}

} // namespace QzXmlLib16
