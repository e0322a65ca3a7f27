#include <qvnrt/compat/CStdioFile.h>

#include "platform/ConfigFile.h"


#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

int CFileException::OsErrorToCause(int error) {
    switch (error) {
        case 0: return none;
        case ENOENT: return fileNotFound;
        case ENOTDIR:
        case ENAMETOOLONG:
        case ELOOP: return badPath;
        case EACCES:
        case EPERM:
        case EROFS:
        case EISDIR: return accessDenied;
        case EMFILE:
        case ENFILE: return tooManyOpenFiles;
        case ENOSPC:
        case EDQUOT:
        case EFBIG: return diskFull;
        case EBUSY:
        case ETXTBSY: return sharingViolation;
        case EIO: return hardIO;
        default: return generic;
    }
}

CFile::~CFile() { Abort(); }

bool CFile::Open(const char* fileName, unsigned openFlags, CFileException* error) {
    Abort();
    m_strFileName = fileName;
    auto fail = [&](int osError) {
        if (error) *error = CFileException(CFileException::OsErrorToCause(osError), osError, fileName);
        return false;
    };
    if (!fileName || !*fileName) return fail(ENOENT);

    int flags = O_CLOEXEC;
    const char* streamMode = "r";
    switch (openFlags & 3u) {
        case modeWrite:
            flags |= O_WRONLY;
            streamMode = "w";
            break;
        case modeReadWrite:
            flags |= O_RDWR;
            streamMode = "r+";
            break;
        default:
            flags |= O_RDONLY;
            break;
    }
    if (openFlags & modeCreate) flags |= O_CREAT | ((openFlags & modeNoTruncate) ? 0 : O_TRUNC);

    // The files opened through CFile are configuration (maps and profiles): a FIFO or a
    // device in their place is refused rather than blocking or reading without end.
    const int fd = qvnrt::platform::OpenConfigFile(fileName, flags, 0666);
    if (fd < 0) return fail(errno);
    m_pStream = ::fdopen(fd, streamMode);
    if (!m_pStream) {
        const int saved = errno;
        ::close(fd);
        return fail(saved);
    }
    return true;
}

void CFile::ThrowLastError() const {
    const int error = errno;
    throw CFileException(CFileException::OsErrorToCause(error) == CFileException::none
                             ? CFileException::generic
                             : CFileException::OsErrorToCause(error),
                         error, m_strFileName);
}

void CFile::Close() {
    if (!m_pStream) return;
    FILE* stream = m_pStream;
    m_pStream = nullptr;
    if (std::fclose(stream) != 0) ThrowLastError();
}

void CFile::Abort() {
    if (m_pStream) std::fclose(m_pStream);
    m_pStream = nullptr;
}

unsigned CFile::Read(void* buffer, unsigned count) {
    if (!m_pStream) throw CFileException(CFileException::generic, EBADF, m_strFileName);
    const size_t got = std::fread(buffer, 1, count, m_pStream);
    if (got < count && std::ferror(m_pStream)) ThrowLastError();
    return static_cast<unsigned>(got);
}

void CFile::Write(const void* buffer, unsigned count) {
    if (!m_pStream) throw CFileException(CFileException::generic, EBADF, m_strFileName);
    if (std::fwrite(buffer, 1, count, m_pStream) != count) ThrowLastError();
}

unsigned long long CFile::GetLength() const {
    struct stat info;
    if (!m_pStream || ::fstat(::fileno(m_pStream), &info) != 0) return 0;
    return static_cast<unsigned long long>(info.st_size);
}

void CFile::Remove(const char* fileName) {
    if (!fileName || ::unlink(fileName) != 0) {
        const int error = fileName ? errno : ENOENT;
        throw CFileException(CFileException::OsErrorToCause(error), error, fileName);
    }
}

void CFile::Rename(const char* oldName, const char* newName) {
    if (!oldName || !newName || ::rename(oldName, newName) != 0) {
        const int error = (oldName && newName) ? errno : ENOENT;
        throw CFileException(CFileException::OsErrorToCause(error), error, oldName);
    }
}

bool CStdioFile::ReadString(CString& line) {
    line.Empty();
    if (!m_pStream) return false;
    bool any = false;
    for (int c; (c = std::getc(m_pStream)) != EOF;) {
        any = true;
        if (c == '\n') {
            if (line.GetLength() > 0 && line[line.GetLength() - 1] == '\r') line.Delete(line.GetLength() - 1);
            return true;
        }
        line += static_cast<char>(c);
    }
    if (std::ferror(m_pStream)) ThrowLastError();
    return any;
}

void CStdioFile::WriteString(const char* text) {
    if (!text) return;
    Write(text, static_cast<unsigned>(std::char_traits<char>::length(text)));
}
