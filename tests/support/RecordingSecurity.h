// An RTSecurity that counts its notifications and keeps the fields it was given.
#pragma once

#include <string>
#include <vector>

#include <qvnrt/RTSecurity.h>

namespace qvnrt::test {

class RecordingSecurity : public RTSecurity {
public:
    struct Field {
        int field;
        int dataType;
    };

    int ReqSecCallback(unsigned long request, int status, int field, int dataType,
                       void* data) override {
        fields.push_back({field, dataType});
        return RTSecurity::ReqSecCallback(request, status, field, dataType, data);
    }
    void OnSecChanged() override { ++changed; }
    void OnSecClosed() override {
        ++closed;
        RTSecurity::OnSecClosed();
    }

    std::vector<Field> fields;  // in arrival order
    int changed = 0;
    int closed = 0;
};

}  // namespace qvnrt::test
