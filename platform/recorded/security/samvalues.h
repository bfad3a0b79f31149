// Values of the SAM hive in which the accounts and groups of a machine are kept.
//
// Source of the layouts: public notes of forensic tools on the hive (RegRipper's samparse, libregf's documentation).
#pragma once

#include <optional>
#include <vector>

#include "platform/recorded/security/securitydescriptor.h"
#include "utility/byteview.h"

namespace roundup {

// The identifiers of a group's members, from the value "C" of its key. What is malformed ends the list.
std::vector<Sid> ReadAliasMembers(const ByteView& value);
// The identifier of the machine, "S-1-5-21-a-b-c", from the value "V" of the domain "Account", at whose end it stands.
std::optional<Sid> ReadDomainSid(const ByteView& value);

}  // namespace roundup
