// Sets (or, with nullopt, unsets) an environment variable for the life of the object, and
// makes the C library read TZ again, in case that is the one.
#pragma once

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

namespace qvnrt::test {

class ScopedEnv {
public:
    ScopedEnv(const char* name, std::optional<std::string> value) : m_name(name) {
        if (const char* old = std::getenv(name)) m_old = old;
        Set(value);
    }
    ~ScopedEnv() { Set(m_old); }
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

private:
    void Set(const std::optional<std::string>& value) {
        if (value) {
            ::setenv(m_name.c_str(), value->c_str(), 1);
        } else {
            ::unsetenv(m_name.c_str());
        }
        ::tzset();
    }

    std::string m_name;
    std::optional<std::string> m_old;
};

}  // namespace qvnrt::test
