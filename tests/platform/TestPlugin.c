/* A tiny plugin for the dynamic loading tests; PLUGIN_IDENTITY tells the copies apart. */
__attribute__((visibility("default"))) const char* plugin_identity(void) {
    return PLUGIN_IDENTITY;
}
