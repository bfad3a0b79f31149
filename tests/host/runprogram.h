// Runs the built program and keeps what it wrote.
#pragma once

#include <string>
#include <vector>

namespace roundup {

struct ProgramRun {
    int status = -1;
    std::string output;
    std::string error;
};

// Arguments as the program gets them, UTF-8. environment: "NAME=value" each, on top of the test's own.
ProgramRun RunProgram(const std::vector<std::string>& arguments, const std::vector<std::string>& environment = {});

// An empty folder of this test's own, removed when the object goes.
class TempFolder {
  public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    const std::string& Path() const { return m_path; }
    // Path of an entry; makes nothing.
    std::string operator/(const std::string& name) const { return m_path + "/" + name; }

  private:
    std::string m_path;
};

std::string ReadWholeFile(const std::string& path);
void WriteWholeFile(const std::string& path, const std::string& bytes);

}  // namespace roundup
