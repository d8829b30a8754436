// WhitespaceUtils.cpp - the whiteSpace rules. Each rule first scans for work to do, so that
// text the rule leaves alone costs one pass and no copy.
#include "values/WhitespaceUtils.h"

#include "foundation/Exceptions.h"

#include <cstring>

namespace QzXmlLib16 {

namespace {

// Scans: does the rule change anything?

bool HasCarriageReturn(const char* p, size_t n) {
    return n != 0 && std::memchr(p, '\r', n) != nullptr;
}

bool HasReplaceable(const char* p, size_t n) {
    for (size_t i = 0; i < n; ++i) {
        char c = p[i];
        if (c == '\t' || c == '\n' || c == '\r')
            return true;
    }
    return false;
}

// Collapsed text has no tab, CR or LF, no space at either end and no two spaces in a row.
bool IsCollapsed(const char* p, size_t n) {
    if (n == 0)
        return true;
    if (p[0] == ' ' || p[n - 1] == ' ')
        return false;
    bool prevSpace = false;
    for (size_t i = 0; i < n; ++i) {
        char c = p[i];
        if (c == ' ') {
            if (prevSpace)
                return false;
            prevSpace = true;
        } else if (c == '\t' || c == '\n' || c == '\r') {
            return false;
        } else {
            prevSpace = false;
        }
    }
    return true;
}

// Writers: the rule's result into `out`

// CR LF -> LF, lone CR -> LF.
void PreserveInto(const char* p, size_t n, std::string& out) {
    out.clear();
    out.reserve(n);
    for (size_t i = 0; i < n; ++i) {
        char c = p[i];
        if (c == '\r') {
            if (i + 1 < n && p[i + 1] == '\n')
                ++i;
            out.push_back('\n');
        } else {
            out.push_back(c);
        }
    }
}

// CR LF -> one space; CR, LF, tab -> one space each.
void ReplaceInto(const char* p, size_t n, std::string& out) {
    out.clear();
    out.reserve(n);
    for (size_t i = 0; i < n; ++i) {
        char c = p[i];
        if (c == '\r') {
            if (i + 1 < n && p[i + 1] == '\n')
                ++i;
            out.push_back(' ');
        } else if (c == '\t' || c == '\n') {
            out.push_back(' ');
        } else {
            out.push_back(c);
        }
    }
}

// The flag starts set, so leading whitespace is dropped; a run of whitespace after other text
// writes one space; one trailing space is removed at the end.
void CollapseInto(const char* p, size_t n, std::string& out) {
    out.clear();
    out.reserve(n);
    bool skipping = true;
    for (size_t i = 0; i < n; ++i) {
        char c = p[i];
        if (!CWhitespaceUtils::IsWhiteSpace(c)) {
            out.push_back(c);
            skipping = false;
        } else if (!skipping) {
            out.push_back(' ');
            skipping = true;
        }
    }
    if (!out.empty() && out.back() == ' ')
        out.pop_back();
}

[[noreturn]] void ThrowUnknownRule() {
    throw CQzException("Unknown WhitespaceRule");
}

} // namespace

std::string CWhitespaceUtils::PreserveText(const char* text, int length) {
    std::string out;
    if (text == nullptr)
        return out;
    size_t n = length < 0 ? std::strlen(text) : strnlen(text, static_cast<size_t>(length));
    PreserveInto(text, n, out);
    return out;
}

std::string CWhitespaceUtils::PreserveText(const std::string& text) {
    if (!HasCarriageReturn(text.data(), text.size()))
        return text;
    std::string out;
    PreserveInto(text.data(), text.size(), out);
    return out;
}

std::string CWhitespaceUtils::ReplaceText(const std::string& text) {
    if (!HasReplaceable(text.data(), text.size()))
        return text;
    std::string out;
    ReplaceInto(text.data(), text.size(), out);
    return out;
}

std::string CWhitespaceUtils::CollapseText(const std::string& text) {
    if (IsCollapsed(text.data(), text.size()))
        return text;
    std::string out;
    CollapseInto(text.data(), text.size(), out);
    return out;
}

std::string CWhitespaceUtils::ApplyRule(WhitespaceRule rule, const std::string& text) {
    std::string buffer;
    const std::string& result = ApplyRule(rule, text, buffer);
    if (&result == &buffer)
        return buffer;
    return text;
}

const std::string& CWhitespaceUtils::ApplyRule(WhitespaceRule rule, const std::string& text,
                                               std::string& buffer) {
    const char* p = text.data();
    size_t n = text.size();
    switch (rule) {
    case None:
        return text;
    case Preserve:
        if (!HasCarriageReturn(p, n))
            return text;
        PreserveInto(p, n, buffer);
        return buffer;
    case Replace:
        if (!HasReplaceable(p, n))
            return text;
        ReplaceInto(p, n, buffer);
        return buffer;
    case Collapse:
        if (IsCollapsed(p, n))
            return text;
        CollapseInto(p, n, buffer);
        return buffer;
    }
    ThrowUnknownRule();
}

} // namespace QzXmlLib16
