// StringBuffer.h - CStringBuffer, the block-wise growing text buffer behind CTextStream
// (foundation/TextStream.h).
//
// Text is appended into fixed-size blocks and never moved, except when GetText merges several
// blocks into one. A buffer belongs to one thread.
#ifndef QZXML_FOUNDATION_STRINGBUFFER_H
#define QZXML_FOUNDATION_STRINGBUFFER_H

#include "foundation/InstanceMonitor.h"

#include <string>
#include <vector>

namespace QzXmlLib16 {

class CStringBuffer : public CInstanceMonitor {
public:
    // Blocks of 4095 characters.
    CStringBuffer();
    // Blocks of blockSize - 1 characters (at least 1).
    explicit CStringBuffer(unsigned long blockSize);
    // Copies hold the same text in blocks of their own.
    CStringBuffer(const CStringBuffer& other);
    CStringBuffer& operator=(const CStringBuffer& other);
    ~CStringBuffer() override;

    // Characters appended since the last Clear/Empty/SetText.
    unsigned long GetLength() const { return m_nTotalLength; }
    // The whole text, NUL-terminated; "" without blocks. Owned by the buffer. Note: with
    // several blocks they are merged into one, so a pointer from an earlier call may be dead
    // after this one, and the next Append starts a new block.
    const char* GetText();
    // Clear, then Append.
    void SetText(const char* text);
    // Appends up to the NUL (null appends nothing).
    void Append(const char* text);
    // Appends the C string of text: anything behind an embedded NUL is ignored.
    void Append(const std::string& text);
    // One character; inline, since writers append character by character.
    void Append(char c) {
        if (m_pCurrent == nullptr || m_nUsed == m_nCapacity)
            AddNewBlock();
        m_pCurrent[m_nUsed++] = c;
        ++m_nTotalLength;
    }
    // Releases all blocks.
    void Clear();
    // Keeps a single block for reuse (zero-filled), otherwise Clear.
    void Empty();

protected:
    // Allocates a zero-filled block of block size + 1 bytes and makes it current.
    void AddNewBlock();

private:
    void AppendBytes(const char* text, unsigned long length);

    std::vector<char*> m_blocks;               // each new[], owned
    std::vector<unsigned long> m_blockLengths; // parallel to m_blocks
    unsigned long m_nBlockSize;
    unsigned long m_nUsed;     // characters in the current block
    unsigned long m_nCapacity; // size of the current block
    char* m_pCurrent;          // last block, null when there is none
    unsigned long m_nTotalLength;
};

} // namespace QzXmlLib16

#endif
