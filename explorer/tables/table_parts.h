// `table` done in parts: what a part says of itself, and all of them together.
#pragma once

#include "explorer/asking/part.h"
#include "table.h"

namespace explorer {

// Of the tables that a part made; `code` is what it ends with.
Json::Value PartOf(const TableOptions& options, const std::vector<const Question*>& all,
                   const std::vector<Table>& tables, int code);

// Returns the exit code of one run; throws CommandError.
int ShowMergedTables(const CommonOptions& options, const std::vector<PartFile>& parts);

}  // namespace explorer
