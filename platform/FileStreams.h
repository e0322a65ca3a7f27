// File streams on the disk.
#pragma once

#include <cstdio>

namespace qvnrt::platform {

// Writes the stream's buffer out and waits until the file's data is on the disk (fflush,
// then fsync). 0 when it is, else the errno of the step that failed.
int FlushStreamToDisk(std::FILE* stream);

}  // namespace qvnrt::platform
