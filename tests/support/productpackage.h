// A product for tests: its package with the tables that an analysis reads, and what its installation left in the books
// of the installer.
#pragma once

#include <string>
#include <string_view>

#include "tests/support/machinebuilder.h"
#include "tests/support/packagewriter.h"

namespace roundup {

// Tables of the forms that the installer has them in, all of them there and empty.
PackageWriter ProductTables();

// Writes down that the product (both codes in braces) has the component, at that path; the account is the machine's.
void InstallComponent(MachineBuilder& builder, std::u16string_view product, std::u16string_view component,
                      std::u16string_view path);

}  // namespace roundup
