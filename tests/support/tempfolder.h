// A folder of this computer that a test has for itself.
#pragma once

#include <filesystem>
#include <string>

namespace roundup {

// New and empty; deleted with all that is in it at the end.
class TempFolder {
  public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& Path() const noexcept { return m_path; }
    std::string Text() const { return m_path.generic_string(); }
    // Path of an entry; makes nothing.
    std::string operator/(const std::string& name) const { return Text() + "/" + name; }

    // A file below it, with the folders on the way.
    void Write(const std::filesystem::path& relative, const std::string& bytes) const;
    std::string Read(const std::filesystem::path& relative) const;

  private:
    std::filesystem::path m_path;
};

}  // namespace roundup
