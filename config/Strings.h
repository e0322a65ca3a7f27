// The string table: every numbered text that the library shows, verbatim, with the
// application's texts 7338, 7339 and 7348 that the library shows on its behalf.
#pragma once

namespace qvnrt {

// The text with that identifier; an empty text for an unknown one.
const char* LoadString(unsigned id);

// Shows the text with that identifier through the UI host (AfxMessageBox with an id).
// helpId defaults to the identifier itself, as the framework's did.
int ShowMessage(unsigned id, unsigned style = 0, int helpId = -1);

}  // namespace qvnrt
