// A symbol's .tik file: named storages holding named byte streams, with commit. It is one
// SQLite database, table stream(storage, name, data); a stream is one row, and replacing a
// stream by name is an upsert. One transaction is open for as long as the file is, so
// nothing written counts until commit(): a process killed between commits leaves the file
// as the last commit left it.
//
// Journal mode WAL with synchronous NORMAL: a commit is one append to the log, no rewrite of
// the pages in place, so a crash can never damage what an earlier commit wrote; a killed
// process loses nothing committed (the log is in the kernel's hands), and only a power
// failure may lose the last few commits, which the store simply fetches again. FULL would
// add an fsync per commit for data that can always be refetched. locking_mode EXCLUSIVE is
// the exclusive share: a second process cannot open the file while it is open here, and
// the log needs no shared-memory file.
#pragma once

#include <memory>
#include <string>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace RTSecCache {

class CompoundFile {
public:
    enum class OpenResult { Created, Opened, Replaced, Busy, Failed };

    // Three tries: make a new file; else open the existing one; else (empty, truncated, not
    // a database, another schema) replace it by an empty one. Null when the file is held
    // by another process (never replaced then) or cannot be made at all.
    static std::unique_ptr<CompoundFile> open(const std::string& path, OpenResult* result = nullptr);

    CompoundFile(const CompoundFile&) = delete;
    CompoundFile& operator=(const CompoundFile&) = delete;
    // Releases the file; what was written since the last commit is dropped.
    ~CompoundFile();

    // The whole stream into `data`; false when there is none (or it cannot be read).
    bool read(const std::string& storage, const std::string& name,
              std::vector<unsigned char>& data);
    // Makes or replaces the stream. False when it cannot be written (a full disk): the
    // stream is then as it was, and earlier writes since the last commit still stand.
    // Hands the stream's bytes to `take` without copying them first; they are valid only
    // inside the call. False when there is none.
    template <class Take>
    bool visit(const std::string& storage, const std::string& name, Take&& take) {
        const unsigned char* bytes = nullptr;
        size_t size = 0;
        if (!select(storage, name, bytes, size)) return false;
        take(bytes, size);
        endSelect();
        return true;
    }
    // At most the first `size` bytes of the stream: a header is checked without the rest.
    bool readPrefix(const std::string& storage, const std::string& name, size_t size,
                    std::vector<unsigned char>& data);
    bool write(const std::string& storage, const std::string& name, const void* data,
               size_t size);
    bool destroy(const std::string& storage, const std::string& name);
    // Makes everything written since the last commit durable, in one transaction. When it
    // fails (a full disk) everything since the last commit is dropped, and the file goes on
    // from its last commit.
    bool commit();

    const std::string& path() const { return m_path; }

private:
    CompoundFile(sqlite3* db, std::string path);
    bool select(const std::string& storage, const std::string& name, const unsigned char*& bytes,
                size_t& size);
    void endSelect();
    bool prepare();
    bool begin();
    // After a failed write SQLite may have rolled the transaction back on its own.
    void reopenTransactionIfEnded();
    // After an I/O error the connection may refuse all further work: it is opened afresh.
    void reconnect();

    sqlite3* m_db;
    std::string m_path;
    sqlite3_stmt* m_select = nullptr;
    sqlite3_stmt* m_selectPrefix = nullptr;
    sqlite3_stmt* m_upsert = nullptr;
    sqlite3_stmt* m_delete = nullptr;
    sqlite3_stmt* m_begin = nullptr;
    sqlite3_stmt* m_commit = nullptr;
};

}  // namespace RTSecCache
