// A .smd map file as any file may hold it. Beyond not crashing: a map that loaded, written
// and loaded again, holds the same pairs.
#include <cstdint>
#include <map>
#include <string>

#include <qvnrt/CSymbolMap.h>

#include "tests/fuzz/FuzzHome.h"

namespace {

std::map<std::string, std::string> Pairs(CSymbolMap& map) {
    std::map<std::string, std::string> pairs;
    CString rt;
    CString dl;
    for (POSITION p = map.GetStartPosition(); p;) {
        map.GetNextAssoc(p, rt, dl);
        // As every reader sees them: a NUL byte in a line ends the symbol there.
        pairs[static_cast<const char*>(rt)] = static_cast<const char*>(dl);
    }
    return pairs;
}

int Load(CSymbolMap& map, const std::string& directory) {
    std::string dir = directory;
    char a[] = "A";
    char b[] = "B";
    return map.LoadMap(dir.data(), a, b, 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string& home = qvnrt::fuzz::FuzzHome();
    qvnrt::fuzz::WriteFileOrDie(home + "/A_B.smd", data, size);
    CSymbolMap map;
    if (Load(map, home) != 1) return 0;
    const auto first = Pairs(map);
    map.SetMode(CFile::modeCreate | CFile::modeWrite | CFile::typeText);
    if (map.WriteMap() != 1) std::abort();
    CSymbolMap again;
    if (Load(again, home) != 1 || Pairs(again) != first) std::abort();
    return 0;
}
