// The stored form of one gathered file, which stands inside the records of applications and of store packages.
#pragma once

#include <cstdint>

#include "appcenter/app/recordformat.h"
#include "appcenter/app/recordreader.h"
#include "appcenter/appfile/appfile.h"
#include "utility/result.h"

namespace roundup {

// Sink is one of those of recordwriter.h. A file without a path writes nothing.
template <class Sink>
void PutFile(Sink& sink, const CWFYFile& file) {
    if (file.pwszPath.IsEmpty()) return;
    sink.Put(kFileMagic);
    sink.PutText(file.pwszPath);
    if (file.pwszShortPath.IsEmpty()) {
        sink.Put(std::uint32_t{0});
    } else {
        sink.PutText(file.pwszShortPath);
    }
    sink.Put(file.llSize);
    sink.Put(file.dwType);
    sink.Put(file.dwFlags);
    if (file.pwszAlias.IsEmpty()) return;
    sink.Put(kAliasMagic);
    sink.PutText(file.pwszAlias);
}

// Fills a new file. After a failure it is half filled, and never one whose destruction deletes what its path names.
[[nodiscard]] ResultCode ReadFile(RecordReader& reader, CWFYFile& file);

}  // namespace roundup
