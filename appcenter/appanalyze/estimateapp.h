// What the catalogue works out of an application that the registry does not tell.
#pragma once

namespace roundup {

class CStringSet;
class IApp;
class IContinue;

// Completes one application with its real location, its suite and its size. Runs on a thread of the analysis pool,
// which alone works on the application; seen is empty and collects the folders measured; progress is asked between
// steps. In this build an application keeps what its entry told.
void EstimateApp(IApp& app, CStringSet& seen, const IContinue& progress);

}  // namespace roundup
