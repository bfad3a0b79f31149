#include <libmsi.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/installer.h"
#include "platform/recorded/installer/installerdatabase.h"
#include "utility/utf.h"

namespace roundup {

namespace {

// No cached package comes near this.
constexpr std::uint64_t kLargestDatabase = 1ULL << 30U;

struct Unreference {
    void operator()(gpointer object) const noexcept { g_object_unref(object); }
};
template <class T>
using ObjectPtr = std::unique_ptr<T, Unreference>;

thread_local bool insideLibrary = false;

// Holds the lock of a database while the library is entered. The library and those below it complain to the error
// output of every table that is not there; such messages of this thread are dropped, those of others pass.
class Entry {
  public:
    explicit Entry(std::mutex& lock) : m_guard(lock) { insideLibrary = true; }
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;
    ~Entry() { insideLibrary = false; }

    static void SetUpMessages() {
        static std::once_flag once;
        std::call_once(once, [] {
            static GLogFunc before = &g_log_default_handler;
            before = g_log_set_default_handler(
                [](const gchar* domain, GLogLevelFlags level, const gchar* message, gpointer) {
                    if (!insideLibrary) before(domain, level, message, nullptr);
                },
                nullptr);
        });
    }

  private:
    const std::lock_guard<std::mutex> m_guard;
};

// The error of a call to the library, freed with the object.
class LibraryError {
  public:
    LibraryError() = default;
    LibraryError(const LibraryError&) = delete;
    LibraryError& operator=(const LibraryError&) = delete;
    ~LibraryError() { g_clear_error(&m_error); }
    GError** operator&() noexcept { return &m_error; }
    bool IsSet() const noexcept { return m_error != nullptr; }

    // The number that the platform's installer answers for it.
    Win32Error Number() const noexcept {
        if (m_error == nullptr || m_error->domain != LIBMSI_RESULT_ERROR) return kErrorFunctionFailed;
        switch (m_error->code) {
            case LIBMSI_RESULT_BAD_QUERY_SYNTAX:
            case LIBMSI_RESULT_INVALID_TABLE:
                return kErrorBadQuerySyntax;
            case LIBMSI_RESULT_NOT_ENOUGH_MEMORY:
            case LIBMSI_RESULT_OUTOFMEMORY:
                return kErrorNotEnoughMemory;
            case LIBMSI_RESULT_INVALID_HANDLE:
                return kErrorInvalidHandle;
            default:
                return kErrorFunctionFailed;
        }
    }

  private:
    GError* m_error = nullptr;
};

// The database with the lock under which the library is entered for it and all that was opened from it.
struct Core {
    ~Core() {
        if (database == nullptr) return;
        const Entry entry(lock);
        g_object_unref(database);
    }
    std::mutex lock;
    LibmsiDatabase* database = nullptr;
    std::uint64_t size = 0;  // of the file in bytes: no stream is longer
};

// An object of the library that is given back under the lock.
template <class T>
class Guarded {
  public:
    Guarded(std::shared_ptr<Core> core, ObjectPtr<T> object) noexcept
        : m_core(std::move(core)), m_object(std::move(object)) {}
    Guarded(const Guarded&) = delete;
    Guarded& operator=(const Guarded&) = delete;
    ~Guarded() {
        const Entry entry(m_core->lock);
        m_object.reset();
    }
    const std::shared_ptr<Core>& GetCore() const noexcept { return m_core; }
    std::mutex& Lock() const noexcept { return m_core->lock; }
    T* Get() const noexcept { return m_object.get(); }

  private:
    std::shared_ptr<Core> m_core;
    ObjectPtr<T> m_object;
};

class Record final : public IInstallerRecord {
  public:
    // numbers tells which columns hold integers.
    Record(std::shared_ptr<Core> core, ObjectPtr<LibmsiRecord> record, std::shared_ptr<const std::vector<bool>> numbers)
        : m_record(std::move(core), std::move(record)), m_numbers(std::move(numbers)) {}

    std::u16string Text(std::uint32_t column) override {
        const Entry entry(m_record.Lock());
        return TextUnlocked(column);
    }
    std::int32_t Integer(std::uint32_t column) override {
        const Entry entry(m_record.Lock());
        return Has(column) ? libmsi_record_get_int(m_record.Get(), column) : kNullInteger;
    }
    std::uint32_t DataSize(std::uint32_t column) override;
    Win32Error ReadStream(std::uint32_t column, void* buffer, std::uint32_t& size) override;

  private:
    struct Stream {
        std::vector<std::byte> bytes;
        std::size_t position = 0;
    };

    bool Has(std::uint32_t column) const noexcept {
        return column <= libmsi_record_get_field_count(m_record.Get()) &&
               libmsi_record_is_null(m_record.Get(), column) == FALSE;
    }
    std::u16string TextUnlocked(std::uint32_t column) const;
    Stream* StreamOf(std::uint32_t column);

    Guarded<LibmsiRecord> m_record;
    const std::shared_ptr<const std::vector<bool>> m_numbers;
    std::unordered_map<std::uint32_t, Stream> m_streams;  // guarded by the record's lock
};

std::u16string Record::TextUnlocked(std::uint32_t column) const {
    if (!Has(column)) return {};
    const std::unique_ptr<gchar, decltype(&g_free)> text(libmsi_record_get_string(m_record.Get(), column), g_free);
    return text ? FromUtf8(text.get()) : std::u16string();
}

// The stream of a column, read whole at its first use: the library's own positions are shared between records.
Record::Stream* Record::StreamOf(std::uint32_t column) {
    const auto found = m_streams.find(column);
    if (found != m_streams.end()) return &found->second;
    if (!Has(column)) return nullptr;
    const ObjectPtr<GInputStream> input(libmsi_record_get_stream(m_record.Get(), column));
    if (!input) return nullptr;
    if (G_IS_SEEKABLE(input.get())) g_seekable_seek(G_SEEKABLE(input.get()), 0, G_SEEK_SET, nullptr, nullptr);
    Stream stream;
    std::byte chunk[16384];
    while (stream.bytes.size() < m_record.GetCore()->size) {
        const gssize done = g_input_stream_read(input.get(), chunk, sizeof chunk, nullptr, nullptr);
        if (done <= 0) break;
        stream.bytes.insert(stream.bytes.end(), chunk, chunk + done);
    }
    return &m_streams.emplace(column, std::move(stream)).first->second;
}

std::uint32_t Record::DataSize(std::uint32_t column) {
    const Entry entry(m_record.Lock());
    if (!Has(column)) return 0;
    if (column != 0 && column <= m_numbers->size() && (*m_numbers)[column - 1]) return sizeof(std::int32_t);
    if (const Stream* stream = StreamOf(column)) return static_cast<std::uint32_t>(stream->bytes.size());
    return static_cast<std::uint32_t>(TextUnlocked(column).size());
}

Win32Error Record::ReadStream(std::uint32_t column, void* buffer, std::uint32_t& size) {
    const Entry entry(m_record.Lock());
    if (column > libmsi_record_get_field_count(m_record.Get())) return kErrorInvalidParameter;
    Stream* stream = StreamOf(column);
    if (stream == nullptr) return kErrorInvalidDatatype;
    const std::size_t left = stream->bytes.size() - stream->position;
    if (buffer == nullptr) {
        size = static_cast<std::uint32_t>(left);
        return kErrorSuccess;
    }
    size = static_cast<std::uint32_t>(std::min<std::size_t>(size, left));
    if (size != 0) std::memcpy(buffer, stream->bytes.data() + stream->position, size);
    stream->position += size;
    return kErrorSuccess;
}

class View final : public IInstallerView {
  public:
    View(std::shared_ptr<Core> core, ObjectPtr<LibmsiQuery> query)
        : m_query(std::move(core), std::move(query)), m_numbers(std::make_shared<std::vector<bool>>()) {}

    Win32Error Execute() override {
        const Entry entry(m_query.Lock());
        LibraryError error;
        m_executed = libmsi_query_execute(m_query.Get(), nullptr, &error) != FALSE;
        if (!m_executed) return error.Number();
        ReadTypes();
        return kErrorSuccess;
    }
    Win32Error Fetch(std::shared_ptr<IInstallerRecord>& record) override {
        ObjectPtr<LibmsiRecord> row;
        std::shared_ptr<const std::vector<bool>> numbers;
        {
            const Entry entry(m_query.Lock());
            if (!m_executed) return kErrorFunctionFailed;
            LibraryError error;
            row.reset(libmsi_query_fetch(m_query.Get(), &error));
            if (!row) return error.IsSet() ? error.Number() : kErrorNoMoreItems;
            numbers = m_numbers;
        }
        record = std::make_shared<Record>(m_query.GetCore(), std::move(row), std::move(numbers));
        return kErrorSuccess;
    }

  private:
    // A type is a letter and a width; "i" and "j" are integers, capitals say that null is allowed.
    void ReadTypes() {
        auto numbers = std::make_shared<std::vector<bool>>();
        LibraryError error;
        const ObjectPtr<LibmsiRecord> types(libmsi_query_get_column_info(m_query.Get(), LIBMSI_COL_INFO_TYPES, &error));
        for (guint i = 1; types && i <= libmsi_record_get_field_count(types.get()); ++i) {
            const std::unique_ptr<gchar, decltype(&g_free)> type(libmsi_record_get_string(types.get(), i), g_free);
            numbers->push_back(type && *type != '\0' && std::strchr("iIjJ", *type) != nullptr);
        }
        m_numbers = std::move(numbers);
    }

    Guarded<LibmsiQuery> m_query;
    std::shared_ptr<const std::vector<bool>> m_numbers;  // guarded by the query's lock
    bool m_executed = false;                             // guarded by the query's lock
};

class Database final : public IInstallerDatabase {
  public:
    explicit Database(std::shared_ptr<Core> core) noexcept : m_core(std::move(core)) {}
    Win32Error OpenView(const char16_t* query, std::shared_ptr<IInstallerView>& view) override {
        ObjectPtr<LibmsiQuery> parsed;
        {
            const Entry entry(m_core->lock);
            LibraryError error;
            parsed.reset(libmsi_query_new(m_core->database, ToUtf8(query).c_str(), &error));
            if (!parsed) return error.Number();
        }
        view = std::make_shared<View>(m_core, std::move(parsed));
        return kErrorSuccess;
    }

  private:
    const std::shared_ptr<Core> m_core;
};

// A file in memory with a copy of one of the machine's. The library opens files by path, and gets one that the source
// has no say in.
class MemoryCopy {
  public:
    MemoryCopy(IFileSystem& files, const char16_t* path) {
        FileHandle file = kInvalidFile;
        if (files.Open(path, kGenericRead, kShareRead | kShareWrite, kOpenExisting, file) != kErrorSuccess) return;
        if (files.GetSize(file, m_size) == kErrorSuccess && m_size <= kLargestDatabase) Copy(files, file);
        files.Close(file);
    }
    MemoryCopy(const MemoryCopy&) = delete;
    MemoryCopy& operator=(const MemoryCopy&) = delete;
    ~MemoryCopy() {
        if (m_descriptor >= 0) close(m_descriptor);
    }
    bool IsWhole() const noexcept { return m_whole; }
    std::uint64_t Size() const noexcept { return m_size; }
    std::string Path() const { return "/proc/self/fd/" + std::to_string(m_descriptor); }

  private:
    void Copy(IFileSystem& files, FileHandle file) {
        m_descriptor = memfd_create("installer database", MFD_CLOEXEC);
        if (m_descriptor < 0 || ftruncate(m_descriptor, static_cast<off_t>(m_size)) != 0 || m_size == 0) return;
        void* target = mmap(nullptr, m_size, PROT_READ | PROT_WRITE, MAP_SHARED, m_descriptor, 0);
        if (target == MAP_FAILED) return;
        std::uint32_t done = 0;
        const auto size = static_cast<std::uint32_t>(m_size);
        m_whole = files.Read(file, target, size, done) == kErrorSuccess && done == size;
        munmap(target, m_size);
    }

    int m_descriptor = -1;
    std::uint64_t m_size = 0;
    bool m_whole = false;
};

}  // namespace

Win32Error OpenInstallerDatabase(IFileSystem& files, const char16_t* path,
                                 std::shared_ptr<IInstallerDatabase>& database) {
    database.reset();
    const MemoryCopy copy(files, path);
    if (!copy.IsWhole()) return kErrorOpenFailed;
    Entry::SetUpMessages();
    auto core = std::make_shared<Core>();
    {
        const Entry entry(core->lock);
        LibraryError error;
        core->database = libmsi_database_new(copy.Path().c_str(), LIBMSI_DB_FLAGS_READONLY, nullptr, &error);
    }
    if (core->database == nullptr) return kErrorOpenFailed;
    core->size = copy.Size();
    database = std::make_shared<Database>(std::move(core));
    return kErrorSuccess;
}

}  // namespace roundup
