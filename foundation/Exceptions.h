// Exceptions.h - the exception family of the library and the message formatter.
//
// Every failure of the library is thrown by value as one of the classes below and
// is caught as CQzException&. Messages are built with FormatString. See also
// foundation/InstanceMonitor.h and foundation/CriticalSection.h for the two tiny
// global helper classes that sit beside these.
#ifndef QZXML_FOUNDATION_EXCEPTIONS_H
#define QZXML_FOUNDATION_EXCEPTIONS_H

#include <cstdarg>
#include <string>

namespace QzXmlLib16 {

// Base of the family. Carries a message, the document path (XPath-like location,
// may be empty) and an owned deep copy of the exception that caused this one.
class CQzException {
public:
    CQzException();
    explicit CQzException(std::string message);
    CQzException(std::string message, const CQzException& inner);
    // A non-empty path is also appended to the message as "\nPath: <path>".
    CQzException(std::string message, std::string path);
    CQzException(std::string message, std::string path, const CQzException& inner);
    // Copies message and path and clones the inner exception.
    CQzException(const CQzException& other);
    virtual ~CQzException();

    // The message as stored, with the "\nPath: " line inside if a path was given.
    std::string GetMessage() const;
    // This message, then one line feed and the inner exception's full message,
    // recursively: the whole chain, outermost first.
    std::string GetFullMessage() const;
    // The path alone; empty when none was given.
    std::string GetPath() const;
    // The inner exception or null; it stays owned by this exception.
    CQzException* GetInnerException() const;

    // Note: assigns the message and replaces the inner pointer by a clone of the
    // source's, but keeps this object's path and does not destroy the inner
    // exception held before. Applications rely on this exact behaviour.
    CQzException& operator=(const CQzException& other);

    // A new heap copy of the same dynamic class; the caller owns it.
    virtual CQzException* Clone() const;

protected:
    std::string m_message;
    std::string m_path;
    CQzException* m_pInnerException;
};

// A document or value does not conform to the schema.
class CQzValidationException : public CQzException {
public:
    CQzValidationException();
    CQzValidationException(std::string message, std::string path);
    CQzValidationException(std::string message, std::string path, const CQzException& inner);
    // Turns any exception of the family into this class (message, path, inner copied).
    CQzValidationException(const CQzException& other);
    CQzException* Clone() const override;

protected:
    // Reserved: no constructor sets it; Clone copies it.
    std::string m_reserved;
};

// A namespace is not allowed at this place.
class CQzInvalidNamespaceException : public CQzValidationException {
public:
    CQzInvalidNamespaceException();
    CQzInvalidNamespaceException(std::string message, std::string path);
    CQzInvalidNamespaceException(std::string message, std::string path, const CQzException& inner);
    CQzInvalidNamespaceException(const CQzException& other);
    CQzException* Clone() const override;
};

// A value is outside what its type or facets allow.
class CQzInvalidValueException : public CQzValidationException {
public:
    CQzInvalidValueException();
    explicit CQzInvalidValueException(std::string message);
    CQzInvalidValueException(std::string message, const CQzException& inner);
    CQzInvalidValueException(const CQzException& other);
    CQzException* Clone() const override;
};

// An operation is invalid in the object's current state.
class CQzInvalidStateException : public CQzException {
public:
    CQzInvalidStateException();
    explicit CQzInvalidStateException(std::string message);
    CQzInvalidStateException(std::string message, const CQzException& inner);
    CQzInvalidStateException(const CQzException& other);
    CQzException* Clone() const override;
};

// A caller passed an unusable argument.
class CQzInvalidParamException : public CQzException {
public:
    CQzInvalidParamException();
    explicit CQzInvalidParamException(std::string message);
    CQzInvalidParamException(std::string message, const CQzException& inner);
    CQzInvalidParamException(const CQzException& other);
    CQzException* Clone() const override;
};

// A decimal value does not fit the target type of a conversion.
class CQzOverFlowException : public CQzException {
public:
    CQzOverFlowException();
    explicit CQzOverFlowException(std::string message);
    CQzOverFlowException(std::string message, const CQzException& inner);
    CQzOverFlowException(const CQzException& other);
    CQzException* Clone() const override;
};

// Formats like vsnprintf into a string of exactly the needed length.
// Note: the text is never cut: the measured length is checked against the
// platform's own count, so "%E" and conversions the measure does not know come out
// whole. "%n" prints its int argument as a decimal number; nothing is ever stored
// through an argument. "I64" is accepted as a 64-bit size modifier; "%hs" and
// "%hS" take a char*, "%S" and "%ls" a wchar_t*, "%C" and "%lc" a wide character.
std::string FormatV(const char* format, va_list args);

// printf-style formatting into a std::string; see FormatV.
// Note: not checked as a printf format by the compiler, because "%n" here takes
// a number rather than a pointer.
std::string FormatString(const char* format, ...);

} // namespace QzXmlLib16

#endif
