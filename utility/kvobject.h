// Counted objects: the count behind an interface, and the pointer that holds a reference.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "utility/ikvobject.h"

namespace roundup {

// Adds the count to interface T. An object starts with one reference, that of its maker.
template <class T>
class CKvObject : public T {
  public:
    std::uint32_t AddRef() override { return m_count.fetch_add(1, std::memory_order_relaxed) + 1; }
    std::uint32_t Release() override {
        const std::uint32_t left = m_count.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0) {
            this->OnFinalRelease();
            delete this;
        }
        return left;
    }

  private:
    std::atomic<std::uint32_t> m_count{1};
};

// Holds one reference to a counted object, or none.
template <class T>
class RefPtr {
  public:
    RefPtr() noexcept = default;
    RefPtr(std::nullptr_t) noexcept {}  // NOLINT(google-explicit-constructor)
    // Takes over the reference that the caller holds, as that of a new object.
    static RefPtr Adopt(T* object) noexcept {
        RefPtr pointer;
        pointer.m_object = object;
        return pointer;
    }
    // Adds a reference of its own.
    static RefPtr Share(T* object) {
        if (object != nullptr) object->AddRef();
        return Adopt(object);
    }
    RefPtr(const RefPtr& other) : m_object(other.m_object) {
        if (m_object != nullptr) m_object->AddRef();
    }
    RefPtr(RefPtr&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    template <class U>
    RefPtr(RefPtr<U>&& other) noexcept : m_object(other.Detach()) {}  // NOLINT(google-explicit-constructor)
    RefPtr& operator=(RefPtr other) noexcept {
        std::swap(m_object, other.m_object);
        return *this;
    }
    ~RefPtr() {
        if (m_object != nullptr) m_object->Release();
    }

    T* Get() const noexcept { return m_object; }
    T* operator->() const noexcept { return m_object; }
    T& operator*() const noexcept { return *m_object; }
    explicit operator bool() const noexcept { return m_object != nullptr; }
    // Hands the reference to the caller.
    T* Detach() noexcept { return std::exchange(m_object, nullptr); }
    void Reset() noexcept { *this = RefPtr(); }

  private:
    T* m_object = nullptr;
};

}  // namespace roundup
