// Tests of CTextStream (collection, encoding to UTF-8 and UTF-16LE) and CFileTextStream (mark, flushing
// what has not been written yet, failures and their messages).
#include "foundation/TextStream.h"

#include "foundation/Encoder.h"
#include "foundation/Exceptions.h"
#include "stream_files.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include "support/TestSupport.h"

using namespace QzXmlLib16;
using streamtest::ReadFile;
using streamtest::ScopedLocale;
using streamtest::TempDir;

namespace {

using QzTest::MessageOf;

std::string Bytes(const CBinaryData& data) {
    return std::string(reinterpret_cast<const char*>(data.GetData()), data.GetLength());
}

std::string Encoded(XmlEncoding encoding, const std::string& text) {
    CTextStream stream(encoding);
    stream.Append(text);
    return Bytes(stream.GetEncodedStream());
}

// Turns ASCIIOnly on for the life of the object.
struct ScopedAsciiOnly {
    ScopedAsciiOnly() { ASCIIOnly(true); }
    ~ScopedAsciiOnly() { ASCIIOnly(false); }
};

const std::string kMark("\xFF\xFE", 2);
const char* const kUnknownEncoding = "Unknown Encoding, select UTF-8 (contact our support team)";

// UTF-8 of "aé€" and U+1F600, and the same as UTF-16LE with a surrogate pair.
const std::string kUtf8Sample = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
const std::string kUtf16Sample("a\0\xE9\0\xAC\x20\x3D\xD8\x00\xDE", 10);

} // namespace

// Note pinned: a default stream serves the to-string operations only; it collects text but refuses to
// encode it. A file stream with no usable encoding opens, but refuses at the first Flush.
TEST(CTextStreamTest, DefaultStreamRefusesToEncode) {
    CTextStream stream;
    EXPECT_EQ(EncodingDefault, stream.GetEncoding());
    stream.Append("<a/>");
    EXPECT_STREQ("<a/>", stream.GetText());
    EXPECT_EQ(kUnknownEncoding, MessageOf([&] { stream.GetEncodedStream(); }));
    CTextStream named("CXmlStringStream", EncodingDefault);
    EXPECT_EQ(kUnknownEncoding, MessageOf([&] { named.GetEncodedStream(); }));
    TempDir dir;
    std::string path = dir.File("default.xml");
    CFileTextStream file(path.c_str(), EncodingDefault);
    file.Open();
    file.Append("<a/>");
    EXPECT_EQ(kUnknownEncoding, MessageOf([&] { file.Flush(); }));
    EXPECT_STREQ("<a/>", file.GetText()); // the text is intact
    EXPECT_EQ("", ReadFile(path));
}

// The Append forms, the length, Open emptying the text and the text surviving Close.
TEST(CTextStreamTest, CollectsTextAcrossAppendForms) {
    CTextStream stream(EncodingUTF8);
    EXPECT_EQ(0u, stream.GetLength());
    EXPECT_STREQ("", stream.GetText());
    stream.Append('<');
    stream.Append("a");
    stream.Append(static_cast<const char*>(nullptr));
    stream.Append(std::string("/>\0ignored", 10)); // stops at the NUL
    std::string big(10000, 'x');
    stream.Append(big);
    EXPECT_EQ(4u + big.size(), stream.GetLength());
    EXPECT_EQ("<a/>" + big, stream.GetText());
    stream.Close();
    EXPECT_EQ("<a/>" + big, stream.GetText());
    stream.Open();
    EXPECT_EQ(0u, stream.GetLength());
    EXPECT_STREQ("", stream.GetText());
}

// UTF-16 is two bytes a character, little-endian, without a mark in memory ("ab" is 4 bytes, not the 8 of
// the 32-bit wide form); an empty text encodes to nothing.
TEST(CTextStreamTest, EncodesAsciiText) {
    EXPECT_EQ("<ab/>", Encoded(EncodingUTF8, "<ab/>"));
    EXPECT_EQ(std::string("a\0b\0", 4), Encoded(EncodingUTF16, "ab"));
    EXPECT_EQ(std::string("a\0b\0", 4), Encoded(EncodingUnicode, "ab"));
    for (XmlEncoding encoding : {EncodingUTF8, EncodingUTF16, EncodingUnicode}) {
        CTextStream stream(encoding);
        EXPECT_EQ(0u, stream.GetEncodedStream().GetLength());
    }
}

// In a UTF-8 locale, characters above U+FFFF become surrogate pairs; U+10FFFF is the last.
TEST(CTextStreamTest, EncodesUtf16WithSurrogatePairs) {
    ScopedLocale locale("C.UTF-8");
    if (!locale.Ok())
        GTEST_SKIP() << "no C.UTF-8 locale";
    EXPECT_EQ(kUtf16Sample, Encoded(EncodingUTF16, kUtf8Sample));
    EXPECT_EQ(std::string("\xFF\xDB\xFF\xDF", 4), Encoded(EncodingUnicode, "\xF4\x8F\xBF\xBF"));
    EXPECT_EQ(kUtf8Sample, Encoded(EncodingUTF8, kUtf8Sample));
    // A byte that is no character of the locale becomes "?", after and before ASCII.
    EXPECT_EQ(std::string("x\0?\0y\0", 6), Encoded(EncodingUTF16, "x\xFFy"));
}

// CEncoder's wide form narrowed to UTF-16LE the plain way, "?" where there is no UTF-16 form: the
// reference for the stream.
std::string NarrowedWide(const CBinaryData& wide) {
    std::string out;
    for (unsigned long i = 0; i + 4 <= wide.GetLength(); i += 4) {
        wchar_t c;
        memcpy(&c, wide.GetData() + i, 4);
        uint32_t u = static_cast<uint32_t>(c);
        auto unit = [&out](uint32_t v) {
            out += static_cast<char>(v & 0xFF);
            out += static_cast<char>(v >> 8);
        };
        if (u > 0x10FFFF || (u >= 0xD800 && u <= 0xDFFF)) {
            unit('?'); // no UTF-16 form (glibc reads F4 90 80 80 as U+110000)
        } else if (u < 0x10000) {
            unit(u);
        } else {
            unit(0xD800 + ((u - 0x10000) >> 10));
            unit(0xDC00 + ((u - 0x10000) & 0x3FF));
        }
    }
    return out;
}

// The stream encodes in one pass, skipping ASCII runs, and must give exactly the bytes of
// CEncoder's conversions (the wide form narrowed), in the C locale and a UTF-8 one, for valid,
// cut-off, overlong, surrogate and out-of-range text alike.
TEST(CTextStreamTest, EncodingMatchesCEncoder) {
    std::string mixed;
    for (int i = 0; i < 50; ++i)
        mixed +=
            "<name>J\xC3\xBCrgen M\xC3\xBCller</name>\n\xE2\x82\xAC" + std::to_string(i) + "\xF0\x9F\x98\x80";
    const std::string inputs[] = {"",
                                  "plain ascii text, longer than eight bytes",
                                  kUtf8Sample,
                                  "x\xFFy",
                                  "\xC3",
                                  "abcdefgh\xE2\x82",
                                  "\xED\xA0\x80",
                                  "\xF4\x90\x80\x80",
                                  "\xC0\xAF",
                                  "\x80\x80"
                                  "abc",
                                  mixed};
    for (const char* name : {"C", "C.UTF-8"}) {
        ScopedLocale locale(name);
        if (!locale.Ok())
            continue;
        for (const std::string& input : inputs) {
            SCOPED_TRACE(std::string(name) + ": " + input.substr(0, 20));
            EXPECT_EQ(Bytes(CEncoder::LocalCodePageToUtf8Binary(input.c_str())),
                      Encoded(EncodingUTF8, input));
            EXPECT_EQ(NarrowedWide(CEncoder::LocalCodePageToUnicodeBinary(input.c_str())),
                      Encoded(EncodingUTF16, input));
        }
    }
}

// With ASCIIOnly the text is UTF-8 already, whatever the locale: it goes to UTF-16 as such, and each byte
// of a malformed sequence becomes "?".
TEST(CTextStreamTest, AsciiOnlyTextIsEncodedAsUtf8) {
    ScopedAsciiOnly asciiOnly;
    EXPECT_EQ(kUtf16Sample, Encoded(EncodingUTF16, kUtf8Sample));
    EXPECT_EQ(std::string("?\0?\0?\0z\0", 8), Encoded(EncodingUTF16, "\xED\xA0\x80z")); // a surrogate
    EXPECT_EQ(std::string("?\0?\0", 4), Encoded(EncodingUTF16, "\xC3\xC3"));
    EXPECT_EQ(std::string("?\0", 2), Encoded(EncodingUTF16, "\xC0"));
    EXPECT_EQ(kUtf8Sample, Encoded(EncodingUTF8, kUtf8Sample));
}

// Nothing is touched before Open; Open writes the mark for UTF-16 only; Close writes the text.
TEST(CFileTextStreamTest, OpenWritesMarkAndCloseWritesText) {
    TempDir dir;
    struct Row {
        XmlEncoding encoding;
        std::string expected;
    } rows[] = {{EncodingUTF8, "<a>x</a>"},
                {EncodingUTF16, kMark + std::string("<\0a\0>\0x\0<\0/\0a\0>\0", 16)},
                {EncodingUnicode, kMark + std::string("<\0a\0>\0x\0<\0/\0a\0>\0", 16)}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.encoding);
        std::string path = dir.File("out.xml");
        remove(path.c_str());
        CFileTextStream stream(path.c_str(), row.encoding);
        EXPECT_FALSE(streamtest::Exists(path));
        stream.Open();
        EXPECT_TRUE(streamtest::Exists(path));
        stream.Append("<a>x</a>");
        stream.Close();
        EXPECT_EQ(row.expected, ReadFile(path));
        stream.Close(); // a second Close has nothing left to do
        EXPECT_EQ(row.expected, ReadFile(path));
    }
}

// Each Flush writes exactly the text collected since the previous one and empties the stream; a Flush with
// nothing collected writes nothing.
TEST(CFileTextStreamTest, FlushWritesWhatWasNotYetWritten) {
    TempDir dir;
    std::string path = dir.File("flush.xml");
    CFileTextStream stream(path.c_str(), EncodingUTF16);
    stream.Open();
    stream.Flush();
    stream.Append("ab");
    stream.Flush();
    EXPECT_EQ(0u, stream.GetLength());
    stream.Flush();
    stream.Append('c');
    stream.Flush();
    stream.Append("d");
    stream.Close();
    EXPECT_EQ(kMark + std::string("a\0b\0c\0d\0", 8), ReadFile(path));
}

// The writers' pattern: characters appended one byte at a time, a Flush whenever 4096 or more are
// held. A multibyte character cut by a Flush must not turn into "?", neither in a UTF-8 locale nor
// with ASCIIOnly, where the stream holds UTF-8 in any locale.
TEST(CFileTextStreamTest, FlushNeverSplitsACharacter) {
    TempDir dir;
    std::string text, utf16;
    for (int i = 0; i < 3000; ++i) {
        text += kUtf8Sample;
        utf16 += kUtf16Sample;
    }
    for (bool asciiOnly : {false, true}) {
        ScopedLocale locale(asciiOnly ? "C" : "C.UTF-8");
        ASCIIOnly(asciiOnly);
        for (XmlEncoding encoding : {EncodingUTF8, EncodingUTF16}) {
            SCOPED_TRACE(std::to_string(encoding) + (asciiOnly ? " ASCIIOnly" : ""));
            std::string path = dir.File("chars.xml");
            CFileTextStream stream(path.c_str(), encoding);
            stream.Open();
            for (char c : text) {
                stream.Append(c);
                if (stream.GetLength() >= 4096)
                    stream.Flush();
            }
            stream.Close();
            EXPECT_EQ(encoding == EncodingUTF8 ? text : kMark + utf16, ReadFile(path));
        }
        ASCIIOnly(false);
    }
}

// A character that is never completed is written at Close as the encoding renders it.
TEST(CFileTextStreamTest, CloseWritesAnIncompleteTail) {
    ScopedLocale locale("C.UTF-8");
    if (!locale.Ok())
        GTEST_SKIP() << "no C.UTF-8 locale";
    TempDir dir;
    std::string path = dir.File("tail.xml");
    CFileTextStream stream(path.c_str(), EncodingUTF16);
    stream.Open();
    stream.Append("a\xE2\x82");
    stream.Flush();
    EXPECT_EQ(2u, stream.GetLength()); // the cut character waits
    stream.Close();
    EXPECT_EQ(kMark + std::string("a\0?\0?\0", 6), ReadFile(path));
}

// Destroying an open stream closes the file and loses the text not yet flushed; Open again
// closes the first file and starts the second from scratch.
TEST(CFileTextStreamTest, DestructorAndReopenDropUnflushedText) {
    TempDir dir;
    std::string lost = dir.File("lost.xml"), again = dir.File("again.xml");
    {
        CFileTextStream stream(lost.c_str(), EncodingUTF8);
        stream.Open();
        stream.Append("kept");
        stream.Flush();
        stream.Append("lost");
    }
    EXPECT_EQ("kept", ReadFile(lost));
    CFileTextStream stream(again.c_str(), EncodingUTF8);
    stream.Open();
    stream.Append("first");
    stream.Flush();
    stream.Append("dropped");
    stream.Open();
    stream.Append("second");
    stream.Close();
    EXPECT_EQ("second", ReadFile(again));
}

// Open of a path that can't be created names the path; no directory is created.
TEST(CFileTextStreamTest, OpenOfUnwritablePathRaises) {
    TempDir dir;
    const std::string paths[] = {dir.File("missing/out.xml"), dir.Path(), ""};
    for (const std::string& path : paths) {
        SCOPED_TRACE(path);
        CFileTextStream stream(path.c_str(), EncodingUTF16);
        EXPECT_EQ("Failed to write data to the file [" + path + "].", MessageOf([&] { stream.Open(); }));
        stream.Close(); // nothing open, nothing collected: nothing to do
    }
    EXPECT_FALSE(streamtest::Exists(dir.File("missing")));
}

// A failed write raises the message without a path and closes the file; a full disk seen only when closing
// raises with the path. Text without an open file can't be written.
TEST(CFileTextStreamTest, WriteFailuresRaise) {
    CFileTextStream big("/dev/full", EncodingUTF8);
    big.Open();
    big.Append(std::string(1 << 20, 'x'));
    EXPECT_EQ("Failed to write data to the file", MessageOf([&] { big.Flush(); }));
    // The file is closed now: the text that is still there has nowhere to go.
    EXPECT_EQ("Failed to write data to the file", MessageOf([&] { big.Close(); }));

    CFileTextStream small("/dev/full", EncodingUTF16);
    small.Open();
    small.Append("x");
    EXPECT_EQ("Failed to write data to the file [/dev/full].", MessageOf([&] { small.Close(); }));
    small.Close(); // closed despite the failure

    CFileTextStream unopened("/dev/null", EncodingUTF8);
    unopened.Append("x");
    EXPECT_EQ("Failed to write data to the file", MessageOf([&] { unopened.Flush(); }));
}
