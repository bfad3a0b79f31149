// What all sources of a load have in common: a walk on a thread of its own.
#pragma once

#include "utility/kvdthread.h"

namespace roundup {

// A final class calls Start at the end of its constructor and Join first thing in its destructor, so that the walk
// never sees a half-made object. When no thread can be started, Start does the walk before it returns: a source that
// is slow is better than none.
class SourceThread : public CKvdRunable {
  public:
    SourceThread() : m_thread(this) {}
    SourceThread(const SourceThread&) = delete;
    SourceThread& operator=(const SourceThread&) = delete;

    std::int32_t Run() override;

  protected:
    void Start();
    void Join() { m_thread.WaitEnd(); }

  private:
    // Does the source's work. What it throws for want of memory ends the source with what it has found.
    virtual void Walk() = 0;

    CKvdThread m_thread;
};

}  // namespace roundup
