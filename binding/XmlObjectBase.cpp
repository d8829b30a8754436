// XmlObjectBase.cpp - reference counting, the From* entry points for XML, and the helpers that
// generated property setters call to keep a choice consistent.
#include "binding/XmlObjectBase.h"

#include <cstring>

#include "foundation/Exceptions.h"
#include "tree/XmlDocument.h"
#include "values/BinaryData.h"

namespace QzXmlLib16 {

namespace {

// Messages
const char kMsgPropertyIsNull[] = "The Property [%s] is mandatory, it may node be NULL";
const char kMsgElementNameDiffers[] =
    "This property requires an element with the name %s the element being set has the element name %s";
const char kMsgChoiceSetNoBrackets[] =
    "The Property %s is already set. Only one element within this class bay be set at a time";
const char kMsgChoiceSet[] =
    "The Property [%s] is already set. Only one element within this class bay be set at a time";
const char kMsgNullElement[] = "The element to read from is NULL";
const char kMsgNotAvailable[] = "%s is not available in this build";

inline const char* OrEmpty(const char* text) {
    return text ? text : "";
}

// Fills the object from the document element of a loaded document.
void ReadDocument(CXmlObjectBase* object, CXmlDocument& document, const CSerializationContext& context) {
    CXmlElement* root = document.GetDocumentElement();
    CXmlObjectBase::FromXml_Int(object, root, root->GetFirstElement(), context);
}

} // namespace

// --- Construction and reference counting

CXmlObjectBase::CXmlObjectBase() : m_refCount(0) {}

CXmlObjectBase::CXmlObjectBase(const CXmlObjectBase& other)
    : IEventSink(other), m_elementName(other.m_elementName), m_refCount(0) {}

CXmlObjectBase& CXmlObjectBase::operator=(const CXmlObjectBase& other) {
    m_elementName = other.m_elementName;
    return *this;
}

CXmlObjectBase::~CXmlObjectBase() {}

int32_t CXmlObjectBase::AddRef() {
    m_lock.Enter();
    int32_t count = ++m_refCount;
    m_lock.Leave();
    return count;
}

int32_t CXmlObjectBase::Release() {
    m_lock.Enter();
    int32_t count = --m_refCount;
    m_lock.Leave();
    if (count == 0)
        delete this;
    return count;
}

void CXmlObjectBase::OnEvent(CXmlObjectBase*, IEventSink::MsgType, void*) {}

std::string CXmlObjectBase::GetElementName() const {
    return m_elementName;
}

void CXmlObjectBase::SetElementName(const char* name) {
    m_elementName = OrEmpty(name);
}

CXmlObjectBase* CXmlObjectBase::GetBase() const {
    return const_cast<CXmlObjectBase*>(this)->GetBase();
}

// --- Static forwarders

void CXmlObjectBase::AttributesToXml_Int(const CXmlObjectBase* object, CXmlWriter* writer,
                                         const CSerializationContext& context) {
    object->AttributesToXml_Int(writer, context);
}

void CXmlObjectBase::ToXml_Int(const CXmlObjectBase* object, CXmlWriter* writer, bool isRoot, const char* ns,
                               const CSerializationContext& context, bool inChoice) {
    object->ToXml_Int(writer, isRoot, ns, context, inChoice);
}

CXmlElement* CXmlObjectBase::FromXml_Int(CXmlObjectBase* object, CXmlElement* element,
                                         CXmlElement* firstChild, const CSerializationContext& context) {
    return object->FromXml_Int(element, firstChild, context, false);
}

void CXmlObjectBase::AttributesToXml_Int(CXmlWriter*, const CSerializationContext&) const {}

// --- Input

void CXmlObjectBase::FromXmlFile(const char* path, const CSerializationContext& context) {
    CXmlDocument document(context);
    document.Load(path);
    ReadDocument(this, document, context);
}

void CXmlObjectBase::FromXml(const char* text, const CSerializationContext& context) {
    CXmlDocument document(context);
    document.LoadXml(text);
    ReadDocument(this, document, context);
}

void CXmlObjectBase::FromXml(const wchar_t* text, const CSerializationContext& context) {
    CXmlDocument document(context);
    document.LoadXml(text);
    ReadDocument(this, document, context);
}

void CXmlObjectBase::FromXmlStream(unsigned char* bytes, unsigned long length,
                                   const CSerializationContext& context) {
    CXmlDocument document(context);
    document.LoadXmlStream(bytes, length);
    ReadDocument(this, document, context);
}

void CXmlObjectBase::FromXmlStream(const CBinaryData& data, const CSerializationContext& context) {
    FromXmlStream(const_cast<unsigned char*>(data.GetData()), data.GetLength(), context);
}

void CXmlObjectBase::FromXmlElement(const CXmlElement* element, const CSerializationContext& context) {
    if (element == nullptr)
        throw CQzInvalidParamException(kMsgNullElement);
    CXmlElement* target = const_cast<CXmlElement*>(element);
    FromXml_Int(target, target->GetFirstElement(), context, false);
}

// The JSON and any-element forms join with their readers.
void CXmlObjectBase::FromJsonFile(const char*, const CSerializationContext&) {
    throw CQzException(FormatString(kMsgNotAvailable, "FromJsonFile"));
}

void CXmlObjectBase::FromJson(const char*, const CSerializationContext&) {
    throw CQzException(FormatString(kMsgNotAvailable, "FromJson"));
}

void CXmlObjectBase::FromJson(const wchar_t*, const CSerializationContext&) {
    throw CQzException(FormatString(kMsgNotAvailable, "FromJson"));
}

void CXmlObjectBase::FromJsonStream(unsigned char*, unsigned long, const CSerializationContext&) {
    throw CQzException(FormatString(kMsgNotAvailable, "FromJsonStream"));
}

void CXmlObjectBase::FromJsonStream(const CBinaryData&, const CSerializationContext&) {
    throw CQzException(FormatString(kMsgNotAvailable, "FromJsonStream"));
}

void CXmlObjectBase::FromXmlElement(const CElement*, const CSerializationContext&) {
    throw CQzException(FormatString(kMsgNotAvailable, "FromXmlElement"));
}

// --- Helpers for generated setters

void CXmlObjectBase::Throw_IfPropertyIsNull(CXmlObjectBase* value, const char* name) {
    if (value == nullptr)
        throw CQzInvalidParamException(FormatString(kMsgPropertyIsNull, OrEmpty(name)));
}

void CXmlObjectBase::Throw_IfElementNameDiffers(CXmlObjectBase* value, const char* name) {
    if (value == nullptr)
        return;
    std::string actual = value->GetBase()->GetElementName();
    if (std::strcmp(actual.c_str(), OrEmpty(name)) != 0)
        throw CQzInvalidParamException(FormatString(kMsgElementNameDiffers, OrEmpty(name), actual.c_str()));
}

void CXmlObjectBase::Choice_SetElementValid(bool valid, const char* name, std::string& current) {
    if (!valid) {
        current.clear();
        return;
    }
    if (current != OrEmpty(name))
        throw CQzInvalidStateException(FormatString(kMsgChoiceSetNoBrackets, current.c_str()));
    current = OrEmpty(name);
}

void CXmlObjectBase::Choice_SelectElement(const char* name, CXmlObjectBase* value, std::string& current) {
    const char* wanted = OrEmpty(name);
    if (current.empty()) {
        current = wanted;
    } else if (std::strcmp(current.c_str(), wanted) == 0) {
        if (value == nullptr)
            current.clear();
    } else if (value != nullptr) {
        throw CQzInvalidStateException(FormatString(kMsgChoiceSet, current.c_str()));
    }
}

void CXmlObjectBase::Choice_CollectionChanged(const char* name, int32_t count, std::string& current) {
    const char* wanted = OrEmpty(name);
    if (current.empty()) {
        if (count >= 1)
            current = wanted;
    } else if (std::strcmp(current.c_str(), wanted) == 0) {
        if (count == 0)
            current.clear();
    } else if (count != 0) {
        throw CQzInvalidStateException(FormatString(kMsgChoiceSet, current.c_str()));
    }
}

} // namespace QzXmlLib16
