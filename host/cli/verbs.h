// One function a family of verbs: each adds its verbs to the command line.
#pragma once

#include "cli.h"

namespace cli {

void AddShow(CLI::App& app, Common& common);          // show
void AddWindowVerbs(CLI::App& app, Common& common);   // window, picture, gallery
void AddPressVerbs(CLI::App& app, Common& common);    // press, choose
void AddExplain(CLI::App& app, Common& common);       // explain
void AddTvVerbs(CLI::App& app, Common& common);       // new, list, copy, rename, remove
void AddSettingVerbs(CLI::App& app, Common& common);  // get, set, unset, reset
void AddKeyVerbs(CLI::App& app, Common& common);      // keys, describe, search
void AddWatch(CLI::App& app, Common& common);         // watch
void AddWait(CLI::App& app, Common& common);          // wait
void AddPolicy(CLI::App& app, Common& common);        // policy
void AddApp(CLI::App& app, Common& common);           // app
// feature, language, voice-guide, account, network, consent, file, power-cycle
void AddStateVerbs(CLI::App& app, Common& common);
void AddTexts(CLI::App& app, Common& common);  // texts
void AddTransferVerbs(CLI::App& app,
                      Common& common);              // dump, load, import, snapshot, restore, diff
void AddRecord(CLI::App& app, Common& common);      // record
void AddRun(CLI::App& app, Common& common);         // run
void AddExplore(CLI::App& app, Common& common);     // explore, impact
void AddValidate(CLI::App& app, Common& common);    // validate
void AddLog(CLI::App& app, Common& common);         // log
void AddTraceVerbs(CLI::App& app, Common& common);  // trace, fault

// Prints what may stand in place of the last word, for the shells (vtv __complete WORD...).
void Complete(const CLI::App& app, const std::vector<std::string>& line);
// The same for the words behind "vtv explore", by the program that knows them; false without it.
bool CompleteExploration(std::vector<std::string> words);

}  // namespace cli
