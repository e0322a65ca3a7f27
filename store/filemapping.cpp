#include "store/filemapping.h"

#include <algorithm>
#include <climits>
#include <cstring>

#include "platform/MappedFiles.h"

namespace RTSecCache {
namespace {

using qvnrt::platform::MapAccess;

MapAccess AccessOf(uint32_t mode) {
    if (mode == 0) return MapAccess::ReadOnly;
    if (mode == 1) return MapAccess::ReadWrite;
    return MapAccess::CopyOnWrite;
}

bool KeptInName(unsigned char c) {
    if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')) return true;
    return c != '\0' && std::strchr("@$-_#. ", c) != nullptr;
}

}  // namespace

void filemapping::rebase(void*, void*) {}

filemapping::~filemapping() {
    close();
}

bool filemapping::hasFileHandle() const {
    return m_file != qvnrt::platform::kNoFile;
}

bool filemapping::open(const char* path, unsigned size, unsigned mode) {
    close();
    if (!path) return false;
    m_mode = mode;
    m_fullPath = qvnrt::platform::FullPathName(path);
    // Opened as given, like the original; the full path only names the mapping and is what
    // an attaching process maps. A file that cannot be opened, or is locked by another
    // process, leaves no file handle, which is not yet an error.
    m_file = qvnrt::platform::OpenLockedFile(path, AccessOf(mode));
    m_mappedSize = 0;
    setSize(size);
    return m_view != nullptr;
}

void filemapping::close() {
    flush();
    qvnrt::platform::UnmapView(m_view, m_mappedSize);
    m_view = nullptr;
    m_mappedSize = 0;
    m_mapping.clear();
    qvnrt::platform::CloseFile(m_file);
    m_file = qvnrt::platform::kNoFile;
}

unsigned filemapping::fileSize() const {
    if (!hasFileHandle()) return 0;
    return static_cast<unsigned>(std::min<uint64_t>(qvnrt::platform::FileLength(m_file), UINT_MAX));
}

bool filemapping::setSize(unsigned size) {
    namespace platform = qvnrt::platform;
    const unsigned oldSize = fileSize();
    const unsigned wanted = std::max(size ? size : oldSize, kMinimumSize);
    if (wanted == m_mappedSize && wanted == oldSize) return m_view != nullptr;

    flush();
    const MapAccess access = AccessOf(m_mode);
    const bool resizesFile = hasFileHandle() && m_mode == 1;
    // The file grows, by reserved space, before the view reaches the new pages; it shrinks
    // only after the view has let go of the pages it loses. Either way no view ever covers
    // bytes past the end of its file.
    if (resizesFile && wanted >= oldSize && !platform::ResizeFile(m_file, wanted)) return false;

    void* view;
    if (hasFileHandle()) {
        view = m_view ? platform::ResizeView(m_file, m_view, m_mappedSize, wanted)
                      : platform::MapView(m_file, wanted, access);
    } else {
        // No file handle: attach to the mapping of the process that holds the file.
        view = platform::AttachView(m_fullPath, wanted, access);
        if (view) platform::UnmapView(m_view, m_mappedSize);
    }
    if (!view) return false;  // the previous view, if any, stays as it was

    // A failed shrink leaves the file longer than the view, which does no harm.
    if (resizesFile && wanted < oldSize) platform::ResizeFile(m_file, wanted);
    if (hasFileHandle() && oldSize < wanted) {
        std::memset(static_cast<char*>(view) + oldSize, 0, wanted - oldSize);
    }
    m_view = view;
    m_mappedSize = wanted;
    m_mapping = mappingName(m_fullPath);
    return true;
}

void filemapping::flush() {
    if (m_view) qvnrt::platform::FlushView(m_view, m_mappedSize);
}

std::string filemapping::mappingName(const std::string& fullPath) {
    static constexpr size_t kLongest = 259;
    static constexpr char kHex[] = "0123456789abcdef";
    std::string name;
    const auto put = [&name](char c) {
        if (name.size() < kLongest) name += c;
    };
    for (const char byte : fullPath) {
        if (name.size() >= kLongest) break;
        const auto c = static_cast<unsigned char>(byte);
        if (KeptInName(c)) {
            put(byte);
        } else {
            // Cut mid-escape when the limit falls there, as the name always was.
            put('%');
            put(kHex[c >> 4]);
            put(kHex[c & 0x0f]);
        }
    }
    return name;
}

}  // namespace RTSecCache
