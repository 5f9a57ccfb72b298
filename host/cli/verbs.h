// One function a family of verbs: each adds its verbs to the command line.
#pragma once

#include "cli.h"

namespace cli {

void AddTvVerbs(CLI::App& app, Common& common);       // new, list
void AddShow(CLI::App& app, Common& common);          // show
void AddExplain(CLI::App& app, Common& common);       // explain
void AddPressVerbs(CLI::App& app, Common& common);    // press, choose
void AddSettingVerbs(CLI::App& app, Common& common);  // get, set, unset, watch, search
void AddLog(CLI::App& app, Common& common);           // log

}  // namespace cli
