// Files of a TV's folder that are only added to: its log, its trace, its launches.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace vtv {

// One that is full is set aside as FILE.1, the one before as FILE.2, and so on; the oldest goes.
// Whoever finds it full does that, and others may still add to what was set aside.
struct GrowingFile {
    static constexpr char kLock[] = "log/.lock";  // held by who sets aside, or reads all of them

    const char* name;  // below the TV's folder
    off_t maxSize;
    int oldFiles;

    // Oldest first; the last is the name itself.
    std::vector<std::string> Names() const;
    // As OpenTvFile(), to add at its end; the file is begun anew when it is full. It grows on where
    // nothing can be set aside.
    int OpenToAdd(const std::string& tvDir) const;
    // Removes all of them, whatever they hold, and follows no link. Throws kPlatform.
    void Remove(const std::string& tvDir) const;

  private:
    void SetAside(const std::string& tvDir) const;
};

// Keeps it open for as long as it has its name, so that another one is known for another.
class GrowingFileWriter {
  public:
    GrowingFileWriter(const GrowingFile& file, const std::string& tvDir)
        : file_(file), tvDir_(tvDir) {}
    ~GrowingFileWriter();
    GrowingFileWriter(const GrowingFileWriter&) = delete;
    GrowingFileWriter& operator=(const GrowingFileWriter&) = delete;

    // To add at its end, in one write; -1, and errno tells why.
    int Descriptor();
    // Whether there was another one, or none, before the last Descriptor().
    bool IsAnother() const { return isAnother_; }

  private:
    bool IsCurrent() const;

    const GrowingFile& file_;
    std::string tvDir_;
    int fd_ = -1;
    bool isAnother_ = false;
};

inline constexpr GrowingFile kLogFile = {"log/tv.log", off_t{1024} * 1024, 3};
inline constexpr GrowingFile kApplicationsLog = {"log/applications.log", off_t{1024} * 1024, 1};
inline constexpr GrowingFile kTraceFile = {"trace/events", off_t{4} * 1024 * 1024, 3};
inline constexpr GrowingFile kLaunchesFile = {"launches.jsonl", off_t{1024} * 1024, 1};

}  // namespace vtv
