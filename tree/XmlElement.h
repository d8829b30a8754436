// XmlElement.h - CXmlElement, an element node of the light document tree.
//
// An element holds its children (a singly linked list), its attributes (tree/XmlAttribute.h, in
// document order) and one text string; nothing else. The tree belongs to a CXmlDocument
// (tree/XmlDocument.h), which builds it while a reader runs.
#ifndef QZXML_TREE_XMLELEMENT_H
#define QZXML_TREE_XMLELEMENT_H

#include <cstddef>
#include <string>
#include <vector>

#include "foundation/InstanceMonitor.h"
#include "tree/XmlAttribute.h"

namespace QzXmlLib16 {

class CXmlDocument;
class CXmlElementPool;

// One element. It owns its children and attributes; destroying it destroys the subtree,
// without recursion, so trees of any depth can be destroyed.
class CXmlElement : public CInstanceMonitor {
public:
    // All links null, strings empty. Children are made only through CreateNewChildElement.
    CXmlElement(const CXmlDocument* document, const CXmlElement* parent);
    virtual ~CXmlElement();

    CXmlElement(const CXmlElement&) = delete;
    CXmlElement& operator=(const CXmlElement&) = delete;

    // Elements keep a small header in front of their storage, so that those a document builds
    // can come from its pool (tree/XmlElementPool.h); `new` and `delete` work as usual.
    static void* operator new(size_t size);
    static void* operator new(size_t size, CXmlElementPool& pool);
    static void operator delete(void* object);
    static void operator delete(void* object, CXmlElementPool& pool);

    // A new element with this element's document and this element as parent, appended at the
    // end of the child list in constant time. Owned by this element.
    CXmlElement* CreateNewChildElement();
    // Appends a new attribute, owned by this element. Duplicates are not checked.
    void AddAttribute(const std::string& localName, const std::string& value, const std::string& uri);
    // Appends text up to its NUL; null is ignored.
    void AppendText(const char* text);
    // Appends length bytes of text.
    void AppendText(const char* text, int length);
    void SetElementName(const std::string& localName);
    void SetNamespace(const std::string& uri);

    // The first child, or null. Borrowed.
    CXmlElement* GetFirstElement() const { return m_pFirstChild; }
    // The next sibling, or null. Borrowed.
    CXmlElement* GetNextSiblingElement() const { return m_pNextSibling; }
    // The parent, or null for a document element.
    const CXmlElement* GetParentElement() const { return m_pParent; }
    // The owning document, or null.
    const CXmlDocument* GetDocument() const { return m_pDocument; }

    // "" where the element has no namespace.
    const std::string& GetNamespaceURI() const { return *m_pNamespaceURI; }
    const std::string& GetLocalName() const { return m_localName; }
    // All character data directly inside the element, the pieces between and behind the
    // children included, in document order.
    const std::string& GetText() const { return m_text; }
    const std::vector<CXmlAttribute*>& GetAttributes() const {
        return m_pAttributes ? *m_pAttributes : NoAttributes();
    }

    // The value of the first attribute whose local name and URI both match.
    // Note: a missing attribute gives a reference to one static empty string, so it cannot be
    // told apart from an empty value.
    const std::string& GetAttribute(const std::string& localName, const std::string& uri) const;

    // Unlinks the last child and returns it, or null if there is none. The caller owns it; the
    // removed subtree holds its own copies of its namespace URIs, so it may outlive a reload.
    CXmlElement* RemoveLastChildElement();

    // The alias of the namespace URI from the document's map and ":" where there is a
    // non-empty one, then the local name.
    std::string GetQName() const;
    // GetQName, followed by "[n]" only where the parent has more than one child of that name;
    // n is the 1-based place among them.
    std::string GetNameWithPredicate() const;
    // The absolute path of the element, as "/root/item[2]/p:name". Works at any depth.
    std::string GetXPath() const;

private:
    friend class CXmlDocument;

    static const std::vector<CXmlAttribute*>& NoAttributes();
    // The attribute list, made on first use.
    std::vector<CXmlAttribute*>& Attributes();
    bool SameQName(const CXmlElement* other, const std::string& name) const;
    // Appends a child made elsewhere at the end of the child list.
    void AppendChild(CXmlElement* child);
    // Unlinks the last child without the copying of RemoveLastChildElement, for a child that
    // is destroyed at once.
    CXmlElement* UnlinkLastChild();
    // Makes a removed subtree independent of its document: every element and attribute gets
    // its own copy of a namespace URI it shares with the document, and pooled storage is marked
    // as no longer the tree's.
    void DetachFromDocument();

    const CXmlDocument* m_pDocument;
    const CXmlElement* m_pParent;
    CXmlElement* m_pNextSibling;
    CXmlElement* m_pFirstChild; // owned, head of the list
    CXmlElement* m_pLastChild;  // tail of the list
    // Made with the first attribute: most elements have none.
    std::vector<CXmlAttribute*>* m_pAttributes;
    std::string m_text;
    std::string m_localName;
    // What GetNamespaceURI returns, never null: one shared empty string, the element's own copy
    // (m_pOwnNamespaceURI), or for an element that the document built, the document's one copy
    // of the URI (see CXmlDocument::ShareNamespaceURI).
    const std::string* m_pNamespaceURI;
    std::string* m_pOwnNamespaceURI; // owned; made by SetNamespace and DetachFromDocument
};

} // namespace QzXmlLib16

#endif
