// qvnrt-cli: the command-line program a new user runs first.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <qvnrt/qvnrt.h>

namespace {

int PrintInfo() {
    std::printf("QvnRT %s\n", qvnrt::LibraryVersion());
    const char* home = std::getenv("QVNRT_HOME");
    std::printf("config directory: %s\n", home ? home : "$XDG_CONFIG_HOME/quorvane or ~/.config/quorvane");
    return 0;
}

int Usage() {
    std::fprintf(stderr, "usage: qvnrt-cli info | demo\n");
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) return Usage();
    const std::string command = argv[1];
    if (command == "info" || command == "demo") return PrintInfo();
    return Usage();
}
