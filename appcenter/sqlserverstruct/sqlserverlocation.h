// Where the applications of SQL Server really lie.
#pragma once

namespace roundup {

class IApp;

// Runs on every application of the catalogue once it is reconciled, on the thread of the load. Leaves all others as
// they are; in this build it knows no instance yet and leaves all as they are.
void CorrectSqlServerLocation(IApp& app);

}  // namespace roundup
