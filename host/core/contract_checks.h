// Checks of a provider against the host contract (abi/si_provider.h). A provider that breaks it may
// crash, hang or damage memory: run each check in a process of its own (supervised.h), with a TV
// that is on, and a temporary folder of its own in TMPDIR.
#pragma once

#include <string>
#include <vector>

namespace host {

struct ContractCheck {
    const char* name;         // "unknown-keys-are-hidden"
    const char* description;  // one sentence
    // Ends with FailTask(), or throws ProviderError for a library that cannot be loaded.
    void (*run)(const std::string& providerFile);
};

const std::vector<ContractCheck>& ContractChecks();

}  // namespace host
