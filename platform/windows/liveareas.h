// The areas of the live machine, one maker each. The classes are nobody else's business.
#pragma once

#include <memory>

#include "platform/livemachine.h"

namespace roundup {

std::unique_ptr<IRegistry> MakeLiveRegistry();
std::unique_ptr<IFileSystem> MakeLiveFiles();
std::unique_ptr<IProfile> MakeLiveProfile();
std::unique_ptr<IShell> MakeLiveShell();
std::unique_ptr<IInstaller> MakeLiveInstaller();
std::unique_ptr<IProcesses> MakeLiveProcesses();
std::unique_ptr<ISecurity> MakeLiveSecurity();
std::unique_ptr<ISystem> MakeLiveSystem(LiveOptions options);
std::unique_ptr<IClosedLibraries> MakeLiveClosedLibraries();

}  // namespace roundup
