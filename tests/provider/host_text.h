// Owns a text that the provider handed to the host.
#pragma once

#include <cstdlib>
#include <string>

class HostText {
  public:
    HostText() = default;
    HostText(const HostText&) = delete;
    HostText& operator=(const HostText&) = delete;
    ~HostText() { std::free(text_); }
    char** Out() { return &text_; }
    bool IsNull() const { return text_ == nullptr; }
    std::string Text() const { return text_ != nullptr ? text_ : "(null)"; }

  private:
    char* text_ = nullptr;
};
