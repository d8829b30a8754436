// NamespaceAliasMap.cpp - the caller's table of preferred prefixes, keyed by namespace URI.
#include "tree/NamespaceAliasMap.h"

#include "foundation/Exceptions.h"

namespace QzXmlLib16 {

namespace {

// Argument handling
inline const char* OrEmpty(const char* text) {
    return text ? text : "";
}

} // namespace

CNamespaceAliasMap::CNamespaceAliasMap() {}

CNamespaceAliasMap::~CNamespaceAliasMap() {}

void CNamespaceAliasMap::Add(const char* alias, const char* uri) {
    m_aliases[OrEmpty(uri)] = OrEmpty(alias);
}

void CNamespaceAliasMap::RemoveNamespace(const char* uri) {
    m_aliases.erase(OrEmpty(uri));
}

std::string CNamespaceAliasMap::GetNamespaceFromAlias(const char* alias) const {
    const char* wanted = OrEmpty(alias);
    for (const auto& entry : m_aliases) {
        if (entry.second == wanted)
            return entry.first;
    }
    throw CQzException(FormatString("Namespace alias [%s] not found", wanted));
}

std::string CNamespaceAliasMap::GetAliasFromNamespace(const char* uri) const {
    return m_aliases[OrEmpty(uri)];
}

bool CNamespaceAliasMap::DoesNamespaceExist(const char* uri) const {
    return m_aliases.find(OrEmpty(uri)) != m_aliases.end();
}

bool CNamespaceAliasMap::DoesAliasExist(const char* alias) const {
    const char* wanted = OrEmpty(alias);
    for (const auto& entry : m_aliases) {
        if (entry.second == wanted)
            return true;
    }
    return false;
}

int CNamespaceAliasMap::GetNamespaceCount() const {
    return static_cast<int>(m_aliases.size());
}

std::string CNamespaceAliasMap::GetNamespaceAt(int index) const {
    if (index < 0 || static_cast<size_t>(index) >= m_aliases.size())
        return std::string();
    auto it = m_aliases.begin();
    for (int i = 0; i < index; ++i)
        ++it;
    return it->first;
}

} // namespace QzXmlLib16
