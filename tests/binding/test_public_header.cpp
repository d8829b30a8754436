// The umbrella header compiles on its own and brings in the whole public interface.
#include "QzXmlLib16.h"

#include <gtest/gtest.h>

namespace {

TEST(PublicHeader, DeclaresTheMainClasses) {
    using namespace QzXmlLib16;
    CSerializationContext context;
    CXmlDocument document(context);
    document.LoadXml("<a><b>text</b></a>");
    ASSERT_NE(nullptr, document.GetDocumentElement());
    EXPECT_EQ("/a/b", document.GetDocumentElement()->GetFirstElement()->GetXPath());
    EXPECT_EQ(1, EncodingUTF8);
    EXPECT_EQ(1, EOLLf);
    EXPECT_EQ(2, CompressionZlib);
}

} // namespace
