// Compiled as a host compiles: with the public header alone, which must bring all that it needs.
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <type_traits>

#include "externfuncinc/roundup.h"

namespace {

// A packed, derived record would lose its layout, or its plain bytes, to any member with a constructor of its own.
static_assert(std::is_trivially_copyable_v<roundup::_tagAppInfo>);
static_assert(alignof(roundup::_tagAppInfo) == 1);

// A host gets these two headers and no others.
TEST(HostHeader, PublicHeaders_IncludeNothingElseOfTheTree) {
    for (const char* header : {"/externfuncinc/roundup.h", "/utility/ikvobject.h"}) {
        std::ifstream file(std::string(ROUNDUP_SOURCE_DIR) + header);
        int lines = 0;
        for (std::string line; std::getline(file, line); ++lines) {
            if (line.rfind("#include \"", 0) != 0) continue;
            EXPECT_EQ(line, "#include \"utility/ikvobject.h\"") << header;
        }
        EXPECT_GT(lines, 10) << header;
    }
}

}  // namespace
