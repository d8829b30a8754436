// BinaryData.h - CBinaryData, the byte buffer and value of hexBinary/base64Binary, and the
// base64 codec CBase64.
//
// A CBinaryData is a small handle on a shared, reference-counted holder: copies share the
// bytes until one side writes (copy on write). Hex text is read and written by CBinaryData
// itself. Failures are CQzException (foundation/Exceptions.h).
#ifndef QZXML_VALUES_BINARYDATA_H
#define QZXML_VALUES_BINARYDATA_H

#include "foundation/CriticalSection.h"
#include "foundation/Exceptions.h"

#include <cstdint>
#include <string>

namespace QzXmlLib16 {

class CBinaryData {
public:
    // The shared holder. Created with a count of 1, destroyed by the Release that takes the
    // count to 0. Every writer first takes GetExclusiveCopy.
    class CDataHolder {
    public:
        // Adopts pData (length and capacity nLength) with bTakeOwnership; otherwise copies
        // nLength bytes into a new buffer of twice that size.
        // Note: a copied holder owns at least 8192 bytes whatever it holds, since CBinaryData
        // also accumulates stream output; an adopted one has no spare room.
        CDataHolder(unsigned char* pData, unsigned long nLength, bool bTakeOwnership);

        // Adds one reference, under the lock.
        void AddRef();
        // Drops one reference. bDetachBuffer false: the last reference frees buffer and holder.
        // bDetachBuffer true: frees the holder only, leaving the buffer to the caller; throws
        // "Failed to release data. [RefCount=%d]" if references remain.
        void Release(bool bDetachBuffer);
        // This holder if it is not shared, else a new unshared copy; in that case this
        // holder loses the caller's reference. The lock is left before that release, so the
        // plain (non-recursive) mutex never blocks on itself.
        CDataHolder* GetExclusiveCopy();

        unsigned char* GetData() const { return m_pBuffer; }
        unsigned long GetLength() const { return m_nLength; }
        // Appends under the lock; growth doubles to twice the new length. Throws
        // "Failed to append. [RefCount=%d]" on a shared holder.
        void Append(unsigned char* pData, unsigned long nLength);

        // Frees neither the buffer nor anything else: a holder made with new is ended by
        // Release, which decides whether the buffer goes with it.
        ~CDataHolder() = default;

    private:
        CDataHolder(const CDataHolder&) = delete;
        CDataHolder& operator=(const CDataHolder&) = delete;

        unsigned char* m_pBuffer;
        uint32_t m_nLength;
        uint32_t m_nCapacity;
        int32_t m_nRefCount;
        CQZCriticalSection m_cs;
    };

    // No holder: length 0, data null.
    CBinaryData();
    // Shares the other's holder (one more reference); never copies bytes.
    CBinaryData(const CBinaryData& other);
    // Takes over the other's holder and leaves it empty.
    CBinaryData(CBinaryData&& other) noexcept;
    // With nLength 0 (or a null pData) no holder is made and pData is not taken. With bTakeOwnership the holder
    // adopts pData (allocated with new[]); otherwise the bytes are copied.
    CBinaryData(unsigned char* pData, unsigned long nLength, bool bTakeOwnership);
    // Copies the bytes of a NUL-terminated string without the NUL; "" (or null) gives no holder.
    CBinaryData(const char* szData);
    virtual ~CBinaryData();

    // Hands the buffer (allocated with new[]) to the caller, who must have read GetLength
    // first, and empties this handle. Null without a holder.
    unsigned char* ReleaseData();

    // The bytes, or null without a holder. Borrowed: valid until this handle changes.
    unsigned char* GetData() const;
    // The number of bytes, 0 without a holder.
    unsigned long GetLength() const;

    // All forms append bytes, detaching this handle from other sharers first; length 0 does
    // nothing, as does a null pointer. The std::string form stops at the first zero byte.
    void Append(unsigned char* pData, unsigned long nLength);
    void Append(unsigned char byte);
    void Append(char byte);
    void Append(const char* szData);
    void Append(const std::string& data);
    void Append(const CBinaryData& data);

    // Clear, then a copy of the bytes when there are any.
    void SetBuffer(unsigned char* pData, unsigned long nLength);
    void SetBuffer(const char* szData);

    // Note: Clear first, then share the other's holder, with no self-assignment test: a
    // handle assigned to itself ends up empty.
    CBinaryData& operator=(const CBinaryData& other);

    // Base64 text without line breaks; empty without a holder.
    std::string GetAsBase64() const;
    // Note: Clear, then decode. "" leaves the handle empty; text with an invalid character
    // gives a holder of length 0 (unequal to an empty handle) and no exception. Null is "".
    void SetAsBase64(const char* szText);
    // Two upper-case hex digits per byte; empty without a holder.
    std::string GetAsHexString() const;
    // Clear, then parse hex text (either case). "" leaves the handle empty. Throws
    // "Invalid length in hex string" or "Invalid char in hex string [%c]"; the handle is
    // then empty.
    void SetAsHexString(const char* szHex);

    // Equal: both without holder, or same length and bytes. A holder of length 0 is not
    // equal to no holder.
    bool operator==(const CBinaryData& other) const;
    bool operator!=(const CBinaryData& other) const;
    // Note: valid indices are 0 to GetLength() inclusive; the index equal to the length is let
    // through on purpose and refers to the byte behind the data. Throws "Index Out of range [%d]"
    // otherwise, also without a holder. This form detaches the handle from sharers first.
    unsigned char& operator[](unsigned long nIndex);
    // As above without detaching.
    const unsigned char& operator[](unsigned long nIndex) const;

    // Drops this handle's reference; the handle is empty afterwards.
    void Clear();

    // Hex text of a range, upper case; empty for a null pointer.
    static std::string GetAsHexString(unsigned char* pData, unsigned long nLength);
    // Parses hex text into a new[] array stored through ppOut (also for "", with 0 bytes) and
    // returns its length. Throws as SetAsHexString; the length is checked before any character.
    static unsigned long ConvertToHexData(const char* szHex, unsigned char** ppOut);

protected:
    // The shared holder; null means no data.
    CDataHolder* m_pData;
};

} // namespace QzXmlLib16

// Base64 codec (no line breaks on output; whitespace and "=" ignored on input). One instance
// per call site: it holds per-call state.
class CBase64 {
public:
    CBase64();
    virtual ~CBase64();

    // Base64 text of nLength bytes, padded with "=" to a multiple of 4; empty for null.
    std::string Encode(unsigned char* pData, int nLength);
    // Decodes into pOut, which must hold strlen(szText) + 1 bytes (it is zeroed first), and
    // returns the bytes written. Note: an invalid character ends decoding with a result of 0,
    // without exception; "=" and whitespace are skipped wherever they stand; a character
    // above 127 decodes as its low-seven-bit twin; left-over bits are dropped.
    int Decode(const char* szText, unsigned char* pOut);

    // "A-Za-z0-9+/" and a NUL.
    static const char m_sBase64Alphabet[65];
    // m_nMask[n] has the low n bits set.
    static const uint32_t m_nMask[9];

protected:
    // Takes nBits from the input (zero-filled at the end); *pBitsRead gets the bits that were
    // really there.
    unsigned int Read(int nBits, int* pBitsRead, int& nPos);
    // Adds nBits of nValue to the store and writes out each full byte at pOut[nPos++].
    void Write(unsigned int nValue, int nBits, unsigned char* pOut, int& nPos);

    int32_t m_nInputSize;
    int32_t m_nBitsInStore;
    uint32_t m_nBitStore;
    unsigned char* m_pInput;
};

#endif
