#include "store/TickFiles.h"

#include "platform/Directories.h"
#include "store/IntradayStore.h"
#include "store/SecCacheEntry.h"
#include "store/StoreState.h"
#include "store/TickFilePath.h"

namespace RTSecCache {

CompoundFile* openTickFile(SecCacheEntry& entry) {
    if (!entry.m_pRootStorage) {
        std::unique_ptr<CompoundFile> file = CompoundFile::open(tickFilePath(entry.m_record->symbol));
        if (!file) return nullptr;
        entry.m_pRootStorage = file.release();
        entry.m_record->tikTime = static_cast<uint32_t>(Store().now());
    }
    return static_cast<CompoundFile*>(entry.m_pRootStorage);
}

bool closeTickFile(SecCacheEntry& entry) {
    if (entry.m_pTickStore || entry.m_pMinuteStore) return false;
    auto* file = static_cast<CompoundFile*>(entry.m_pRootStorage);
    if (!file) return true;
    entry.m_record->tikTime = static_cast<uint32_t>(Store().now());
    file->commit();
    const std::string path = file->path();
    delete file;
    entry.m_pRootStorage = nullptr;
    unsigned long long size = 0;
    if (!qvnrt::platform::FileSize(path, size)) size = 0;
    entry.m_record->tikSize = static_cast<uint32_t>(size);
    return true;
}

void destroyTickStores(SecCacheEntry& entry) {
    delete entry.m_pTickStore;
    entry.m_pTickStore = nullptr;
    delete entry.m_pMinuteStore;
    entry.m_pMinuteStore = nullptr;
    delete static_cast<CompoundFile*>(entry.m_pRootStorage);
    entry.m_pRootStorage = nullptr;
    const std::string path = tickFilePath(entry.m_record->symbol);
    for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
        qvnrt::platform::DeleteFile(path + suffix);
    }
    entry.m_record->tikTime = 0;
}

}  // namespace RTSecCache
