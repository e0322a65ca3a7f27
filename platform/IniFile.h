// GetPrivateProfileString over a Windows-style initialisation file. A file name without a
// '/' lies in the config directory (QUORVANE.INI does). Sections and keys compare without
// regard to case; the first matching key of the first matching section wins; lines that
// are not a section label or a key=value pair are skipped, as are ';' comments.
#pragma once

#include <string>

namespace qvnrt::platform {

// The value, or `defaultValue` when the file, section or key is missing; either is cut to
// bufferSize - 1 characters, as the Windows call does. Surrounding blanks of a value are
// trimmed, and one pair of surrounding double quotes is removed.
std::string GetPrivateProfileString(const std::string& section, const std::string& key,
                                    const std::string& defaultValue, size_t bufferSize,
                                    const std::string& fileName);

}  // namespace qvnrt::platform
