// XmlObjectBase.h - CXmlObjectBase, the root of every object that is read from or written to a
// document, with the IEventSink and INillable interfaces.
//
// Objects are reference counted and held through CSmartPtr (binding/SmartPtr.h). Every To* and
// From* operation takes a CSerializationContext (binding/SerializationContext.h); the tree that
// reads end in is tree/XmlDocument.h.
#ifndef QZXML_BINDING_XMLOBJECTBASE_H
#define QZXML_BINDING_XMLOBJECTBASE_H

#include <cstdint>
#include <string>

#include "binding/SerializationContext.h"
#include "binding/SmartPtr.h"
#include "fastinfoset/FInfoDecl.h"
#include "foundation/CriticalSection.h"
#include "foundation/StreamTypes.h"
#include "tree/XmlElement.h"
#include "values/BinaryData.h"

namespace QzXmlLib16 {

class CElement;
class CXmlObjectBase;
class CXmlWriter;

// The process-wide switches that the To* and From* file operations consult, declared here
// too so that this header alone gives everything the object operations need.
// AsyncToXmlFile(true) makes ToXmlFile write straight to the file (see writers/XmlTextWriter.h);
// AsyncFromXmlFile is kept for compatibility and has no effect (see tree/XmlDocument.h).
void AsyncToXmlFile(bool async);
void AsyncFromXmlFile(bool async);

// Receives the change notifications of collections. The handler runs inside the change; the
// data pointer is valid only for the length of the call.
class IEventSink {
public:
    enum MsgType {
        MsgCollectionChange = 0,        // data: null
        MsgCollectionAdd = 1,           // data: the item being added
        MsgCollectionAddComplete = 2,   // data: the item added
        MsgCollectionRemove = 3,        // data: int* index, or null for index -1
        MsgCollectionRemoveComplete = 4 // data: int* index, or null for index -1
    };

    virtual void OnEvent(CXmlObjectBase* source, MsgType type, void* data) = 0;

protected:
    ~IEventSink() {}
};

// Added to the bases of a generated class whose element may be nil. The class keeps the flag.
class INillable {
public:
    virtual bool IsNil() const = 0;
    virtual void SetNil(bool nil) = 0;

protected:
    ~INillable() {}
};

// The base of generated classes, collections, any-elements and any-attributes. A new object has
// count 0; the first CSmartPtr keeps it alive and the last Release deletes it.
class CXmlObjectBase : public IEventSink {
public:
    CXmlObjectBase();
    // A copy gets its own lock and starts with count 0; the element name is copied.
    CXmlObjectBase(const CXmlObjectBase& other);
    // Copies the element name only; count and lock stay this object's.
    CXmlObjectBase& operator=(const CXmlObjectBase& other);

    // Does nothing in this class.
    void OnEvent(CXmlObjectBase* source, IEventSink::MsgType type, void* data) override;

    // The CXmlObjectBase sub-object of the most derived object.
    virtual CXmlObjectBase* GetBase() = 0;

    // --- Output. Each throws CQzException on a failed write; the result is owned by the caller.

    // Writes the object as XML text to a file.
    virtual void ToXmlFile(const char* path, bool decl = true, bool format = true,
                           XmlEncoding encoding = EncodingUTF8, EOLType eol = EOLLf,
                           const CSerializationContext& context = CSerializationContext::m_defaultContext,
                           CompressionType compression = CompressionNone) const;
    // Writes the object as a Fast Infoset document to a file.
    virtual void
    ToFastInfosetFile(const char* path, FInfoDecl decl = FInfoDeclNone,
                      const CSerializationContext& context = CSerializationContext::m_defaultContext,
                      CompressionType compression = CompressionNone) const;
    // Writes the object as JSON text to a file.
    virtual void ToJsonFile(const char* path, bool format = true, XmlEncoding encoding = EncodingUTF8,
                            EOLType eol = EOLLf,
                            const CSerializationContext& context = CSerializationContext::m_defaultContext,
                            CompressionType compression = CompressionNone) const;
    // The object as XML text in the local code page.
    virtual std::string
    ToXml(bool decl = true, bool format = true, EOLType eol = EOLLf,
          const CSerializationContext& context = CSerializationContext::m_defaultContext) const;
    // The object as JSON text in the local code page.
    virtual std::string
    ToJson(bool format = true, EOLType eol = EOLLf,
           const CSerializationContext& context = CSerializationContext::m_defaultContext) const;
    // The object as XML text in bytes of the given encoding, compressed if asked.
    virtual CBinaryData
    ToXmlStream(bool decl = true, bool format = true, XmlEncoding encoding = EncodingUTF8,
                EOLType eol = EOLLf,
                const CSerializationContext& context = CSerializationContext::m_defaultContext,
                CompressionType compression = CompressionNone) const;
    // The object as Fast Infoset bytes, compressed if asked.
    virtual CBinaryData
    ToFastInfosetStream(FInfoDecl decl = FInfoDeclNone,
                        const CSerializationContext& context = CSerializationContext::m_defaultContext,
                        CompressionType compression = CompressionNone) const;
    // The object as JSON text in bytes of the given encoding, compressed if asked.
    virtual CBinaryData
    ToJsonStream(bool format = true, XmlEncoding encoding = EncodingUTF8, EOLType eol = EOLLf,
                 const CSerializationContext& context = CSerializationContext::m_defaultContext,
                 CompressionType compression = CompressionNone) const;

    // --- Input. Each fills the object in place; a failed read throws CQzException and leaves the
    // object partly filled.

    // Reads an XML, Fast Infoset or compressed file. File and parse failures come from
    // CXmlDocument::Load.
    virtual void FromXmlFile(const char* path,
                             const CSerializationContext& context = CSerializationContext::m_defaultContext);
    // Reads a JSON file.
    virtual void FromJsonFile(const char* path,
                              const CSerializationContext& context = CSerializationContext::m_defaultContext);
    // Reads XML text. The bytes are given to the parser as they are: UTF-8 unless a byte-order
    // mark or the XML declaration says otherwise.
    virtual void FromXml(const char* text,
                         const CSerializationContext& context = CSerializationContext::m_defaultContext);
    // Reads XML text given as wide characters (their low 16 bits, as UTF-16).
    virtual void FromXml(const wchar_t* text,
                         const CSerializationContext& context = CSerializationContext::m_defaultContext);
    // Reads JSON text.
    virtual void FromJson(const char* text,
                          const CSerializationContext& context = CSerializationContext::m_defaultContext);
    virtual void FromJson(const wchar_t* text,
                          const CSerializationContext& context = CSerializationContext::m_defaultContext);
    // Reads XML, Fast Infoset or compressed bytes; the bytes are copied.
    virtual void
    FromXmlStream(unsigned char* bytes, unsigned long length,
                  const CSerializationContext& context = CSerializationContext::m_defaultContext);
    virtual void
    FromXmlStream(const CBinaryData& data,
                  const CSerializationContext& context = CSerializationContext::m_defaultContext);
    // Reads JSON bytes.
    virtual void
    FromJsonStream(unsigned char* bytes, unsigned long length,
                   const CSerializationContext& context = CSerializationContext::m_defaultContext);
    virtual void
    FromJsonStream(const CBinaryData& data,
                   const CSerializationContext& context = CSerializationContext::m_defaultContext);
    // Reads from an element of a tree that the caller keeps; no document is made. Throws
    // CQzInvalidParamException "The element to read from is NULL" for a null element.
    virtual void
    FromXmlElement(const CXmlElement* element,
                   const CSerializationContext& context = CSerializationContext::m_defaultContext);
    // Reads from an any-element.
    virtual void
    FromXmlElement(const CElement* element,
                   const CSerializationContext& context = CSerializationContext::m_defaultContext);

    virtual ~CXmlObjectBase();

    // The namespace handed to ToXml_Int for the root element.
    virtual std::string GetTargetNamespace() const = 0;
    // The namespace in which the class's content sits.
    virtual std::string GetNamespace() const = 0;

    // --- Reference counting. Both return the new count.
    int32_t AddRef();
    // Deletes the object when the count reaches 0; the object must not be used afterwards.
    int32_t Release();

    // The local name of the element this object stands for; empty after construction.
    std::string GetElementName() const;
    // Null means "".
    void SetElementName(const char* name);

    // Forwards to the virtual GetBase().
    CXmlObjectBase* GetBase() const;

    // Static forwarders through which the meta-data classes reach the protected entry points.
    static void AttributesToXml_Int(const CXmlObjectBase* object, CXmlWriter* writer,
                                    const CSerializationContext& context);
    static void ToXml_Int(const CXmlObjectBase* object, CXmlWriter* writer, bool isRoot, const char* ns,
                          const CSerializationContext& context, bool inChoice);
    // Passes false as inChoice; returns the first child not consumed.
    static CXmlElement* FromXml_Int(CXmlObjectBase* object, CXmlElement* element, CXmlElement* firstChild,
                                    const CSerializationContext& context);

    // --- Helpers for generated property setters; nothing in the library calls them.

    // Throws CQzInvalidParamException "The Property [%s] is mandatory, it may node be NULL" for a
    // null value.
    static void Throw_IfPropertyIsNull(CXmlObjectBase* value, const char* name);
    // Throws CQzInvalidParamException when a non-null value stands for an element of another
    // name; a null value passes.
    static void Throw_IfElementNameDiffers(CXmlObjectBase* value, const char* name);
    // Confirms or clears the member in use of a choice: false clears `current`; true requires
    // `current` to equal `name` already and throws CQzInvalidStateException otherwise.
    // Note: a true on an empty choice throws too; this operation never makes a first selection.
    static void Choice_SetElementValid(bool valid, const char* name, std::string& current);
    // Selects `name` in the choice when a value is set, clears it when its value is nulled.
    // Throws CQzInvalidStateException when another member is in use and value is not null.
    // Note: a null value on an empty choice selects `name`; this stays as it is.
    static void Choice_SelectElement(const char* name, CXmlObjectBase* value, std::string& current);
    // As Choice_SelectElement for a collection member of a choice: count 0 clears, a count
    // above 0 selects; an empty selection stays empty for counts below 1.
    static void Choice_CollectionChanged(const char* name, int32_t count, std::string& current);

protected:
    // Writes the attributes of the object. Does nothing in this class.
    virtual void AttributesToXml_Int(CXmlWriter* writer, const CSerializationContext& context) const;
    // Writes the object as an element.
    virtual void ToXml_Int(CXmlWriter* writer, bool isRoot, const char* ns,
                           const CSerializationContext& context, bool inChoice) const = 0;
    // Reads the object from an element; returns the first child not consumed.
    virtual CXmlElement* FromXml_Int(CXmlElement* element, CXmlElement* firstChild,
                                     const CSerializationContext& context, bool inChoice) = 0;

private:
    std::string m_elementName;
    CQZCriticalSection m_lock;
    int32_t m_refCount;
};

} // namespace QzXmlLib16

#endif
