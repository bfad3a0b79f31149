// Keeps what a gather wrote, before the temporary files go.
#include <filesystem>
#include <fstream>

#include "appcenter/app/app.h"
#include "host/gather.h"
#include "host/storereader.h"
#include "host/textout.h"
#include "platform/machine.h"
#include "platform/recorded/recordedmachine.h"
#include "utility/wholefile.h"

namespace roundup::host {

namespace {

namespace fs = std::filesystem;

fs::path PathOf(const std::string& text) { return {std::u8string(text.begin(), text.end())}; }

// A key as the name of a file.
std::string FileName(std::u16string_view key) {
    std::string name = Utf8(key);
    for (char& c : name) {
        const bool control = static_cast<unsigned char>(c) < 0x20;
        if (control || std::string_view("\\/:*?\"<>|").find(c) != std::string_view::npos) c = '_';
    }
    return name == "." || name == ".." ? std::string(name.size(), '_') : name;
}

class Keeper {
  public:
    Keeper(const std::string& folder, std::string& message) : m_folder(PathOf(folder)), m_message(message) {}

    bool KeepPairs(const IApp& root) {
        if (!MakeFolder(m_folder)) return false;
        std::vector<const IApp*> waiting{&root};
        std::vector<IApp*> below;
        while (!waiting.empty()) {
            const IApp& app = *waiting.back();
            waiting.pop_back();
            if (const auto* entry = dynamic_cast<const CApp*>(&app); entry != nullptr && !KeepPair(*entry))
                return false;
            below.clear();
            app.GetSubApps(below);
            waiting.insert(waiting.end(), below.begin(), below.end());
        }
        return true;
    }

    // A machine that is not live keeps what is written to its drives in memory.
    bool KeepWritten() {
        auto* machine = dynamic_cast<RecordedMachine*>(&CurrentMachine());
        if (machine == nullptr) return true;
        for (const std::u16string& path : machine->RecordedFiles().WrittenPaths()) {
            std::vector<std::byte> bytes;
            if (path.size() < 4 || !ReadWholeFile(path.c_str(), UINT32_MAX, bytes)) continue;
            fs::path target = m_folder / "written" / PathOf(FileName(std::u16string_view(path).substr(0, 1)));
            for (std::size_t at = 3; at < path.size();) {
                const std::size_t end = std::min(path.find(u'\\', at), path.size());
                target /= PathOf(FileName(std::u16string_view(path).substr(at, end - at)));
                at = end + 1;
            }
            if (!MakeFolder(target.parent_path()) || !Write(target, bytes)) return false;
        }
        return true;
    }

  private:
    bool KeepPair(const CApp& app) {
        StorePair pair;
        if (!ReadStorePair(app, pair)) return true;
        const std::string name = FileName(app.pwszKeyString);
        return Write(m_folder / PathOf(name + ".cfg"), pair.data) &&
               Write(m_folder / PathOf(name + ".idx"), pair.index);
    }

    bool MakeFolder(const fs::path& folder) {
        std::error_code error;
        fs::create_directories(folder, error);
        if (error) m_message = "'" + Shown(folder) + "' cannot be made: " + error.message();
        return !error;
    }

    bool Write(const fs::path& file, const std::vector<std::byte>& bytes) {
        std::ofstream stream(file, std::ios::binary);
        stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        stream.close();
        if (stream.fail()) m_message = "'" + Shown(file) + "' cannot be written";
        return !stream.fail();
    }

    static std::string Shown(const fs::path& path) {
        const std::u8string text = path.u8string();
        return {text.begin(), text.end()};
    }

    const fs::path m_folder;
    std::string& m_message;
};

}  // namespace

bool KeepStores(const IApp& app, const std::string& folder, std::string& message) {
    return Keeper(folder, message).KeepPairs(app);
}

bool KeepWritten(const std::string& folder, std::string& message) { return Keeper(folder, message).KeepWritten(); }

}  // namespace roundup::host
