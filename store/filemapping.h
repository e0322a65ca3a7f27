// A file mapped whole into memory, shared between processes, that can be resized.
//
// The first process to open a file read-write holds it exclusively (an flock for as long as
// it is open). A process that cannot take the lock keeps no file handle and maps the same
// file through the mapping: it sees the other's view, reports a file size of 0, and never
// resizes the file itself. That is how the record files have always behaved, and why their
// lock count is a report rather than a lock.
//
// A failed resize, unlike the original's, is detected: the view and the mapped size stay as
// they were and setSize returns false, so nothing already stored is lost and no view ever
// reaches past the end of its file (which on Linux raises SIGBUS when touched).
#pragma once

#include <cstdint>
#include <string>

namespace RTSecCache {

class filemapping {
public:
    // No mapped file is ever shorter than this.
    static constexpr unsigned kMinimumSize = 4096;

    filemapping() = default;
    filemapping(const filemapping&) = delete;
    filemapping& operator=(const filemapping&) = delete;

    // Called when growth has moved the view; empty here.
    virtual void rebase(void* newBase, void* oldBase);
    virtual ~filemapping();

    // Closes what is open, then opens and maps `path`. Mode 0 reads, 1 reads and writes
    // (creating the file), anything else is copy-on-write. `size` 0 keeps the file's size.
    // True when a view exists. A null path returns false at once.
    bool open(const char* path, unsigned size, unsigned mode);
    // Flush, unmap, forget the mapping, close the file; safe to call twice.
    void close();
    // The open file's size, 0 without a file handle (so always 0 for an attached process).
    // A file of 4 GiB or more reads as 0xffffffff.
    unsigned fileSize() const;
    // Resizes the file (in mode 1, with a file handle) and the view; 0 means the file's
    // present size, and anything below kMinimumSize is raised to it. Bytes that the file
    // gains are zeroed. True when a view of the wanted size exists; on false the previous
    // view and mapped size are kept.
    bool setSize(unsigned size);
    // Writes the whole view back to the file, when there is one.
    void flush();

    // The name under which a file's mapping is known: the full path with every byte other
    // than "@", letters, digits, "$", "-", "_", "#", "." and space written as "%" and two
    // lower-case hex digits, cut after 259 characters. Two processes that open one full
    // path name one mapping.
    static std::string mappingName(const std::string& fullPath);

    void* view() const { return m_view; }
    unsigned mappedSize() const { return m_mappedSize; }
    const std::string& fullPath() const { return m_fullPath; }
    uint32_t mode() const { return m_mode; }
    bool hasFileHandle() const;
    // The mapping's name while a view exists, empty otherwise.
    const std::string& mapping() const { return m_mapping; }

protected:
    // The descriptor, holding the file's lock; kNoFile (-1) when the file could not be
    // opened or locked.
    int m_file = -1;
    // In place of the mapping handle. Linux has no kernel object for a file's mapping (the
    // view holds the file by itself, and a second process attaches through the full path
    // that the name is made from), so what is kept is the mapping's name; empty while
    // nothing is mapped.
    std::string m_mapping;
    unsigned m_mappedSize = 0;
    std::string m_fullPath;
    void* m_view = nullptr;
    uint32_t m_mode = 0;
};

}  // namespace RTSecCache
