/// \file
/// CFile, CStdioFile and CFileException: the file stream that the symbol map and the
/// private profile are written against.
#pragma once

#include <cstdio>
#include <exception>

#include <qvnrt/compat/CString.h>
#include <qvnrt/export.h>

/// A failed file operation: the cause, the system's error number and the file's name.
class QVNRT_API CFileException : public std::exception {
public:
    enum {
        none = 0,
        generic = 1,
        fileNotFound = 2,
        badPath = 3,
        tooManyOpenFiles = 4,
        accessDenied = 5,
        invalidFile = 6,
        removeCurrentDir = 7,
        directoryFull = 8,
        badSeek = 9,
        hardIO = 10,
        sharingViolation = 11,
        lockViolation = 12,
        diskFull = 13,
        endOfFile = 14,
    };

    explicit CFileException(int cause = none, long osError = -1, const char* fileName = nullptr)
        : m_cause(cause), m_lOsError(osError), m_strFileName(fileName) {}

    const char* what() const noexcept override { return "file exception"; }

    /// Turns an errno value into a cause.
    static int OsErrorToCause(int error);

    int m_cause;
    long m_lOsError;
    CString m_strFileName;
};

/// A file opened with the framework's open flags.
class QVNRT_API CFile {
public:
    enum OpenFlags : unsigned {
        modeRead = 0x0000,
        modeWrite = 0x0001,
        modeReadWrite = 0x0002,
        shareCompat = 0x0000,
        shareExclusive = 0x0010,
        shareDenyWrite = 0x0020,
        shareDenyRead = 0x0030,
        shareDenyNone = 0x0040,
        modeNoInherit = 0x0080,
        modeCreate = 0x1000,
        modeNoTruncate = 0x2000,
        typeText = 0x4000,
        typeBinary = 0x8000,
    };

    CFile() = default;
    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;
    virtual ~CFile();

    /// Opens the file; false with the cause in `error`, never an exception. Sharing flags
    /// have no meaning on Linux and are ignored.
    virtual bool Open(const char* fileName, unsigned openFlags, CFileException* error = nullptr);
    /// Closes, throwing CFileException when the data could not be written out.
    virtual void Close();
    /// Closes and never throws.
    virtual void Abort();

    virtual unsigned Read(void* buffer, unsigned count);
    virtual void Write(const void* buffer, unsigned count);
    virtual unsigned long long GetLength() const;

    virtual CString GetFilePath() const { return m_strFileName; }
    virtual void SetFilePath(const char* path) { m_strFileName = path; }
    bool IsOpen() const { return m_pStream != nullptr; }

    /// Both throw CFileException on failure (fileNotFound when there is no such file).
    static void Remove(const char* fileName);
    static void Rename(const char* oldName, const char* newName);

    FILE* m_pStream = nullptr;

protected:
    void ThrowLastError() const;

    CString m_strFileName;
};

/// A text stream. Lines end at a line feed; a carriage return directly before it belongs to
/// the line end, so files written on Windows read the same. A lone carriage return is an
/// ordinary character, as it was in text mode there. Written text is stored as given: the
/// library writes "\n" line ends.
class QVNRT_API CStdioFile : public CFile {
public:
    CStdioFile() = default;

    /// Reads the next line without its line end; false at the end of the file.
    virtual bool ReadString(CString& line);
    virtual void WriteString(const char* text);
};
