// SerializationContext.h - CSerializationContext, the settings that travel through every read
// and write, and the SchemaType enumeration.
//
// Every To* and From* operation of CXmlObjectBase (binding/XmlObjectBase.h) takes one by const
// reference; CSerializationContext::m_defaultContext is used where none is given. The namespace
// alias table is tree/NamespaceAliasMap.h.
#ifndef QZXML_BINDING_SERIALIZATIONCONTEXT_H
#define QZXML_BINDING_SERIALIZATIONCONTEXT_H

#include <string>
#include <vector>

#include "tree/NamespaceAliasMap.h"

namespace QzXmlLib16 {

class CFastInfosetContext;
class CJsonContext;
class CAttributeCol;

// The form of the schema the documents follow. The type is an int, so any number given to
// SetSchemaType is kept as it is.
enum SchemaType : int {
    SchemaTypeDefault = 0,     // namespaces are in force
    SchemaTypeReserved = 1,    // has no effect in the library
    SchemaTypeNoNamespaces = 2 // no namespace processing; elements and attributes match by local name
};

// A bag of settings, read by many and written by nobody during a call. Copy it only before its
// sub-contexts have been made (see the copy constructor). No lock anywhere.
class CSerializationContext {
public:
    // The schema forms are reachable through the class as well: CSerializationContext::
    // SchemaTypeNoNamespaces is the same value as SchemaTypeNoNamespaces.
    typedef QzXmlLib16::SchemaType SchemaType;
    static constexpr SchemaType SchemaTypeDefault = QzXmlLib16::SchemaTypeDefault;
    static constexpr SchemaType SchemaTypeReserved = QzXmlLib16::SchemaTypeReserved;
    static constexpr SchemaType SchemaTypeNoNamespaces = QzXmlLib16::SchemaTypeNoNamespaces;

    // Defaults: write type attribute on, strip CDATA on, indent with one tab, every Ignore flag
    // off, schema type SchemaTypeDefault, all strings and lists empty.
    CSerializationContext();
    // Copies every setting by value; the additional root attributes are shared, so what is added
    // through either context shows in both.
    // Note: the Fast Infoset and JSON sub-context pointers are copied as plain pointers and each
    // context deletes what it holds, so copy a context before either sub-context has been made.
    CSerializationContext(const CSerializationContext& other);
    // Copies every setting by value; the sub-contexts this context has made stay its own.
    CSerializationContext& operator=(const CSerializationContext& other);
    virtual ~CSerializationContext();

    // The shared default instance, used by every call that is given no context.
    static CSerializationContext m_defaultContext;

    // The default namespace the root element declares on output; "" for none. Null means "".
    std::string GetDefaultNamespaceURI() const;
    void SetDefaultNamespaceURI(const char* uri);

    // Whether xsi:type may be written. Default true.
    bool GetWriteTypeAttribute() const;
    void SetWriteTypeAttribute(bool value);

    // The caller's preferred prefixes, declared on the root element on output.
    CNamespaceAliasMap& GetNamespaceAliases();
    const CNamespaceAliasMap& GetNamespaceAliases() const;

    // Processing instructions written ahead of the root element, in order.
    std::vector<std::string>& GetProcessingInstructions();
    const std::vector<std::string>& GetProcessingInstructions() const;

    // A schema written in-line behind the root's attributes; "" for none. Null means "".
    std::string GetInLineSchema() const;
    void SetInLineSchema(const char* schema);

    bool GetIgnoreInvalidCollectionCounts() const;
    void SetIgnoreInvalidCollectionCounts(bool value);

    bool GetIgnoreMissingChoice() const;
    void SetIgnoreMissingChoice(bool value);

    // Excludes IgnoreUnknownElements. Setting true while IgnoreUnknownElements is true throws
    // CQzInvalidStateException and leaves the flag as it was; false always succeeds.
    bool GetIgnoreMissingMandatoryElements() const;
    void SetIgnoreMissingMandatoryElements(bool value);

    // Excludes IgnoreMissingMandatoryElements, with the same rule the other way round.
    bool GetIgnoreUnknownElements() const;
    void SetIgnoreUnknownElements(bool value);

    bool GetIgnoreUnknownAttributes() const;
    void SetIgnoreUnknownAttributes(bool value);

    // True if the flag is set or the schema type is SchemaTypeNoNamespaces.
    bool GetIgnoreNamespaces() const;
    void SetIgnoreNamespaces(bool value);

    // The schema form; SchemaTypeNoNamespaces (2) turns namespace processing off for the read
    // and makes GetIgnoreNamespaces answer true. Other values are stored and have no effect.
    SchemaType GetSchemaType() const;
    void SetSchemaType(SchemaType type);
    // The same, with the schema form given as its number.
    void SetSchemaType(int type);

    bool GetNoOptionalAttributeDefaultOutput() const;
    void SetNoOptionalAttributeDefaultOutput(bool value);

    bool GetWriteDefaultElementValues() const;
    void SetWriteDefaultElementValues(bool value);

    // Whether the XML reader drops the CDATA markers. Default true; when false the markers
    // "<![CDATA[" and "]]>" stay in the element text.
    bool GetStripCDATA() const;
    void SetStripCDATA(bool value);

    // The characters of one indent level. Null is taken as "". Throws CQzInvalidParamException
    // when a character other than blank or tab is present; the old value then stays.
    std::string GetIndentChars() const;
    void SetIndentChars(const char* chars);

private:
    // Made on first use by GetFIContext; owned. Stays null until the Fast Infoset
    // context joins the library.
    mutable CFastInfosetContext* m_pFIContext;
    // Made on first use by GetJsonContext; owned. Stays null until the JSON context
    // joins the library.
    mutable CJsonContext* m_pJsonContext;
    std::string m_defaultNamespaceURI;
    bool m_writeTypeAttribute;
    CNamespaceAliasMap m_namespaceAliases;
    // Additional root attributes, made on first use and shared between copies. Stays null until
    // the any-attribute collection joins the library (then held through a CSmartPtr).
    mutable CAttributeCol* m_pAdditionalRootAttributes;
    std::vector<std::string> m_processingInstructions;
    std::string m_inLineSchema;
    bool m_ignoreInvalidCollectionCounts;
    bool m_ignoreMissingChoice;
    bool m_ignoreMissingMandatoryElements;
    bool m_ignoreUnknownElements;
    bool m_ignoreUnknownAttributes;
    bool m_ignoreNamespaces;
    SchemaType m_schemaType;
    bool m_noOptionalAttributeDefaultOutput;
    bool m_writeDefaultElementValues;
    bool m_stripCDATA;
    std::string m_indentChars;
};

} // namespace QzXmlLib16

#endif
