#include "securities/DefaultFields.h"

namespace qvnrt {
namespace {

CString BuildDefaultFields() {
    CString fields;
    const auto add = [&fields](int first, int last) {
        for (int field = first; field <= last; ++field) fields += static_cast<char>(field);
    };
    add(1, 7);
    add(59, 59);
    add(8, 8);
    add(10, 18);
    add(27, 28);
    add(31, 39);
    add(41, 58);
    return fields;
}

// Built once, at library start.
const CString g_defaultFields = BuildDefaultFields();

}  // namespace

const CString& DefaultFields() { return g_defaultFields; }

}  // namespace qvnrt
