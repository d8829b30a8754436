// XmlAttribute.cpp - attribute nodes: paths and the classification of schema-instance attributes.
#include "tree/XmlAttribute.h"

#include "tree/XmlDocument.h"
#include "tree/XmlElement.h"

namespace QzXmlLib16 {

namespace {

// Well-known namespaces
const char kSchemaInstanceNamespace[] = "http://www.w3.org/2001/XMLSchema-instance";
const char kXmlnsNamespace[] = "http://www.w3.org/2000/xmlns/";

bool IsInstanceOrXmlnsNamespace(const std::string& uri) {
    return uri == kSchemaInstanceNamespace || uri == kXmlnsNamespace;
}

} // namespace

CXmlAttribute::CXmlAttribute(const CXmlElement* element, const std::string& localName,
                             const std::string& value, const std::string& uri)
    : CInstanceMonitor("CXmlAttribute"), m_pElement(element), m_localName(localName), m_value(value),
      m_pNamespaceURI(&m_namespaceURI), m_namespaceURI(uri) {}

CXmlAttribute::~CXmlAttribute() {}

void CXmlAttribute::OwnNamespaceURI() {
    if (m_pNamespaceURI != &m_namespaceURI) {
        m_namespaceURI = *m_pNamespaceURI;
        m_pNamespaceURI = &m_namespaceURI;
    }
}

std::string CXmlAttribute::GetXPath() const {
    std::string path;
    if (m_pElement) {
        path = m_pElement->GetXPath();
        path += '/';
        const CXmlDocument* document = m_pElement->GetDocument();
        if (document && !GetNamespaceURI().empty()) {
            std::string alias = document->LookupAliasFromNamespace(GetNamespaceURI().c_str());
            if (!alias.empty()) {
                path += alias;
                path += ':';
            }
        }
    }
    path += '@';
    path += m_localName;
    return path;
}

bool CXmlAttribute::IsNamespaceAttribute() const {
    if (!IsInstanceOrXmlnsNamespace(GetNamespaceURI()))
        return false;
    return m_localName == "xmlns" || m_localName == "type" || m_localName == "schemaLocation" ||
           m_localName == "noNamespaceSchemaLocation";
}

bool CXmlAttribute::IsNilAttribute() const {
    return IsInstanceOrXmlnsNamespace(GetNamespaceURI()) && m_localName == "nil";
}

} // namespace QzXmlLib16
