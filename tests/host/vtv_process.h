// Runs the built vtv as a user does, with a folder of its own for its TVs.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "tests/json_document.h"

struct Output {
    int code = -1;  // exit code; 128 and more after a signal
    std::string out;
    std::string err;
};

class VtvTest : public testing::Test {
  protected:
    VtvTest();
    ~VtvTest() override;

    // Runs it to its end, with what is given on the standard input.
    Output Vtv(const std::vector<std::string>& arguments, const std::string& input = "");
    // The same, where it must end with 0.
    std::string Ok(const std::vector<std::string>& arguments, const std::string& input = "");
    // Runs one of the programs that lie beside vtv, with a file as its standard output, or with
    // none when no file is named.
    Output RunInto(const std::string& file, const std::string& program,
                   const std::vector<std::string>& arguments);
    // Runs one of them on a terminal; what it prints on both streams is in `out`.
    Output OnTerminal(const std::string& program, const std::vector<std::string>& arguments);
    JsonDocument OkJson(const std::vector<std::string>& arguments);
    // One item of vtv show --json.
    JsonDocument Item(const std::string& name, const std::vector<std::string>& more = {});

    std::string Path(const std::string& name) const { return folder_ + "/" + name; }
    void Write(const std::string& name, const std::string& text) const;
    std::string Read(const std::string& name) const;
    // Every file of a folder with its content, to see that nothing was touched.
    std::map<std::string, std::string> Contents(const std::string& name) const;

    std::map<std::string, std::string> environment;
    std::string folder_;
};

// A vtv that goes on running, such as one that watches.
class RunningVtv {
  public:
    RunningVtv(const std::map<std::string, std::string>& environment,
               const std::vector<std::string>& arguments);
    ~RunningVtv();
    RunningVtv(const RunningVtv&) = delete;
    RunningVtv& operator=(const RunningVtv&) = delete;

    // Waits until the standard output holds the text; false after ten seconds or at its end.
    bool WaitFor(const std::string& text);
    bool WaitForError(const std::string& text);
    // Sends a signal and waits for the end.
    Output Interrupt(int signal = 2);
    // Waits for the end.
    Output End();
    int Pid() const { return pid_; }
    const std::string& Text() const { return output_.out; }

  private:
    int pid_ = -1;
    int out_ = -1;
    int err_ = -1;
    Output output_;
};
