// The path of a symbol's intraday cache file (".tik") below the cache directory.
#pragma once

#include <string>

namespace RTSecCache {

// The cache directory, "/", one directory character, "/", the escaped symbol, ".tik". The directory
// character is the symbol's first character if it is an ASCII letter or digit, else "_".
// In the escaped symbol "@", letters, digits, "$", "-", "_" and "#" stand as they are; any
// other byte becomes "%" and its value in lower-case hexadecimal without padding. The
// directory is made at each call.
std::string tickFilePath(const char* symbol);

}  // namespace RTSecCache
