// Tests of compressed output read back: gzip and zlib streams, gzip files, in every
// encoding; the reader recognises compressed input by itself.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "foundation/QzZip.h"
#include "writers/OutputTestHelpers.h"

using namespace QzXmlLib16;
using namespace QzXmlTest;

namespace {

// A document long and repetitive enough to shrink under level-1 deflate.
std::string RepetitiveDocument(int count) {
    std::string source = "<r xmlns='urn:r'>";
    for (int i = 0; i < count; ++i)
        source +=
            "<item n='" + std::to_string(i) + "'>value &amp; more " + std::to_string(i % 13) + "</item>";
    return source + "</r>";
}

std::string Inflate(const std::string& bytes) {
    unsigned long length = static_cast<unsigned long>(bytes.size());
    unsigned char* data = new unsigned char[length];
    std::memcpy(data, bytes.data(), length);
    CQzZip::Decompress(&data, &length);
    std::string result(reinterpret_cast<const char*>(data), length);
    delete[] data;
    return result;
}

const CSerializationContext& Default() {
    return CSerializationContext::m_defaultContext;
}

} // namespace

// Both wrappers, every encoding: the bytes read back give the same compressed bytes again.
TEST(CompressedOutputTest, StreamsRoundTripInEveryEncoding) {
    const std::string canonical = Load(RepetitiveDocument(500))->ToXml(true, true, EOLLf);
    for (CompressionType compression : {CompressionGzip, CompressionZlib}) {
        for (XmlEncoding encoding : {EncodingUTF8, EncodingUTF16, EncodingUnicode}) {
            SCOPED_TRACE(std::to_string(compression) + "/" + std::to_string(encoding));
            CSmartPtr<CTreeObject> object = Load(canonical);
            CBinaryData packed = object->ToXmlStream(true, true, encoding, EOLCrLf, Default(), compression);
            CBinaryData plain = object->ToXmlStream(true, true, encoding, EOLCrLf);
            ASSERT_GT(packed.GetLength(), 2u);
            EXPECT_LT(packed.GetLength(), plain.GetLength() / 4);
            if (compression == CompressionGzip) {
                EXPECT_EQ(0x1F, packed.GetData()[0]);
                EXPECT_EQ(0x8B, packed.GetData()[1]);
            } else {
                EXPECT_EQ(0x78, packed.GetData()[0]); // deflate, 32 KB window
            }
            CSmartPtr<CTreeObject> again(new CTreeObject());
            again->FromXmlStream(packed);
            EXPECT_EQ(canonical, again->ToXml(true, true, EOLLf));
            EXPECT_TRUE(packed == again->ToXmlStream(true, true, encoding, EOLCrLf, Default(), compression));
        }
    }
}

// With the direct switch on, a gzip file still takes the buffered road, and reads back.
TEST(CompressedOutputTest, GzipFileTakesBufferedPathAndReadsBack) {
    CSmartPtr<CTreeObject> object = Load(RepetitiveDocument(300));
    const std::string path = TempPath("gzip.xml.gz");
    for (bool direct : {false, true}) {
        for (XmlEncoding encoding : {EncodingUTF8, EncodingUTF16}) {
            SCOPED_TRACE(std::to_string(direct) + "/" + std::to_string(encoding));
            AsyncGuard async(direct);
            object->ToXmlFile(path.c_str(), true, true, encoding, EOLLf, Default(), CompressionGzip);
            const std::string bytes = ReadFile(path);
            // No mark stands in front of the gzip member; the file inflates to the bytes
            // of the uncompressed file, mark included.
            ASSERT_GT(bytes.size(), 2u);
            EXPECT_EQ('\x1F', bytes[0]);
            EXPECT_EQ('\x8B', bytes[1]);
            {
                AsyncGuard buffered(false);
                object->ToXmlFile(path.c_str(), true, true, encoding, EOLLf);
            }
            EXPECT_EQ(ReadFile(path), Inflate(bytes));
            object->ToXmlFile(path.c_str(), true, true, encoding, EOLLf, Default(), CompressionGzip);
            CSmartPtr<CTreeObject> again(new CTreeObject());
            again->FromXmlFile(path.c_str());
            EXPECT_EQ(object->ToXml(), again->ToXml());
        }
    }
    std::remove(path.c_str());
}
