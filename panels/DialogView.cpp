#include <qvnrt/DialogView.h>

namespace qvnrt {

DialogControls::~DialogControls() = default;
ComboBoxView::~ComboBoxView() = default;
ListView::~ListView() = default;

}  // namespace qvnrt
