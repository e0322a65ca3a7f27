// How an asset type picks its style from the display options, shared by the options and the
// renderer.
#pragma once

#include <qvnrt/CFractionDisplayOptions.h>

namespace qvnrt::display {

inline constexpr int kStyleSlotCount = 10;

// 1 to 5 are their own slots, 7 to 10 give 6 to 9, and every other type (0, 6 and the
// application's own numbers above 10) shares slot 0.
inline int SlotOfAssetType(int assetType) {
    if (assetType >= 1 && assetType <= 5) return assetType;
    if (assetType >= 7 && assetType <= 10) return assetType - 1;
    return 0;
}

// The style of each slot before the user chose one.
inline constexpr E_DISPTYPE kBuiltInStyles[kStyleSlotCount] = {
    DISP_AUTO_FRACT, DISP_DEC2,       DISP_DEC4, DISP_DEC2,  DISP_DEC2,
    DISP_32NDS,      DISP_AUTO_FRACT, DISP_DEC4, DISP_32NDS, DISP_32NDS,
};

}  // namespace qvnrt::display
