// XmlAttribute.h - CXmlAttribute, an attribute node of the light document tree.
//
// Attributes are made and owned by their CXmlElement (tree/XmlElement.h); the tree as a whole
// belongs to a CXmlDocument (tree/XmlDocument.h).
#ifndef QZXML_TREE_XMLATTRIBUTE_H
#define QZXML_TREE_XMLATTRIBUTE_H

#include <string>

#include "foundation/InstanceMonitor.h"

namespace QzXmlLib16 {

class CXmlElement;

// Local name, value and namespace URI of one attribute. No prefix is stored: a qualified form
// is computed back from the URI through the document's namespace map.
class CXmlAttribute : public CInstanceMonitor {
public:
    // element may be null for an attribute that stands alone.
    CXmlAttribute(const CXmlElement* element, const std::string& localName, const std::string& value,
                  const std::string& uri);
    virtual ~CXmlAttribute();

    CXmlAttribute(const CXmlAttribute&) = delete;
    CXmlAttribute& operator=(const CXmlAttribute&) = delete;

    // "" where the attribute has no namespace.
    const std::string& GetNamespaceURI() const { return *m_pNamespaceURI; }
    const std::string& GetLocalName() const { return m_localName; }
    // The value as the parser delivers it: normalised, entities resolved.
    const std::string& GetValue() const { return m_value; }
    // The element that holds the attribute; borrowed, may be null.
    const CXmlElement* GetElement() const { return m_pElement; }

    // The element's path, "/", the attribute's alias and ":" where it has one, then "@" and the
    // local name.
    // Note: the alias stands in front of the at sign, as in "/root/item[2]/p:@name"; messages
    // rely on this form.
    std::string GetXPath() const;

    // True for xmlns, type, schemaLocation and noNamespaceSchemaLocation in the XML Schema
    // instance namespace or the xmlns namespace.
    bool IsNamespaceAttribute() const;
    // True for nil in either of those two namespaces; the value is not looked at.
    bool IsNilAttribute() const;

private:
    friend class CXmlDocument;
    friend class CXmlElement;

    // Gives the attribute its own copy of a namespace URI that it shares with the document.
    void OwnNamespaceURI();

    const CXmlElement* m_pElement;
    std::string m_localName;
    std::string m_value;
    // What GetNamespaceURI returns: m_namespaceURI, or for an attribute that the document
    // built, the document's one copy of the URI (see CXmlDocument::ShareNamespaceURI).
    const std::string* m_pNamespaceURI;
    std::string m_namespaceURI;
};

} // namespace QzXmlLib16

#endif
