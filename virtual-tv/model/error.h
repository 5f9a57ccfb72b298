// What went wrong, for people.
#pragma once

#include <stdexcept>
#include <string>

#define VTV_EXPORT __attribute__((visibility("default")))

namespace vtv {

// The numbers are the exit codes of the command line.
enum class ErrorKind {
    kNo = 1,        // the answer is no: an application that cannot do its work now
    kUsage = 2,     // what was asked for makes no sense: a broken model, a key that is no key, ...
    kNoSuch = 3,    // no such TV, model, key, application, ...
    kPlatform = 4,  // the machine failed: a full disk, a missing permission, a damaged file, ...
};

// what() is one or more sentences for people: what was wrong, where (file and line, or key), and
// what to do. It has no trailing newline.
class VTV_EXPORT Error : public std::runtime_error {
  public:
    Error(ErrorKind kind, const std::string& text)
        : std::runtime_error(WithoutNul(text)), kind_(kind) {}
    ~Error() override;

    ErrorKind kind() const { return kind_; }

  private:
    // Text of others may have one, where what() would end.
    static std::string WithoutNul(const std::string& text);

    ErrorKind kind_;
};

}  // namespace vtv
