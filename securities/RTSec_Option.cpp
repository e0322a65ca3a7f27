#include <qvnrt/RTSec_Option.h>

#include <cstring>
#include <typeinfo>

#include <qvnrt/RTServer.h>

namespace {

template <class T>
int Order(T a, T b) {
    return a < b ? -1 : (a > b ? 1 : 0);
}

}  // namespace

RTSec_Option::RTSec_Option() : m_optionExpiry(0), m_optionKind(0), m_optionStrike(0.0f) {}

RTSec_Option::~RTSec_Option() = default;

// Only an object of exactly this class compares by the option keys; every other key and
// class goes to the base, which compares only exact RTSec_Base objects. So objects of
// further derived classes compare equal under every key unless the application overrides
// compareTo. Kept: list sorting relies on it.
int RTSec_Option::compareTo(RTSec_Base* other, int key) {
    if (other && typeid(*other) == typeid(RTSec_Option)) {
        const auto* option = static_cast<const RTSec_Option*>(other);
        switch (key) {
            case 37: return Order(m_optionStrike, option->m_optionStrike);
            case 42: return std::strcmp(m_optionText, option->m_optionText);
            case 44: return m_optionKind - option->m_optionKind;
            case 47: return Order(m_optionExpiry, option->m_optionExpiry);
            default: break;
        }
    }
    return RTSec_Base::compareTo(other, key);
}

int RTSec_Option::CloseEvent() {
    RTServer::CloseEvent(m_request);
    m_optionText.Empty();
    m_optionExpiry = 0;
    m_optionKind = 0;
    m_optionStrike = 0.0f;
    return 1;
}

int RTSec_Option::ReqSecCallback(unsigned long request, int status, int field, int dataType,
                                 void* data) {
    if (status < 0) return 1;
    switch (field) {
        case 37:
            if (data) m_optionStrike = *static_cast<const float*>(data);
            break;
        case 44:
            if (data) m_optionKind = static_cast<signed char>(*static_cast<const int32_t*>(data));
            break;
        case 47:
            if (data) m_optionExpiry = static_cast<uint32_t>(*static_cast<const int32_t*>(data));
            break;
        default:
            RTSec_Base::ReqSecCallback(request, status, field, dataType, data);
            break;
    }
    return 1;
}

void RTSec_Option::OnSecChanged() {}
