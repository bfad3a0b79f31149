// The entry for programs that link the module's code instead of loading it. The module has an entry of its own
// (externfuncinc/module), which comes before this one when it is linked: nothing else may be defined here.
#include "externfuncinc/externfunc.h"
#include "platform/machine.h"

// Such a program makes its machine current before it asks for the facade.
extern "C" roundup::IRoundupProc* GetImp() { return roundup::HasCurrentMachine() ? roundup::CreateRoundup() : nullptr; }
