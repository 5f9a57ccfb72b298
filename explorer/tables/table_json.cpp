#include <json/json.h>

#include "table.h"
#include "virtual-tv/model/json_text.h"

namespace explorer {

namespace {

Json::Value ToJson(const TableRow& row) {
    Json::Value json;
    json["conditions"] = Json::arrayValue;
    for (const Condition& condition : row.conditions) {
        Json::Value cell;
        cell["input"] = condition.column->name;
        cell["source"] = condition.column->source;
        cell["values"] = JsonList(condition.values);
        json["conditions"].append(cell);
    }
    json["fits"] = row.isAny ? "any" : "all";  // of the conditions
    json["outcome"] = JsonList(row.outcome);
    return json;
}

}  // namespace

std::string TablesAsJson(const std::vector<Table>& tables, const Json::Value& part) {
    Json::Value root;
    root["tables"] = Json::arrayValue;
    for (const Table& table : tables) {
        Json::Value json;
        json["question"] = table.name;
        json["function"] = table.function;
        json["rows"] = Json::arrayValue;
        for (const TableRow& row : table.rows) {
            json["rows"].append(ToJson(row));
        }
        json["paths"] = Json::UInt64{table.paths};
        // A number that may be larger than a JSON reader's integers.
        json["states"] = table.states.ToString();
        json["complete"] = table.complete;
        json["troubles"] = JsonList(table.troubles);
        root["tables"].append(json);
    }
    if (!part.isNull()) {
        root["part"] = part;
    }
    return vtv::PrettyJson(root) + "\n";
}

}  // namespace explorer
