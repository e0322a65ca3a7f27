// QUORVANE.INI as a user may leave it: the two settings the library reads, through buffers
// of several sizes, never longer than the buffer allows.
#include <cstdint>
#include <string>

#include "platform/IniFile.h"
#include "tests/fuzz/FuzzHome.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string& home = qvnrt::fuzz::FuzzHome();
    qvnrt::fuzz::WriteFileOrDie(home + "/QUORVANE.INI", data, size);
    for (const char* key : {"SAMEDIRINTF", "LOGDATECALLS"}) {
        for (const size_t buffer : {size_t{0}, size_t{1}, size_t{5}, size_t{260}}) {
            const std::string value = qvnrt::platform::GetPrivateProfileString(
                "INHOUSEDEVELOPMENT", key, "n", buffer, "QUORVANE.INI");
            if (buffer > 0 && value.size() > buffer - 1) std::abort();
        }
    }
    return 0;
}
