// Exceptions.cpp - the exception family and the message formatter.
#include "foundation/Exceptions.h"

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <vector>

namespace QzXmlLib16 {

// ---------------------------------------------------------------------------
// CQzException

CQzException::CQzException() : m_pInnerException(nullptr) {}

CQzException::CQzException(std::string message) : m_message(std::move(message)), m_pInnerException(nullptr) {}

CQzException::CQzException(std::string message, const CQzException& inner)
    : m_message(std::move(message)), m_pInnerException(inner.Clone()) {}

CQzException::CQzException(std::string message, std::string path)
    : m_message(std::move(message)), m_pInnerException(nullptr) {
    if (!path.empty()) {
        m_message += "\nPath: ";
        m_message += path;
        m_path = std::move(path);
    }
}

CQzException::CQzException(std::string message, std::string path, const CQzException& inner)
    : CQzException(std::move(message), std::move(path)) {
    m_pInnerException = inner.Clone();
}

CQzException::CQzException(const CQzException& other)
    : m_message(other.m_message), m_path(other.m_path),
      m_pInnerException(other.m_pInnerException ? other.m_pInnerException->Clone() : nullptr) {}

CQzException::~CQzException() { delete m_pInnerException; }

std::string CQzException::GetMessage() const { return m_message; }

std::string CQzException::GetFullMessage() const {
    // Iterative walk: a long chain must not cost stack depth.
    std::string result = m_message;
    for (const CQzException* inner = m_pInnerException; inner; inner = inner->m_pInnerException) {
        result += '\n';
        result += inner->m_message;
    }
    return result;
}

std::string CQzException::GetPath() const { return m_path; }

CQzException* CQzException::GetInnerException() const { return m_pInnerException; }

CQzException& CQzException::operator=(const CQzException& other) {
    if (this == &other)
        return *this;
    m_message = other.m_message;
    // The previous inner exception is deliberately left alone (not destroyed).
    m_pInnerException = other.m_pInnerException ? other.m_pInnerException->Clone() : nullptr;
    return *this;
}

CQzException* CQzException::Clone() const { return new CQzException(*this); }

// ---------------------------------------------------------------------------
// The subclasses: constructors that convert from any member of the family copy
// message, path and a clone of the inner exception.

CQzValidationException::CQzValidationException() {}
CQzValidationException::CQzValidationException(std::string message, std::string path)
    : CQzException(std::move(message), std::move(path)) {}
CQzValidationException::CQzValidationException(std::string message, std::string path, const CQzException& inner)
    : CQzException(std::move(message), std::move(path), inner) {}
CQzValidationException::CQzValidationException(const CQzException& other) : CQzException(other) {}
CQzException* CQzValidationException::Clone() const { return new CQzValidationException(*this); }

CQzInvalidNamespaceException::CQzInvalidNamespaceException() {}
CQzInvalidNamespaceException::CQzInvalidNamespaceException(std::string message, std::string path)
    : CQzValidationException(std::move(message), std::move(path)) {}
CQzInvalidNamespaceException::CQzInvalidNamespaceException(std::string message, std::string path,
                                                           const CQzException& inner)
    : CQzValidationException(std::move(message), std::move(path), inner) {}
CQzInvalidNamespaceException::CQzInvalidNamespaceException(const CQzException& other)
    : CQzValidationException(other) {}
CQzException* CQzInvalidNamespaceException::Clone() const { return new CQzInvalidNamespaceException(*this); }

CQzInvalidValueException::CQzInvalidValueException() {}
CQzInvalidValueException::CQzInvalidValueException(std::string message)
    : CQzValidationException(std::move(message), std::string()) {}
CQzInvalidValueException::CQzInvalidValueException(std::string message, const CQzException& inner)
    : CQzValidationException(std::move(message), std::string(), inner) {}
CQzInvalidValueException::CQzInvalidValueException(const CQzException& other) : CQzValidationException(other) {}
CQzException* CQzInvalidValueException::Clone() const { return new CQzInvalidValueException(*this); }

#define QZXML_SIMPLE_EXCEPTION(Name)                                                                         \
    Name::Name() {}                                                                                          \
    Name::Name(std::string message) : CQzException(std::move(message)) {}                                    \
    Name::Name(std::string message, const CQzException& inner) : CQzException(std::move(message), inner) {}  \
    Name::Name(const CQzException& other) : CQzException(other) {}                                           \
    CQzException* Name::Clone() const { return new Name(*this); }

QZXML_SIMPLE_EXCEPTION(CQzInvalidStateException)
QZXML_SIMPLE_EXCEPTION(CQzInvalidParamException)
QZXML_SIMPLE_EXCEPTION(CQzOverFlowException)

#undef QZXML_SIMPLE_EXCEPTION

// ---------------------------------------------------------------------------
// FormatV

namespace {

enum SizeModifier { SizeNone, SizeChar, SizeShort, SizeLong, SizeLongLong, SizeLongDouble, SizeSizeT, SizeIntMax,
                    SizePtrDiff };

// Walks the format and the arguments and returns an upper bound of the text
// length. At the same time it rewrites the format into one that the platform's
// formatter prints safely: "%n" becomes "%d" (the number is printed, nothing is
// stored) and the foreign modifier "I64" becomes "ll".
size_t MeasureAndRewrite(const char* format, va_list args, std::string& safeFormat) {
    size_t total = 0;
    const char* p = format;
    while (*p) {
        if (*p != '%') {
            safeFormat += *p++;
            ++total;
            continue;
        }
        const char* start = p++;
        if (*p == '%') {
            safeFormat += "%%";
            ++p;
            ++total;
            continue;
        }
        long width = 0;
        long precision = 0;
        size_t item = 0;
        std::string directive = "%";
        // Flags; "#" may add a prefix such as "0x".
        for (;; ++p) {
            if (*p == '#') {
                item += 2;
            } else if (*p == '*') {
                int w = va_arg(args, int);
                width = w < 0 ? -static_cast<long>(w) : w;
            } else if (*p != '-' && *p != '+' && *p != '0' && *p != ' ') {
                break;
            }
            directive += *p;
        }
        if (width == 0 && *p >= '0' && *p <= '9') {
            char* end = nullptr;
            width = std::strtol(p, &end, 10);
            directive.append(p, static_cast<size_t>(end - p));
            p = end;
        }
        if (*p == '.') {
            directive += *p++;
            if (*p == '*') {
                int prec = va_arg(args, int);
                precision = prec < 0 ? 0 : prec;
                directive += *p++;
            } else {
                char* end = nullptr;
                precision = std::strtol(p, &end, 10);
                // The formatter gets the number as read ("%.-5d" as "%.0d"): a spelling it did
                // not read as a precision would make it skip the argument that was measured.
                if (precision < 0)
                    precision = 0;
                directive += std::to_string(precision);
                p = end;
            }
        }
        if (width > (1L << 30) || precision > (1L << 30)) {
            // Absurd widths are left to the platform formatter, which refuses them.
            width = width > (1L << 30) ? 0 : width;
            precision = precision > (1L << 30) ? 0 : precision;
        }
        SizeModifier size = SizeNone;
        const std::string::size_type modifierAt = directive.size();
        if (p[0] == 'I' && p[1] == '6' && p[2] == '4') {
            size = SizeLongLong;
            directive += "ll";
            p += 3;
        } else {
            for (bool more = true; more;) {
                switch (*p) {
                case 'h': size = size == SizeShort ? SizeChar : SizeShort; directive += *p++; break;
                case 'l': size = size == SizeLong ? SizeLongLong : SizeLong; directive += *p++; break;
                case 'q': size = SizeLongLong; directive += "ll"; ++p; break;
                case 'L': size = SizeLongDouble; directive += *p++; break;
                case 'z': size = SizeSizeT; directive += *p++; break;
                case 'j': size = SizeIntMax; directive += *p++; break;
                case 't': size = SizePtrDiff; directive += *p++; break;
                case 'F': case 'N': ++p; break;
                default: more = false; break;
                }
            }
        }
        const char conv = *p;
        if (conv == '\0') {
            // A lone "%" at the end: leave it to the formatter, which prints nothing for it.
            safeFormat.append(start, static_cast<size_t>(p - start));
            break;
        }
        ++p;
        const size_t numeric = static_cast<size_t>(width + precision) > 32 ? static_cast<size_t>(width + precision) : 32;
        // Characters and strings: "h" makes them narrow and "l" wide; without either, the
        // capital letters "C" and "S" are the wide forms. The formatter gets "%c"/"%s" or
        // "%lc"/"%ls", the only spellings it reads this way.
        const bool narrowModifier = size == SizeShort || size == SizeChar;
        const bool wideItem = size == SizeLong || ((conv == 'C' || conv == 'S') && !narrowModifier);
        switch (conv) {
        case 'c':
        case 'C': {
            if (wideItem) {
                (void)va_arg(args, wint_t);
                item += MB_LEN_MAX;
            } else {
                (void)va_arg(args, int);
                item += 2;
            }
            if (static_cast<size_t>(width) > item)
                item = width;
            directive.resize(modifierAt);
            directive += wideItem ? "lc" : "c";
            break;
        }
        case 's':
        case 'S': {
            size_t len;
            directive.resize(modifierAt);
            if (wideItem) {
                const wchar_t* ws = va_arg(args, const wchar_t*);
                // A wide character may need several bytes in the local code page.
                len = ws ? std::wcslen(ws) * MB_LEN_MAX : 6;
                if (ws && precision != 0 && len > static_cast<size_t>(precision))
                    len = precision;
                directive += "ls";
            } else {
                const char* s = va_arg(args, const char*);
                len = s ? std::strlen(s) : 6;
                if (s && precision != 0 && len > static_cast<size_t>(precision))
                    len = precision;
                directive += 's';
            }
            if (len < 1)
                len = 1;
            if (static_cast<size_t>(width) > len)
                len = width;
            item += len;
            break;
        }
        case 'd': case 'i': case 'o': case 'u': case 'x': case 'X': case 'n': {
            switch (size) {
            case SizeLong: (void)va_arg(args, long); break;
            case SizeLongLong: (void)va_arg(args, long long); break;
            case SizeSizeT: (void)va_arg(args, size_t); break;
            case SizeIntMax: (void)va_arg(args, intmax_t); break;
            case SizePtrDiff: (void)va_arg(args, ptrdiff_t); break;
            default: (void)va_arg(args, int); break;
            }
            item += numeric;
            directive += conv == 'n' ? 'd' : conv;
            break;
        }
        case 'p':
            (void)va_arg(args, void*);
            item += numeric;
            directive += conv;
            break;
        // Note: "%E" steps over its double and is measured like "%e". A walk that left it
        // unmeasured and unconsumed would size every later item from the wrong argument.
        case 'f': case 'F': case 'e': case 'E': case 'g': case 'G': case 'a': case 'A': {
            if (size == SizeLongDouble) {
                long double v = va_arg(args, long double);
                item += 4980 + width + precision; // widest long double in %f
                (void)v;
            } else {
                double v = va_arg(args, double);
                if (conv == 'f' || conv == 'F') {
                    // Print once to know the exact length.
                    size_t tmpSize = static_cast<size_t>(precision) + 318;
                    if (static_cast<size_t>(width) > tmpSize)
                        tmpSize = width;
                    tmpSize += 16;
                    std::vector<char> tmp(tmpSize);
                    std::snprintf(tmp.data(), tmp.size(), "%*.*f", static_cast<int>(width + 6),
                                  static_cast<int>(precision + 6), v);
                    item += std::strlen(tmp.data());
                } else {
                    item += static_cast<size_t>(width + precision) > 128 ? static_cast<size_t>(width + precision)
                                                                            : 128;
                }
            }
            directive += conv;
            break;
        }
        default:
            // Unknown conversion: passed on as written, consuming nothing.
            directive.assign(start, static_cast<size_t>(p - start));
            break;
        }
        total += item;
        safeFormat += directive;
    }
    return total;
}

} // namespace

std::string FormatV(const char* format, va_list args) {
    if (!format)
        return std::string();
    std::string safeFormat;
    safeFormat.reserve(std::strlen(format) + 8);
    va_list measureArgs;
    va_copy(measureArgs, args);
    size_t total = MeasureAndRewrite(format, measureArgs, safeFormat);
    va_end(measureArgs);

    // The measure is an upper bound for every conversion it knows; the check
    // below keeps the promise that nothing is ever cut for the others either.
    va_list checkArgs;
    va_copy(checkArgs, args);
    int needed = std::vsnprintf(nullptr, 0, safeFormat.c_str(), checkArgs);
    va_end(checkArgs);
    if (needed > 0 && static_cast<size_t>(needed) > total)
        total = static_cast<size_t>(needed);

    std::string result(total + 1, 'X');
    va_list printArgs;
    va_copy(printArgs, args);
    std::vsnprintf(&result[0], total + 1, safeFormat.c_str(), printArgs);
    va_end(printArgs);
    result.resize(std::strlen(result.c_str()));
    return result;
}

std::string FormatString(const char* format, ...) {
    va_list args;
    va_start(args, format);
    std::string result = FormatV(format, args);
    va_end(args);
    return result;
}

} // namespace QzXmlLib16
