// Helpers for the stream tests: a private temporary directory, whole-file reads and a
// scoped C locale.
#ifndef QZXML_TESTS_FOUNDATION_STREAM_FILES_H
#define QZXML_TESTS_FOUNDATION_STREAM_FILES_H

#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <ftw.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace streamtest {

// A directory made by mkdtemp, removed with everything in it at the end of the test.
class TempDir {
public:
    TempDir() {
        char pattern[] = "/tmp/qzxml-streams-XXXXXX";
        const char* made = mkdtemp(pattern);
        EXPECT_NE(nullptr, made);
        m_path = made ? made : "/tmp";
    }
    ~TempDir() {
        if (m_path != "/tmp")
            nftw(m_path.c_str(), &RemoveEntry, 8, FTW_DEPTH | FTW_PHYS);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    std::string File(const std::string& name) const { return m_path + "/" + name; }
    const std::string& Path() const { return m_path; }

private:
    static int RemoveEntry(const char* path, const struct stat*, int, struct FTW*) { return remove(path); }
    std::string m_path;
};

inline bool Exists(const std::string& path) {
    struct stat info;
    return stat(path.c_str(), &info) == 0;
}

// The whole file as bytes; "<missing>" when it can't be opened.
inline std::string ReadFile(const std::string& path) {
    FILE* file = fopen(path.c_str(), "rb");
    if (file == nullptr)
        return "<missing>";
    std::string bytes;
    char buffer[65536];
    size_t n;
    while ((n = fread(buffer, 1, sizeof(buffer), file)) > 0)
        bytes.append(buffer, n);
    fclose(file);
    return bytes;
}

// Switches the C locale for the life of the object; skips the test when it is missing.
class ScopedLocale {
public:
    explicit ScopedLocale(const char* name) : m_old(setlocale(LC_ALL, nullptr)) {
        m_ok = setlocale(LC_ALL, name) != nullptr;
    }
    ~ScopedLocale() { setlocale(LC_ALL, m_old.c_str()); }
    bool Ok() const { return m_ok; }

private:
    std::string m_old;
    bool m_ok;
};

} // namespace streamtest

#endif
