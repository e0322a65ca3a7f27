#include "store/CompoundFile.h"

#include <sqlite3.h>

#include <iostream>

#include "platform/Directories.h"

namespace RTSecCache {
namespace {

constexpr const char* kPragmas =
    "PRAGMA locking_mode=EXCLUSIVE; PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL;";
constexpr const char* kSchema =
    "CREATE TABLE stream(storage TEXT, name TEXT, data BLOB, PRIMARY KEY(storage, name))";

enum class Try { Fine, Busy, Bad };

Try Classify(int code) {
    if (code == SQLITE_OK || code == SQLITE_DONE || code == SQLITE_ROW) return Try::Fine;
    const int primary = code & 0xff;
    return primary == SQLITE_BUSY || primary == SQLITE_LOCKED ? Try::Busy : Try::Bad;
}

void RemoveWithCompanions(const std::string& path) {
    for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
        qvnrt::platform::DeleteFile(path + suffix);
    }
}

// The number of tables in the database, or -1 with `outcome` set when it cannot be read.
int TableCount(sqlite3* db, Try& outcome) {
    sqlite3_stmt* count = nullptr;
    int code = sqlite3_prepare_v2(db, "SELECT count(*) FROM sqlite_master WHERE type = 'table'", -1, &count, nullptr);
    int tables = -1;
    if (code == SQLITE_OK) {
        code = sqlite3_step(count);
        if (code == SQLITE_ROW) tables = sqlite3_column_int(count, 0);
    }
    sqlite3_finalize(count);
    outcome = Classify(code);
    return tables;
}

}  // namespace

CompoundFile::CompoundFile(sqlite3* db, std::string path) : m_db(db), m_path(std::move(path)) {}

CompoundFile::~CompoundFile() {
    for (sqlite3_stmt* statement : {m_select, m_selectPrefix, m_upsert, m_delete, m_begin, m_commit}) {
        sqlite3_finalize(statement);
    }
    sqlite3_close_v2(m_db);  // an open transaction is rolled back
}

std::unique_ptr<CompoundFile> CompoundFile::open(const std::string& path, OpenResult* result) {
    auto attempt = [&path](bool mustBeNew, Try& outcome) -> std::unique_ptr<CompoundFile> {
        outcome = Try::Bad;
        if (mustBeNew && qvnrt::platform::FileExists(path)) return nullptr;
        sqlite3* db = nullptr;
        const int flags = SQLITE_OPEN_READWRITE | (mustBeNew ? SQLITE_OPEN_CREATE : 0) |
                          SQLITE_OPEN_NOMUTEX;
        if (sqlite3_open_v2(path.c_str(), &db, flags, nullptr) != SQLITE_OK) {
            sqlite3_close_v2(db);
            return nullptr;
        }
        std::unique_ptr<CompoundFile> file(new CompoundFile(db, path));
        outcome = Classify(sqlite3_exec(db, kPragmas, nullptr, nullptr, nullptr));
        if (outcome != Try::Fine) return nullptr;
        const int tables = TableCount(db, outcome);
        if (outcome != Try::Fine) return nullptr;
        // An empty database (a new file, or an empty one) gets the table; any other one must
        // be exactly ours, or it is another program's file.
        if (tables == 0) outcome = Classify(sqlite3_exec(db, kSchema, nullptr, nullptr, nullptr));
        if (outcome != Try::Fine) return nullptr;
        if (tables > 1 || !file->prepare()) {
            outcome = Try::Bad;
            return nullptr;
        }
        outcome = Classify(sqlite3_step(file->m_begin));
        sqlite3_reset(file->m_begin);
        return outcome == Try::Fine ? std::move(file) : nullptr;
    };
    auto report = [result](OpenResult value) {
        if (result) *result = value;
    };

    Try outcome = Try::Bad;
    if (auto file = attempt(true, outcome)) {
        report(OpenResult::Created);
        return file;
    }
    if (auto file = attempt(false, outcome)) {
        report(OpenResult::Opened);
        return file;
    }
    // Held by another process: replacing it would destroy that process's file.
    if (outcome == Try::Busy) {
        report(OpenResult::Busy);
        return nullptr;
    }
    RemoveWithCompanions(path);
    if (auto file = attempt(true, outcome)) {
        std::clog << "qvnrt: " << path << ": damaged, replaced by an empty one\n";
        report(OpenResult::Replaced);
        return file;
    }
    report(OpenResult::Failed);
    return nullptr;
}

bool CompoundFile::prepare() {
    struct Statement {
        sqlite3_stmt** slot;
        const char* sql;
    };
    const Statement statements[] = {
        {&m_select, "SELECT data FROM stream WHERE storage = ?1 AND name = ?2"},
        {&m_selectPrefix, "SELECT substr(data, 1, ?3) FROM stream WHERE storage = ?1 AND name = ?2"},
        {&m_upsert,
         "INSERT INTO stream(storage, name, data) VALUES(?1, ?2, ?3) "
         "ON CONFLICT(storage, name) DO UPDATE SET data = excluded.data"},
        {&m_delete, "DELETE FROM stream WHERE storage = ?1 AND name = ?2"},
        {&m_begin, "BEGIN IMMEDIATE"},
        {&m_commit, "COMMIT"},
    };
    for (const Statement& statement : statements) {
        if (sqlite3_prepare_v3(m_db, statement.sql, -1, SQLITE_PREPARE_PERSISTENT, statement.slot,
                               nullptr) != SQLITE_OK) {
            return false;
        }
    }
    return true;
}

namespace {

bool ReadRow(sqlite3_stmt* select, const std::string& storage, const std::string& name,
             std::vector<unsigned char>& data) {
    sqlite3_bind_text(select, 1, storage.c_str(), static_cast<int>(storage.size()), SQLITE_STATIC);
    sqlite3_bind_text(select, 2, name.c_str(), static_cast<int>(name.size()), SQLITE_STATIC);
    const bool found = sqlite3_step(select) == SQLITE_ROW;
    if (found) {
        const auto* bytes = static_cast<const unsigned char*>(sqlite3_column_blob(select, 0));
        data.assign(bytes, bytes + sqlite3_column_bytes(select, 0));
    }
    sqlite3_reset(select);
    return found;
}

}  // namespace

bool CompoundFile::read(const std::string& storage, const std::string& name,
                        std::vector<unsigned char>& data) {
    return ReadRow(m_select, storage, name, data);
}

bool CompoundFile::select(const std::string& storage, const std::string& name,
                          const unsigned char*& bytes, size_t& size) {
    sqlite3_bind_text(m_select, 1, storage.c_str(), static_cast<int>(storage.size()), SQLITE_STATIC);
    sqlite3_bind_text(m_select, 2, name.c_str(), static_cast<int>(name.size()), SQLITE_STATIC);
    if (sqlite3_step(m_select) != SQLITE_ROW) {
        sqlite3_reset(m_select);
        return false;
    }
    bytes = static_cast<const unsigned char*>(sqlite3_column_blob(m_select, 0));
    size = static_cast<size_t>(sqlite3_column_bytes(m_select, 0));
    return true;
}

void CompoundFile::endSelect() { sqlite3_reset(m_select); }

bool CompoundFile::readPrefix(const std::string& storage, const std::string& name, size_t size,
                              std::vector<unsigned char>& data) {
    sqlite3_bind_int64(m_selectPrefix, 3, static_cast<sqlite3_int64>(size));
    return ReadRow(m_selectPrefix, storage, name, data);
}

bool CompoundFile::write(const std::string& storage, const std::string& name, const void* data,
                         size_t size) {
    sqlite3_bind_text(m_upsert, 1, storage.c_str(), static_cast<int>(storage.size()), SQLITE_STATIC);
    sqlite3_bind_text(m_upsert, 2, name.c_str(), static_cast<int>(name.size()), SQLITE_STATIC);
    sqlite3_bind_blob64(m_upsert, 3, size ? data : "", size, SQLITE_STATIC);
    const bool written = sqlite3_step(m_upsert) == SQLITE_DONE;
    sqlite3_reset(m_upsert);
    if (!written) reopenTransactionIfEnded();
    return written;
}

bool CompoundFile::destroy(const std::string& storage, const std::string& name) {
    sqlite3_bind_text(m_delete, 1, storage.c_str(), static_cast<int>(storage.size()), SQLITE_STATIC);
    sqlite3_bind_text(m_delete, 2, name.c_str(), static_cast<int>(name.size()), SQLITE_STATIC);
    const bool done = sqlite3_step(m_delete) == SQLITE_DONE && sqlite3_changes(m_db) > 0;
    sqlite3_reset(m_delete);
    return done;
}

bool CompoundFile::commit() {
    const bool committed = sqlite3_step(m_commit) == SQLITE_DONE;
    sqlite3_reset(m_commit);
    if (committed) return begin();
    reconnect();
    return false;
}

void CompoundFile::reconnect() {
    for (sqlite3_stmt* statement : {m_select, m_selectPrefix, m_upsert, m_delete, m_begin, m_commit}) {
        sqlite3_finalize(statement);
    }
    m_select = m_selectPrefix = m_upsert = m_delete = m_begin = m_commit = nullptr;
    sqlite3_close_v2(m_db);  // what was not committed is rolled back
    m_db = nullptr;
    if (sqlite3_open_v2(m_path.c_str(), &m_db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX,
                        nullptr) == SQLITE_OK &&
        sqlite3_exec(m_db, kPragmas, nullptr, nullptr, nullptr) == SQLITE_OK && prepare()) {
        begin();
        return;
    }
    std::clog << "qvnrt: " << m_path << ": cannot be opened again\n";
}

bool CompoundFile::begin() {
    const bool begun = sqlite3_step(m_begin) == SQLITE_DONE;
    sqlite3_reset(m_begin);
    return begun;
}

void CompoundFile::reopenTransactionIfEnded() {
    if (sqlite3_get_autocommit(m_db) != 0) begin();
}

}  // namespace RTSecCache
