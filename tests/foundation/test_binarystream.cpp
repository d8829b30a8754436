// Tests of CBinaryStream (byte collection, sharing with the caller's data) and
// CFileBinaryStream::ToFile (mark, failures with the path in the message).
#include "foundation/BinaryStream.h"

#include "foundation/Exceptions.h"
#include "stream_files.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <string>

using namespace QzXmlLib16;
using streamtest::ReadFile;
using streamtest::TempDir;

namespace {

std::string Bytes(const CBinaryData& data) {
    return std::string(reinterpret_cast<const char*>(data.GetData()), data.GetLength());
}

// Runs ToFile and returns the message it raised, or "<no exception>".
std::string ToFileMessage(CFileBinaryStream& stream) {
    return QzTest::MessageOf([&] { stream.ToFile(); });
}

const std::string kMark("\xFF\xFE", 2);

} // namespace

// Every Append form lands in order; null and empty appends add nothing.
TEST(CBinaryStreamTest, AppendsCollectInOrder) {
    CBinaryStream stream;
    EXPECT_EQ(0u, stream.GetBinaryStream().GetLength());
    stream.Append(static_cast<unsigned char>('a'));
    unsigned char bc[] = {'b', 'c'};
    stream.Append(bc, 2);
    stream.Append(nullptr, 5);
    stream.Append(bc, 0);
    stream.Append(CBinaryData("de"));
    stream.Append(CBinaryData());
    stream.Append(static_cast<unsigned char>(0));
    stream.Append(static_cast<unsigned char>(0xFF));
    EXPECT_EQ(std::string("abcde\0\xFF", 7), Bytes(stream.GetBinaryStream()));
}

// A stream appended to itself doubles its bytes instead of reading freed memory.
TEST(CBinaryStreamTest, AppendOwnData) {
    class Exposed : public CBinaryStream {
    public:
        void AppendSelf() { Append(m_data); }
    } stream;
    std::string block(10000, 'x');
    stream.Append(reinterpret_cast<unsigned char*>(&block[0]), block.size());
    stream.AppendSelf();
    EXPECT_EQ(block + block, Bytes(stream.GetBinaryStream()));
}

// The data passed in is shared, not copied, and the caller's handle keeps its bytes when the
// stream appends; a snapshot taken earlier does not see later appends.
TEST(CBinaryStreamTest, SharesWithCallerUntilWritten) {
    CBinaryData data("start");
    CBinaryStream stream(data);
    EXPECT_EQ(data.GetData(), stream.GetBinaryStream().GetData());
    CBinaryData snapshot = stream.GetBinaryStream();
    stream.Append(static_cast<unsigned char>('!'));
    EXPECT_EQ("start", Bytes(data));
    EXPECT_EQ("start", Bytes(snapshot));
    EXPECT_EQ("start!", Bytes(stream.GetBinaryStream()));
}

// The 0xFF 0xFE mark comes first for the two UTF-16 encodings only; bytes are unchanged
// (no line-end translation), and an existing longer file is cut to the new content.
TEST(CFileBinaryStreamTest, ToFileWritesMarkOnlyForUtf16) {
    TempDir dir;
    const std::string payload("<a>\r\n\n\x00\x1A</a>", 12);
    struct Row {
        XmlEncoding encoding;
        bool mark;
    } rows[] = {
        {EncodingDefault, false}, {EncodingUTF8, false}, {EncodingUTF16, true}, {EncodingUnicode, true}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.encoding);
        std::string path = dir.File("out.xml");
        CBinaryData data(reinterpret_cast<unsigned char*>(const_cast<char*>(payload.data())), payload.size(),
                         false);
        CFileBinaryStream stream(path.c_str(), row.encoding, data);
        stream.ToFile();
        EXPECT_EQ((row.mark ? kMark : "") + payload, ReadFile(path));
    }
    CFileBinaryStream shorter(dir.File("out.xml").c_str(), EncodingUTF8);
    shorter.Append(static_cast<unsigned char>('z'));
    shorter.ToFile();
    EXPECT_EQ("z", ReadFile(dir.File("out.xml")));
}

// Note pinned: empty data counts as a failed write. The file stays behind, empty or holding
// only the mark, and the message names the path.
TEST(CFileBinaryStreamTest, ToFileOfEmptyDataRaises) {
    TempDir dir;
    std::string utf8 = dir.File("empty8.xml"), utf16 = dir.File("empty16.xml");
    CFileBinaryStream plain(utf8.c_str(), EncodingUTF8);
    EXPECT_EQ("Failed to write data to the file [" + utf8 + "].", ToFileMessage(plain));
    EXPECT_EQ("", ReadFile(utf8));
    CFileBinaryStream marked(utf16.c_str(), EncodingUTF16);
    EXPECT_EQ("Failed to write data to the file [" + utf16 + "].", ToFileMessage(marked));
    EXPECT_EQ(kMark, ReadFile(utf16));
}

// A path that can't be created or written raises with the path, and creates nothing:
// a missing directory, a directory itself, an empty path, a device that is always full.
TEST(CFileBinaryStreamTest, UnwritablePathsRaise) {
    TempDir dir;
    std::string missing = dir.File("no/such/dir/out.xml");
    const std::string paths[] = {missing, dir.Path(), "", "/dev/full"};
    for (const std::string& path : paths) {
        SCOPED_TRACE(path);
        CFileBinaryStream stream(path.c_str(), EncodingUTF16);
        stream.Append(static_cast<unsigned char>('x'));
        EXPECT_EQ("Failed to write data to the file [" + path + "].", ToFileMessage(stream));
    }
    EXPECT_FALSE(streamtest::Exists(dir.File("no")));

    CFileBinaryStream nullPath(nullptr, EncodingUTF8);
    nullPath.Append(static_cast<unsigned char>('x'));
    EXPECT_EQ("Failed to write data to the file [].", ToFileMessage(nullPath));
}
