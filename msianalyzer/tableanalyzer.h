// Tables of an installer database, loaded into memory: the base of all of them.
#pragma once

#include <cstddef>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "msianalyzer/enummsidatabase.h"
#include "msianalyzer/msimisc.h"
#include "msianalyzer/rowarena.h"
#include "msianalyzer/rowindex.h"
#include "platform/installer.h"
#include "utility/result.h"
#include "utility/textarena.h"

namespace roundup {

// A row. Its texts and its memory belong to its table.
class CTableRow {
  public:
    static void* operator new(std::size_t size, RowArena& arena) noexcept { return arena.Take(size); }
    static void operator delete(void*) noexcept {}  // NOLINT(misc-new-delete-overloads): there is no other new
    static void operator delete(void*, RowArena&) noexcept {}

    CTableRow() = default;
    CTableRow(const CTableRow&) = delete;
    CTableRow& operator=(const CTableRow&) = delete;
    virtual ~CTableRow() = default;
    virtual void Release() { delete this; }
};

struct ReleaseRow {
    void operator()(CTableRow* row) const noexcept { row->Release(); }
};
template <class T>
using RowPtr = std::unique_ptr<T, ReleaseRow>;

// Empty until Analyze, from then on only read. Used by one thread.
class CTableAnalyzer {
  public:
    CTableAnalyzer(const CTableAnalyzer&) = delete;
    CTableAnalyzer& operator=(const CTableAnalyzer&) = delete;
    virtual ~CTableAnalyzer() = default;

    // Wants these keys alone, each once; the first text that is null or empty ends the list. Without any the table
    // wants every key. Only tables that say so ask for it.
    virtual void SetFilter(const char16_t* key1, const char16_t* key2 = nullptr, const char16_t* key3 = nullptr,
                           const char16_t* key4 = nullptr, const char16_t* key5 = nullptr,
                           const char16_t* key6 = nullptr, const char16_t* key7 = nullptr,
                           const char16_t* key8 = nullptr, const char16_t* key9 = nullptr,
                           const char16_t* key10 = nullptr, const char16_t* key11 = nullptr);
    // Whether a row with the key is to be kept; a key that was asked for is not wanted again.
    virtual bool IsWanted(std::u16string_view key);
    // Loads the table anew. One that the database does not have stays empty and is no failure; a record that cannot
    // be read is. Small code 1 for want of memory, 0xD when there is none for a row or the view.
    virtual ResultCode Analyze(InstallerHandle database);
    virtual void Release() { delete this; }

    // Rows by their primary key.
    virtual const RowIndex& GetRows() const noexcept { return m_rows; }
    // The table owns the row from now on. The key is one of its texts.
    virtual void AddRow(std::u16string_view key, RowPtr<CTableRow> row);
    // Rows by the key that leads to them from another table, as a rule that of their component. An empty key or a
    // null row is left out; the row belongs to the table already.
    virtual const RowIndex& GetRowIndex() const noexcept { return m_rowIndex; }
    virtual void AddRowIndex(std::u16string_view key, CTableRow* row);
    // Rows by a third key, which files alone have.
    virtual const RowIndex& GetSecondRows() const noexcept { return m_secondRows; }
    virtual void AddSecondRow(std::u16string_view key, CTableRow* row);

  protected:
    // query: the SELECT statement of the table, a literal.
    explicit CTableAnalyzer(std::u16string_view query) noexcept : m_query(query) {}

    // Fetches all records; the first one that fails ends the table and is the result.
    virtual ResultCode ReadRows();
    // Reads the columns, and adds a row.
    virtual ResultCode ReadRecord(RecordColumns& columns) = 0;
    // Null when memory is short.
    template <class T>
    RowPtr<T> MakeRow() noexcept {
        static_assert(alignof(T) <= alignof(std::max_align_t));
        return RowPtr<T>(new (m_arena) T);
    }
    // For a row without a primary key: owned, and in no index.
    void OwnRow(RowPtr<CTableRow> row);

  private:
    static ResultCode OnRecord(void* context, const InstallerHandle* record);
    ResultCode LoadTable(InstallerHandle database);
    void Clear() noexcept;

    const std::u16string_view m_query;
    std::unique_ptr<CEnumMsiDatabase> m_view;  // while Analyze runs
    TextArena m_texts;
    RowArena m_arena;
    std::vector<RowPtr<CTableRow>> m_owned;
    RowIndex m_rows;
    RowIndex m_rowIndex;
    RowIndex m_secondRows;
    std::set<std::u16string, std::less<>> m_filter;  // the keys that are still wanted
    bool m_filtered = false;
};

struct ReleaseTable {
    void operator()(CTableAnalyzer* table) const noexcept { table->Release(); }
};
template <class T>
using TablePtr = std::unique_ptr<T, ReleaseTable>;

}  // namespace roundup
