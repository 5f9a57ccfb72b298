#include <json/json.h>

#include "table.h"

namespace explorer {

namespace {

Json::Value ToJson(const std::vector<std::string>& texts) {
    Json::Value array(Json::arrayValue);
    for (const std::string& text : texts) {
        array.append(text);
    }
    return array;
}

Json::Value ToJson(const TableRow& row) {
    Json::Value json;
    json["conditions"] = Json::arrayValue;
    for (const Condition& condition : row.conditions) {
        Json::Value cell;
        cell["input"] = condition.column->name;
        cell["source"] = condition.column->source;
        cell["values"] = ToJson(condition.values);
        json["conditions"].append(cell);
    }
    json["outcome"] = ToJson(row.outcome);
    return json;
}

}  // namespace

std::string TablesAsJson(const std::vector<Table>& tables) {
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
        json["troubles"] = ToJson(table.troubles);
        root["tables"].append(json);
    }
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "  ";
    builder["emitUTF8"] = true;
    return Json::writeString(builder, root) + "\n";
}

}  // namespace explorer
