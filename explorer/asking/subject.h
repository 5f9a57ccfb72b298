// A provider library under exploration: loaded bare, so that asking it costs nothing but the
// answer.
#pragma once

#include <list>
#include <stdexcept>
#include <string>

#include "abi/si_provider.h"
#include "explorer/tv/inputs.h"

namespace explorer {

// A provider that cannot be loaded. what() is for people.
class SubjectError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Whether the file can be loaded as a provider on this platform, tried out in a process of its own.
// Throws SubjectError with what is wrong.
void CheckSubject(const std::string& file);

class Subject {
  public:
    // Loads the library, creates the provider on a TV whose policy is the first that was published,
    // and publishes the others. Throws SubjectError.
    Subject(const std::string& file, const Policy& policy);
    // Deletes the provider and unloads the library.
    ~Subject();
    Subject(const Subject&) = delete;
    Subject& operator=(const Subject&) = delete;

    // Publishes another document through the provider's own watch.
    void Publish(const std::string& document);

    const SIProviderTable& Table() const { return *table_; }
    // Null when the library does not export it.
    void* Symbol(const char* mangled) const;

    int (*checkVisible)(const char*, int) = nullptr;
    int (*checkEnabled)(const char*, int) = nullptr;
    // The library's one cache that fills by itself, emptied before each question; null without it.
    std::list<std::string>* speechLanguages = nullptr;

    // What create_provider and the publications did, as a record of the TV.
    const std::string& StartRecord() const { return startRecord_; }
    // Deletes the provider before its time: the record of that. Nothing may be asked afterwards.
    std::string Delete();

  private:
    void* Need(const char* name) const;

    std::string file_;
    void* library_ = nullptr;
    void** slots_ = nullptr;
    const SIProviderTable* table_ = nullptr;
    int (*delete_)(void***) = nullptr;
    std::string startRecord_;
};

}  // namespace explorer
