// The root interface of everything that is shared. Hosts get this header along with externfuncinc/roundup.h, so it
// includes nothing of the tree.
#pragma once

#include <cstdint>

namespace roundup {

// Hosts depend on the order of the operations.
class IKvObject {
  public:
    // Both answer the new count and may be called from every thread.
    virtual std::uint32_t AddRef() = 0;
    // At zero it calls OnFinalRelease and destroys the object.
    virtual std::uint32_t Release() = 0;
    // Runs while the object is still whole.
    virtual void OnFinalRelease() {}
    virtual ~IKvObject() = default;
};

}  // namespace roundup
