// Loads the replay driver with dlopen, as the library does, with the recorder of the
// simulation's tests taking every callback.
#pragma once

#include <dlfcn.h>

#include <stdexcept>
#include <string>

#include "drivers/replay/qvnreplay.h"
#include "tests/drivers/SimHarness.h"

namespace qvnreplay::test {

using qvnsim::test::Call;
using qvnsim::test::CallKind;
using qvnsim::test::Recorder;

// The hand-written data directory: a week of a 9:30 to 16:00 stock around a holiday.
inline std::string HandWrittenData() {
    return QVNREPLAY_TEST_DATA;
}

class ReplayDriver {
public:
    // `settings` go to qvnreplay_Configure; the QVNREPLAY_* variables are cleared first.
    explicit ReplayDriver(const std::string& settings) {
        for (const char* name : {"QVNREPLAY_CONFIG", "QVNREPLAY_DATA_DIR", "QVNREPLAY_START",
                                 "QVNREPLAY_SPEED", "QVNREPLAY_FAST_STEP_SECONDS",
                                 "QVNREPLAY_PACKET_RECORDS"}) {
            unsetenv(name);
        }
        m_handle = dlopen(QVNREPLAY_PATH, RTLD_NOW | RTLD_LOCAL);
        if (m_handle == nullptr) throw std::runtime_error(dlerror());
        open = Bind<clientOpenServer_t>("clientOpenServer");
        close = Bind<clientCloseServer_t>("clientCloseServer");
        reqSecurities = Bind<clientReqSecurities_t>("clientReqSecurities");
        reqEod = Bind<clientReqEodRecords_t>("clientReqEodRecords");
        reqTicks = Bind<clientReqTickBars_t>("clientReqTickBars");
        reqSessionInfo = Bind<clientReqSessionInfo_t>("clientReqSessionInfo");
        exchangeString = Bind<clientGetExchangeStringFieldAccess_t>("clientGetExchangeString");
        dispatch = Bind<clientDispatch_t>("clientDispatch");
        now = Bind<long (*)()>("qvnreplay_Now");
        configured = Bind<int (*)(const char*)>("qvnreplay_Configure")(settings.c_str()) == 1;
        open("", "", &Recorder::Network, 65536, 1, 0, 0, 1);
    }
    ~ReplayDriver() {
        close();
        dlclose(m_handle);
    }
    ReplayDriver(const ReplayDriver&) = delete;
    ReplayDriver& operator=(const ReplayDriver&) = delete;

    template <typename Function>
    Function Bind(const char* name) const {
        void* symbol = dlsym(m_handle, name);
        if (symbol == nullptr) throw std::runtime_error(std::string("missing ") + name);
        return reinterpret_cast<Function>(symbol);
    }

    void Dispatch(int times = 1) {
        for (int i = 0; i < times; ++i) {
            recorder.inDispatch = true;
            dispatch();
            recorder.inDispatch = false;
        }
    }
    unsigned long History(const char* symbol, TICKDATA request) {
        return reqTicks(symbol, 98, &request, &Recorder::Tick, 2, 0);
    }

    Recorder recorder;
    bool configured = false;
    clientOpenServer_t open;
    clientCloseServer_t close;
    clientReqSecurities_t reqSecurities;
    clientReqEodRecords_t reqEod;
    clientReqTickBars_t reqTicks;
    clientReqSessionInfo_t reqSessionInfo;
    clientGetExchangeStringFieldAccess_t exchangeString;
    clientDispatch_t dispatch;
    long (*now)();

private:
    void* m_handle;
};

}  // namespace qvnreplay::test
