// What the catalogue works out of an application that the registry does not tell.
#pragma once

namespace roundup {

class CStringSet;
class IApp;
class IContinue;

// Completes one application, and what hangs below it, with its real location, its suite, and the size of its folders
// where the registry tells none; a 64-bit image in them makes it a 64-bit application. Runs on a thread of the analysis
// pool, which alone works on the application. seen is empty and collects the folders measured; progress is asked
// between steps, and an application that a cancel interrupts stays with what was measured. Store packages are left as
// they are.
void EstimateApp(IApp& app, CStringSet& seen, const IContinue& progress);

}  // namespace roundup
