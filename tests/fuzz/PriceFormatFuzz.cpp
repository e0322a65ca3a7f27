// Price format strings, with any value, style and buffer size: the text always fits the
// buffer with its terminator, and the count returned is its length.
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <qvnrt/CDoubleToFractRep.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < sizeof(double) + 2) return 0;
    double value;
    std::memcpy(&value, data, sizeof(value));
    const auto style = static_cast<E_DISPTYPE>(data[sizeof(double)] % 20);
    const int room = data[sizeof(double) + 1];
    const std::string format(reinterpret_cast<const char*>(data) + sizeof(double) + 2,
                             size - sizeof(double) - 2);
    CDoubleToFractRep rep;
    rep.FindNumeralRepRound(value, style);
    std::vector<char> buffer(static_cast<size_t>(room) + 1, '\x7f');
    const int written = rep.Format(format.c_str(), buffer.data(), room);
    if (written < 0 || written > room || buffer[static_cast<size_t>(room)] != '\x7f') std::abort();
    if (written > 0 && std::strlen(buffer.data()) != static_cast<size_t>(written)) std::abort();
    return 0;
}
