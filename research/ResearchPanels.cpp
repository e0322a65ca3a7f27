#include "research/ResearchPanels.h"

#include <utility>

namespace qvnrt::research {

namespace {

// A function-local object: the panels layer installs during static initialisation, in an
// order that the linker chooses.
ResearchPanels& Panels() {
    static ResearchPanels panels;
    return panels;
}

}  // namespace

void InstallResearchPanels(ResearchPanels panels) {
    Panels() = std::move(panels);
}

const ResearchPanels& InstalledResearchPanels() {
    return Panels();
}

}  // namespace qvnrt::research
