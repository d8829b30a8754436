// SmartPtr.h - CSmartPtr<T>, the intrusive pointer that holds reference-counted objects.
//
// T is any class with AddRef() and Release(), in practice CXmlObjectBase and its subclasses
// (binding/XmlObjectBase.h). The pointer behaves like a raw T*: ->, *, conversion to T* and
// comparison with null all work as they do on the raw pointer.
#ifndef QZXML_BINDING_SMARTPTR_H
#define QZXML_BINDING_SMARTPTR_H

namespace QzXmlLib16 {

// Holds one reference on the object it points to. An object made with new starts with count 0
// and lives from the first CSmartPtr on; the last Release deletes it.
template <class T> class CSmartPtr {
public:
    CSmartPtr() : m_p(nullptr) {}
    // Takes a new reference on p when p is not null. A null pointer in any spelling (nullptr,
    // NULL, 0) comes through here, as it would into a raw T*.
    CSmartPtr(T* p) : m_p(p) {
        if (m_p)
            m_p->AddRef();
    }
    CSmartPtr(const CSmartPtr& other) : m_p(other.m_p) {
        if (m_p)
            m_p->AddRef();
    }
    // From a smart pointer to a derived class.
    template <class U> CSmartPtr(const CSmartPtr<U>& other) : m_p(other.Get()) {
        if (m_p)
            m_p->AddRef();
    }
    // Moves the reference: the source is left null and no count changes.
    CSmartPtr(CSmartPtr&& other) noexcept : m_p(other.m_p) { other.m_p = nullptr; }
    ~CSmartPtr() {
        if (m_p)
            m_p->Release();
    }

    // The new object is taken before the old one is released, so assigning an object to the
    // pointer that already holds it (or to one of its owners) is safe.
    CSmartPtr& operator=(T* p) {
        if (p)
            p->AddRef();
        T* old = m_p;
        m_p = p;
        if (old)
            old->Release();
        return *this;
    }
    CSmartPtr& operator=(const CSmartPtr& other) { return *this = other.m_p; }
    template <class U> CSmartPtr& operator=(const CSmartPtr<U>& other) { return *this = other.Get(); }
    CSmartPtr& operator=(CSmartPtr&& other) noexcept {
        if (this != &other) {
            T* old = m_p;
            m_p = other.m_p;
            other.m_p = nullptr;
            if (old)
                old->Release();
        }
        return *this;
    }

    // The raw pointer; borrowed, the smart pointer keeps its reference.
    T* Get() const { return m_p; }
    operator T*() const { return m_p; }
    T* operator->() const { return m_p; }
    T& operator*() const { return *m_p; }

private:
    T* m_p;
};

} // namespace QzXmlLib16

#endif
