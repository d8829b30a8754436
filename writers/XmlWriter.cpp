// XmlWriter.cpp - namespace scoping and prefix allocation shared by every writer.
#include "writers/XmlWriter.h"

#include "foundation/Exceptions.h"

namespace QzXmlLib16 {

namespace {

// Messages
const char* const kMsgElementNotClosed = "An Element has not been closed.";

// Prefix allocation
const int kLettersInAlphabet = 26;

} // namespace

const char* CXmlWriter::XML_NAMESPACE = "http://www.w3.org/XML/1998/namespace";

// ---------------------------------------------------------------------------
// CXmlWriterContext

CXmlWriter::CXmlWriterContext::CXmlWriterContext(const std::string& localName, const std::string& uri,
                                                 CXmlWriterContext* parent)
    : CInstanceMonitor("CXmlWriterContext"), m_childCount(0), m_startTagOpen(true),
      m_depth(parent->m_depth + 1), m_namespaceURI(uri), m_localName(localName), m_pParent(parent),
      m_hasAttributes(false), m_state(ContextStateNone), m_pNamespaceMap(parent->GetNamespaceMap()),
      m_inherits(true), m_ownsMap(false), m_pStateOwner(parent->StateOwner()),
      m_ownerEpoch(parent->m_pRoot->m_epoch), m_pRoot(parent->m_pRoot), m_epoch(0), m_hasDependents(false) {
    parent->m_hasDependents = true;
}

CXmlWriter::CXmlWriterContext::CXmlWriterContext(const std::string& localName, const std::string& uri,
                                                 const std::string& defaultNamespace,
                                                 std::map<std::string, std::string>* namespaces,
                                                 CXmlWriterContext* parent)
    : CInstanceMonitor("CXmlWriterContext"), m_childCount(0), m_startTagOpen(true), m_depth(0),
      m_namespaceURI(uri), m_localName(localName), m_pParent(parent), m_hasAttributes(false),
      m_state(ContextStateNone), m_defaultNamespace(defaultNamespace),
      m_pNamespaceMap(new std::map<std::string, std::string>(*namespaces)), m_inherits(false),
      m_ownsMap(true), m_pStateOwner(this), m_ownerEpoch(0), m_pRoot(this), m_epoch(0),
      m_hasDependents(false) {}

CXmlWriter::CXmlWriterContext::~CXmlWriterContext() {
    if (m_ownsMap)
        delete m_pNamespaceMap;
    // The chain above is destroyed in a loop, not by recursion, so that a very deep
    // document cannot exhaust the stack when a writer dies with elements open.
    CXmlWriterContext* parent = DetachParent();
    while (parent != nullptr) {
        CXmlWriterContext* next = parent->DetachParent();
        delete parent;
        parent = next;
    }
}

void CXmlWriter::CXmlWriterContext::SetDefaultNamespace(const std::string& uri) {
    // The parent's default namespace is not copied: it is overwritten at once.
    MakeIndependent(false);
    m_defaultNamespace = uri;
}

std::string& CXmlWriter::CXmlWriterContext::GetNamespaceMapValue(const char* uri) {
    return (*GetNamespaceMap())[uri];
}

std::string& CXmlWriter::CXmlWriterContext::GetNamespaceMapValue(const std::string& uri) {
    return (*GetNamespaceMap())[uri];
}

void CXmlWriter::CXmlWriterContext::SetNamespaceMapValue(const std::string& uri, const std::string& prefix) {
    MakeIndependent(true);
    (*m_pNamespaceMap)[uri] = prefix;
}

void CXmlWriter::CXmlWriterContext::ResetAsChild(const std::string& localName, const std::string& uri,
                                                 CXmlWriterContext* parent) {
    m_childCount = 0;
    m_startTagOpen = true;
    m_depth = parent->m_depth + 1;
    // Assignment keeps the strings' buffers, so a reused context allocates nothing.
    m_namespaceURI = uri;
    m_localName = localName;
    m_pParent = parent;
    m_hasAttributes = false;
    m_state = ContextStateNone;
    m_defaultNamespace.clear();
    m_pNamespaceMap = parent->GetNamespaceMap();
    m_inherits = true;
    m_ownsMap = false;
    m_pStateOwner = parent->StateOwner();
    m_pRoot = parent->m_pRoot;
    m_ownerEpoch = m_pRoot->m_epoch;
    m_epoch = 0;
    m_hasDependents = false;
    parent->m_hasDependents = true;
}

void CXmlWriter::CXmlWriterContext::MakeIndependent(bool copyDefaultNamespace) {
    if (!m_inherits)
        return;
    const CXmlWriterContext* owner = StateOwner();
    m_pNamespaceMap = new std::map<std::string, std::string>(*owner->m_pNamespaceMap);
    m_ownsMap = true;
    m_inherits = false;
    if (copyDefaultNamespace)
        m_defaultNamespace = owner->m_defaultNamespace;
    m_pStateOwner = this;
    // Descendants made earlier must find this context's state from now on.
    if (m_hasDependents)
        ++m_pRoot->m_epoch;
    m_ownerEpoch = m_pRoot->m_epoch;
}

// ---------------------------------------------------------------------------
// CXmlWriter

CXmlWriter::CXmlWriter(const char* monitorName)
    : CInstanceMonitor(monitorName), m_pContext(nullptr), m_pSpareContexts(nullptr) {
    m_namespaces[XML_NAMESPACE] = "xml";
}

CXmlWriter::~CXmlWriter() {
    delete m_pContext;
    while (m_pSpareContexts != nullptr) {
        CXmlWriterContext* next = m_pSpareContexts->DetachParent();
        delete m_pSpareContexts;
        m_pSpareContexts = next;
    }
}

void CXmlWriter::Open() {}

void CXmlWriter::Close() {
    if (m_pContext != nullptr)
        throw CQzException(kMsgElementNotClosed);
}

void CXmlWriter::SetDefaultNamespace(const std::string& uri) {
    if (m_pContext != nullptr)
        m_pContext->SetDefaultNamespace(uri);
    else
        m_defaultNamespace = uri;
}

void CXmlWriter::AddNamespace(const std::string& prefix, const std::string& uri) {
    if (m_pContext != nullptr)
        m_pContext->SetNamespaceMapValue(uri, prefix);
    else
        m_namespaces[uri] = prefix;
}

std::string CXmlWriter::GetUniquePrefix(const std::map<std::string, std::string>& namespaces) {
    for (int n = 0;; ++n) {
        std::string candidate = NsIntToString(n);
        bool taken = false;
        for (const auto& entry : namespaces) {
            if (entry.second == candidate) {
                taken = true;
                break;
            }
        }
        if (!taken)
            return candidate;
    }
}

std::string CXmlWriter::NsIntToString(int n) {
    std::string result(2, 'A');
    result[0] = static_cast<char>('A' + n / kLettersInAlphabet);
    result[1] = static_cast<char>('A' + n % kLettersInAlphabet);
    return result;
}

void CXmlWriter::SetContextState(ContextState state) {
    if (m_pContext != nullptr)
        m_pContext->SetState(state);
}

CXmlWriter::CXmlWriterContext* CXmlWriter::NewContext(const std::string& localName, const std::string& uri) {
    if (m_pContext == nullptr)
        return new CXmlWriterContext(localName, uri, m_defaultNamespace, &m_namespaces, nullptr);
    CXmlWriterContext* context = m_pSpareContexts;
    if (context == nullptr)
        return new CXmlWriterContext(localName, uri, m_pContext);
    m_pSpareContexts = context->DetachParent();
    context->ResetAsChild(localName, uri, m_pContext);
    return context;
}

void CXmlWriter::DiscardContext(CXmlWriterContext* context) {
    if (context == nullptr)
        return;
    context->DetachParent();
    delete context;
}

} // namespace QzXmlLib16
