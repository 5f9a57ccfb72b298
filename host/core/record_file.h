// The file that a recording is written to.
#pragma once

#include <string>

namespace host {

// Open, and nobody else's until it is closed. One that was made for this and got nothing goes away.
// Throws kUsage for a file that vtv did not write: nothing is ever added to it.
class RecordFile {
  public:
    // The first line of every recording.
    static constexpr char kMark[] = "# A recording: vtv --record may add to it.\n";

    // Of the file that somebody named, from wherever. Throws kUsage for what is none.
    static std::string PathOf(const std::string& file);

    explicit RecordFile(const std::string& file);
    ~RecordFile();
    RecordFile(const RecordFile&) = delete;
    RecordFile& operator=(const RecordFile&) = delete;

    const std::string& Name() const { return file_; }
    const std::string& Text() const { return text_; }

    // All of it or nothing.
    void Append(const std::string& text);

  private:
    void Open();
    void ReadMarked();
    void Reserve();
    void Close();

    std::string file_;
    std::string text_;
    bool isNew_ = false;
    int fd_ = -1;
};

}  // namespace host
