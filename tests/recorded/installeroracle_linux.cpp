// Real packages, read row by row beside libmsi, another reader of the format.
#include <libmsi.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/support/machinetest.h"
#include "utility/utf.h"

namespace roundup {
namespace {

namespace fs = std::filesystem;

struct Unreference {
    void operator()(gpointer object) const noexcept { g_object_unref(object); }
};
template <class T>
using ObjectPtr = std::unique_ptr<T, Unreference>;

std::string ReadWhole(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

class InstallerOracle : public MachineTest {
  protected:
    void Compare(const fs::path& path) {
        SCOPED_TRACE(path.filename().string());
        builder.File(u"C:\\a.msi", ReadWhole(path));
        m_installer = &Start().Installer();
        ASSERT_EQ(m_installer->OpenDatabase(u"C:\\a.msi", m_database), kErrorSuccess);
        m_theirs.reset(libmsi_database_new(path.c_str(), LIBMSI_DB_FLAGS_READONLY, nullptr, nullptr));
        ASSERT_TRUE(m_theirs);
        std::vector<std::string> tables{"_Tables", "_Columns", "_Streams"};
        const ObjectPtr<LibmsiQuery> names(Query("SELECT `Name` FROM `_Tables`"));
        while (ObjectPtr<LibmsiRecord> row{libmsi_query_fetch(names.get(), nullptr)}) {
            tables.push_back(TheirText(row.get(), 1));
        }
        for (const std::string& table : tables) CompareTable(table);
    }

  private:
    LibmsiQuery* Query(const std::string& text) {
        LibmsiQuery* query = libmsi_query_new(m_theirs.get(), text.c_str(), nullptr);
        EXPECT_TRUE(libmsi_query_execute(query, nullptr, nullptr)) << text;
        return query;
    }
    static std::string TheirText(LibmsiRecord* record, guint column) {
        const std::unique_ptr<gchar, decltype(&g_free)> text(libmsi_record_get_string(record, column), g_free);
        return text ? text.get() : "";
    }
    std::string OurText(InstallerHandle record, std::uint32_t column) {
        std::uint32_t length = 0;
        EXPECT_EQ(m_installer->GetString(record, column, nullptr, length), kErrorSuccess);
        std::u16string text(length + 1, u'\0');
        length = static_cast<std::uint32_t>(text.size());
        EXPECT_EQ(m_installer->GetString(record, column, text.data(), length), kErrorSuccess);
        text.resize(length);
        return ToUtf8(text);
    }
    static std::string TheirStream(LibmsiRecord* record, guint column) {
        const ObjectPtr<GInputStream> input(libmsi_record_get_stream(record, column));
        std::string bytes;
        char chunk[16384];
        if (!input) return bytes;
        if (G_IS_SEEKABLE(input.get())) g_seekable_seek(G_SEEKABLE(input.get()), 0, G_SEEK_SET, nullptr, nullptr);
        while (true) {
            const gssize done = g_input_stream_read(input.get(), chunk, sizeof chunk, nullptr, nullptr);
            if (done <= 0) return bytes;
            bytes.append(chunk, static_cast<std::size_t>(done));
        }
    }
    std::string OurStream(InstallerHandle record, std::uint32_t column) {
        std::string bytes(m_installer->GetDataSize(record, column), '\0');
        auto size = static_cast<std::uint32_t>(bytes.size());
        EXPECT_EQ(m_installer->ReadStream(record, column, bytes.data(), size), kErrorSuccess);
        return bytes;
    }
    void CompareTable(const std::string& table) {
        SCOPED_TRACE(table);
        const std::string text = "SELECT * FROM `" + table + "`";
        const ObjectPtr<LibmsiQuery> theirs(Query(text));
        const ObjectPtr<LibmsiRecord> types(libmsi_query_get_column_info(theirs.get(), LIBMSI_COL_INFO_TYPES, nullptr));
        InstallerHandle view = 0;
        ASSERT_EQ(m_installer->OpenView(m_database, FromUtf8(text).c_str(), view), kErrorSuccess);
        ASSERT_EQ(m_installer->ExecuteView(view), kErrorSuccess);
        while (ObjectPtr<LibmsiRecord> row{libmsi_query_fetch(theirs.get(), nullptr)}) {
            InstallerHandle record = 0;
            ASSERT_EQ(m_installer->FetchRecord(view, record), kErrorSuccess);
            CompareRow(row.get(), types.get(), record);
            m_installer->CloseHandle(record);
            ++m_rows;
        }
        InstallerHandle record = 0;
        EXPECT_EQ(m_installer->FetchRecord(view, record), kErrorNoMoreItems);
        m_installer->CloseHandle(view);
    }
    void CompareRow(LibmsiRecord* row, LibmsiRecord* types, InstallerHandle record) {
        const guint columns = libmsi_record_get_field_count(row);
        for (guint column = 1; column <= columns; ++column) {
            const char type = TheirText(types, column)[0];
            if (type == 'v' || type == 'V') {
                if (libmsi_record_is_null(row, column) == FALSE) {
                    EXPECT_TRUE(TheirStream(row, column) == OurStream(record, column)) << OurText(record, 1);
                } else {
                    EXPECT_EQ(m_installer->GetDataSize(record, column), 0U);
                }
                continue;
            }
            EXPECT_EQ(TheirText(row, column), OurText(record, column));
            if (type == 'i' || type == 'I') {
                const bool null = libmsi_record_is_null(row, column) != FALSE;
                EXPECT_EQ(null ? kNullInteger : libmsi_record_get_int(row, column),
                          m_installer->GetInteger(record, column));
            }
        }
    }

  protected:
    std::size_t m_rows = 0;  // compared so far

  private:
    IInstaller* m_installer = nullptr;
    InstallerHandle m_database = 0;
    ObjectPtr<LibmsiDatabase> m_theirs;
};

TEST_F(InstallerOracle, ShippedPackages_HaveTheSameRows) {
    const fs::path folder = fs::path(ROUNDUP_SHARED_DATA) / "msi";
    if (!fs::exists(folder)) GTEST_SKIP() << "no shared data";
    for (const auto& file : fs::directory_iterator(folder)) Compare(file.path());
    EXPECT_GT(m_rows, 7500U);
    const fs::path samples = fs::path(ROUNDUP_SOURCE_DIR) / "samples/machine/drives/c/windows/Installer";
    for (const auto& file : fs::recursive_directory_iterator(samples)) {
        if (file.path().extension() == ".msi") Compare(file.path());
    }
}

}  // namespace
}  // namespace roundup
