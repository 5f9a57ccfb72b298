#include "records.h"

#include "explorer/tv/lazy_tv.h"
#include "platform/trace_storage.h"

namespace explorer {

void UseRecords(const RecordOptions& options) {
    tv().logLevel = !options.logs   ? LogLevel::kNone
                    : options.lines ? LogLevel::kLines
                                    : LogLevel::kFiles;
    tv().everything = true;
    tv().marksTexts = true;
    tv().notesReads = options.reads;
    TIStorageManagerState::enabled = options.logs;
}

}  // namespace explorer
