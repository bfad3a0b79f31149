#include "tests/support/tempfolder.h"

#include <atomic>
#include <chrono>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace roundup {

namespace fs = std::filesystem;

TempFolder::TempFolder() {
    static std::atomic<unsigned> next{0};
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    for (int attempt = 0; attempt < 100; ++attempt) {
        m_path = fs::temp_directory_path() /
                 ("roundup-test-" + std::to_string(now) + "-" + std::to_string(next.fetch_add(1)));
        if (fs::create_directory(m_path)) return;
    }
    throw std::runtime_error("no folder for the test");
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
}

void TempFolder::Write(const fs::path& relative, const std::string& bytes) const {
    const fs::path place = m_path / relative;
    fs::create_directories(place.parent_path());
    std::ofstream file(place, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file.flush()) throw std::runtime_error("cannot write " + place.string());
}

std::string TempFolder::Read(const fs::path& relative) const {
    std::ifstream file(m_path / relative, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace roundup
