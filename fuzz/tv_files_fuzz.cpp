// One file of a TV's folder holds anything: whoever uses the TV is told what is wrong with it, and
// everything else of the TV can be used. The first byte chooses the file.
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "promises.h"
#include "virtual-tv/virtual_tv.h"

namespace fs = std::filesystem;

namespace {

const char* const FILES[] = {"settings/db%2Fany",
                             "settings/.store",
                             "memory/memory%2Fany",
                             "memory/.boot",
                             "state/consent%2Ftnc",
                             "state/network",
                             "log/tv.log",
                             "log/tv.log.1",
                             "trace/events",
                             "launches.jsonl",
                             "apps/2.json",
                             "faults/vconf_get_bool",
                             "switches",
                             "owner/share/.voice/any",
                             "tv.toml",
                             "log/applications.log",
                             "trace/events.1",
                             "launches.jsonl.1",
                             "state/applications",
                             "state/account%2Fsigned_in",
                             "state/feature%2Fany",
                             "faults/.store",
                             "speech/last.wav"};

// A TV that lives as long as the fuzzer does, and its files as they were.
class Television {
  public:
    Television() {
        umask(022);  // what others could write into is no TV
        fs::create_directories(folder_);
        setenv("VTV_HOME", folder_.c_str(), 1);
        vtv::Tv::Create(dir_, "title = \"Any\"\n", "any.toml", [](vtv::Tv& tv) {
            tv.Set("db/other", 7);
            tv.SetConsent("pp", true);
        });
        fs::copy(dir_, asItWas_, fs::copy_options::recursive);
    }
    Television(const Television&) = delete;
    Television& operator=(const Television&) = delete;
    ~Television() { fs::remove_all(folder_); }

    const fs::path& Dir() const { return dir_; }
    void Write(const std::string& name, const std::string& text) const {
        fs::create_directories((dir_ / name).parent_path());
        std::ofstream(dir_ / name, std::ios::binary) << text;
    }
    void PutBack() const {
        fs::remove_all(dir_);
        fs::copy(asItWas_, dir_, fs::copy_options::recursive);
    }

  private:
    fs::path folder_ = fs::path("/dev/shm") / ("tv-files-fuzz." + std::to_string(getpid()));
    fs::path dir_ = folder_ / "tv";
    fs::path asItWas_ = folder_ / "as-it-was";
};

void ReadEverything(const vtv::Tv& tv) {
    tv.Problems();
    tv.Settings();
    tv.State();
    tv.ReadLog();
    tv.ReadTrace();
    tv.ExportTrace();
    tv.Launches();
    tv.RunningApplications();
    tv.Faults();
    tv.OwnerFiles();
    tv.Features();
    tv.Online();
    tv.GetNetwork();
    tv.Applications();
    tv.SignedIn();
    tv.TakeSnapshot();
    tv.TraceEnabled();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const Television television;
    if (size == 0) {
        return 0;
    }
    const std::string name = FILES[data[0] % std::size(FILES)];
    television.Write(name, std::string(reinterpret_cast<const char*>(data + 1), size - 1));
    fuzz::ReadsOrRefuses(name, [&] {
        const vtv::Tv tv(television.Dir());
        fuzz::ReadsOrRefuses(name, [&] { ReadEverything(tv); });
        if (name != "settings/.store" && name != "tv.toml") {
            fuzz::Reads([&] {
                fuzz::Require(tv.Get("db/other") == vtv::Value(7),
                              "a damaged file costs nothing but itself");
            });
        }
    });
    television.PutBack();
    return 0;
}
