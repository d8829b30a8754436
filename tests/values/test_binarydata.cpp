// Tests of CBinaryData: sharing and copy on write, its holder, indexing and hex text.
#include "values/BinaryData.h"

#include "foundation/Exceptions.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <string>
#include <thread>
#include <vector>
#include "support/TestSupport.h"

using namespace QzXmlLib16;

namespace {

using QzTest::MessageOf;

unsigned char* Bytes(const char* s) {
    return reinterpret_cast<unsigned char*>(const_cast<char*>(s));
}

std::string Text(const CBinaryData& d) {
    return d.GetData() ? std::string(reinterpret_cast<const char*>(d.GetData()), d.GetLength())
                       : std::string();
}

} // namespace

// ---- Construction and the empty handle ----------------------------------------------------------

TEST(CBinaryDataTest, EmptyFormsHaveNoHolder) {
    unsigned char* p = new unsigned char[4];
    CBinaryData adopted(p, 0, true); // length 0: p is not taken
    EXPECT_EQ(nullptr, adopted.GetData());
    delete[] p;

    CBinaryData fromEmpty("");
    CBinaryData set("x");
    set.SetBuffer("");
    CBinaryData none;
    for (const CBinaryData* d : {&fromEmpty, &set, &none}) {
        EXPECT_EQ(nullptr, d->GetData());
        EXPECT_EQ(0u, d->GetLength());
        EXPECT_TRUE(*d == CBinaryData());
        EXPECT_EQ("", d->GetAsHexString());
        EXPECT_EQ("", d->GetAsBase64());
        EXPECT_EQ(nullptr, const_cast<CBinaryData*>(d)->ReleaseData());
    }
}

TEST(CBinaryDataTest, AdoptedBufferIsHandedBackUnchanged) {
    unsigned char* p = new unsigned char[3]{1, 2, 3};
    CBinaryData d(p, 3, true);
    EXPECT_EQ(p, d.GetData());
    const unsigned long length = d.GetLength();
    unsigned char* back = d.ReleaseData();
    EXPECT_EQ(p, back);
    EXPECT_EQ(3u, length);
    EXPECT_EQ(nullptr, d.GetData());
    delete[] back;
}

// ---- Sharing and copy on write ------------------------------------------------------------------

TEST(CBinaryDataTest, CopiesShareUntilOneSideWrites) {
    CBinaryData a("hello");
    CBinaryData b(a);
    CBinaryData c;
    c = a;
    EXPECT_EQ(a.GetData(), b.GetData());
    EXPECT_EQ(a.GetData(), c.GetData());

    b[0] = 'j'; // detaches b only
    EXPECT_NE(a.GetData(), b.GetData());
    EXPECT_EQ("hello", Text(a));
    EXPECT_EQ("jello", Text(b));
    EXPECT_EQ(a.GetData(), c.GetData());

    // The const form reads without detaching.
    const CBinaryData& constC = c;
    EXPECT_EQ('h', constC[0]);
    EXPECT_EQ(a.GetData(), c.GetData());

    c.Append("!");
    EXPECT_EQ("hello", Text(a));
    EXPECT_EQ("hello!", Text(c));
}

TEST(CBinaryDataTest, ReleaseDataOfSharedHandleGivesACopy) {
    CBinaryData a("abc");
    CBinaryData b(a);
    unsigned char* p = b.ReleaseData();
    ASSERT_NE(nullptr, p);
    EXPECT_NE(a.GetData(), p);
    EXPECT_EQ(0, std::memcmp(p, "abc", 3));
    EXPECT_EQ(nullptr, b.GetData());
    EXPECT_EQ("abc", Text(a));
    delete[] p;
}

// A handle assigned to itself is cleared first and so ends up empty; kept on purpose.
TEST(CBinaryDataTest, SelfAssignmentEmptiesTheHandle) {
    CBinaryData alone("data");
    CBinaryData& alias = alone;
    alone = alias;
    EXPECT_EQ(nullptr, alone.GetData());

    CBinaryData shared("data");
    CBinaryData other(shared);
    CBinaryData& sharedAlias = shared;
    shared = sharedAlias;
    EXPECT_EQ(nullptr, shared.GetData());
    EXPECT_EQ("data", Text(other)); // the other sharer keeps the bytes
}

TEST(CBinaryDataTest, MovedFromHandleIsEmpty) {
    CBinaryData a("xyz");
    unsigned char* p = a.GetData();
    CBinaryData b(std::move(a));
    EXPECT_EQ(p, b.GetData());
    EXPECT_EQ(nullptr, a.GetData()); // NOLINT(bugprone-use-after-move)
}

// ---- Appending ----------------------------------------------------------------------------------

TEST(CBinaryDataTest, AppendForms) {
    CBinaryData d;
    d.Append(Bytes("ab"), 0); // nothing, and no holder
    EXPECT_EQ(nullptr, d.GetData());
    d.Append(Bytes("ab"), 2);
    d.Append('c');
    d.Append(static_cast<unsigned char>('d'));
    d.Append("ef");
    d.Append(std::string("g\0h", 3)); // stops at the zero byte
    d.Append(CBinaryData("i"));
    d.Append(CBinaryData());
    d.Append(static_cast<const char*>(nullptr));
    EXPECT_EQ("abcdefgi", Text(d));

    d.Append(d); // the handle itself
    EXPECT_EQ("abcdefgiabcdefgi", Text(d));

    // An adopted buffer has no spare room, so the first append moves it, even onto itself.
    CBinaryData tight(new unsigned char[2]{'x', 'y'}, 2, true);
    tight.Append(tight);
    EXPECT_EQ("xyxy", Text(tight));
}

TEST(CBinaryDataTest, GrowingAppendKeepsAllBytes) {
    CBinaryData d;
    std::string expected;
    for (int i = 0; i < 5000; ++i) {
        std::string piece = std::to_string(i) + ",";
        d.Append(piece);
        expected += piece;
    }
    EXPECT_EQ(expected, Text(d));
}

// A copied holder owns at least 8192 bytes, so appends up to that size stay in place; after
// that it grows to twice the new length. An adopted buffer has no spare room at all.
TEST(CBinaryDataTest, CapacityOfCopiedAndAdoptedHolders) {
    CBinaryData small("abc");
    unsigned char* const first = small.GetData();
    small.Append(std::string(8189, 'x').c_str());
    EXPECT_EQ(8192u, small.GetLength());
    EXPECT_EQ(first, small.GetData());
    small.Append('y');
    EXPECT_NE(first, small.GetData());

    // 5000 copied bytes get room for 10000; the 10001st byte moves them (to room for 20002).
    std::string big(5000, 'b');
    CBinaryData copied(reinterpret_cast<unsigned char*>(&big[0]), 5000, false);
    unsigned char* const roomy = copied.GetData();
    copied.Append(big);
    EXPECT_EQ(roomy, copied.GetData());
    copied.Append('z');
    unsigned char* const grown = copied.GetData();
    EXPECT_NE(roomy, grown);
    copied.Append(std::string(9999, 'c'));
    EXPECT_EQ(20000u, copied.GetLength());
    EXPECT_EQ(grown, copied.GetData());

    unsigned char* p = new unsigned char[2]{'x', 'y'};
    CBinaryData adopted(p, 2, true);
    adopted.Append('z');
    EXPECT_NE(p, adopted.GetData()); // p was freed by the move
    EXPECT_EQ("xyz", Text(adopted));
}

// ---- Comparison and indexing --------------------------------------------------------------------

TEST(CBinaryDataTest, Equality) {
    const CBinaryData abc("abc");
    EXPECT_TRUE(abc == CBinaryData("abc") && !(abc != CBinaryData("abc")));
    for (const CBinaryData& other : {CBinaryData("abd"), CBinaryData("ab"), CBinaryData()})
        EXPECT_TRUE(abc != other && !(abc == other)) << Text(other);

    // A holder of length 0 is not the same as no holder, but equals another of its kind.
    CBinaryData zero;
    zero.SetAsBase64("*");
    ASSERT_NE(nullptr, zero.GetData());
    EXPECT_EQ(0u, zero.GetLength());
    EXPECT_TRUE(zero != CBinaryData());
    CBinaryData zero2;
    zero2.SetAsBase64("!");
    EXPECT_TRUE(zero == zero2);
}

// The index equal to the length is let through on purpose; one more fails.
TEST(CBinaryDataTest, IndexBoundary) {
    CBinaryData d("abcd");
    const CBinaryData& cd = d;
    EXPECT_EQ(d.GetData() + 4, &d[4]);
    EXPECT_EQ(cd.GetData() + 4, &cd[4]);
    EXPECT_EQ("Index Out of range [5]", MessageOf([&] { d[5]; }));
    EXPECT_EQ("Index Out of range [5]", MessageOf([&] { cd[5]; }));
    EXPECT_EQ("Index Out of range [-1]", MessageOf([&] { d[static_cast<unsigned long>(-1)]; }));

    CBinaryData none;
    const CBinaryData& cnone = none;
    EXPECT_EQ("Index Out of range [0]", MessageOf([&] { none[0]; }));
    EXPECT_EQ("Index Out of range [0]", MessageOf([&] { cnone[0]; }));
}

// ---- Hex text -----------------------------------------------------------------------------------

TEST(CBinaryDataTest, HexRoundTripOfAllByteValues) {
    std::vector<unsigned char> all(256);
    for (int i = 0; i < 256; ++i)
        all[i] = static_cast<unsigned char>(i);
    CBinaryData d(all.data(), 256, false);
    std::string hex = d.GetAsHexString();
    ASSERT_EQ(512u, hex.size());
    EXPECT_EQ("000102", hex.substr(0, 6));
    EXPECT_EQ("7F80", hex.substr(254, 4));
    EXPECT_EQ("FEFF", hex.substr(508));

    CBinaryData back;
    back.SetAsHexString(hex.c_str());
    EXPECT_TRUE(back == d);

    // Lower case is read; upper case is always written.
    back.SetAsHexString("deadBEEF");
    EXPECT_EQ("DEADBEEF", back.GetAsHexString());
    EXPECT_EQ("", CBinaryData::GetAsHexString(nullptr, 5));
}

TEST(CBinaryDataTest, HexErrorsLeaveTheHandleEmpty) {
    CBinaryData d("keep");
    EXPECT_EQ("Invalid char in hex string [G]", MessageOf([&] { d.SetAsHexString("0G"); }));
    EXPECT_EQ(nullptr, d.GetData());

    d.SetBuffer("keep");
    // The length is tested before any character: "ABC" and "GGG" fail alike.
    EXPECT_EQ("Invalid length in hex string", MessageOf([&] { d.SetAsHexString("ABC"); }));
    EXPECT_EQ("Invalid length in hex string", MessageOf([&] { d.SetAsHexString("GGG"); }));
    EXPECT_EQ(nullptr, d.GetData());

    for (const auto& row : {std::pair<const char*, char>{"00 1", ' '}, {"0x12", 'x'}, {"AAg0", 'g'}})
        EXPECT_EQ(std::string("Invalid char in hex string [") + row.second + "]",
                  MessageOf([&] { d.SetAsHexString(row.first); }));

    d.SetBuffer("keep");
    d.SetAsHexString("");
    EXPECT_EQ(nullptr, d.GetData());

    unsigned char* out = nullptr;
    EXPECT_EQ(0u, CBinaryData::ConvertToHexData("", &out));
    EXPECT_NE(nullptr, out); // an array of no bytes, still the caller's
    delete[] out;
}

// ---- The holder's own guards --------------------------------------------------------------------

TEST(CBinaryDataHolderTest, GuardsAgainstWritesToSharedHolder) {
    auto* holder = new CBinaryData::CDataHolder(Bytes("abc"), 3, false);
    holder->AddRef();
    EXPECT_EQ("Failed to append. [RefCount=2]", MessageOf([&] { holder->Append(Bytes("d"), 1); }));
    EXPECT_EQ(3u, holder->GetLength());
    // The count after the decrement is reported, and that decrement stands.
    EXPECT_EQ("Failed to release data. [RefCount=1]", MessageOf([&] { holder->Release(true); }));
    holder->Append(Bytes("d"), 1); // now unshared
    EXPECT_EQ(4u, holder->GetLength());
    holder->Release(false);
}

// Taking the exclusive copy of a shared holder leaves its lock before releasing the reference:
// with a plain mutex anything else would block for ever.
TEST(CBinaryDataHolderTest, ExclusiveCopyOfSharedHolderDoesNotBlock) {
    auto* holder = new CBinaryData::CDataHolder(Bytes("abc"), 3, false);
    holder->AddRef();
    CBinaryData::CDataHolder* copy = holder->GetExclusiveCopy();
    ASSERT_NE(holder, copy);
    EXPECT_EQ(0, std::memcmp(copy->GetData(), "abc", 3));
    EXPECT_EQ(holder, holder->GetExclusiveCopy()); // one reference left: itself
    holder->Release(false);
    copy->Release(false);
}

// ---- Threads ------------------------------------------------------------------------------------

// Handles to one holder are copied, destroyed and written (detaching) on several threads at
// once. Afterwards the count must be back at 1: a write through the original does not copy,
// and ReleaseData hands back the original buffer without complaint.
TEST(CBinaryDataThreadTest, SharedHandlesCountCorrectlyAcrossThreads) {
    CBinaryData original("shared bytes");
    unsigned char* const buffer = original.GetData();
    constexpr int kThreads = 4;
    constexpr int kRounds = 2000;
    std::atomic<int> failures{0};
    std::vector<CBinaryData> seeds(kThreads, original); // one handle per thread, made here
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < kRounds; ++i) {
                CBinaryData copy(seeds[t]);
                CBinaryData assigned;
                assigned = copy;
                if (i % 16 == 0) {
                    assigned[0] = 'S'; // detaches this handle only
                    if (assigned.GetData()[0] != 'S' || copy.GetData()[0] != 's')
                        ++failures;
                }
                if (copy.GetData() != buffer)
                    ++failures;
            }
            seeds[t].Clear();
        });
    }
    for (std::thread& th : threads)
        th.join();
    EXPECT_EQ(0, failures.load());

    original[0] = 'S';
    EXPECT_EQ(buffer, original.GetData());
    EXPECT_EQ("Shared bytes", Text(original));
    unsigned char* released = original.ReleaseData();
    EXPECT_EQ(buffer, released);
    delete[] released;
}
