#include "server/CRegistry.h"

#include "platform/Registry.h"

namespace {
constexpr size_t kValueBufferSize = 260;  // the declared size of the reader's buffer
}

CRegistry::CRegistry(const char* baseKey, Root root) : m_baseKey(baseKey), m_root(root) {}

int CRegistry::ReadString(const char* section, const char* valueName, const char* defaultValue,
                          CString& result) const {
    CString keyPath;
    keyPath.Format("%s\\%s", static_cast<const char*>(m_baseKey), section ? section : "");
    result = defaultValue;  // null gives empty
    const auto key = qvnrt::platform::RegistryKey::Open(keyPath.str());
    std::string value;
    if (key && valueName && key->QueryString(valueName, value, kValueBufferSize)) {
        result = value.c_str();  // the text finds its own length, up to its first NUL
    }
    return result.GetLength();
}
