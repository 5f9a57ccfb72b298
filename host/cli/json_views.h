// What the verbs print with --json. docs/schemas/ describes each document.
#pragma once

#include <json/json.h>

#include "host/core/explain.h"
#include "host/core/scenario.h"
#include "host/page/page.h"
#include "host/page/viewer.h"
#include "virtual-tv/virtual_tv.h"

namespace cli {

Json::Value ToJson(const host::Box& box);
Json::Value ToJson(const host::ItemView& view, bool reachable);
Json::Value ToJson(const host::Page& page, const host::Provider& provider, const vtv::Tv& tv);
Json::Value ToJson(const host::PageChange& change);
Json::Value ToJson(const host::PressResult& result, const host::Item& item);
Json::Value ToJson(const host::Explanation& explanation, const vtv::Tv& tv);
Json::Value ToJson(const vtv::Launch& launch);
Json::Value ToJson(const vtv::RunningApplication& running);
Json::Value ToJson(const vtv::LogRecord& record);
Json::Value ToJson(const vtv::TraceEvent& event);
Json::Value ToJson(const host::Scenario& scenario);  // what its check says
Json::Value ToJson(const host::ScenarioResult& result);

}  // namespace cli
