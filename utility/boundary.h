// The boundary: where the exceptions of the standard library end.
#pragma once

namespace roundup {

// Runs work and answers what it does. What it throws, which is nothing but the want of memory, is answered by failed
// instead. Stands around every exported operation, thread body, load of a table and serialisation, and is the one
// place that catches.
template <class Work, class Failed>
auto AtBoundary(Work&& work, Failed&& failed) noexcept -> decltype(work()) {
    try {
        return work();
    } catch (...) {
        return failed();
    }
}

}  // namespace roundup
