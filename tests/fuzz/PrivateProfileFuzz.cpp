// A private profile as any file may hold it. Beyond not crashing: what was read, written
// and read again is the same set of sections, keys and values (order aside, which the
// class does not keep).
#include <cstdint>
#include <map>
#include <string>

#include <qvnrt/CPrivateProfile.h>

#include "tests/fuzz/FuzzHome.h"

namespace {

using Contents = std::map<std::string, std::map<std::string, std::string>>;

Contents Read(CPrivateProfile& profile) {
    Contents all;
    CString name;
    CMapStringToString* keys = nullptr;
    for (POSITION p = profile.m_sections.GetStartPosition(); p;) {
        profile.m_sections.GetNextAssoc(p, name, keys);
        auto& section = all[name.str()];
        CString key;
        CString value;
        for (POSITION q = keys->GetStartPosition(); q;) {
            keys->GetNextAssoc(q, key, value);
            section[key.str()] = value.str();
        }
    }
    return all;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string path = qvnrt::fuzz::FuzzHome() + "/profile.txt";
    qvnrt::fuzz::WriteFileOrDie(path, data, size);
    CPrivateProfile profile(path.c_str());
    const Contents first = Read(profile);
    profile.Write();
    CPrivateProfile again(path.c_str());
    if (Read(again) != first) std::abort();
    return 0;
}
