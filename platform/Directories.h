// Where the library keeps its files on Linux.
//
// The config directory replaces the Windows directory: $QVNRT_HOME if set, else
// $XDG_CONFIG_HOME/quorvane, else $HOME/.config/quorvane. It holds QUORVANE.INI, DATE.LOG
// and the registry store user.reg, and is made (with its parents) on first use.
//
// The host directory replaces the directory of the host executable: $QVNRT_APP_DIR if set,
// else the directory of /proc/self/exe. It holds secmaint.dat, inetres.txt and
// HomePages.txt, and is searched first for a driver named without a directory.
//
// The installed driver directory is qvnrt/drivers below the directory that holds the
// library's own file (libqvnrt.so), wherever the package was installed: an installed
// program finds the installed drivers without any setting. It is searched last.
//
// The environment is read at every call, so that tests can point a process elsewhere.
#pragma once

#include <string>

namespace qvnrt::platform {

// Each ends without a '/' (the root directory stays "/"); empty when nothing can be found.
std::string ConfigDirectory();
std::string HostDirectory();
std::string InstalledDriverDirectory();
// The process's working directory; empty when it cannot be read.
std::string CurrentDirectory();

// Joins with '/' unless `directory` already ends with one or is empty.
std::string JoinPath(const std::string& directory, const std::string& name);

// mkdir of one level, mode 0777 before umask. True when the directory exists afterwards.
bool MakeDirectory(const std::string& path);
// mkdir -p. True when the directory exists afterwards.
bool MakeDirectories(const std::string& path);
bool FileExists(const std::string& path);
// Size in bytes; false when there is no such file.
bool FileSize(const std::string& path, unsigned long long& size);
bool DeleteFile(const std::string& path);
// Copies a regular file, replacing `to` when it exists. False when the copy failed.
bool CopyFileReplacing(const std::string& from, const std::string& to);

}  // namespace qvnrt::platform
