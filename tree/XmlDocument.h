// XmlDocument.h - CXmlDocument, owner of the light tree that every input ends in, and the
// load operations for XML text.
//
// Nodes are tree/XmlElement.h and tree/XmlAttribute.h; the expat adapter is tree/ExpatReader.h.
// All names and text in the tree are in the local code page (foundation/Encoder.h).
#ifndef QZXML_TREE_XMLDOCUMENT_H
#define QZXML_TREE_XMLDOCUMENT_H

#include <cstdio>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "binding/SerializationContext.h"
#include "foundation/InstanceMonitor.h"
#include "tree/XmlAttribute.h"
#include "tree/XmlElement.h"
#include "tree/XmlElementPool.h"

namespace QzXmlLib16 {

// Process-wide flag set by AsyncFromXmlFile; nothing in the library reads it.
extern bool ASYNC_FROMXMLFILE;

// Stores its argument in ASYNC_FROMXMLFILE.
// Note: kept as a setter without effect; files are always read synchronously.
void AsyncFromXmlFile(bool async);

// The size of an open file: ftell, fseek to the end, ftell, fseek back to where it was. Returns
// the end position, or -1 if any of these fails.
long _filelength(FILE* file);

// Owns the tree and the raw input bytes. A document can be loaded many times; each Load* starts
// by cleaning up what was loaded before, even if the new load then fails.
//
// Tree building protocol (called by CExpatReader and the Fast Infoset reader): AddDocElement for
// the first element, then for each further element AddChildElement, its attributes through
// AddElementAttribute, its text (in as many pieces as the reader likes) through
// AppendTextExcludingCR, and EndElement when it closes. Strings are copied; the reader may reuse
// its buffers as soon as a call returns. An element callback stops a load by throwing: the
// exception comes out of Load* unchanged and the partial tree stays until the next Cleanup.
class CXmlDocument : public CInstanceMonitor {
public:
    // Called with each element as it ends; true asks the document to drop the element (which
    // must then not be used any more). Children end before their parents.
    typedef bool (*ElementCallback)(CXmlElement* element);

    // The context is kept by reference, not copied: it must outlive the document. Without one
    // CSerializationContext::m_defaultContext is used.
    CXmlDocument();
    explicit CXmlDocument(const CSerializationContext& context);
    // With an element callback, for walking very large documents in bounded memory: answer
    // true for each element that has been dealt with and the tree stays small.
    explicit CXmlDocument(ElementCallback callback);
    CXmlDocument(ElementCallback callback, const CSerializationContext& context);
    virtual ~CXmlDocument();

    CXmlDocument(const CXmlDocument&) = delete;
    CXmlDocument& operator=(const CXmlDocument&) = delete;

    // Buffer, size and document element to zero, schema type from the context. Whatever was
    // loaded is released first, so a call on a loaded document leaks nothing; the namespace map
    // stays.
    void Init();
    // Destroys the tree, releases the buffer, clears the open-element stack and the namespace
    // map. The document can then be loaded again.
    virtual void Cleanup();

    // The root of the tree, or null while nothing is loaded. Owned by the document.
    CXmlElement* GetDocumentElement() const { return m_pDocumentElement; }

    // Loads a file. Throws CQzException "Failed to open the file [%s].", "Failed to get the size
    // of the file [%s] Error [%n]", "Failed to read the contents of the file [%s] Error [%n]"
    // (an empty file, a directory and a short read included; %n is errno) or a parse error.
    void Load(const char* path);
    // Loads a copy of size bytes. Throws "XML Stream is empty!" for size 0 (or null bytes) and
    // the parse errors.
    void LoadXmlStream(unsigned char* bytes, unsigned long size);
    // Parses the bytes of the text as they are. Throws "XML String is empty!" for an empty or
    // null text, and the parse errors.
    // Note: the parser takes the encoding from a byte-order mark or the declaration, UTF-8 by
    // default; a narrow text is never taken to be in the local code page.
    void LoadXml(const char* text);
    // Parses wide text as UTF-16 behind a 0xFF 0xFE mark. Throws "XML String is empty!" for an
    // empty or null text, and the parse errors.
    // Note: each character gives its low 16 bits only, without surrogate handling, so a
    // character above U+FFFF arrives as another character.
    void LoadXml(const wchar_t* text);

    // The URI the document last bound to the prefix ("" for the default namespace); "" when the
    // prefix is unknown.
    std::string LookupNamespaceFromAlias(const char* alias) const;
    // The smallest prefix bound to the URI ("" wins over every other); "" when none is.
    std::string LookupAliasFromNamespace(const char* uri) const;
    // The whole namespace map: prefix as written -> URI.
    // Note: the map does not follow scoping. The last declaration of a prefix anywhere in the
    // document stands for the whole document, and xmlns="" maps "" to the empty URI.
    const std::map<std::string, std::string>& GetNamespaceMap() const { return m_namespaceMap; }

    // --- Building operations (see the protocol above). Strings are in the local code page.

    // Makes the document element and opens it. Owned by the document.
    CXmlElement* AddDocElement(const char* uri, const char* localName);
    // Makes a child of the innermost open element and opens it. Owned by its parent.
    CXmlElement* AddChildElement(const char* uri, const char* localName);
    // Closes the innermost open element and runs the element callback on it.
    // Note: the callback's answer for the document element is ignored; it stays in place.
    void EndElement();
    void AddElementAttribute(CXmlElement* element, const std::string& localName, const std::string& value,
                             const std::string& uri);
    // Appends the text up to length bytes or its first NUL, dropping every carriage return.
    void AppendTextExcludingCR(CXmlElement* element, const char* text, unsigned long length);
    void AppendTextExcludingCR(CXmlElement* element, const char* text);
    // Records a prefix binding in the namespace map, inserting or overwriting.
    void AddNamespace(const std::string& prefix, const std::string& uri);
    // The innermost open element while a reader runs, or null.
    CXmlElement* GetOpenElement() const { return m_openElements.empty() ? nullptr : m_openElements.back(); }

    // The raw input bytes of the last load; owned by the document, valid until Cleanup.
    const unsigned char* GetBuffer() const { return m_pBuffer; }
    unsigned long GetBufferSize() const { return m_bufferSize; }
    SchemaType GetSchemaType() const { return m_schemaType; }
    const CSerializationContext& GetContext() const { return *m_pContext; }

protected:
    // Parses the buffer of a file or stream load: the single place where loaded bytes are
    // examined before the XML reader runs.
    void Parse();
    // Runs the XML reader over the buffer.
    void ParseText();

private:
    friend class CExpatReader;

    // Makes and opens an element from names that need not be NUL-terminated.
    CXmlElement* OpenElement(const char* uri, size_t uriLength, const char* localName, size_t localLength);
    // Appends an attribute from a name that need not be NUL-terminated; the value is taken over.
    void AddReaderAttribute(CXmlElement* element, const char* uri, size_t uriLength, const char* localName,
                            size_t localLength, std::string& value);
    // The document's one copy of a non-empty namespace URI, made on first use. The elements and
    // attributes that the document builds point at it instead of holding a copy each, which
    // spares an allocation per node where a URI is longer than a string's inline storage. The
    // copies live until Cleanup; RemoveLastChildElement gives a removed subtree its own.
    const std::string* ShareNamespaceURI(const char* uri, size_t length);
    // Takes ownership of a new[] buffer of size bytes.
    void TakeBuffer(unsigned char* buffer, unsigned long size);

    CXmlElement* m_pDocumentElement = nullptr;
    std::vector<CXmlElement*> m_openElements; // innermost last; not owning
    std::map<std::string, std::string> m_namespaceMap;
    unsigned char* m_pBuffer = nullptr;
    unsigned long m_bufferSize = 0;
    SchemaType m_schemaType = SchemaTypeDefault;
    ElementCallback m_pElementCallback;
    const CSerializationContext* m_pContext;
    // Shared namespace URIs (see ShareNamespaceURI); std::less<> finds them without a copy.
    std::set<std::string, std::less<>> m_sharedURIs;
    const std::string* m_pLastSharedURI = nullptr; // the last one asked for: the usual answer
    // Storage of the elements that the building operations make; let go of in Cleanup, after
    // the tree.
    CXmlElementPool m_elementPool;
};

} // namespace QzXmlLib16

#endif
