// One function a family of verbs: each adds its verbs to the command line.
#pragma once

#include "cli.h"

namespace cli {

void AddShow(CLI::App& app, Common& common);          // show
void AddPressVerbs(CLI::App& app, Common& common);    // press, choose
void AddExplain(CLI::App& app, Common& common);       // explain
void AddTvVerbs(CLI::App& app, Common& common);       // new, list
void AddSettingVerbs(CLI::App& app, Common& common);  // get, set, unset, watch, search
void AddPolicy(CLI::App& app, Common& common);        // policy
void AddApp(CLI::App& app, Common& common);           // app
// feature, language, voice-guide, account, network, consent, file, power-cycle
void AddStateVerbs(CLI::App& app, Common& common);
void AddTransferVerbs(CLI::App& app,
                      Common& common);              // dump, load, import, snapshot, restore, diff
void AddRun(CLI::App& app, Common& common);         // run
void AddExplore(CLI::App& app, Common& common);     // explore, impact
void AddValidate(CLI::App& app, Common& common);    // validate
void AddLog(CLI::App& app, Common& common);         // log
void AddTraceVerbs(CLI::App& app, Common& common);  // trace, fault

// Prints what may stand in place of the last word, for the shells (vtv __complete WORD...).
void Complete(const CLI::App& app, std::vector<std::string> line);

}  // namespace cli
