#include "merge.h"

#include "explorer/asking/part.h"
#include "explorer/diff/diff_result.h"
#include "explorer/invariants/check_result.h"
#include "explorer/tables/table_parts.h"

namespace explorer {

int MergeMain(const MergeOptions& options) {
    const std::vector<PartFile> parts = ReadParts(options.files);
    const std::string verb = parts.front().Whole()["verb"].asString();
    if (verb == "check") {
        return ShowMergedCheck(options, options.scenarios, parts);
    }
    if (verb == "diff") {
        return ShowMergedDiff(options, options.scenarios, parts);
    }
    if (verb == "table") {
        return ShowMergedTables(options, parts);
    }
    throw CommandError(kExitUsage,
                       parts.front().file + ": is a part of \"" + verb + "\", which has no parts");
}

}  // namespace explorer
