// BinaryData.cpp - CBinaryData with its shared holder, hex text, and the CBase64 codec.
#include "values/BinaryData.h"

#include "foundation/Exceptions.h"

#include <array>
#include <cstring>
#include <memory>

namespace {

// ---------------------------------------------------------------------------------------------
// Messages

[[noreturn]] void ThrowIndexOutOfRange(unsigned long index) {
    throw QzXmlLib16::CQzException(
        QzXmlLib16::FormatString("Index Out of range [%d]", static_cast<int>(index)));
}

[[noreturn]] void ThrowHexLength() {
    throw QzXmlLib16::CQzException("Invalid length in hex string");
}

[[noreturn]] void ThrowHexChar(char c) {
    throw QzXmlLib16::CQzException(QzXmlLib16::FormatString("Invalid char in hex string [%c]", c));
}

[[noreturn]] void ThrowRelease(int32_t count) {
    throw QzXmlLib16::CQzException(QzXmlLib16::FormatString("Failed to release data. [RefCount=%d]", count));
}

[[noreturn]] void ThrowAppend(int32_t count) {
    throw QzXmlLib16::CQzException(QzXmlLib16::FormatString("Failed to append. [RefCount=%d]", count));
}

[[noreturn]] void ThrowTooLarge(unsigned long long length) {
    throw QzXmlLib16::CQzException(QzXmlLib16::FormatString("Binary data too large [%llu bytes]",
                                                            static_cast<unsigned long long>(length)));
}

// ---------------------------------------------------------------------------------------------
// Sizes

// The holder keeps 32-bit length and capacity.
constexpr unsigned long long kMaxHolderLength = 0xFFFFFFFFull;
// A copied holder never owns less than this: CBinaryData also accumulates stream output.
constexpr unsigned long long kMinCopyCapacity = 8192;

// Twice the length, at least the minimum, never above the 32-bit limit nor below the length.
uint32_t CopyCapacity(unsigned long long length) {
    unsigned long long capacity = length * 2;
    if (capacity < kMinCopyCapacity)
        capacity = kMinCopyCapacity;
    if (capacity > kMaxHolderLength)
        capacity = kMaxHolderLength;
    return static_cast<uint32_t>(capacity);
}

// ---------------------------------------------------------------------------------------------
// Hex tables

const char kHexDigits[] = "0123456789ABCDEF";

// Value of each byte as a hex digit, -1 for anything else.
constexpr std::array<signed char, 256> MakeHexTable() {
    std::array<signed char, 256> t{};
    for (int i = 0; i < 256; ++i)
        t[i] = -1;
    for (int i = 0; i < 10; ++i)
        t['0' + i] = static_cast<signed char>(i);
    for (int i = 0; i < 6; ++i) {
        t['A' + i] = static_cast<signed char>(10 + i);
        t['a' + i] = static_cast<signed char>(10 + i);
    }
    return t;
}
constexpr std::array<signed char, 256> kHexValue = MakeHexTable();

// ---------------------------------------------------------------------------------------------
// Base64 tables

constexpr signed char kB64Invalid = -2;
constexpr signed char kB64Skip = -1;

// Value of each 7-bit character: 0-63, kB64Skip for "=" and whitespace, kB64Invalid otherwise.
// Input characters are masked to seven bits before the lookup, so 128 entries suffice.
constexpr std::array<signed char, 128> MakeBase64Table() {
    std::array<signed char, 128> t{};
    for (int i = 0; i < 128; ++i)
        t[i] = kB64Invalid;
    const char* alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (int i = 0; i < 64; ++i)
        t[static_cast<unsigned char>(alphabet[i])] = static_cast<signed char>(i);
    t['='] = kB64Skip;
    t[' '] = kB64Skip;
    t['\t'] = kB64Skip;
    t['\r'] = kB64Skip;
    t['\n'] = kB64Skip;
    return t;
}
constexpr std::array<signed char, 128> kBase64Value = MakeBase64Table();

} // namespace

namespace QzXmlLib16 {

// ---------------------------------------------------------------------------------------------
// CBinaryData::CDataHolder

CBinaryData::CDataHolder::CDataHolder(unsigned char* pData, unsigned long nLength, bool bTakeOwnership)
    : m_pBuffer(nullptr), m_nLength(0), m_nCapacity(0), m_nRefCount(1) {
    if (nLength > kMaxHolderLength)
        ThrowTooLarge(nLength);
    if (bTakeOwnership) {
        m_pBuffer = pData;
        m_nLength = static_cast<uint32_t>(nLength);
        m_nCapacity = static_cast<uint32_t>(nLength);
    } else {
        m_nCapacity = CopyCapacity(nLength);
        m_pBuffer = new unsigned char[m_nCapacity];
        if (nLength != 0)
            std::memcpy(m_pBuffer, pData, nLength);
        m_nLength = static_cast<uint32_t>(nLength);
    }
}

void CBinaryData::CDataHolder::AddRef() {
    m_cs.Enter();
    ++m_nRefCount;
    m_cs.Leave();
}

void CBinaryData::CDataHolder::Release(bool bDetachBuffer) {
    m_cs.Enter();
    const int32_t count = --m_nRefCount;
    if (bDetachBuffer) {
        if (count > 0) {
            m_cs.Leave();
            ThrowRelease(count);
        }
        m_cs.Leave();
        delete this; // the buffer now belongs to the caller
        return;
    }
    m_cs.Leave();
    if (count != 0)
        return;
    // The last reference: nobody else can reach this holder any more.
    delete[] m_pBuffer;
    m_pBuffer = nullptr;
    delete this;
}

CBinaryData::CDataHolder* CBinaryData::CDataHolder::GetExclusiveCopy() {
    m_cs.Enter();
    if (m_nRefCount <= 1) {
        m_cs.Leave();
        return this;
    }
    // Shared: the bytes cannot change while others hold them (every writer detaches first),
    // and the copy is taken under the lock so that no sharer's release can free them meanwhile.
    CDataHolder* copy;
    try {
        copy = new CDataHolder(m_pBuffer, m_nLength, false);
    } catch (...) {
        m_cs.Leave();
        throw;
    }
    // Release takes the lock again: leave it first.
    m_cs.Leave();
    Release(false);
    return copy;
}

void CBinaryData::CDataHolder::Append(unsigned char* pData, unsigned long nLength) {
    m_cs.Enter();
    if (m_nRefCount >= 2) {
        const int32_t count = m_nRefCount;
        m_cs.Leave();
        ThrowAppend(count);
    }
    const unsigned long long newLength = static_cast<unsigned long long>(m_nLength) + nLength;
    if (newLength > kMaxHolderLength) {
        m_cs.Leave();
        ThrowTooLarge(newLength);
    }
    if (newLength > m_nCapacity) {
        unsigned long long capacity = newLength * 2;
        if (capacity > kMaxHolderLength)
            capacity = kMaxHolderLength;
        unsigned char* grown;
        try {
            grown = new unsigned char[capacity];
        } catch (...) {
            m_cs.Leave();
            throw;
        }
        if (m_nLength != 0)
            std::memcpy(grown, m_pBuffer, m_nLength);
        // The new bytes are copied before the old array goes: they may lie inside it.
        std::memcpy(grown + m_nLength, pData, nLength);
        delete[] m_pBuffer;
        m_pBuffer = grown;
        m_nCapacity = static_cast<uint32_t>(capacity);
    } else {
        std::memmove(m_pBuffer + m_nLength, pData, nLength);
    }
    m_nLength = static_cast<uint32_t>(newLength);
    m_cs.Leave();
}

// ---------------------------------------------------------------------------------------------
// CBinaryData: life and sharing

CBinaryData::CBinaryData() : m_pData(nullptr) {}

CBinaryData::CBinaryData(const CBinaryData& other) : m_pData(other.m_pData) {
    if (m_pData)
        m_pData->AddRef();
}

CBinaryData::CBinaryData(CBinaryData&& other) noexcept : m_pData(other.m_pData) {
    other.m_pData = nullptr;
}

CBinaryData::CBinaryData(unsigned char* pData, unsigned long nLength, bool bTakeOwnership)
    : m_pData(nullptr) {
    if (nLength != 0 && pData != nullptr)
        m_pData = new CDataHolder(pData, nLength, bTakeOwnership);
}

CBinaryData::CBinaryData(const char* szData) : m_pData(nullptr) {
    size_t length = szData ? std::strlen(szData) : 0;
    if (length != 0)
        m_pData = new CDataHolder(reinterpret_cast<unsigned char*>(const_cast<char*>(szData)), length, false);
}

CBinaryData::~CBinaryData() {
    Clear();
}

void CBinaryData::Clear() {
    if (m_pData) {
        CDataHolder* holder = m_pData;
        m_pData = nullptr;
        holder->Release(false);
    }
}

CBinaryData& CBinaryData::operator=(const CBinaryData& other) {
    Clear();
    m_pData = other.m_pData; // null after Clear when other is this handle
    if (m_pData)
        m_pData->AddRef();
    return *this;
}

unsigned char* CBinaryData::ReleaseData() {
    if (!m_pData)
        return nullptr;
    m_pData = m_pData->GetExclusiveCopy();
    unsigned char* buffer = m_pData->GetData();
    CDataHolder* holder = m_pData;
    m_pData = nullptr;
    holder->Release(true);
    return buffer;
}

unsigned char* CBinaryData::GetData() const {
    return m_pData ? m_pData->GetData() : nullptr;
}

unsigned long CBinaryData::GetLength() const {
    return m_pData ? m_pData->GetLength() : 0;
}

// ---------------------------------------------------------------------------------------------
// CBinaryData: writing

void CBinaryData::Append(unsigned char* pData, unsigned long nLength) {
    if (nLength == 0 || pData == nullptr)
        return;
    if (!m_pData) {
        m_pData = new CDataHolder(pData, nLength, false);
        return;
    }
    m_pData = m_pData->GetExclusiveCopy();
    m_pData->Append(pData, nLength);
}

void CBinaryData::Append(unsigned char byte) {
    Append(&byte, 1);
}

void CBinaryData::Append(char byte) {
    Append(reinterpret_cast<unsigned char*>(&byte), 1);
}

void CBinaryData::Append(const char* szData) {
    if (szData)
        Append(reinterpret_cast<unsigned char*>(const_cast<char*>(szData)), std::strlen(szData));
}

void CBinaryData::Append(const std::string& data) {
    Append(data.c_str());
}

void CBinaryData::Append(const CBinaryData& data) {
    if (&data == this && m_pData) {
        // Appending a handle to itself: the holder may move while it grows, and detaching
        // would change what "data" reads. Take the bytes through a second reference.
        CBinaryData keep(data);
        Append(keep.GetData(), keep.GetLength());
        return;
    }
    Append(data.GetData(), data.GetLength());
}

void CBinaryData::SetBuffer(unsigned char* pData, unsigned long nLength) {
    Clear();
    if (nLength != 0 && pData != nullptr)
        m_pData = new CDataHolder(pData, nLength, false);
}

void CBinaryData::SetBuffer(const char* szData) {
    Clear();
    size_t length = szData ? std::strlen(szData) : 0;
    if (length != 0)
        m_pData = new CDataHolder(reinterpret_cast<unsigned char*>(const_cast<char*>(szData)), length, false);
}

// ---------------------------------------------------------------------------------------------
// CBinaryData: comparison and indexing

bool CBinaryData::operator==(const CBinaryData& other) const {
    if (!m_pData || !other.m_pData)
        return m_pData == other.m_pData;
    if (m_pData == other.m_pData)
        return true;
    const unsigned long length = m_pData->GetLength();
    if (length != other.m_pData->GetLength())
        return false;
    return length == 0 || std::memcmp(m_pData->GetData(), other.m_pData->GetData(), length) == 0;
}

bool CBinaryData::operator!=(const CBinaryData& other) const {
    return !(*this == other);
}

unsigned char& CBinaryData::operator[](unsigned long nIndex) {
    if (!m_pData || nIndex > m_pData->GetLength())
        ThrowIndexOutOfRange(nIndex);
    m_pData = m_pData->GetExclusiveCopy();
    return m_pData->GetData()[nIndex];
}

const unsigned char& CBinaryData::operator[](unsigned long nIndex) const {
    if (!m_pData || nIndex > m_pData->GetLength())
        ThrowIndexOutOfRange(nIndex);
    return m_pData->GetData()[nIndex];
}

// ---------------------------------------------------------------------------------------------
// CBinaryData: text forms

std::string CBinaryData::GetAsBase64() const {
    if (!m_pData)
        return std::string();
    CBase64 codec;
    return codec.Encode(m_pData->GetData(), static_cast<int>(m_pData->GetLength()));
}

void CBinaryData::SetAsBase64(const char* szText) {
    Clear();
    const size_t length = szText ? std::strlen(szText) : 0; // null is taken as ""
    if (length == 0)
        return;
    std::unique_ptr<unsigned char[]> buffer(new unsigned char[length + 1]);
    CBase64 codec;
    const int decoded = codec.Decode(szText, buffer.get());
    m_pData = new CDataHolder(buffer.get(), static_cast<unsigned long>(decoded), true);
    buffer.release();
}

std::string CBinaryData::GetAsHexString() const {
    if (!m_pData)
        return std::string();
    return GetAsHexString(m_pData->GetData(), m_pData->GetLength());
}

void CBinaryData::SetAsHexString(const char* szHex) {
    Clear();
    unsigned char* bytes = nullptr;
    const unsigned long length = ConvertToHexData(szHex, &bytes);
    if (length == 0) {
        delete[] bytes;
        return;
    }
    m_pData = new CDataHolder(bytes, length, true);
}

std::string CBinaryData::GetAsHexString(unsigned char* pData, unsigned long nLength) {
    if (!pData)
        return std::string();
    std::string text(static_cast<size_t>(nLength) * 2, '\0');
    char* out = &text[0];
    for (unsigned long i = 0; i < nLength; ++i) {
        *out++ = kHexDigits[pData[i] >> 4];
        *out++ = kHexDigits[pData[i] & 0x0F];
    }
    return text;
}

// Grammar: (hexdigit hexdigit)*, hexdigit = [0-9A-Fa-f]; nothing else, no whitespace.
unsigned long CBinaryData::ConvertToHexData(const char* szHex, unsigned char** ppOut) {
    const size_t n = szHex ? std::strlen(szHex) : 0;
    if (n % 2 != 0)
        ThrowHexLength();
    std::unique_ptr<unsigned char[]> bytes(new unsigned char[n / 2]);
    const unsigned char* in = reinterpret_cast<const unsigned char*>(szHex);
    for (size_t i = 0; i < n / 2; ++i) {
        const signed char high = kHexValue[in[2 * i]];
        if (high < 0)
            ThrowHexChar(szHex[2 * i]);
        const signed char low = kHexValue[in[2 * i + 1]];
        if (low < 0)
            ThrowHexChar(szHex[2 * i + 1]);
        bytes[i] = static_cast<unsigned char>((high << 4) | low);
    }
    *ppOut = bytes.release();
    return static_cast<unsigned long>(n / 2);
}

} // namespace QzXmlLib16

// ---------------------------------------------------------------------------------------------
// CBase64

const char CBase64::m_sBase64Alphabet[65] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

const uint32_t CBase64::m_nMask[9] = {0, 1, 3, 7, 15, 31, 63, 127, 255};

CBase64::CBase64() : m_nInputSize(0), m_nBitsInStore(0), m_nBitStore(0), m_pInput(nullptr) {}

CBase64::~CBase64() {}

std::string CBase64::Encode(unsigned char* pData, int nLength) {
    if (!pData)
        return std::string();
    m_pInput = pData;
    m_nInputSize = nLength;
    m_nBitStore = 0;
    m_nBitsInStore = 0;
    if (nLength <= 0)
        return std::string();

    const size_t length = static_cast<size_t>(nLength);
    const size_t bits = length * 8;
    const size_t chars = bits / 6 + (bits % 6 ? 1 : 0);
    std::string text((chars + 3) / 4 * 4, '='); // the padding is there from the start

    // Three bytes give four characters; this is the 6-bit pump unrolled, with the same result.
    const char* alphabet = m_sBase64Alphabet;
    char* out = &text[0];
    size_t i = 0;
    for (; i + 3 <= length; i += 3) {
        const uint32_t group = (uint32_t(pData[i]) << 16) | (uint32_t(pData[i + 1]) << 8) | pData[i + 2];
        out[0] = alphabet[(group >> 18) & 63];
        out[1] = alphabet[(group >> 12) & 63];
        out[2] = alphabet[(group >> 6) & 63];
        out[3] = alphabet[group & 63];
        out += 4;
    }
    if (length - i == 1) { // 8 bits: two characters, the second zero-filled
        const uint32_t group = uint32_t(pData[i]) << 16;
        out[0] = alphabet[(group >> 18) & 63];
        out[1] = alphabet[(group >> 12) & 63];
    } else if (length - i == 2) { // 16 bits: three characters
        const uint32_t group = (uint32_t(pData[i]) << 16) | (uint32_t(pData[i + 1]) << 8);
        out[0] = alphabet[(group >> 18) & 63];
        out[1] = alphabet[(group >> 12) & 63];
        out[2] = alphabet[(group >> 6) & 63];
    }
    return text;
}

// Accepted: any mix of base64 characters, "=", space, tab, CR and LF, in any order and count.
int CBase64::Decode(const char* szText, unsigned char* pOut) {
    m_nBitsInStore = 0;
    m_nBitStore = 0;
    if (!pOut || !szText || *szText == '\0')
        return 0;
    const size_t length = std::strlen(szText);
    std::memset(pOut, 0, length + 1);

    const unsigned char* in = reinterpret_cast<const unsigned char*>(szText);
    uint32_t store = 0;
    int held = 0;
    int pos = 0;
    for (size_t i = 0; i < length;) {
        // Four alphabet characters on a byte boundary give three bytes at once; anything else
        // ("=", whitespace, an invalid character, a group split by them) goes one by one.
        if (held == 0 && i + 4 <= length) {
            const int a = kBase64Value[in[i] & 0x7F];
            const int b = kBase64Value[in[i + 1] & 0x7F];
            const int c = kBase64Value[in[i + 2] & 0x7F];
            const int d = kBase64Value[in[i + 3] & 0x7F];
            if ((a | b | c | d) >= 0) {
                pOut[pos] = static_cast<unsigned char>((a << 2) | (b >> 4));
                pOut[pos + 1] = static_cast<unsigned char>(((b & 15) << 4) | (c >> 2));
                pOut[pos + 2] = static_cast<unsigned char>(((c & 3) << 6) | d);
                pos += 3;
                i += 4;
                continue;
            }
        }
        const signed char value = kBase64Value[in[i] & 0x7F];
        ++i;
        if (value == kB64Skip)
            continue;
        if (value == kB64Invalid)
            return 0;
        store = (store << 6) | static_cast<uint32_t>(value);
        held += 6;
        if (held >= 8) {
            held -= 8;
            pOut[pos++] = static_cast<unsigned char>(store >> held);
            store &= m_nMask[held];
        }
    }
    m_nBitStore = store;
    m_nBitsInStore = held;
    return pos;
}

unsigned int CBase64::Read(int nBits, int* pBitsRead, int& nPos) {
    while (m_nBitsInStore < nBits && nPos < m_nInputSize) {
        m_nBitStore = (m_nBitStore << 8) | m_pInput[nPos++];
        m_nBitsInStore += 8;
    }
    if (m_nBitsInStore < nBits) {
        const unsigned int value = (m_nBitStore << (nBits - m_nBitsInStore)) & m_nMask[nBits];
        *pBitsRead = m_nBitsInStore;
        m_nBitStore = 0;
        m_nBitsInStore = 0;
        return value;
    }
    *pBitsRead = nBits;
    m_nBitsInStore -= nBits;
    const unsigned int value = (m_nBitStore >> m_nBitsInStore) & m_nMask[nBits];
    m_nBitStore &= (m_nBitsInStore < 32) ? ((1u << m_nBitsInStore) - 1u) : ~0u;
    return value;
}

void CBase64::Write(unsigned int nValue, int nBits, unsigned char* pOut, int& nPos) {
    m_nBitStore = (m_nBitStore << nBits) | (nValue & ((nBits >= 32) ? ~0u : ((1u << nBits) - 1u)));
    m_nBitsInStore += nBits;
    while (m_nBitsInStore >= 8) {
        m_nBitsInStore -= 8;
        pOut[nPos++] = static_cast<unsigned char>(m_nBitStore >> m_nBitsInStore);
        m_nBitStore &= (1u << m_nBitsInStore) - 1u;
    }
}
