// Tests of CStringBuffer: blocks, merging at GetText, reuse by Empty.
#include "foundation/StringBuffer.h"

#include <gtest/gtest.h>

#include <string>

using namespace QzXmlLib16;

// Block size 4 (argument 5): ten characters take three blocks and are merged on reading.
TEST(CStringBufferTest, SmallBlocksMergeAtGetText) {
    CStringBuffer buffer(5);
    buffer.Append("0123");
    buffer.Append("456");
    buffer.Append('7');
    buffer.Append(std::string("89"));
    EXPECT_EQ(10u, buffer.GetLength());
    const char* merged = buffer.GetText();
    EXPECT_STREQ("0123456789", merged);
    EXPECT_EQ(10u, buffer.GetLength());
    // One merged block: reading again neither moves nor changes it.
    EXPECT_EQ(merged, buffer.GetText());

    // The merged block is full, so the next append starts a new block and the next read merges.
    buffer.Append('!');
    EXPECT_STREQ("0123456789!", buffer.GetText());
    EXPECT_EQ(11u, buffer.GetLength());
}

// Empty keeps a lone block (here the merged one, as long as the merged text) for reuse.
TEST(CStringBufferTest, EmptyReusesTheMergedBlock) {
    CStringBuffer buffer(5);
    buffer.Append("0123456789");
    const char* merged = buffer.GetText();
    buffer.Empty();
    EXPECT_EQ(0u, buffer.GetLength());
    EXPECT_STREQ("", buffer.GetText());
    buffer.Append("0123456789"); // exactly the capacity of the kept block
    EXPECT_EQ(merged, buffer.GetText());
    EXPECT_STREQ("0123456789", buffer.GetText());

    // With several blocks Empty releases everything.
    buffer.Append("xy");
    buffer.Empty();
    EXPECT_EQ(0u, buffer.GetLength());
    EXPECT_STREQ("", buffer.GetText());
}

TEST(CStringBufferTest, ClearSetTextAndEmptyInputs) {
    CStringBuffer buffer;
    EXPECT_STREQ("", buffer.GetText());
    buffer.Append("");
    buffer.Append(static_cast<const char*>(nullptr));
    EXPECT_EQ(0u, buffer.GetLength());
    EXPECT_STREQ("", buffer.GetText());

    // A std::string is appended as a C string: what stands behind an embedded NUL is ignored.
    buffer.Append(std::string("ab\0cd", 5));
    EXPECT_STREQ("ab", buffer.GetText());
    EXPECT_EQ(2u, buffer.GetLength());
    // Text in the current block is never moved by appends that fit.
    const char* first = buffer.GetText();
    buffer.Append("def");
    EXPECT_EQ(first, buffer.GetText());
    EXPECT_STREQ("abdef", first);

    buffer.Append("old text");
    buffer.SetText("new");
    EXPECT_STREQ("new", buffer.GetText());
    EXPECT_EQ(3u, buffer.GetLength());
    buffer.Clear();
    EXPECT_EQ(0u, buffer.GetLength());
    EXPECT_STREQ("", buffer.GetText());
}

// Degenerate block sizes still make progress: blocks of one character.
TEST(CStringBufferTest, TinyBlockSizes) {
    for (unsigned long size : {0ul, 1ul, 2ul}) {
        CStringBuffer buffer(size);
        buffer.Append("abc");
        buffer.Append('d');
        EXPECT_STREQ("abcd", buffer.GetText()) << size;
    }
}

TEST(CStringBufferTest, LongTextAcrossManyBlocks) {
    CStringBuffer buffer;
    std::string expected;
    for (int i = 0; i < 20000; ++i) {
        std::string piece = std::to_string(i);
        buffer.Append(piece.c_str());
        buffer.Append(' ');
        expected += piece + ' ';
    }
    EXPECT_EQ(expected.size(), buffer.GetLength());
    EXPECT_EQ(expected, buffer.GetText());
}

TEST(CStringBufferTest, CopyIsIndependent) {
    CStringBuffer original(5);
    original.Append("0123456");
    CStringBuffer copy(original);
    original.Append("X");
    copy.Append("Y");
    EXPECT_STREQ("0123456X", original.GetText());
    EXPECT_STREQ("0123456Y", copy.GetText());
    copy = original;
    EXPECT_STREQ("0123456X", copy.GetText());
    EXPECT_EQ(8u, copy.GetLength());
}
