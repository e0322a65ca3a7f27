/// \file
/// RTSec_Option: a security with the option fields.
#pragma once

#include <qvnrt/RTSec_Base.h>

/// Adds the option fields (strike, kind, expiry) to the base security; RTSecurity derives
/// from it.
class QVNRT_API RTSec_Option : public RTSec_Base {
public:
    RTSec_Option();
    RTSec_Option(const RTSec_Option& other) = default;
    RTSec_Option& operator=(const RTSec_Option& other) = default;

    /// Compares by key when the other object's exact class is RTSec_Option: 37 strike,
    /// 42 option text, 44 kind, 47 expiry; other keys and classes go to the base.
    int compareTo(RTSec_Base* other, int key) override;
    /// Cancels the request and clears the option fields. Result 1.
    int CloseEvent() override;
    ~RTSec_Option() override;
    /// Takes fields 37, 44 and 47; the rest go to the base. Result 1.
    int ReqSecCallback(unsigned long request, int status, int field, int dataType,
                       void* data) override;
    void OnSecChanged() override;

    CString m_optionText;          ///< compared by key 42; nothing in the library fills it
    unsigned long m_optionExpiry;  ///< field 47
    int m_optionKind;              ///< field 44, read as a signed byte
    float m_optionStrike;          ///< field 37
};
