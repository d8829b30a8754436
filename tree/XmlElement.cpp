// XmlElement.cpp - element nodes: building, look-ups, names and paths. Nothing here recurses
// on the depth of the tree.
#include "tree/XmlElement.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "tree/XmlDocument.h"
#include "tree/XmlElementPool.h"

namespace QzXmlLib16 {

namespace {

// Shared empty values
const std::string& EmptyURI() {
    static const std::string empty;
    return empty;
}

} // namespace

CXmlElement::CXmlElement(const CXmlDocument* document, const CXmlElement* parent)
    : CInstanceMonitor("CXmlElement"), m_pDocument(document), m_pParent(parent), m_pNextSibling(nullptr),
      m_pFirstChild(nullptr), m_pLastChild(nullptr), m_pAttributes(nullptr), m_pNamespaceURI(&EmptyURI()),
      m_pOwnNamespaceURI(nullptr) {}

// The subtree is taken apart in a loop: `pending` is a chain, linked through the sibling field,
// of elements still to be destroyed. Each element's children are spliced in front of the chain
// before the element itself goes, so every delete below meets an element without children.
CXmlElement::~CXmlElement() {
    CXmlElement* pending = m_pFirstChild;
    m_pFirstChild = m_pLastChild = nullptr;
    while (pending) {
        CXmlElement* element = pending;
        pending = element->m_pNextSibling;
        if (element->m_pFirstChild) {
            element->m_pLastChild->m_pNextSibling = pending;
            pending = element->m_pFirstChild;
            element->m_pFirstChild = element->m_pLastChild = nullptr;
        }
        element->m_pNextSibling = nullptr;
        delete element;
    }
    if (m_pAttributes) {
        for (CXmlAttribute* attribute : *m_pAttributes)
            delete attribute;
        delete m_pAttributes;
    }
    delete m_pOwnNamespaceURI;
}

const std::vector<CXmlAttribute*>& CXmlElement::NoAttributes() {
    static const std::vector<CXmlAttribute*> none;
    return none;
}

std::vector<CXmlAttribute*>& CXmlElement::Attributes() {
    if (!m_pAttributes)
        m_pAttributes = new std::vector<CXmlAttribute*>();
    return *m_pAttributes;
}

// --- Storage

void* CXmlElement::operator new(size_t size) {
    return CXmlElementPool::AllocateUnpooled(size);
}

void* CXmlElement::operator new(size_t size, CXmlElementPool& pool) {
    return pool.Allocate(size);
}

void CXmlElement::operator delete(void* object) {
    CXmlElementPool::Free(object);
}

void CXmlElement::operator delete(void* object, CXmlElementPool&) {
    CXmlElementPool::Free(object);
}

// --- Building

CXmlElement* CXmlElement::CreateNewChildElement() {
    CXmlElement* child = new CXmlElement(m_pDocument, this);
    AppendChild(child);
    return child;
}

void CXmlElement::AppendChild(CXmlElement* child) {
    if (m_pLastChild)
        m_pLastChild->m_pNextSibling = child;
    else
        m_pFirstChild = child;
    m_pLastChild = child;
}

void CXmlElement::AddAttribute(const std::string& localName, const std::string& value,
                               const std::string& uri) {
    std::unique_ptr<CXmlAttribute> attribute(new CXmlAttribute(this, localName, value, uri));
    Attributes().push_back(attribute.get());
    attribute.release();
}

void CXmlElement::AppendText(const char* text) {
    if (text)
        AppendText(text, static_cast<int>(std::strlen(text)));
}

// expat delivers long text in many small pieces; growing by doubling keeps that linear.
void CXmlElement::AppendText(const char* text, int length) {
    if (length <= 0)
        return;
    size_t needed = m_text.size() + static_cast<size_t>(length);
    if (!m_text.empty() && needed > m_text.capacity())
        m_text.reserve(std::max(m_text.capacity() * 2, needed));
    m_text.append(text, static_cast<size_t>(length));
}

void CXmlElement::SetElementName(const std::string& localName) {
    m_localName = localName;
}

void CXmlElement::SetNamespace(const std::string& uri) {
    if (m_pOwnNamespaceURI)
        *m_pOwnNamespaceURI = uri;
    else
        m_pOwnNamespaceURI = new std::string(uri);
    m_pNamespaceURI = m_pOwnNamespaceURI;
}

const std::string& CXmlElement::GetAttribute(const std::string& localName, const std::string& uri) const {
    static const std::string kEmpty;
    for (const CXmlAttribute* attribute : GetAttributes()) {
        if (attribute->GetLocalName() == localName && attribute->GetNamespaceURI() == uri)
            return attribute->GetValue();
    }
    return kEmpty;
}

// The child is made independent before it is unlinked: if a copy fails, it stays in place.
CXmlElement* CXmlElement::RemoveLastChildElement() {
    if (!m_pLastChild)
        return nullptr;
    m_pLastChild->DetachFromDocument();
    return UnlinkLastChild();
}

CXmlElement* CXmlElement::UnlinkLastChild() {
    CXmlElement* last = m_pLastChild;
    if (!last)
        return nullptr;
    if (m_pFirstChild == last) {
        m_pFirstChild = m_pLastChild = nullptr;
    } else {
        CXmlElement* before = m_pFirstChild;
        while (before->m_pNextSibling != last)
            before = before->m_pNextSibling;
        before->m_pNextSibling = nullptr;
        m_pLastChild = before;
    }
    last->m_pNextSibling = nullptr;
    return last;
}

// The subtree is walked in document order without recursion, climbing back through the parent
// links, which stay valid while the subtree is only read.
void CXmlElement::DetachFromDocument() {
    CXmlElement* element = this;
    while (element) {
        CXmlElementPool::Orphan(element);
        if (element->m_pNamespaceURI != element->m_pOwnNamespaceURI && !element->m_pNamespaceURI->empty())
            element->SetNamespace(*element->m_pNamespaceURI);
        if (element->m_pAttributes) {
            for (CXmlAttribute* attribute : *element->m_pAttributes)
                attribute->OwnNamespaceURI();
        }
        if (element->m_pFirstChild) {
            element = element->m_pFirstChild;
            continue;
        }
        while (element != this && !element->m_pNextSibling)
            element = const_cast<CXmlElement*>(element->m_pParent);
        element = element == this ? nullptr : element->m_pNextSibling;
    }
}

std::string CXmlElement::GetQName() const {
    std::string name;
    const std::string& uri = GetNamespaceURI();
    if (m_pDocument && !uri.empty()) {
        std::string alias = m_pDocument->LookupAliasFromNamespace(uri.c_str());
        if (!alias.empty()) {
            name = alias;
            name += ':';
        }
    }
    name += m_localName;
    return name;
}

// True if the element's qualified name is `name`, the qualified name of `this`. Elements of the
// same namespace share its alias, so only then the local names decide; otherwise a qualified
// name ends in its local name, a cheap test before the alias look-up.
bool CXmlElement::SameQName(const CXmlElement* other, const std::string& name) const {
    if (other->m_pNamespaceURI == m_pNamespaceURI || other->GetNamespaceURI() == GetNamespaceURI())
        return other->m_localName == m_localName;
    const std::string& local = other->m_localName;
    if (local.size() > name.size() || name.compare(name.size() - local.size(), local.size(), local) != 0)
        return false;
    return other->GetQName() == name;
}

// The position is counted among the siblings with the same qualified name. The walk stops as
// soon as a second element of the name is known, since only then a predicate is needed.
std::string CXmlElement::GetNameWithPredicate() const {
    std::string name = GetQName();
    if (!m_pParent)
        return name;
    int count = 1;
    bool firstOfName = true;
    bool selfSeen = false;
    for (const CXmlElement* child = m_pParent->m_pFirstChild; child; child = child->m_pNextSibling) {
        if (child == this) {
            if (!firstOfName)
                return name + "[" + std::to_string(count) + "]";
            selfSeen = true;
            continue;
        }
        if (!SameQName(child, name))
            continue;
        if (selfSeen)
            return name + "[" + std::to_string(count) + "]";
        firstOfName = false;
        ++count;
    }
    return name;
}

// Ancestors are collected first, so the path is built in a loop at any depth.
std::string CXmlElement::GetXPath() const {
    std::vector<const CXmlElement*> chain;
    for (const CXmlElement* element = this; element; element = element->m_pParent)
        chain.push_back(element);
    std::string path;
    for (auto it = chain.rbegin(); it != chain.rend(); ++it) {
        path += '/';
        path += (*it)->GetNameWithPredicate();
    }
    return path;
}

} // namespace QzXmlLib16
