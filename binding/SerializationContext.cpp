// SerializationContext.cpp - the settings of a read or write and the shared default instance.
#include "binding/SerializationContext.h"

#include "foundation/Exceptions.h"

namespace QzXmlLib16 {

namespace {

// Messages
const char kMsgIgnoreBothUnknown[] =
    "The parser can only ignore additional elements, or ignore the fact that some required ones are "
    "missing, you can not ignore both\nSet IgnoreMissingMandatoryElements to false before setting "
    "IgnoreUnknownElements to true";
const char kMsgIgnoreBothMissing[] =
    "The parser can only ignore additional elements, or ignore the fact that some required ones are "
    "missing, you can not ignore both\nSet IgnoreUnknownElements to false before setting "
    "IgnoreMissingMandatoryElements to true";
// The "\t" here is the two characters backslash and t.
const char kMsgIndentChars[] = "IndentChars can only contain Whitespace characters, i.e. \\t or spaces";

inline const char* OrEmpty(const char* text) {
    return text ? text : "";
}

} // namespace

CSerializationContext CSerializationContext::m_defaultContext;

CSerializationContext::CSerializationContext()
    : m_pFIContext(nullptr), m_pJsonContext(nullptr), m_writeTypeAttribute(true),
      m_pAdditionalRootAttributes(nullptr), m_ignoreInvalidCollectionCounts(false),
      m_ignoreMissingChoice(false), m_ignoreMissingMandatoryElements(false), m_ignoreUnknownElements(false),
      m_ignoreUnknownAttributes(false), m_ignoreNamespaces(false), m_schemaType(SchemaTypeDefault),
      m_noOptionalAttributeDefaultOutput(false), m_writeDefaultElementValues(false), m_stripCDATA(true),
      m_indentChars("\t") {}

CSerializationContext::CSerializationContext(const CSerializationContext& other)
    : m_pFIContext(other.m_pFIContext), m_pJsonContext(other.m_pJsonContext),
      m_defaultNamespaceURI(other.m_defaultNamespaceURI), m_writeTypeAttribute(other.m_writeTypeAttribute),
      m_namespaceAliases(other.m_namespaceAliases),
      m_pAdditionalRootAttributes(other.m_pAdditionalRootAttributes),
      m_processingInstructions(other.m_processingInstructions), m_inLineSchema(other.m_inLineSchema),
      m_ignoreInvalidCollectionCounts(other.m_ignoreInvalidCollectionCounts),
      m_ignoreMissingChoice(other.m_ignoreMissingChoice),
      m_ignoreMissingMandatoryElements(other.m_ignoreMissingMandatoryElements),
      m_ignoreUnknownElements(other.m_ignoreUnknownElements),
      m_ignoreUnknownAttributes(other.m_ignoreUnknownAttributes),
      m_ignoreNamespaces(other.m_ignoreNamespaces), m_schemaType(other.m_schemaType),
      m_noOptionalAttributeDefaultOutput(other.m_noOptionalAttributeDefaultOutput),
      m_writeDefaultElementValues(other.m_writeDefaultElementValues), m_stripCDATA(other.m_stripCDATA),
      m_indentChars(other.m_indentChars) {}

CSerializationContext& CSerializationContext::operator=(const CSerializationContext& other) {
    if (this == &other)
        return *this;
    m_defaultNamespaceURI = other.m_defaultNamespaceURI;
    m_writeTypeAttribute = other.m_writeTypeAttribute;
    m_namespaceAliases = other.m_namespaceAliases;
    m_processingInstructions = other.m_processingInstructions;
    m_inLineSchema = other.m_inLineSchema;
    m_ignoreInvalidCollectionCounts = other.m_ignoreInvalidCollectionCounts;
    m_ignoreMissingChoice = other.m_ignoreMissingChoice;
    m_ignoreMissingMandatoryElements = other.m_ignoreMissingMandatoryElements;
    m_ignoreUnknownElements = other.m_ignoreUnknownElements;
    m_ignoreUnknownAttributes = other.m_ignoreUnknownAttributes;
    m_ignoreNamespaces = other.m_ignoreNamespaces;
    m_schemaType = other.m_schemaType;
    m_noOptionalAttributeDefaultOutput = other.m_noOptionalAttributeDefaultOutput;
    m_writeDefaultElementValues = other.m_writeDefaultElementValues;
    m_stripCDATA = other.m_stripCDATA;
    m_indentChars = other.m_indentChars;
    return *this;
}

// The sub-contexts are deleted here once their classes join the library; until then the
// pointers are never set.
CSerializationContext::~CSerializationContext() {}

std::string CSerializationContext::GetDefaultNamespaceURI() const {
    return m_defaultNamespaceURI;
}
void CSerializationContext::SetDefaultNamespaceURI(const char* uri) {
    m_defaultNamespaceURI = OrEmpty(uri);
}

bool CSerializationContext::GetWriteTypeAttribute() const {
    return m_writeTypeAttribute;
}
void CSerializationContext::SetWriteTypeAttribute(bool value) {
    m_writeTypeAttribute = value;
}

CNamespaceAliasMap& CSerializationContext::GetNamespaceAliases() {
    return m_namespaceAliases;
}
const CNamespaceAliasMap& CSerializationContext::GetNamespaceAliases() const {
    return m_namespaceAliases;
}

std::vector<std::string>& CSerializationContext::GetProcessingInstructions() {
    return m_processingInstructions;
}
const std::vector<std::string>& CSerializationContext::GetProcessingInstructions() const {
    return m_processingInstructions;
}

std::string CSerializationContext::GetInLineSchema() const {
    return m_inLineSchema;
}
void CSerializationContext::SetInLineSchema(const char* schema) {
    m_inLineSchema = OrEmpty(schema);
}

bool CSerializationContext::GetIgnoreInvalidCollectionCounts() const {
    return m_ignoreInvalidCollectionCounts;
}
void CSerializationContext::SetIgnoreInvalidCollectionCounts(bool value) {
    m_ignoreInvalidCollectionCounts = value;
}

bool CSerializationContext::GetIgnoreMissingChoice() const {
    return m_ignoreMissingChoice;
}
void CSerializationContext::SetIgnoreMissingChoice(bool value) {
    m_ignoreMissingChoice = value;
}

bool CSerializationContext::GetIgnoreMissingMandatoryElements() const {
    return m_ignoreMissingMandatoryElements;
}
void CSerializationContext::SetIgnoreMissingMandatoryElements(bool value) {
    if (value && m_ignoreUnknownElements)
        throw CQzInvalidStateException(kMsgIgnoreBothMissing);
    m_ignoreMissingMandatoryElements = value;
}

bool CSerializationContext::GetIgnoreUnknownElements() const {
    return m_ignoreUnknownElements;
}
void CSerializationContext::SetIgnoreUnknownElements(bool value) {
    if (value && m_ignoreMissingMandatoryElements)
        throw CQzInvalidStateException(kMsgIgnoreBothUnknown);
    m_ignoreUnknownElements = value;
}

bool CSerializationContext::GetIgnoreUnknownAttributes() const {
    return m_ignoreUnknownAttributes;
}
void CSerializationContext::SetIgnoreUnknownAttributes(bool value) {
    m_ignoreUnknownAttributes = value;
}

bool CSerializationContext::GetIgnoreNamespaces() const {
    return m_ignoreNamespaces || m_schemaType == SchemaTypeNoNamespaces;
}
void CSerializationContext::SetIgnoreNamespaces(bool value) {
    m_ignoreNamespaces = value;
}

SchemaType CSerializationContext::GetSchemaType() const {
    return m_schemaType;
}
void CSerializationContext::SetSchemaType(SchemaType type) {
    m_schemaType = type;
}
void CSerializationContext::SetSchemaType(int type) {
    m_schemaType = static_cast<SchemaType>(type);
}

bool CSerializationContext::GetNoOptionalAttributeDefaultOutput() const {
    return m_noOptionalAttributeDefaultOutput;
}
void CSerializationContext::SetNoOptionalAttributeDefaultOutput(bool value) {
    m_noOptionalAttributeDefaultOutput = value;
}

bool CSerializationContext::GetWriteDefaultElementValues() const {
    return m_writeDefaultElementValues;
}
void CSerializationContext::SetWriteDefaultElementValues(bool value) {
    m_writeDefaultElementValues = value;
}

bool CSerializationContext::GetStripCDATA() const {
    return m_stripCDATA;
}
void CSerializationContext::SetStripCDATA(bool value) {
    m_stripCDATA = value;
}

std::string CSerializationContext::GetIndentChars() const {
    return m_indentChars;
}
void CSerializationContext::SetIndentChars(const char* chars) {
    const char* text = OrEmpty(chars);
    for (const char* p = text; *p; ++p) {
        if (*p != ' ' && *p != '\t')
            throw CQzInvalidParamException(kMsgIndentChars);
    }
    m_indentChars = text;
}

} // namespace QzXmlLib16
