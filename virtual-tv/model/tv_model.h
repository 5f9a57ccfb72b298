// TV models: read and checked.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "assistants.h"
#include "values.h"

namespace vtv {

struct Package {
    std::string appId;
    std::string name;     // for people; may be empty
    std::string command;  // what to run in place of the simulated application; usually empty
    // A value that is absent is a metadata item without a value.
    std::map<std::string, std::optional<std::string>> metadata;
};

struct Voice {
    std::string language;  // "en_US"
    int type = 0;          // 0 unspecified, 1 male, 2 female
};

// A TV model as data: what a new TV starts from. docs/virtual-tv.md describes the file.
struct Model {
    std::string file;                       // where it was read from
    std::string name;                       // the file's name without ".toml"
    std::string title;                      // one line for people
    std::string description;                // why this model exists; may be empty
    std::map<std::string, Value> features;  // by full feature key
    std::vector<Assistant> assistants;      // as the initial policy lists them
    std::map<std::string, Value> settings;  // initial values, by settings key
    std::vector<std::string> ownerFiles;    // files that exist below /home/owner, relative to it
    std::map<std::string, bool> consents;   // "tnc", "pp"
    bool signedIn = false;
    std::string accountUi;  // application id of the sign-in screen; may be empty
    Network network = Network::kConnected;
    ApplicationMode applications = ApplicationMode::kProcess;
    std::vector<Package> packages;
    std::optional<std::vector<Voice>> voices;  // absent: those of the installed speech engine
    std::string speechOutput;                  // "sound", "file" or "none"
};

// Reads and checks a model. The text of the error has the file, the line and what to write instead.
Model LoadModel(const std::string& file);
// The same of a text; `file` names it.
Model ParseModel(const std::string& text, const std::string& file);
// The file of a model: a path, or the name of a model that comes with the virtual TV. Throws
// kNoSuch, and what ModelFiles() does.
std::string FindModel(const std::string& nameOrFile);
// The files of the models that come with the virtual TV, sorted by name. Throws kPlatform.
std::vector<std::string> ModelFiles();

// Catalogues and models: $VTV_DATA, else found from where the program or the library lies.
std::string DataDir();
// The folder of what comes with the virtual TV, whatever $VTV_DATA says.
std::string InstalledDataDir();
std::filesystem::path FolderOfTheProgram();  // that runs
// A program of the virtual TV's, by name.
std::string FindProgram(const std::string& name);

}  // namespace vtv
