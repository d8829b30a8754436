// Tests of CNamespaceAliasMap: one alias per URI, look-ups both ways, and the inserting
// look-up that callers must know about.
#include <gtest/gtest.h>

#include "foundation/Exceptions.h"
#include "tree/NamespaceAliasMap.h"
#include "support/TestSupport.h"

using namespace QzXmlLib16;

TEST(CNamespaceAliasMapTest, SecondAliasForAUriReplacesTheFirst) {
    CNamespaceAliasMap map;
    map.Add("p", "urn:a");
    map.Add("q", "urn:a");
    EXPECT_EQ(1, map.GetNamespaceCount());
    EXPECT_EQ("q", map.GetAliasFromNamespace("urn:a"));
    EXPECT_FALSE(map.DoesAliasExist("p"));
    EXPECT_TRUE(map.DoesAliasExist("q"));
}

// One alias may stand for several URIs; the reverse look-up takes the smallest URI; an unknown
// alias is refused.
TEST(CNamespaceAliasMapTest, AliasForSeveralUrisFindsTheSmallest) {
    CNamespaceAliasMap map;
    map.Add("p", "urn:b");
    map.Add("p", "urn:a");
    EXPECT_EQ(2, map.GetNamespaceCount());
    EXPECT_EQ("urn:a", map.GetNamespaceFromAlias("p"));
    EXPECT_EQ("Namespace alias [none] not found",
              QzTest::MessageOf([&] { map.GetNamespaceFromAlias("none"); }));
}

// Note pinned: the const look-up of an unknown URI inserts it with an empty alias.
TEST(CNamespaceAliasMapTest, AliasOfUnknownUriInsertsAnEntry) {
    CNamespaceAliasMap map;
    map.Add("p", "urn:a");
    const CNamespaceAliasMap& view = map;
    EXPECT_FALSE(view.DoesNamespaceExist("urn:none"));
    EXPECT_EQ("", view.GetAliasFromNamespace("urn:none"));
    EXPECT_EQ(2, view.GetNamespaceCount());
    EXPECT_TRUE(view.DoesNamespaceExist("urn:none"));
    // The inserted empty alias can then be found like any other.
    EXPECT_EQ("urn:none", view.GetNamespaceFromAlias(""));
}

TEST(CNamespaceAliasMapTest, RemoveAndPositions) {
    CNamespaceAliasMap map;
    map.RemoveNamespace("urn:unknown"); // nothing to remove, no failure
    map.Add("c", "urn:c");
    map.Add("a", "urn:a");
    map.Add("b", "urn:b");
    EXPECT_EQ("urn:a", map.GetNamespaceAt(0));
    EXPECT_EQ("urn:b", map.GetNamespaceAt(1));
    EXPECT_EQ("urn:c", map.GetNamespaceAt(2));
    map.RemoveNamespace("urn:b");
    EXPECT_EQ(2, map.GetNamespaceCount());
    EXPECT_EQ("urn:c", map.GetNamespaceAt(1));
    EXPECT_FALSE(map.DoesNamespaceExist("urn:b"));
    // Outside the entries: an empty string rather than a walk off the end.
    EXPECT_EQ("", map.GetNamespaceAt(2));
    EXPECT_EQ("", map.GetNamespaceAt(-1));
    CNamespaceAliasMap copy(map); // copies are independent
    copy.Add("q", "urn:q");
    EXPECT_EQ(2, map.GetNamespaceCount());
    EXPECT_EQ(3, copy.GetNamespaceCount());
}
