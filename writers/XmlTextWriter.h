// XmlTextWriter.h - CXmlTextWriter, the CXmlWriter (writers/XmlWriter.h) that writes XML
// text into a CTextStream (foundation/TextStream.h), and the AsyncToXmlFile switch.
// The public road to it is ToXml, ToXmlStream and ToXmlFile of CXmlObjectBase
// (binding/XmlObjectBase.h).
#ifndef QZXML_WRITERS_XMLTEXTWRITER_H
#define QZXML_WRITERS_XMLTEXTWRITER_H

#include <cstddef>
#include <string>

#include "foundation/StreamTypes.h"
#include "writers/XmlWriter.h"

namespace QzXmlLib16 {

class CTextStream;

// Process-wide switch, false at load: when true, ToXmlFile without compression writes
// straight into the file while serialising instead of building the document in memory
// first. A failure part-way then leaves a partial file. Set it before any thread writes.
void AsyncToXmlFile(bool async);

// Writes XML text in the local code page; the stream encodes it at the end. The writer
// checks nothing of names or nesting: the library calls it in the right order.
//
// Layout with format on (the default): each start tag on its own line, indented by the
// indent characters once per depth level; an element with text alone stays on one line;
// an element without content comes out as "<a/>". Every write operation except
// WriteRawElement ends by flushing the stream once it holds 4096 characters or more.
//
// Each operation stages its text in a small buffer of the writer and hands it to the
// stream in one piece before it returns (also when it throws), so between operations the
// stream holds everything written and the flush rule sees the true length.
class CXmlTextWriter : public CXmlWriter {
public:
    // Borrows `stream`, which must outlive the writer. Format on, EOL type 1 ("\n"),
    // indent one tab, default element values not written.
    explicit CXmlTextWriter(CTextStream& stream);
    ~CXmlTextWriter() override;

    // Base Open, then the stream's Open (which empties a memory stream).
    void Open() override;
    // Note: closes the stream first and only then checks that no element is open, so a
    // file stream is complete on disk even when "An Element has not been closed." is raised.
    void Close() override;

    bool GetFormat() const { return m_format; }
    // True: indentation and a line end behind every tag. False: one line, except that the
    // XML declaration, comments, processing instructions and text line feeds keep theirs.
    void SetFormat(bool format) { m_format = format; }
    EOLType GetEOLType() const { return m_eolType; }
    // 0 gives "\r\n", 1 gives "\n". Any other value throws CQzException "Invalid EOL type."
    // and changes nothing.
    void SetEOLType(EOLType type);
    std::string GetIndentChars() const { return m_indentChars; }
    // Written once per depth level; null means "". Not checked here (the context checks).
    void SetIndentChars(const char* chars);
    bool GetWriteDefaultElementValues() const { return m_writeDefaultElementValues; }
    // When false (the default), WriteString with isDefaultValue true writes nothing.
    void SetWriteDefaultElementValues(bool write) { m_writeDefaultElementValues = write; }

    // The XML declaration for the stream's encoding: version 1.0, encoding="UTF-8" for 1,
    // encoding="UTF-16" for 2, none for 0 and 3; then a line end, also with format off.
    void WriteStartDocument();
    // A line of text ahead of the document element, unescaped. Throws CQzException
    // "Headed directives must appear before an Element has been added." inside an element.
    // Note: after the document element has ended it is accepted again.
    void WriteHeaderDirective(const std::string& text);
    // Stored XML inserted unescaped where the stream stands; a line end with format on.
    // Note: no flush check.
    void WriteRawElement(const std::string& text);
    // Counts a child on the open element and ends its start tag (">") if still open.
    // Does nothing outside the document element.
    void CloseParentElm();

    // Note: written where the stream stands and does not end an open start tag; "--" in
    // the text is not refused. Callers write comments between elements at document level.
    void WriteComment(const std::string& text) override;
    // The text unescaped, then two line ends.
    void WritePI(const std::string& text) override;
    // A blank, a line end, the schema unescaped, a line end; inside an open start tag if
    // that is where the stream stands.
    void WriteInlineSchema(const std::string& schema) override;
    // Ends the parent's start tag and opens "<name" with a prefix and declaration for a
    // namespace that is neither the default nor in scope. The document element also
    // declares the writer's default namespace and every mapping added before it.
    void WriteStartElement(const std::string& localName, const std::string& uri) override;
    // Escaped text behind the start tag. Empty text writes nothing (the element may still
    // become "<a/>"). Note: a text that begins with "<![CDATA[" is written unescaped.
    // Throws CQzException "There is no open Element to hold the text." for text that would
    // be written outside the document element.
    void WriteString(const std::string& text, ItemType type, bool isDefaultValue) override;
    // "/>" while the start tag is open, otherwise the end tag. Throws CQzException
    // "There is no open Element to end." outside the document element.
    void WriteEndElement() override;
    // Throws CQzException "Attributes must be added before elements" once the start tag
    // has ended. Note: a namespaced attribute always gets a prefix, also in the default
    // namespace; a new one is declared in front of it.
    void WriteAttributeString(const std::string& localName, const std::string& uri, const std::string& value,
                              ItemType type) override;
    // xsi:type naming `typeName` of namespace `uri` (with a prefix unless `uri` is empty or
    // the default namespace). Throws as WriteAttributeString.
    // Note: a new declaration for `uri` ends in a blank, and the attribute adds its own,
    // so two blanks stand between them.
    void WriteAttributeType(const std::string& uri, const std::string& typeName, ItemType type) override;
    // xsi:nil="true". Throws as WriteAttributeString.
    void WriteAttributeNil() override;

    // Appends `text` up to its NUL, escaped: '&', '<', '>' always; '"' as "&quot;" and a
    // line feed as "&#xA;" in attribute values; a line feed in text by the EOL type;
    // carriage returns dropped. Apostrophes, tabs and bytes >= 128 pass unchanged.
    void PadAndAppend(const char* text, bool isAttribute);

private:
    // Staging of the current operation's text; see the picture in the .cpp.
    static const size_t kStageCapacity = 2048;
    void Put(char c);
    void Put(const char* text, size_t length);
    // `text` is NUL-terminated at `length`, so an overlong piece can skip the staging.
    void PutTerminated(const char* text, size_t length);
    void Put(const char* text);
    void Put(const std::string& text);
    void PutSlow(const char* text, size_t length);
    // Hands the staged text to the stream.
    void Drain();
    // PadAndAppend without the final Drain.
    void EscapeInto(const char* text, bool isAttribute);
    // CloseParentElm without the final Drain.
    void CloseParent();
    void WriteLineEnd();
    // The indent characters `depth` times, from a cached run.
    void WriteIndent(int depth);
    // Drains the staging, then flushes the stream once it holds 4096 characters or more.
    void FlushIfFull();
    [[noreturn]] void ThrowAttributesAfterContent();

    bool m_writeDefaultElementValues;
    std::string m_indentChars;
    std::string m_eolChars;
    EOLType m_eolType;
    bool m_format;
    CTextStream* m_pStream;
    // The indent characters repeated; a suffix of it is the indent of any depth that fits.
    std::string m_indentCache;
    size_t m_staged;
    char m_stage[kStageCapacity + 1];
};

} // namespace QzXmlLib16

#endif
