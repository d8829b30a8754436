// StringBuffer.cpp - CStringBuffer.
#include "foundation/StringBuffer.h"

#include <cstring>

namespace QzXmlLib16 {

namespace {

// ---------------------------------------------------------------------------------------------
// Defaults

constexpr unsigned long kDefaultBlockSize = 4095;

// A block must hold at least one character, or appending would never end.
unsigned long BlockSizeFor(unsigned long requested) {
    return requested > 1 ? requested - 1 : 1;
}

} // namespace

// ---------------------------------------------------------------------------------------------
// Life

CStringBuffer::CStringBuffer()
    : CInstanceMonitor("CStringBuffer"), m_nBlockSize(kDefaultBlockSize), m_nUsed(0), m_nCapacity(0),
      m_pCurrent(nullptr), m_nTotalLength(0) {}

CStringBuffer::CStringBuffer(unsigned long blockSize)
    : CInstanceMonitor("CStringBuffer"), m_nBlockSize(BlockSizeFor(blockSize)), m_nUsed(0), m_nCapacity(0),
      m_pCurrent(nullptr), m_nTotalLength(0) {}

CStringBuffer::CStringBuffer(const CStringBuffer& other)
    : CInstanceMonitor("CStringBuffer"), m_nBlockSize(other.m_nBlockSize), m_nUsed(0), m_nCapacity(0),
      m_pCurrent(nullptr), m_nTotalLength(0) {
    *this = other;
}

CStringBuffer& CStringBuffer::operator=(const CStringBuffer& other) {
    if (this == &other)
        return *this;
    Clear();
    m_nBlockSize = other.m_nBlockSize;
    const size_t count = other.m_blocks.size();
    for (size_t i = 0; i < count; ++i) {
        unsigned long length = (i + 1 == count) ? other.m_nUsed : other.m_blockLengths[i];
        AppendBytes(other.m_blocks[i], length);
    }
    m_nTotalLength = other.m_nTotalLength;
    return *this;
}

CStringBuffer::~CStringBuffer() {
    Clear();
}

// ---------------------------------------------------------------------------------------------
// Appending

void CStringBuffer::AddNewBlock() {
    char* block = new char[m_nBlockSize + 1]();
    m_blocks.push_back(block);
    m_blockLengths.push_back(m_nBlockSize);
    m_pCurrent = block;
    m_nUsed = 0;
    m_nCapacity = m_nBlockSize;
}

// Copies into the current block as far as it goes, then into new blocks; the total length is
// the caller's business.
void CStringBuffer::AppendBytes(const char* text, unsigned long length) {
    while (length != 0) {
        if (m_pCurrent == nullptr || m_nUsed == m_nCapacity) {
            AddNewBlock();
            continue;
        }
        unsigned long room = m_nCapacity - m_nUsed;
        unsigned long part = length < room ? length : room;
        std::memcpy(m_pCurrent + m_nUsed, text, part);
        m_nUsed += part;
        text += part;
        length -= part;
    }
}

void CStringBuffer::Append(const char* text) {
    if (text == nullptr)
        return;
    const unsigned long length = static_cast<unsigned long>(std::strlen(text));
    m_nTotalLength += length;
    AppendBytes(text, length);
}

void CStringBuffer::Append(const std::string& text) {
    Append(text.c_str());
}

void CStringBuffer::SetText(const char* text) {
    Clear();
    Append(text);
}

// ---------------------------------------------------------------------------------------------
// Reading and resetting

const char* CStringBuffer::GetText() {
    if (m_blocks.empty())
        return "";
    if (m_blocks.size() == 1)
        return m_blocks[0];

    // Merge: full blocks contribute their length, the last one what is used of it.
    const unsigned long total = m_nTotalLength;
    char* merged = new char[total + 1];
    unsigned long pos = 0;
    const size_t count = m_blocks.size();
    for (size_t i = 0; i < count; ++i) {
        unsigned long length = (i + 1 == count) ? m_nUsed : m_blockLengths[i];
        if (pos + length > total) // defensive: never write past the merged array
            length = total - pos;
        std::memcpy(merged + pos, m_blocks[i], length);
        pos += length;
    }
    std::memset(merged + pos, 0, total + 1 - pos);
    Clear();
    m_blocks.push_back(merged);
    m_blockLengths.push_back(total);
    m_pCurrent = merged;
    m_nUsed = total;
    m_nCapacity = total;
    m_nTotalLength = total;
    return merged;
}

void CStringBuffer::Clear() {
    for (char* block : m_blocks)
        delete[] block;
    m_blocks.clear();
    m_blockLengths.clear();
    m_nUsed = 0;
    m_nCapacity = 0;
    m_pCurrent = nullptr;
    m_nTotalLength = 0;
}

void CStringBuffer::Empty() {
    if (m_blocks.size() != 1) {
        Clear();
        return;
    }
    std::memset(m_pCurrent, 0, m_nCapacity + 1);
    m_nUsed = 0;
    m_nTotalLength = 0;
}

} // namespace QzXmlLib16
