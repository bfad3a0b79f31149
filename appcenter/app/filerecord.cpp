#include "appcenter/app/filerecord.h"

namespace roundup {

// The type and the flags are set at the end, so that an unfinished object never deletes what its path names.
ResultCode ReadFile(RecordReader& reader, CWFYFile& file) {
    std::int64_t size = 0;
    std::uint32_t type = 0;
    std::uint32_t flags = 0;
    if (!reader.SkipWord(kFileMagic)) return Fail(SmallCode::BadArgument, reader.Position());
    if (auto rc = reader.ReadText(file.pwszPath, true); Failed(rc)) return Pass(rc);
    if (auto rc = reader.ReadText(file.pwszShortPath, false); Failed(rc)) return Pass(rc);
    if (auto rc = reader.Read(size); Failed(rc)) return Pass(rc);
    if (auto rc = reader.Read(type); Failed(rc)) return Pass(rc);
    if (auto rc = reader.Read(flags); Failed(rc)) return Pass(rc);
    if (reader.SkipWord(kAliasMagic)) {
        if (auto rc = reader.ReadText(file.pwszAlias, true); Failed(rc)) return Pass(rc);
    }
    file.llSize = size;
    file.dwType = type;
    file.dwFlags = flags;
    return kSuccess;
}

}  // namespace roundup
