// ExpatReader.h - CExpatReader, the adapter that drives expat and turns its callbacks into the
// building operations of CXmlDocument (tree/XmlDocument.h).
//
// A reader lives for one parse. Applications use CXmlDocument::Load* instead.
#ifndef QZXML_TREE_EXPATREADER_H
#define QZXML_TREE_EXPATREADER_H

#include <cstddef>
#include <exception>
#include <string>

#include "foundation/InstanceMonitor.h"

struct XML_ParserStruct;

namespace QzXmlLib16 {

class CXmlDocument;

// Parses the document's buffer into its tree. Names and text are converted from UTF-8 to the
// local code page; ASCII passes through without conversion. A failure inside a handler (an
// allocation, or an exception from the element callback) stops the parser and is rethrown
// from Parse once expat has returned.
class CExpatReader : public CInstanceMonitor {
public:
    explicit CExpatReader(CXmlDocument& document);
    virtual ~CExpatReader();

    CExpatReader(const CExpatReader&) = delete;
    CExpatReader& operator=(const CExpatReader&) = delete;

    // Makes the scratch buffer and the parser: without namespace processing for
    // SchemaTypeNoNamespaces, otherwise with "|" between URI and local name. CDATA markers are
    // reported only when the context does not strip them.
    void CreateParser();
    // Parses the whole buffer of the document. Throws CQzException "%s at line %d" with expat's
    // text and line when the document is not well-formed. The parser is freed when isFinal is
    // true or on failure.
    void Parse(bool isFinal);
    // Releases the scratch buffer.
    void Cleanup();

    // expat handlers; the first argument is the reader.
    static void FnStartElement(void* reader, const char* name, const char** atts);
    static void FnEndElement(void* reader, const char* name);
    static void FnStartNamespace(void* reader, const char* prefix, const char* uri);
    static void FnEndNamespace(void* reader, const char* prefix);
    static void FnText(void* reader, const char* text, int length);
    // Note: a CDATA section keeps its markers: "<![CDATA[" and "]]>" go into the element's text
    // around the content, for the text writer to recognise on output. These two handlers are
    // set only when the context does not strip CDATA.
    static void FnStartCDATA(void* reader);
    static void FnEndCDATA(void* reader);

private:
    void StartElement(const char* name, const char** atts);
    void StartNamespace(const char* prefix, const char* uri);
    void Text(const char* text, int length);
    std::string ToLocal(const char* text, size_t length);
    // Keeps the exception of a handler and stops the parser; expat is never unwound.
    void Fail();
    void FreeParser();

    CXmlDocument* m_pDocument;
    char* m_pScratch;            // new[] 1024 bytes: wide half, then narrow half
    unsigned long m_scratchSize; // 1024
    XML_ParserStruct* m_parser;
    std::exception_ptr m_pending; // failure of a handler, rethrown by Parse
};

} // namespace QzXmlLib16

#endif
