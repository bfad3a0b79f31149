// The sources of a gather, in their fixed order.
#pragma once

#include "utility/result.h"

namespace roundup {

class CApp;
class CAppConfigStore;
class IRemoveRepeatReg;

// Feeds the root, and the store of the application, with what the rules, the locations, the machine-wide scans and the
// registry tell of app, which is root itself or hangs below it. filter is that of the whole gather. Failures of a
// source are logged and the next one follows, but for two: GeneralFailure when the root has no file in the end, and
// that of the shortcut record. One thread.
ResultCode AnalyzeApp(CApp& app, CAppConfigStore& store, CApp& root, IRemoveRepeatReg* filter);

// The sink of a gather: context is the CApp that takes the item in.
ResultCode AddGathered(void* context, const char16_t* path, std::uint64_t size, std::uint32_t type);

}  // namespace roundup
