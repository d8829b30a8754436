// Tests of CSerializationContext: defaults, the two flags that exclude each other, indent
// characters, the schema type and copying.
#include <gtest/gtest.h>

#include "binding/SerializationContext.h"
#include "foundation/Exceptions.h"
#include "support/TestSupport.h"

using QzTest::MessageOf;

using namespace QzXmlLib16;

TEST(CSerializationContextTest, Defaults) {
    CSerializationContext context;
    EXPECT_TRUE(context.GetStripCDATA());
    EXPECT_TRUE(context.GetWriteTypeAttribute());
    EXPECT_EQ("\t", context.GetIndentChars());
    EXPECT_EQ("", context.GetDefaultNamespaceURI());
    EXPECT_EQ("", context.GetInLineSchema());
    EXPECT_EQ(SchemaTypeDefault, context.GetSchemaType());
    EXPECT_FALSE(context.GetIgnoreInvalidCollectionCounts());
    EXPECT_FALSE(context.GetIgnoreMissingChoice());
    EXPECT_FALSE(context.GetIgnoreMissingMandatoryElements());
    EXPECT_FALSE(context.GetIgnoreUnknownElements());
    EXPECT_FALSE(context.GetIgnoreUnknownAttributes());
    EXPECT_FALSE(context.GetIgnoreNamespaces());
    EXPECT_FALSE(context.GetNoOptionalAttributeDefaultOutput());
    EXPECT_FALSE(context.GetWriteDefaultElementValues());
    EXPECT_EQ(0, context.GetNamespaceAliases().GetNamespaceCount());
    EXPECT_TRUE(context.GetProcessingInstructions().empty());
    // The shared default starts the same way.
    EXPECT_TRUE(CSerializationContext::m_defaultContext.GetStripCDATA());
    EXPECT_EQ("\t", CSerializationContext::m_defaultContext.GetIndentChars());
}

TEST(CSerializationContextTest, UnknownAndMissingExcludeEachOther) {
    const std::string both =
        "The parser can only ignore additional elements, or ignore the fact that some required "
        "ones are missing, you can not ignore both\n";
    CSerializationContext context;
    context.SetIgnoreMissingMandatoryElements(true);
    // Turning the other one off always works.
    EXPECT_NO_THROW(context.SetIgnoreUnknownElements(false));
    EXPECT_EQ(both +
                  "Set IgnoreMissingMandatoryElements to false before setting IgnoreUnknownElements to true",
              MessageOf<CQzInvalidStateException>([&] { context.SetIgnoreUnknownElements(true); }));
    EXPECT_FALSE(context.GetIgnoreUnknownElements());

    context.SetIgnoreMissingMandatoryElements(false);
    context.SetIgnoreUnknownElements(true);
    EXPECT_EQ(both +
                  "Set IgnoreUnknownElements to false before setting IgnoreMissingMandatoryElements to true",
              MessageOf<CQzInvalidStateException>([&] { context.SetIgnoreMissingMandatoryElements(true); }));
    EXPECT_FALSE(context.GetIgnoreMissingMandatoryElements());
    EXPECT_TRUE(context.GetIgnoreUnknownElements());
}

TEST(CSerializationContextTest, IndentCharsAcceptOnlyBlanksAndTabs) {
    CSerializationContext context;
    context.SetIndentChars("  \t");
    EXPECT_EQ("  \t", context.GetIndentChars());
    for (const char* bad : {"\n", " x", "\r", "\t\v"}) {
        SCOPED_TRACE(bad);
        // The "\t" of the message is a backslash and a t.
        EXPECT_EQ("IndentChars can only contain Whitespace characters, i.e. \\t or spaces",
                  MessageOf<CQzInvalidParamException>([&] { context.SetIndentChars(bad); }));
        EXPECT_EQ("  \t", context.GetIndentChars());
    }
    context.SetIndentChars("");
    EXPECT_EQ("", context.GetIndentChars());
    context.SetIndentChars(" ");
    context.SetIndentChars(nullptr);
    EXPECT_EQ("", context.GetIndentChars());
}

// Schema type 2 answers true without touching the flag: going back to another type answers
// false again. The type is taken by name, through the class, and as a number.
TEST(CSerializationContextTest, NoNamespaceSchemaImpliesIgnoreNamespaces) {
    CSerializationContext context;
    context.SetSchemaType(SchemaTypeNoNamespaces);
    EXPECT_TRUE(context.GetIgnoreNamespaces());
    context.SetSchemaType(SchemaTypeReserved);
    EXPECT_FALSE(context.GetIgnoreNamespaces());
    context.SetSchemaType(2);
    EXPECT_EQ(CSerializationContext::SchemaTypeNoNamespaces, context.GetSchemaType());
    EXPECT_TRUE(context.GetIgnoreNamespaces());
    context.SetSchemaType(7); // kept, but means nothing
    EXPECT_EQ(7, context.GetSchemaType());
    EXPECT_FALSE(context.GetIgnoreNamespaces());
    context.SetSchemaType(CSerializationContext::SchemaTypeDefault);
    EXPECT_EQ(SchemaTypeDefault, context.GetSchemaType());
    context.SetIgnoreNamespaces(true);
    EXPECT_TRUE(context.GetIgnoreNamespaces());
}

TEST(CSerializationContextTest, CopyTakesEverySetting) {
    CSerializationContext context;
    context.SetDefaultNamespaceURI("urn:d");
    context.SetWriteTypeAttribute(false);
    context.GetNamespaceAliases().Add("p", "urn:p");
    context.GetProcessingInstructions().push_back("pi data");
    context.SetInLineSchema("s");
    context.SetIgnoreInvalidCollectionCounts(true);
    context.SetIgnoreMissingChoice(true);
    context.SetIgnoreUnknownElements(true);
    context.SetIgnoreUnknownAttributes(true);
    context.SetIgnoreNamespaces(true);
    context.SetSchemaType(SchemaTypeNoNamespaces);
    context.SetNoOptionalAttributeDefaultOutput(true);
    context.SetWriteDefaultElementValues(true);
    context.SetStripCDATA(false);
    context.SetIndentChars("  ");

    CSerializationContext copy(context);
    CSerializationContext assigned, nulls(context);
    nulls.SetDefaultNamespaceURI(nullptr); // a null string is taken as empty
    nulls.SetInLineSchema(nullptr);
    EXPECT_EQ("", nulls.GetDefaultNamespaceURI());
    EXPECT_EQ("", nulls.GetInLineSchema());
    assigned = context;
    for (const CSerializationContext* c : {&copy, &assigned}) {
        EXPECT_EQ("urn:d", c->GetDefaultNamespaceURI());
        EXPECT_FALSE(c->GetWriteTypeAttribute());
        EXPECT_EQ("p", c->GetNamespaceAliases().GetAliasFromNamespace("urn:p"));
        ASSERT_EQ(1u, c->GetProcessingInstructions().size());
        EXPECT_EQ("pi data", c->GetProcessingInstructions()[0]);
        EXPECT_EQ("s", c->GetInLineSchema());
        EXPECT_TRUE(c->GetIgnoreInvalidCollectionCounts());
        EXPECT_TRUE(c->GetIgnoreMissingChoice());
        EXPECT_TRUE(c->GetIgnoreUnknownElements());
        EXPECT_TRUE(c->GetIgnoreUnknownAttributes());
        EXPECT_TRUE(c->GetIgnoreNamespaces());
        EXPECT_EQ(SchemaTypeNoNamespaces, c->GetSchemaType());
        EXPECT_TRUE(c->GetNoOptionalAttributeDefaultOutput());
        EXPECT_TRUE(c->GetWriteDefaultElementValues());
        EXPECT_FALSE(c->GetStripCDATA());
        EXPECT_EQ("  ", c->GetIndentChars());
    }
    // The alias table is copied, not shared.
    copy.GetNamespaceAliases().Add("q", "urn:q");
    EXPECT_FALSE(context.GetNamespaceAliases().DoesNamespaceExist("urn:q"));
}
