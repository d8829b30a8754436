// XmlObjectBaseOutput.cpp - the To* entry points of CXmlObjectBase. Each builds a writer on a
// stream and calls the object's ToXml_Int; the writers join the library one by one, and an
// entry point whose writer is not there yet reports that.
#include "binding/XmlObjectBase.h"

#include "foundation/Exceptions.h"
#include "values/BinaryData.h"

namespace QzXmlLib16 {

namespace {

// Messages
[[noreturn]] void ThrowNotAvailable(const char* operation) {
    throw CQzException(FormatString("%s is not available in this build", operation));
}

} // namespace

void CXmlObjectBase::ToXmlFile(const char*, bool, bool, XmlEncoding, EOLType, const CSerializationContext&,
                               CompressionType) const {
    ThrowNotAvailable("ToXmlFile");
}

void CXmlObjectBase::ToFastInfosetFile(const char*, FInfoDecl, const CSerializationContext&, CompressionType) const {
    ThrowNotAvailable("ToFastInfosetFile");
}

void CXmlObjectBase::ToJsonFile(const char*, bool, XmlEncoding, EOLType, const CSerializationContext&,
                                CompressionType) const {
    ThrowNotAvailable("ToJsonFile");
}

std::string CXmlObjectBase::ToXml(bool, bool, EOLType, const CSerializationContext&) const {
    ThrowNotAvailable("ToXml");
}

std::string CXmlObjectBase::ToJson(bool, EOLType, const CSerializationContext&) const { ThrowNotAvailable("ToJson"); }

CBinaryData CXmlObjectBase::ToXmlStream(bool, bool, XmlEncoding, EOLType, const CSerializationContext&,
                                        CompressionType) const {
    ThrowNotAvailable("ToXmlStream");
}

CBinaryData CXmlObjectBase::ToFastInfosetStream(FInfoDecl, const CSerializationContext&, CompressionType) const {
    ThrowNotAvailable("ToFastInfosetStream");
}

CBinaryData CXmlObjectBase::ToJsonStream(bool, XmlEncoding, EOLType, const CSerializationContext&,
                                         CompressionType) const {
    ThrowNotAvailable("ToJsonStream");
}

} // namespace QzXmlLib16
