// NamespaceAliasMap.h - CNamespaceAliasMap, the caller's table of preferred namespace prefixes.
//
// A CSerializationContext (binding/SerializationContext.h) holds one; the write of a root
// element hands its entries to the writer so that output uses the prefixes the user chose.
#ifndef QZXML_TREE_NAMESPACEALIASMAP_H
#define QZXML_TREE_NAMESPACEALIASMAP_H

#include <map>
#include <string>

namespace QzXmlLib16 {

// Entries are keyed by namespace URI, so they are ordered by URI and a URI has one alias;
// one alias may stand for several URIs. No lock: see GetAliasFromNamespace.
class CNamespaceAliasMap {
public:
    CNamespaceAliasMap();
    virtual ~CNamespaceAliasMap();

    // Sets the alias of the URI, inserting or overwriting. Null counts as "".
    void Add(const char* alias, const char* uri);
    // Erases the URI's entry; an unknown URI is no failure.
    void RemoveNamespace(const char* uri);
    // The URI of the first entry, in URI order, whose alias equals the argument.
    // Throws CQzException "Namespace alias [%s] not found" when no entry has it.
    std::string GetNamespaceFromAlias(const char* alias) const;
    // The alias of the URI.
    // Note: an unknown URI is inserted with an empty alias and "" is returned, so this const
    // operation changes the map and raises GetNamespaceCount. Do not call it concurrently.
    std::string GetAliasFromNamespace(const char* uri) const;
    // True if the URI has an entry.
    bool DoesNamespaceExist(const char* uri) const;
    // True if any entry has this alias.
    bool DoesAliasExist(const char* alias) const;
    // The number of entries.
    int GetNamespaceCount() const;
    // The URI of the entry at this place in URI order. The index must lie below
    // GetNamespaceCount(); "" is returned for anything else.
    std::string GetNamespaceAt(int index) const;

private:
    mutable std::map<std::string, std::string> m_aliases; // URI -> alias
};

} // namespace QzXmlLib16

#endif
