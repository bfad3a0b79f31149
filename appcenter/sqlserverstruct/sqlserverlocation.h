// Where the applications of SQL Server really lie.
#pragma once

namespace roundup {

class IApp;

// Runs on every application of the catalogue once it is reconciled, on the thread of the load: see
// CSqlServerGather::CorrectSqlServerLocation. A store package stays as it is.
void CorrectSqlServerLocation(IApp& app);

}  // namespace roundup
