// Encoder.cpp - CEncoder, the ASCIIOnly switch and the small text helpers.
#include "foundation/Encoder.h"

#include "foundation/ConvertUTF.h"
#include "foundation/Exceptions.h"

#include <cctype>
#include <climits>
#include <clocale>
#include <cstring>
#include <cwchar>
#include <langinfo.h>
#include <memory>

namespace QzXmlLib16 {

bool ASCII_ONLY = false;

void ASCIIOnly(bool asciiOnly) {
    ASCII_ONLY = asciiOnly;
}

namespace {

// ---------------------------------------------------------------------------------------------
// Scratch arrays

// Short texts are converted in stack space; longer ones get an array for the call.
constexpr unsigned long kStackUnits = 256;

template <class T, unsigned long N> class CScratch {
public:
    // Room for count units: the caller's buffer if it is large enough, else the stack array,
    // else the heap.
    T* Get(unsigned long count, T* callerBuffer = nullptr, unsigned long callerSize = 0) {
        if (callerBuffer != nullptr && count <= callerSize)
            return callerBuffer;
        if (count <= N)
            return m_local;
        m_heap.reset(new T[count]);
        return m_heap.get();
    }

private:
    T m_local[N];
    std::unique_ptr<T[]> m_heap;
};

// ---------------------------------------------------------------------------------------------
// Locale code set

struct CodeSet {
    bool asciiCompatible; // ASCII maps to itself (C/POSIX, ISO-8859-n, UTF-8)
    bool utf8;
};

// What the current locale's code set guarantees. Only used to skip work whose result is
// known: ASCII characters come out as the same bytes in these code sets, and a UTF-8 locale
// writes scalar values as their UTF-8 form.
CodeSet CurrentCodeSet() {
    const char* name = nl_langinfo(CODESET);
    if (name == nullptr)
        return {false, false};
    if (std::strcmp(name, "UTF-8") == 0)
        return {true, true};
    if (std::strcmp(name, "ANSI_X3.4-1968") == 0 || std::strncmp(name, "ISO-8859-", 9) == 0)
        return {true, false};
    return {false, false};
}

// Bytes of the longest prefix that is legal UTF-8 and holds no NUL. In a UTF-8 locale this
// prefix is exactly what decoding (which stops at the first illegal unit), cutting at the first
// NUL and encoding again with wcrtomb give: UTF-8 has one form per scalar value.
size_t LegalUtf8Prefix(const unsigned char* bytes, size_t n) {
    size_t i = 0;
    while (i < n) {
        const unsigned char lead = bytes[i];
        if (lead == 0)
            break;
        if (lead < 0x80) {
            ++i;
            continue;
        }
        if (!IsLegalUTF8Sequence(bytes + i, bytes + n))
            break;
        i += lead < 0xE0 ? 2 : (lead < 0xF0 ? 3 : 4); // a legal lead byte is 0xC2..0xF4
    }
    return i;
}

bool IsAscii(const unsigned char* bytes, unsigned long n) {
    return !DoesUTF8StrContainAnyCharsLargerThanOneByte(const_cast<unsigned char*>(bytes), n);
}

// ---------------------------------------------------------------------------------------------
// Wide text to the local code page

void ResetState(std::mbstate_t& state) {
    std::memset(&state, 0, sizeof state);
}

// Measures the narrow form of the NUL-terminated wide text with wcrtomb, counting 1 for each
// character it refuses, then writes it (refused characters as "?") into narrowBuffer when the
// text and its NUL fit there, or into an array of its own.
std::string WideToLocalByLocale(const wchar_t* wide, char* narrowBuffer, unsigned long narrowSize) {
    char unit[MB_LEN_MAX];
    std::mbstate_t state;
    ResetState(state);
    unsigned long measure = 0;
    for (const wchar_t* w = wide; *w != 0; ++w) {
        size_t n = std::wcrtomb(unit, *w, &state);
        if (n == static_cast<size_t>(-1)) {
            measure += 1;
            ResetState(state); // the state is undefined after a refusal
        } else {
            measure += n;
        }
    }

    std::unique_ptr<char[]> owned;
    char* narrow = narrowBuffer;
    if (narrow == nullptr || measure + 1 > narrowSize) {
        owned.reset(new char[measure + 2]);
        narrow = owned.get();
    }

    ResetState(state);
    unsigned long pos = 0;
    for (const wchar_t* w = wide; *w != 0; ++w) {
        size_t n = std::wcrtomb(unit, *w, &state);
        if (n == static_cast<size_t>(-1)) {
            narrow[pos++] = '?';
            ResetState(state);
            continue;
        }
        if (pos + n > measure) // a stateful code set could disagree with the measure: never overrun
            break;
        std::memcpy(narrow + pos, unit, n);
        pos += n;
    }
    narrow[pos] = '\0';
    return std::string(narrow, std::strlen(narrow));
}

// As WideToLocalByLocale for wide text made by the UTF decoders, which holds scalar values
// only: in a UTF-8 locale the table-driven encoder gives the bytes wcrtomb would.
std::string DecodedWideToLocal(const wchar_t* wide, const CodeSet& codeset, char* narrowBuffer,
                               unsigned long narrowSize) {
    if (!codeset.utf8)
        return WideToLocalByLocale(wide, narrowBuffer, narrowSize);
    const unsigned long chars = static_cast<unsigned long>(std::wcslen(wide));
    const unsigned long size = UnicodeToUTF8(wide, chars, nullptr, 0);
    CScratch<char, 1> scratch;
    char* narrow = scratch.Get(size + 1, narrowBuffer, narrowSize);
    const unsigned long written = UnicodeToUTF8(wide, chars, reinterpret_cast<unsigned char*>(narrow), size);
    return std::string(narrow, written);
}

// ---------------------------------------------------------------------------------------------
// Local code page to wide text

// Decodes the NUL-terminated text with mbrtowc into wide (room for strlen + 1): a byte that
// does not start a complete character becomes "?" and the walk moves on by one byte. Returns
// the characters stored; wide is ended with 0.
unsigned long LocalToWide(const char* text, unsigned long length, wchar_t* wide) {
    std::mbstate_t state;
    ResetState(state);
    unsigned long count = 0;
    unsigned long pos = 0;
    while (pos < length) {
        wchar_t c = 0;
        size_t n = std::mbrtowc(&c, text + pos, length - pos, &state);
        if (n == 0) {
            wide[count++] = 0;
            pos += 1;
        } else if (n == static_cast<size_t>(-1) || n == static_cast<size_t>(-2)) {
            wide[count++] = L'?';
            pos += 1;
            ResetState(state);
        } else {
            wide[count++] = c;
            pos += n;
        }
    }
    wide[count] = 0;
    return count;
}

// A holder adopting a copy of n bytes (no 8192-byte minimum: the result is not grown further).
CBinaryData AdoptCopy(const void* bytes, unsigned long n) {
    if (n == 0)
        return CBinaryData();
    std::unique_ptr<unsigned char[]> array(new unsigned char[n]);
    std::memcpy(array.get(), bytes, n);
    CBinaryData result(array.get(), n, true);
    array.release();
    return result;
}

// ---------------------------------------------------------------------------------------------
// Find and replace

// The restart from the text's start is kept in effect, but the search resumes where a new
// occurrence could begin: nothing before position - (from length - 1) has changed, and it held
// no occurrence. Arguments that would replace for ever are refused once an occurrence is found
// (an empty from is found in any text); a text without from is left as it is.
template <class S> void FindReplaceImpl(S& text, const S& from, const S& to) {
    typename S::size_type at = text.find(from);
    if (at == S::npos)
        return;
    if (from.empty())
        throw CQzInvalidParamException("FindReplace: the text to find is empty");
    if (to.find(from) != S::npos)
        throw CQzInvalidParamException("FindReplace: the replacement contains the text to find");
    while (at != S::npos) {
        text.replace(at, from.size(), to);
        const typename S::size_type start = at >= from.size() - 1 ? at - (from.size() - 1) : 0;
        at = text.find(from, start);
    }
}

} // namespace

// ---------------------------------------------------------------------------------------------
// CEncoder: UTF-8 to the local code page

std::string CEncoder::Utf8ToLocalCodePage(const char* text) {
    return Utf8ToLocalCodePage(text, nullptr, 0, nullptr, 0);
}

std::string CEncoder::Utf8ToLocalCodePage(const char* text, wchar_t* wideBuffer, unsigned long wideSize,
                                          char* narrowBuffer, unsigned long narrowSize) {
    if (text == nullptr)
        return std::string();
    size_t length = std::strlen(text);
    if (length > static_cast<size_t>(INT_MAX - 2))
        length = static_cast<size_t>(INT_MAX - 2);
    return Utf8ToLocalCodePage(reinterpret_cast<unsigned char*>(const_cast<char*>(text)),
                               static_cast<int>(length), wideBuffer, wideSize, narrowBuffer, narrowSize);
}

std::string CEncoder::Utf8ToLocalCodePage(unsigned char* bytes, int length) {
    return Utf8ToLocalCodePage(bytes, length, nullptr, 0, nullptr, 0);
}

std::string CEncoder::Utf8ToLocalCodePage(unsigned char* bytes, int length, wchar_t* wideBuffer,
                                          unsigned long wideSize, char* narrowBuffer,
                                          unsigned long narrowSize) {
    if (bytes == nullptr || length <= 0)
        return std::string();
    if (ASCII_ONLY)
        return std::string(reinterpret_cast<const char*>(bytes), static_cast<size_t>(length));

    const unsigned long n = static_cast<unsigned long>(length);
    const bool ascii = IsAscii(bytes, n);
    const CodeSet codeset = CurrentCodeSet();

    // ASCII text in a code set where ASCII stands for itself: widening and narrowing again
    // would give back the same bytes, up to the first NUL.
    if (ascii && codeset.asciiCompatible) {
        const void* nul = std::memchr(bytes, 0, n);
        const size_t used = nul ? static_cast<size_t>(static_cast<const unsigned char*>(nul) - bytes) : n;
        return std::string(reinterpret_cast<const char*>(bytes), used);
    }

    if (codeset.utf8)
        return std::string(reinterpret_cast<const char*>(bytes), LegalUtf8Prefix(bytes, n));

    std::unique_ptr<wchar_t[]> ownedWide;
    wchar_t* wide = wideBuffer;
    if (wide == nullptr || n + 1 > wideSize) {
        ownedWide.reset(new wchar_t[n + 2]);
        wide = ownedWide.get();
    }
    if (ascii) {
        for (unsigned long i = 0; i < n; ++i)
            wide[i] = static_cast<wchar_t>(bytes[i]);
        wide[n] = 0;
    } else {
        const unsigned long count = UTF8ToUnicode(bytes, n, wide, n);
        wide[count] = 0;
    }
    return DecodedWideToLocal(wide, codeset, narrowBuffer, narrowSize);
}

// ---------------------------------------------------------------------------------------------
// CEncoder: to UTF-8 and wide bytes

CBinaryData CEncoder::UnicodeToUtf8Binary(const wchar_t* text) {
    if (text == nullptr)
        return CBinaryData();
    const unsigned long n = static_cast<unsigned long>(std::wcslen(text));
    if (n == 0)
        return CBinaryData();
    const unsigned long size = DoesUnicodeStrContainAnyUTF8CharsLargerThanOneByte(text, static_cast<int>(n))
                                   ? UnicodeToUTF8(text, n, nullptr, 0)
                                   : n;
    if (size == 0) // text that the UTF-8 form refuses counts as 0 bytes
        return CBinaryData();
    std::unique_ptr<unsigned char[]> bytes(new unsigned char[size]);
    const unsigned long written = UnicodeToUTF8(text, n, bytes.get(), size);
    if (written == 0)
        return CBinaryData();
    CBinaryData result(bytes.get(), written, true);
    bytes.release();
    return result;
}

CBinaryData CEncoder::LocalCodePageToUtf8Binary(const char* text) {
    if (text == nullptr)
        return CBinaryData();
    const unsigned long length = static_cast<unsigned long>(std::strlen(text));
    if (ASCII_ONLY)
        return CBinaryData(text);
    const unsigned char* bytes = reinterpret_cast<const unsigned char*>(text);
    // ASCII in an ASCII-compatible locale decodes to itself and encodes back to the same bytes.
    if (IsAscii(bytes, length) && CurrentCodeSet().asciiCompatible)
        return AdoptCopy(text, length);
    CScratch<wchar_t, kStackUnits> scratch;
    wchar_t* wide = scratch.Get(length + 1);
    LocalToWide(text, length, wide);
    return UnicodeToUtf8Binary(wide);
}

CBinaryData CEncoder::LocalCodePageToUnicodeBinary(const char* text) {
    if (text == nullptr)
        return CBinaryData();
    const unsigned long length = static_cast<unsigned long>(std::strlen(text));
    CScratch<wchar_t, kStackUnits> scratch;
    wchar_t* wide = scratch.Get(length + 1);
    const unsigned long count = LocalToWide(text, length, wide);
    return AdoptCopy(wide, count * static_cast<unsigned long>(sizeof(wchar_t)));
}

// ---------------------------------------------------------------------------------------------
// CEncoder: UTF-16BE to the local code page

std::string CEncoder::Utf16ToLocalCodePage(unsigned char* bytes, int length) {
    if (bytes == nullptr || length < 2)
        return std::string();
    const unsigned long n = static_cast<unsigned long>(length) & ~1UL;

    // Big-endian units to host order.
    CScratch<unsigned char, 2 * kStackUnits> hostScratch;
    unsigned char* host = hostScratch.Get(n);
    const UTF16 probe = 1;
    const bool littleEndianHost = *reinterpret_cast<const unsigned char*>(&probe) == 1;
    if (littleEndianHost) {
        for (unsigned long i = 0; i < n; i += 2) {
            host[i] = bytes[i + 1];
            host[i + 1] = bytes[i];
        }
    } else {
        std::memcpy(host, bytes, n);
    }

    CScratch<wchar_t, kStackUnits> wideScratch;
    wchar_t* wide = wideScratch.Get(n / 2 + 1);
    const unsigned long count = UTF16ToUnicode(host, n, wide, n / 2);
    wide[count] = 0;

    CScratch<char, 2 * kStackUnits> narrowScratch;
    if (ASCII_ONLY) {
        // The library holds UTF-8 while the switch is on.
        const unsigned long chars = static_cast<unsigned long>(std::wcslen(wide));
        const unsigned long size = UnicodeToUTF8(wide, chars, nullptr, 0);
        char* narrow = narrowScratch.Get(size + 1);
        const unsigned long written =
            UnicodeToUTF8(wide, chars, reinterpret_cast<unsigned char*>(narrow), size);
        return std::string(narrow, written);
    }
    return DecodedWideToLocal(wide, CurrentCodeSet(), narrowScratch.Get(2 * kStackUnits), 2 * kStackUnits);
}

// ---------------------------------------------------------------------------------------------
// Free helpers

std::string UnicodeToMultiByte(const wchar_t* text) {
    if (text == nullptr)
        return std::string();
    return WideToLocalByLocale(text, nullptr, 0);
}

char* strupr(char* text) {
    if (text == nullptr)
        return nullptr;
    for (unsigned char* p = reinterpret_cast<unsigned char*>(text); *p != 0; ++p)
        *p = static_cast<unsigned char>(std::toupper(*p));
    return text;
}

void FindReplace(std::string& text, const std::string& from, const std::string& to) {
    FindReplaceImpl(text, from, to);
}

void FindReplace(std::wstring& text, const std::wstring& from, const std::wstring& to) {
    FindReplaceImpl(text, from, to);
}

} // namespace QzXmlLib16
