#include "table_parts.h"

#include <algorithm>
#include <cstdio>

#include "program/visible_text.h"
#include "virtual-tv/model/json_text.h"

namespace explorer {

Json::Value PartOf(const TableOptions& options, const std::vector<const Question*>& all,
                   const std::vector<Table>& tables, int code) {
    std::string names;
    for (const Question* question : all) {
        names += question->name + "\n";
    }
    Json::Value part =
        PartAsJson(options, {"table", options.names, {options.provider}}, HashOf(names));
    part["code"] = code;
    // For people, who read other words than programs do.
    part["texts"] = Json::arrayValue;
    for (const Table& table : tables) {
        part["texts"].append(TablesAsText({table}));
    }
    return part;
}

namespace {

// The questions go round among the parts.
class MergedTables {
  public:
    explicit MergedTables(const std::vector<PartFile>& parts) : tables_(Json::arrayValue) {
        ForEachPart(parts, [this](const Json::Value& root) { Read(root); });
        const std::size_t most = lists_.front().size();
        for (Json::ArrayIndex row = 0; row < most; ++row) {
            for (std::size_t part = 0; part < lists_.size(); ++part) {
                if (row < lists_[part].size()) {
                    tables_.append(lists_[part][row]);
                    text_ += texts_[part][row];
                }
            }
        }
    }

    std::string AsJson() const {
        Json::Value root;
        root["tables"] = tables_;
        return vtv::PrettyJson(root) + "\n";
    }
    const std::string& AsText() const { return text_; }
    int Code() const { return code_; }

  private:
    void Read(const Json::Value& root) {
        const Json::Value& list = ListOf(root, "tables");
        texts_.push_back(TextsOf(MemberOf(root, "part"), "texts"));
        code_ = std::max(code_, MemberOf(root["part"], "code").asInt());
        if (texts_.back().size() != list.size() ||
            (!lists_.empty() &&
             (list.size() > lists_.back().size() || list.size() + 1 < lists_.front().size()))) {
            throw std::runtime_error("a table is missing");
        }
        lists_.push_back(list);
    }

    Json::Value tables_;
    std::string text_;
    int code_ = kExitOk;
    std::vector<Json::Value> lists_;
    std::vector<std::vector<std::string>> texts_;
};

}  // namespace

int ShowMergedTables(const CommonOptions& options, const std::vector<PartFile>& parts) {
    const MergedTables tables(parts);
    PrintDocument(options.format == Format::kJson ? tables.AsJson() : tables.AsText(),
                  options.format);
    for (const PartFile& part : parts) {
        if (part.root["part"]["code"].asInt() == kExitTrouble) {
            std::fprintf(stderr, "vtv explore merge: %s: was not done to its end\n",
                         program::OneLine(part.file).c_str());
        }
    }
    return tables.Code();
}

}  // namespace explorer
