// Files of a Windows computer through its C run-time library: what the recorded machines need of them, without the
// headers of the platform, and far smaller than the streams and paths of the C++ library.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "platform/recorded/filesource.h"

namespace roundup::crt {

// A path as the run-time library takes it, of UTF-8 with "/" or "\" between its parts; and back, with "/" alone.
std::wstring Wide(std::string_view path);
std::string Narrow(std::wstring_view path);

// What is at a path, by its own name: links are not followed. size in bytes, 0 for all but files; name, when one is
// asked for, as the folder has it. An errno number.
int Query(const std::wstring& path, SourceKind& kind, std::uint64_t& size, std::wstring* name = nullptr);

// Calls visit(name, kind) for each entry of a folder but "." and "..". An errno number.
int List(const std::wstring& folder, void (*visit)(void* context, std::wstring_view name, SourceKind kind),
         void* context);

// A descriptor of io.h, closed at the end.
class File {
  public:
    explicit File(int descriptor = -1) noexcept : m_descriptor(descriptor) {}
    File(File&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    File& operator=(File&&) = delete;
    ~File();

    // flags are those of fcntl.h; others may read and write the file meanwhile. An errno number.
    static int Open(const std::wstring& path, int flags, int& descriptor);
    int Get() const noexcept { return m_descriptor; }

  private:
    int m_descriptor;
};

}  // namespace roundup::crt
