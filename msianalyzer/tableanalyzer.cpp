#include "msianalyzer/tableanalyzer.h"

#include <new>
#include <utility>

#include "utility/boundary.h"

namespace roundup {

void CTableAnalyzer::SetFilter(const char16_t* key1, const char16_t* key2, const char16_t* key3, const char16_t* key4,
                               const char16_t* key5, const char16_t* key6, const char16_t* key7, const char16_t* key8,
                               const char16_t* key9, const char16_t* key10, const char16_t* key11) {
    for (const char16_t* key : {key1, key2, key3, key4, key5, key6, key7, key8, key9, key10, key11}) {
        if (key == nullptr || *key == u'\0') return;
        m_filter.emplace(key);
        m_filtered = true;
    }
}

bool CTableAnalyzer::IsWanted(std::u16string_view key) {
    if (!m_filtered) return true;
    const auto found = m_filter.find(key);
    if (found == m_filter.end()) return false;
    m_filter.erase(found);
    return true;
}

ResultCode CTableAnalyzer::Analyze(InstallerHandle database) {
    const ResultCode rc =
        AtBoundary([&] { return LoadTable(database); }, [] { return Fail(SmallCode::GeneralFailure); });
    m_view.reset();
    return rc;
}

ResultCode CTableAnalyzer::LoadTable(InstallerHandle database) {
    Clear();
    m_view.reset(new (std::nothrow) CEnumMsiDatabase);
    if (m_view == nullptr) return Fail(SmallCode::ObjectMissing);
    if (Failed(m_view->OpenView(database, m_query))) return kSuccess;
    return ReadRows();
}

ResultCode CTableAnalyzer::ReadRows() {
    while (true) {
        const ResultCode rc = m_view->Fetch(&OnRecord, this);
        if (Small(rc) == SmallCode::NoMoreItems) return kSuccess;
        if (Failed(rc)) return Pass(rc);
    }
}

ResultCode CTableAnalyzer::OnRecord(void* context, const InstallerHandle* record) {
    if (context == nullptr || record == nullptr || *record == 0) return Fail(SmallCode::BadArgument);
    auto& self = *static_cast<CTableAnalyzer*>(context);
    RecordColumns columns(*record, self.m_texts);
    return self.ReadRecord(columns);
}

void CTableAnalyzer::OwnRow(RowPtr<CTableRow> row) { m_owned.push_back(std::move(row)); }

void CTableAnalyzer::AddRow(std::u16string_view key, RowPtr<CTableRow> row) {
    CTableRow* added = row.get();
    OwnRow(std::move(row));
    m_rows.Add(key, added);
}

void CTableAnalyzer::AddRowIndex(std::u16string_view key, CTableRow* row) {
    if (!key.empty() && row != nullptr) m_rowIndex.Add(key, row);
}

void CTableAnalyzer::AddSecondRow(std::u16string_view key, CTableRow* row) { m_secondRows.Add(key, row); }

void CTableAnalyzer::Clear() noexcept {
    for (RowIndex* index : {&m_rows, &m_rowIndex, &m_secondRows}) index->Clear();
    m_owned.clear();
    m_arena.Clear();
    m_texts.Clear();
}

}  // namespace roundup
