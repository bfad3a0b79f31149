// The folder of a product whose entry names that of its whole suite.
#pragma once

namespace roundup {

class CApp;

// For an application of the Adobe family: when the folder that it names holds one for its product, that becomes its
// location, with the place behind mount points as the real one. "Adobe Photoshop CS6" in "C:\Adobe" so finds
// "C:\Adobe\Adobe Photoshop CS6". Anything that does not fit, and a location that was narrowed before, leaves the
// application as it was. True when it has changed.
bool CorrectSuiteFolder(CApp& app);

}  // namespace roundup
