#include "msianalyzer/dataexport.h"

#include "msianalyzer/msianalyzer.h"
#include "platform/machine.h"
#include "utility/fileinfo.h"

namespace roundup {

DataExport::~DataExport() {
    m_file.Close();
    if (!m_path.IsEmpty()) (void)CurrentMachine().Files().Delete(m_path.Text());
}

ResultCode DataExport::Begin() {
    const ResultCode rc = m_file.Create(m_path, u"");
    if (Succeeded(rc)) return kSuccess;
    m_path.Reset();
    return Pass(rc);
}

ResultCode DataExport::HandOver(DataTerminator terminator, std::uint64_t threshold, std::uint32_t type) {
    const ResultCode rc =
        terminator == DataTerminator::Plain ? m_file.WriteDword(UINT32_MAX) : m_file.WriteQword(UINT64_MAX);
    if (Failed(rc)) return Pass(rc);
    m_file.Close();
    const std::uint64_t size = GetFileSize64(m_path.Text());
    if (size < threshold) return kSuccess;
    // The file is the receiver's from then on; one that nobody was told of goes with this object.
    if (m_analyzer.Report(m_path, size, type)) m_path.Reset();
    return kSuccess;
}

}  // namespace roundup
