// XmlWriter.h - CXmlWriter, the abstract output port that the binding layer drives,
// and CXmlWriter::CXmlWriterContext, the per-element namespace scope it keeps.
// The concrete writers derive from it: writers/XmlTextWriter.h for XML text, and the
// Fast Infoset and JSON writers in fastinfoset/ and json/.
#ifndef QZXML_WRITERS_XMLWRITER_H
#define QZXML_WRITERS_XMLWRITER_H

#include <map>
#include <string>

#include "foundation/InstanceMonitor.h"
#include "values/ItemType.h"

namespace QzXmlLib16 {

// Receives a document as a strictly nested stream of element, attribute and text
// events. The base class owns the namespace state: a chain of element contexts whose
// namespace maps are shared with the parent until a context writes to its own.
//
// Order of calls: Open; optional SetDefaultNamespace/AddNamespace; then nested
// WriteStartElement, attribute operations (only while the start tag is open),
// WriteString, WriteEndElement; Close. Strings are borrowed for the call only.
class CXmlWriter : public CInstanceMonitor {
public:
    // The XML namespace URI; its prefix "xml" is known to every writer and never declared.
    static const char* XML_NAMESPACE;

    // What the collection writer announces on the enclosing element (read by the JSON
    // writer only): 1 before the items of a collection, 3 after them; the JSON writer
    // moves 1 to 2 when it opens the array and 3 to 0 when it closes it.
    enum ContextState : int {
        ContextStateNone = 0,
        ContextStateCollection = 1,
        ContextStateCollectionOpen = 2,
        ContextStateCollectionEnd = 3
    };

    // One open element. A context made for a child has no namespace state of its own
    // ("inherits"): it reads its parent's map and default namespace through the chain,
    // and copies them only on its first write. So a prefix introduced on an element is
    // visible to it and its descendants and dies with it.
    //
    //   document element          child (inherits)        grandchild (own state)
    //   map: owned  <------------ map: shortcut          map: owned copy
    //   parent: null <----------- parent <---------------- parent
    class CXmlWriterContext : public CInstanceMonitor {
    public:
        // Context for an element inside `parent` (not null): depth is the parent's + 1,
        // namespace state inherited. The context does not take `parent`; the writer
        // links it and the chain is then owned from the innermost end.
        CXmlWriterContext(const std::string& localName, const std::string& uri, CXmlWriterContext* parent);
        // Context for the document element: depth 0, own state, the map a new copy of
        // `*namespaces`. `parent` is normally null.
        CXmlWriterContext(const std::string& localName, const std::string& uri,
                          const std::string& defaultNamespace, std::map<std::string, std::string>* namespaces,
                          CXmlWriterContext* parent);
        // Destroys the parent chain and, if this context allocated it, the map.
        ~CXmlWriterContext() override;

        CXmlWriterContext(const CXmlWriterContext&) = delete;
        CXmlWriterContext& operator=(const CXmlWriterContext&) = delete;

        // The effective default namespace: the first context up the chain with own state.
        const std::string& GetDefaultNamespace() const;
        // Makes the context independent (copying the parent's map) and sets its own value.
        void SetDefaultNamespace(const std::string& uri);

        // The effective map (URI -> prefix); borrowed, lives as long as its owner context.
        std::map<std::string, std::string>* GetNamespaceMap() const;
        // Note: index access on the effective map. An unknown URI is inserted with an
        // empty prefix, into the map of the nearest context with own state, and "" is
        // returned. Look up with GetNamespaceMap()->find when absence matters.
        std::string& GetNamespaceMapValue(const char* uri);
        std::string& GetNamespaceMapValue(const std::string& uri);
        // Makes the context independent (copying the parent's map and default
        // namespace), then maps `uri` to `prefix` in its own map.
        void SetNamespaceMapValue(const std::string& uri, const std::string& prefix);

        // Element data and flags used by the concrete writers.
        long GetChildCount() const { return m_childCount; }
        void IncrementChildCount() { ++m_childCount; }
        bool IsStartTagOpen() const { return m_startTagOpen; }
        // Ends the start tag for good: the flag never goes back to true.
        void CloseStartTag() { m_startTagOpen = false; }
        int GetDepth() const { return m_depth; }
        const std::string& GetNamespaceURI() const { return m_namespaceURI; }
        const std::string& GetLocalName() const { return m_localName; }
        CXmlWriterContext* GetParent() const { return m_pParent; }
        // Unlinks the parent and returns it; the caller takes over the chain. A writer
        // calls this before it destroys a context it pops.
        CXmlWriterContext* DetachParent();
        bool GetHasAttributes() const { return m_hasAttributes; }
        void SetHasAttributes(bool has) { m_hasAttributes = has; }
        ContextState GetState() const { return m_state; }
        void SetState(ContextState state) { m_state = state; }
        // True while the context has no namespace state of its own.
        bool GetInherits() const { return m_inherits; }
        bool GetOwnsMap() const { return m_ownsMap; }

    private:
        friend class CXmlWriter;
        // Turns a spare context into a child of `parent`, as the child constructor does.
        void ResetAsChild(const std::string& localName, const std::string& uri, CXmlWriterContext* parent);
        // Drops an own map before the context is kept as a spare.
        void ReleaseState();
        // Gives this context its own copy of the effective map; no-op when it has one.
        void MakeIndependent(bool copyDefaultNamespace);

        long m_childCount;
        bool m_startTagOpen;
        int m_depth;
        std::string m_namespaceURI;
        std::string m_localName;
        CXmlWriterContext* m_pParent;
        bool m_hasAttributes;
        ContextState m_state;
        std::string m_defaultNamespace;
        std::map<std::string, std::string>* m_pNamespaceMap;
        bool m_inherits;
        bool m_ownsMap;
        // Shortcut to the context with own state (this one, once independent), so that
        // answers cost no walk up a deep chain. Ancestors outlive their descendants. The
        // shortcut is trusted while m_ownerEpoch matches the chain root's m_epoch, which
        // moves whenever a context that has had children gets state of its own.
        const CXmlWriterContext* StateOwner() const;
        mutable const CXmlWriterContext* m_pStateOwner;
        mutable unsigned long m_ownerEpoch;
        CXmlWriterContext* m_pRoot;
        unsigned long m_epoch;
        mutable bool m_hasDependents;
    };

    // Maps XML_NAMESPACE to "xml"; `monitorName` goes to CInstanceMonitor.
    explicit CXmlWriter(const char* monitorName);
    // Destroys the open context chain, if any.
    ~CXmlWriter() override;

    CXmlWriter(const CXmlWriter&) = delete;
    CXmlWriter& operator=(const CXmlWriter&) = delete;

    // Base: nothing.
    virtual void Open();
    // Base: throws CQzException "An Element has not been closed." while an element is open.
    virtual void Close();
    // Inside an element: sets the innermost context's default namespace; before the
    // document element: the writer's own, declared on the document element.
    virtual void SetDefaultNamespace(const std::string& uri);
    // Inside an element: maps `uri` to `prefix` on the innermost context (no declaration
    // is written by this alone); before the document element: a mapping that the text
    // writer declares on the document element.
    virtual void AddNamespace(const std::string& prefix, const std::string& uri);
    virtual void WriteComment(const std::string& text) = 0;
    virtual void WritePI(const std::string& text) = 0;
    virtual void WriteInlineSchema(const std::string& schema) = 0;
    virtual void WriteStartElement(const std::string& localName, const std::string& uri) = 0;
    // `isDefaultValue`: the text is the member's default; writers may leave it out.
    virtual void WriteString(const std::string& text, ItemType type, bool isDefaultValue) = 0;
    virtual void WriteEndElement() = 0;
    virtual void WriteAttributeString(const std::string& localName, const std::string& uri,
                                      const std::string& value, ItemType type) = 0;
    // The xsi:type attribute naming `typeName` in namespace `uri`.
    virtual void WriteAttributeType(const std::string& uri, const std::string& typeName, ItemType type) = 0;
    // The attribute xsi:nil="true".
    virtual void WriteAttributeNil() = 0;

    // The first generated prefix ("AA", "AB", ...) that no value of `namespaces` uses.
    // Note: past number 675 ("ZZ") the first letter runs on into '[', '\\', ...; nothing
    // stops this.
    static std::string GetUniquePrefix(const std::map<std::string, std::string>& namespaces);
    // Two characters: 'A' + n / 26, then 'A' + n % 26 (0 -> "AA", 26 -> "BA").
    static std::string NsIntToString(int n);
    // Stores `state` on the innermost context; does nothing outside the document element.
    void SetContextState(ContextState state);
    // The same for a plain number, as callers write SetContextState(1).
    void SetContextState(int state) { SetContextState(static_cast<ContextState>(state)); }

    // The innermost open context, null outside the document element; borrowed.
    CXmlWriterContext* GetContext() const { return m_pContext; }
    // Before the document element: the default namespace and URI -> prefix map that the
    // document element declares.
    const std::string& GetWriterDefaultNamespace() const { return m_defaultNamespace; }
    const std::map<std::string, std::string>& GetWriterNamespaces() const { return m_namespaces; }

protected:
    // Makes `context` (whose parent must be the current context) the innermost one.
    void PushContext(CXmlWriterContext* context) { m_pContext = context; }
    // Ends the innermost context and makes its parent current. Null-safe. The context
    // object is kept for reuse by NewContext, so that an element costs no allocation.
    void PopContext();
    // A new, not yet installed, context for an element starting now: the document
    // element form with no open context, the child form otherwise. Caller owns it; to
    // drop it without installing, call DiscardContext (deleting it would take its
    // parent chain along).
    CXmlWriterContext* NewContext(const std::string& localName, const std::string& uri);
    // Destroys a context from NewContext that was never installed; its parent stays.
    static void DiscardContext(CXmlWriterContext* context);

    std::string m_defaultNamespace;
    CXmlWriterContext* m_pContext;
    std::map<std::string, std::string> m_namespaces;

private:
    // Contexts popped earlier, linked through their parent field; owned.
    CXmlWriterContext* m_pSpareContexts;
};

// End of public interface. Inline bodies of the calls made once per element follow.

inline const CXmlWriter::CXmlWriterContext* CXmlWriter::CXmlWriterContext::StateOwner() const {
    if (m_ownerEpoch != m_pRoot->m_epoch) {
        const CXmlWriterContext* owner = this;
        while (owner->m_inherits && owner->m_pParent != nullptr)
            owner = owner->m_pParent;
        m_pStateOwner = owner;
        m_ownerEpoch = m_pRoot->m_epoch;
    }
    return m_pStateOwner;
}

inline const std::string& CXmlWriter::CXmlWriterContext::GetDefaultNamespace() const {
    return StateOwner()->m_defaultNamespace;
}

inline std::map<std::string, std::string>* CXmlWriter::CXmlWriterContext::GetNamespaceMap() const {
    return StateOwner()->m_pNamespaceMap;
}

inline CXmlWriter::CXmlWriterContext* CXmlWriter::CXmlWriterContext::DetachParent() {
    CXmlWriterContext* parent = m_pParent;
    m_pParent = nullptr;
    return parent;
}

inline void CXmlWriter::CXmlWriterContext::ReleaseState() {
    if (m_ownsMap)
        delete m_pNamespaceMap;
    m_pNamespaceMap = nullptr;
    m_ownsMap = false;
    m_inherits = true;
    m_pStateOwner = this;
    m_hasDependents = false;
}

inline void CXmlWriter::PopContext() {
    CXmlWriterContext* context = m_pContext;
    if (context == nullptr)
        return;
    m_pContext = context->DetachParent();
    context->ReleaseState();
    context->m_pParent = m_pSpareContexts;
    m_pSpareContexts = context;
}

} // namespace QzXmlLib16

#endif
