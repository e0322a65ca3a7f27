// The research layer's one piece of process-wide state: how CInetResearch runs the panels
// that it opens. The panels live in the layer above; it installs them here when the
// library loads. Until then (a program linked from the lower layers alone) each answers
// IDCANCEL, as a host that shows no panel does.
#pragma once

#include <functional>

#include <qvnrt/compat/CWnd.h>

class CInetResearch;

namespace qvnrt::research {

struct ResearchPanels {
    // The guided research panel, primed from the research object. Returns its result.
    std::function<int(CInetResearch& owner, CWnd* parent)> search;
    // The editor of the services in "inetres.txt". Returns its result.
    std::function<int(CWnd* parent)> editServices;
    // The editor of the home pages in "HomePages.txt", opened on a symbol.
    std::function<int(const char* symbol, CWnd* parent)> editHomePages;
};

// Replaces the installed panels; an empty member falls back to IDCANCEL.
void InstallResearchPanels(ResearchPanels panels);
const ResearchPanels& InstalledResearchPanels();

}  // namespace qvnrt::research
