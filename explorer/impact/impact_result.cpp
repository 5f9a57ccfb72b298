#include "impact_result.h"

#include <algorithm>

#include "explorer/tables/table.h"
#include "virtual-tv/model/json_text.h"

namespace explorer {

namespace {

// Models that the policy changes in the same way.
struct Group {
    std::vector<std::string> models;
    const ModelImpact* impact = nullptr;
};

std::vector<Group> GroupsOf(const std::vector<ModelImpact>& impacts) {
    std::vector<Group> groups;
    for (const ModelImpact& impact : impacts) {
        const auto same = std::find_if(groups.begin(), groups.end(), [&](const Group& group) {
            return group.impact->changes == impact.changes;
        });
        if (same != groups.end()) {
            same->models.push_back(impact.model);
        } else {
            groups.push_back({{impact.model}, &impact});
        }
    }
    return groups;
}

// "voice-assistant vanishes", "users: the user's assistant is no longer offered".
std::string Sentence(const Change& change) {
    return change.item + (change.item == "users" ? ": " : " ") + change.what;
}

}  // namespace

std::vector<program::Finding> FindingsOf(const std::vector<ModelImpact>& impacts,
                                         const std::string& file) {
    std::vector<program::Finding> findings;
    for (const Group& group : GroupsOf(impacts)) {
        for (const Change& change : group.impact->changes) {
            findings.push_back({change.item, "The new policy leaves " + change.item + " as it is.",
                                Join(group.models) + ": " + Sentence(change) + "\nwhen " +
                                    Join(change.when, "\nor "),
                                file, 1, program::Severity::kWarning});
        }
    }
    return findings;
}

std::string AsText(const std::vector<ModelImpact>& impacts) {
    std::string text;
    for (const Group& group : GroupsOf(impacts)) {
        text += (text.empty() ? "" : "\n") + Join(group.models) + "\n";
        for (const Change& change : group.impact->changes) {
            text += "  " + Sentence(change) + "\n";
            for (const std::string& when : change.when) {
                text += "      when " + when + "\n";
            }
        }
        text += group.impact->changes.empty() ? "  nothing changes\n" : "";
    }
    return text;
}

std::string AsJson(const std::vector<ModelImpact>& impacts) {
    Json::Value root;
    root["models"] = Json::arrayValue;
    for (const ModelImpact& impact : impacts) {
        Json::Value json;
        json["model"] = impact.model;
        json["changes"] = Json::arrayValue;
        for (const Change& change : impact.changes) {
            Json::Value one;
            one["item"] = change.item;
            one["change"] = change.what;
            one["paths"] = Json::UInt64{change.paths};
            one["when"] = JsonList(change.when);
            json["changes"].append(one);
        }
        root["models"].append(json);
    }
    return vtv::PrettyJson(root) + "\n";
}

std::string AsHtml(const std::vector<ModelImpact>& impacts) {
    std::string html =
        "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"><title>What the new "
        "policy "
        "changes</title><style>body{font:15px/1.45 system-ui,sans-serif;margin:2em;max-width:70em}"
        "td,th{border-top:1px solid #ccc;padding:.3em .6em;text-align:left;vertical-align:top}"
        "table{border-collapse:collapse;width:100%}</style></head><body><h1>What the new policy "
        "changes</h1>\n";
    for (const Group& group : GroupsOf(impacts)) {
        html += "<h2>" + EscapeHtml(Join(group.models)) + "</h2>\n";
        const ModelImpact& impact = *group.impact;
        if (impact.changes.empty()) {
            html += "<p>Nothing changes.</p>\n";
            continue;
        }
        html += "<table><tr><th>Item</th><th>Change</th><th>When</th></tr>\n";
        for (const Change& change : impact.changes) {
            html += "<tr><td>" + EscapeHtml(change.item) + "</td><td>" + EscapeHtml(change.what) +
                    "</td><td>";
            for (const std::string& when : change.when) {
                html += "<div>" + EscapeHtml(when) + "</div>";
            }
            html += "</td></tr>\n";
        }
        html += "</table>\n";
    }
    return html + "</body></html>\n";
}

}  // namespace explorer
