// LeakSanitizer reads these in the sanitizer build: fontconfig, which Qt loads to lay out
// text, keeps a cache it never frees. Nothing of ours is hidden by them.
// Visible: the sanitizer runtime looks the function up by name.
extern "C" __attribute__((visibility("default"), used)) const char* __lsan_default_suppressions() {
    return "leak:libfontconfig.so\n";
}
