// Hives through hivex. Opening reads the frame of the file alone; a key's subkeys and values are read when it is first
// visited, under the lock of the tree, so that the one handle of hivex is never used by two threads.
//
// What makes a walk over a hostile hive end: a subkey counts only when it names the key that lists it as its parent,
// and the root is nobody's subkey. A circle would have to contain a key with two parents, or the root.
#include <fcntl.h>
#include <hivex.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

#include "platform/recorded/registry/hivecells.h"
#include "platform/recorded/registry/hivelogs.h"
#include "platform/recorded/registry/registrysources.h"
#include "platform/recorded/registry/sourcefile.h"
#include "platform/recorded/registry/sourcetext.h"
#include "platform/recorded/registry/storedkeys.h"

namespace roundup {

namespace {

struct FreeBlock {
    void operator()(void* block) const noexcept { std::free(block); }
};
struct CloseHive {
    void operator()(hive_h* hive) const noexcept { hivex_close(hive); }
};

// The bytes of a file, as long as it stays as it is: like hivex, which maps it, too.
class MappedFile {
  public:
    MappedFile() = default;
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;
    ~MappedFile() { Close(); }

    // Null, or what is wrong.
    const char* Open(const std::string& file) {
        m_descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        return m_descriptor < 0 ? std::strerror(errno) : Map();
    }
    // Other bytes, in a file that lies in memory alone.
    const char* Replace(std::span<const std::byte> bytes) {
        Close();
        m_descriptor = memfd_create("hive", MFD_CLOEXEC);
        if (m_descriptor < 0) return std::strerror(errno);
        while (!bytes.empty()) {
            const ssize_t written = write(m_descriptor, bytes.data(), bytes.size());
            if (written <= 0) return std::strerror(errno);
            bytes = bytes.subspan(static_cast<std::size_t>(written));
        }
        return Map();
    }
    std::span<const std::byte> View() const noexcept { return {static_cast<const std::byte*>(m_data), m_size}; }
    // Names the open file for those who open by name, whatever lies at its path by now.
    std::string Path() const { return "/proc/self/fd/" + std::to_string(m_descriptor); }

  private:
    void Close() noexcept {
        if (m_data != nullptr) munmap(std::exchange(m_data, nullptr), m_size);
        if (m_descriptor >= 0) close(std::exchange(m_descriptor, -1));
    }
    const char* Map() {
        struct stat status {};
        if (fstat(m_descriptor, &status) != 0) return std::strerror(errno);
        if (!S_ISREG(status.st_mode)) return "is no ordinary file";
        if (status.st_size == 0) return "is an empty file";
        if (status.st_size > std::numeric_limits<std::uint32_t>::max()) return "is too large for a registry hive";
        void* const data =
            mmap(nullptr, static_cast<std::size_t>(status.st_size), PROT_READ, MAP_PRIVATE, m_descriptor, 0);
        if (data == MAP_FAILED) return std::strerror(errno);
        m_data = data;
        m_size = static_cast<std::size_t>(status.st_size);
        return nullptr;
    }

    int m_descriptor = -1;
    void* m_data = nullptr;
    std::size_t m_size = 0;
};

// The bytes of the logs that can be read; one that cannot tells nothing.
std::vector<SourceBytes> ReadLogs(const std::vector<std::string>& files) {
    std::vector<SourceBytes> logs;
    for (const std::string& file : files) {
        SourceBytes bytes;
        if (!ReadSourceFile(file, bytes)) logs.push_back(std::move(bytes));
    }
    return logs;
}

class HiveSource final : public IRegistryNodeSource {
  public:
    explicit HiveSource(const std::string& file) : m_file(file) {}

    SourceStatus Open(const std::vector<std::string>& logs, HiveState& state) {
        if (const char* const wrong = m_mapped.Open(m_file)) return SourceError{m_file, {}, 0, wrong};
        if (const char* const wrong = Complete(logs, state)) return SourceError{m_file, {}, 0, wrong};
        m_cells = HiveCells(m_mapped.View());
        if (const auto fault = m_cells.FindFault()) {
            return SourceError{m_file, SourceError::Place::Offset, fault->offset, fault->what};
        }
        m_hive.reset(hivex_open(m_mapped.Path().c_str(), 0));
        if (m_hive == nullptr) return Refused();
        m_root = hivex_root(m_hive.get());
        return m_root != 0 && m_root <= m_mapped.View().size() ? SourceStatus() : Refused();
    }

    std::uint32_t Root() const noexcept { return static_cast<std::uint32_t>(m_root); }

    bool Fill(RegistryFiller& filler, RegistryNode& node) override {
        const hive_node_h key = node.sourceNode;
        return FillValues(filler, node, key) && (IsTooDeep(node) || FillChildren(filler, node, key));
    }

    std::span<const std::byte> ReadSecurity(std::uint32_t sourceNode) const override {
        return m_cells.ReadSecurity(sourceNode);
    }

  private:
    const char* Complete(const std::vector<std::string>& files, HiveState& state) {
        state = HiveState::Whole;
        if (!IsHiveDirty(m_mapped.View())) return nullptr;
        const std::vector<SourceBytes> logs = ReadLogs(files);
        std::vector<std::span<const std::byte>> views;
        views.reserve(logs.size());
        for (const SourceBytes& log : logs) views.push_back(log.View());
        const auto whole = ReplayHiveLogs(m_mapped.View(), views);
        state = whole ? HiveState::Completed : HiveState::Incomplete;
        return whole ? m_mapped.Replace(*whole) : nullptr;
    }

    SourceStatus Refused() const {
        return SourceError{m_file, {}, 0, std::string("a hive that cannot be read: ") + std::strerror(errno)};
    }

    bool FillChildren(RegistryFiller& filler, RegistryNode& node, hive_node_h key) {
        const std::unique_ptr<hive_node_h, FreeBlock> children(hivex_node_children(m_hive.get(), key));
        if (children == nullptr) return false;
        for (const hive_node_h* child = children.get(); *child != 0; ++child) {
            if (*child == m_root || hivex_node_parent(m_hive.get(), *child) != key) continue;
            const auto read = m_cells.ReadKey(*child);
            if (read) filler.AddChild(node, read->name, static_cast<std::uint32_t>(*child), read->link);
        }
        return true;
    }

    bool FillValues(RegistryFiller& filler, RegistryNode& node, hive_node_h key) {
        const std::unique_ptr<hive_value_h, FreeBlock> values(hivex_node_values(m_hive.get(), key));
        if (values == nullptr) return false;
        for (const hive_value_h* value = values.get(); *value != 0; ++value) {
            const auto name = m_cells.ReadValueName(*value);
            if (!name) continue;
            hive_type type{};
            std::size_t size = 0;
            const std::unique_ptr<char, FreeBlock> data(hivex_value_value(m_hive.get(), *value, &type, &size));
            // One value that cannot be read does not take the key with it.
            if (data == nullptr || size > std::numeric_limits<std::uint32_t>::max()) continue;
            // The library writes whatever number the file has into its enumeration; take it out as a number.
            static_assert(sizeof type == sizeof(std::uint32_t));
            std::uint32_t number = 0;
            std::memcpy(&number, &type, sizeof number);
            filler.AddValue(node, *name, number, data.get(), static_cast<std::uint32_t>(size));
        }
        return true;
    }

    static bool IsTooDeep(const RegistryNode& node) noexcept {
        std::size_t depth = 0;
        for (const RegistryNode* at = node.parent; at != nullptr && depth <= kDeepestKey; at = at->parent) ++depth;
        return depth > kDeepestKey;
    }

    const std::string m_file;
    MappedFile m_mapped;
    HiveCells m_cells;
    std::unique_ptr<hive_h, CloseHive> m_hive;
    hive_node_h m_root = 0;
};

// The key at which the hive is mounted, as it stands: a symbolic link of that name is what the mount replaces.
RegistryNode* MountPoint(RegistryStore& store, std::u16string_view path) {
    StoredKeys keys(store);
    std::u16string_view below = path;
    if (!TakeRoot(below, true)) return nullptr;
    while (path.ends_with(u'\\')) path.remove_suffix(1);
    const std::size_t last = path.rfind(u'\\');
    if (TakeComponent(below).empty() || last == std::u16string_view::npos) return keys.Make(path);
    RegistryNode* const parent = keys.Make(path.substr(0, last));
    return &store.Tree().MakeChild(*parent, store.Tree().Fold(path.substr(last + 1)));
}

}  // namespace

SourceStatus MountHive(RegistryStore& store, const HiveFiles& files, std::u16string_view path, HiveState& state) {
    const std::string& file = files.file;
    try {
        auto source = std::make_unique<HiveSource>(file);
        if (SourceStatus status = source->Open(files.logs, state)) return status;
        const std::uint32_t root = source->Root();
        const std::lock_guard guard(store.Lock());
        store.Changed();
        RegistryNode* const node = MountPoint(store, path);
        if (node == nullptr) return SourceError{file, {}, 0, "mounted at a key that does not begin with a root"};
        store.Tree().SetPending(*node, store.Tree().AddSource(std::move(source)), root);
        return {};
    } catch (const std::bad_alloc&) {
        return OutOfMemoryFault(file);
    }
}

}  // namespace roundup
