// Encoder.h - CEncoder, conversions between UTF-8, UTF-16, wchar_t and the local code page;
// the process-wide ASCIIOnly switch; and the small text helpers UnicodeToMultiByte,
// FindReplace and strupr.
//
// The local code page is the multibyte encoding of the process's C locale; the library never
// calls setlocale. The UTF routines underneath are in foundation/ConvertUTF.h, the byte
// buffer returned by the binary forms in values/BinaryData.h.
#ifndef QZXML_FOUNDATION_ENCODER_H
#define QZXML_FOUNDATION_ENCODER_H

#include "values/BinaryData.h"

#include <string>

namespace QzXmlLib16 {

// Process-wide switch, false at load. While it is true, UTF-8 text is passed through unchanged
// by Utf8ToLocalCodePage and LocalCodePageToUtf8Binary, so the library holds UTF-8 itself.
// Set once at start-up.
extern bool ASCII_ONLY;

// Sets ASCII_ONLY. Not synchronised: call it before other threads use the library.
void ASCIIOnly(bool asciiOnly);

// Static conversions at the borders of the library. None of them throws (except allocation
// failure): a character without a form in the target becomes "?".
class CEncoder {
public:
    // UTF-8 text up to its NUL, to the local code page. See the last form.
    static std::string Utf8ToLocalCodePage(const char* text);
    // As above, with optional scratch buffers (null and 0 when absent) that avoid the heap.
    static std::string Utf8ToLocalCodePage(const char* text, wchar_t* wideBuffer, unsigned long wideSize,
                                           char* narrowBuffer, unsigned long narrowSize);
    // length bytes of UTF-8 to the local code page.
    static std::string Utf8ToLocalCodePage(unsigned char* bytes, int length);
    // length bytes of UTF-8 to the local code page. The wide buffer is used when it holds
    // length + 1 characters, the narrow buffer when it holds the result and its NUL; otherwise
    // arrays are allocated for the call and released. With ASCII_ONLY the bytes come back as
    // they are. Note: invalid UTF-8 silently ends the text where it starts, and a character
    // the locale cannot show becomes "?"; the text is also cut at its first NUL. Never throws.
    static std::string Utf8ToLocalCodePage(unsigned char* bytes, int length, wchar_t* wideBuffer,
                                           unsigned long wideSize, char* narrowBuffer,
                                           unsigned long narrowSize);

    // UTF-8 bytes of a wide text (up to its NUL); empty for "" or null. Text holding a
    // surrogate or a value the UTF-8 form refuses gives an empty result.
    static CBinaryData UnicodeToUtf8Binary(const wchar_t* text);
    // UTF-8 bytes of local code page text; with ASCII_ONLY the bytes as they are. Bytes the
    // locale cannot decode become "?".
    static CBinaryData LocalCodePageToUtf8Binary(const char* text);
    // The wchar_t units of local code page text, 4 bytes each in host order, without a
    // terminating 0 ("ab" gives 8 bytes). Bytes the locale cannot decode become "?".
    static CBinaryData LocalCodePageToUnicodeBinary(const char* text);
    // length bytes of UTF-16BE (an odd last byte is ignored) to the local code page; with
    // ASCII_ONLY to UTF-8, the form the library then holds. Invalid UTF-16 ends the text there.
    static std::string Utf16ToLocalCodePage(unsigned char* bytes, int length);
};

// A wide text (up to its NUL) in the local code page; "?" for characters the locale cannot
// show. Empty for null. Note: unlike Utf8ToLocalCodePage it does not look at ASCII_ONLY, so
// with the switch on it still gives local code page text, not UTF-8.
std::string UnicodeToMultiByte(const wchar_t* text);

// Upper-cases text in place, byte by byte with toupper in the current locale; returns text.
char* strupr(char* text);

// Replaces the first occurrence of from by to, searching again from the start, until there is
// none: a replacement that forms a new occurrence is replaced too (removing "ab" from "aabb"
// leaves ""). A text without from is left unchanged. Throws CQzInvalidParamException when
// from occurs and is empty or contained in to, since the replacing would never end.
void FindReplace(std::string& text, const std::string& from, const std::string& to);
void FindReplace(std::wstring& text, const std::wstring& from, const std::wstring& to);

} // namespace QzXmlLib16

#endif
