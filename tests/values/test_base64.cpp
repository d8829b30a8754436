// Tests of CBase64 and the base64 forms of CBinaryData.
#include "values/BinaryData.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

using namespace QzXmlLib16;

namespace {

unsigned char* Bytes(const char* s) {
    return reinterpret_cast<unsigned char*>(const_cast<char*>(s));
}

std::string Encode(const std::string& bytes) {
    CBase64 codec;
    return codec.Encode(Bytes(bytes.c_str()), static_cast<int>(bytes.size()));
}

std::string Decode(const char* text) {
    std::vector<unsigned char> out(std::strlen(text) + 1, 0xEE);
    CBase64 codec;
    int n = codec.Decode(text, out.data());
    return std::string(reinterpret_cast<const char*>(out.data()), static_cast<size_t>(n));
}

// Encodes with the protected 6-bit pump, the reference the unrolled Encode must match.
class PumpEncoder : public CBase64 {
public:
    std::string EncodeByPump(unsigned char* data, int length) {
        m_pInput = data;
        m_nInputSize = length;
        m_nBitStore = 0;
        m_nBitsInStore = 0;
        int bits = length * 8;
        int chars = bits / 6 + (bits % 6 ? 1 : 0);
        std::string text((chars + 3) / 4 * 4, '=');
        int pos = 0;
        int out = 0;
        for (;;) {
            int read = 0;
            unsigned int value = Read(6, &read, pos);
            if (read == 0)
                break;
            text[out++] = m_sBase64Alphabet[value];
        }
        return text;
    }
    int DecodeByPump(const std::vector<unsigned int>& sextets, unsigned char* out) {
        m_nBitStore = 0;
        m_nBitsInStore = 0;
        int pos = 0;
        for (unsigned int v : sextets)
            Write(v, 6, out, pos);
        return pos;
    }
};

} // namespace

TEST(CBase64Test, PaddingOfShortInputs) {
    const std::pair<const char*, const char*> rows[] = {
        {"", ""}, {"A", "QQ=="}, {"AB", "QUI="}, {"ABC", "QUJD"}, {"ABCD", "QUJDRA=="}};
    for (const auto& row : rows)
        EXPECT_EQ(row.second, Encode(row.first)) << row.first;
    CBase64 codec;
    EXPECT_EQ("", codec.Encode(nullptr, 5));
}

TEST(CBase64Test, LongInputHasNoLineBreaksAndMatchesThePump) {
    std::vector<unsigned char> data(1000);
    for (size_t i = 0; i < data.size(); ++i)
        data[i] = static_cast<unsigned char>(i * 37 + 11);
    for (int length : {0, 1, 2, 3, 4, 5, 57, 58, 59, 76, 1000}) {
        CBase64 codec;
        std::string fast = codec.Encode(data.data(), length);
        PumpEncoder pump;
        EXPECT_EQ(pump.EncodeByPump(data.data(), length), fast) << length;
        EXPECT_EQ(std::string::npos, fast.find('\n'));
        EXPECT_EQ(0u, fast.size() % 4);
    }
}

// "=" and whitespace are skipped anywhere; an invalid character gives 0 bytes, no exception.
TEST(CBase64Test, DecodeIsLenient) {
    // Left-over bits are dropped ("QUJ").
    const std::pair<const char*, const char*> rows[] = {{"QQ", "A"},     {"Q Q==\n", "A"}, {"=Q\t=\rQ=", "A"},
                                                        {"QUJD", "ABC"}, {"QUJ", "AB"},    {"Q*Q=", ""},
                                                        {"QUJD-", ""},   {"", ""}};
    for (const auto& row : rows)
        EXPECT_EQ(row.second, Decode(row.first)) << row.first;
    CBase64 codec;
    unsigned char out[4];
    EXPECT_EQ(0, codec.Decode(nullptr, out));
    EXPECT_EQ(0, codec.Decode("QQ", nullptr));
}

// A byte above 127 decodes as its low-seven-bit twin; kept as it is.
TEST(CBase64Test, HighBytesDecodeAsTheirLowTwins) {
    EXPECT_EQ("A", Decode("\xD1\xD1")); // 0xD1 & 0x7F is "Q"
    EXPECT_EQ("A", Decode("QQ\xBD"));   // 0xBD & 0x7F is "="
    EXPECT_EQ("", Decode("QQ\x80"));    // 0x80 & 0x7F is NUL: invalid
}

// The output area (text length + 1 bytes) is zeroed before decoding.
TEST(CBase64Test, DecodeZeroesTheOutputArea) {
    std::vector<unsigned char> out(7, 0xEE);
    CBase64 codec;
    EXPECT_EQ(1, codec.Decode("QQ====", out.data()));
    EXPECT_EQ('A', out[0]);
    for (size_t i = 1; i < out.size(); ++i)
        EXPECT_EQ(0, out[i]) << i;
}

TEST(CBase64Test, WritePumpPutsOutWholeBytes) {
    PumpEncoder pump;
    unsigned char out[4] = {};
    EXPECT_EQ(3, pump.DecodeByPump({16, 20, 9, 3}, out)); // "QUJD"
    EXPECT_EQ(0, std::memcmp(out, "ABC", 3));
}

// Decoding any mix of alphabet, "=" and whitespace equals feeding the alphabet values alone,
// six bits at a time, through the bit pump.
TEST(CBase64Test, DecodeMatchesThePumpWhateverTheLayout) {
    const char* alphabet = CBase64::m_sBase64Alphabet;
    unsigned int seed = 12345;
    for (int round = 0; round < 200; ++round) {
        std::string text;
        std::vector<unsigned int> sextets;
        const int length = round % 37;
        for (int i = 0; i < length; ++i) {
            seed = seed * 1103515245u + 12345u;
            const unsigned int r = (seed >> 16) % 80;
            if (r < 64) {
                text += alphabet[r];
                sextets.push_back(r);
            } else {
                text += " \t\r\n="[r % 5];
            }
        }
        std::vector<unsigned char> expected(text.size() + 1, 0);
        PumpEncoder pump;
        const int expectedLength = pump.DecodeByPump(sextets, expected.data());
        EXPECT_EQ(std::string(reinterpret_cast<char*>(expected.data()), expectedLength), Decode(text.c_str()))
            << text;
    }
}

TEST(CBinaryDataBase64Test, RoundTripAndEmptyForms) {
    std::vector<unsigned char> all(256);
    for (int i = 0; i < 256; ++i)
        all[i] = static_cast<unsigned char>(255 - i);
    CBinaryData d(all.data(), 256, false);
    CBinaryData back;
    back.SetAsBase64(d.GetAsBase64().c_str());
    EXPECT_TRUE(back == d);

    back.SetAsBase64("");
    EXPECT_EQ(nullptr, back.GetData());
    back.SetBuffer("x");
    back.SetAsBase64(nullptr);
    EXPECT_EQ(nullptr, back.GetData());

    // Invalid text leaves a holder of length 0, whose base64 is empty.
    CBinaryData invalid("old");
    invalid.SetAsBase64("ab$c");
    EXPECT_NE(nullptr, invalid.GetData());
    EXPECT_EQ(0u, invalid.GetLength());
    EXPECT_EQ("", invalid.GetAsBase64());
    EXPECT_TRUE(invalid != CBinaryData());
}
