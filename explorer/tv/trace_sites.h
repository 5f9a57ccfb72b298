// The call sites that a provider has registered with the trace storage.
#pragma once

#include <string>
#include <vector>

namespace explorer {

// The first site's id is the next number. No provider counts that far, so that an id is told from
// any other number in its memory.
inline constexpr int BEFORE_SITES = 0x51730000;

// A site in words; equal ones are one for as long as the process lives.
const std::string* KnownSite(const std::string& site);
// In the order of their ids.
const std::vector<const std::string*>& TraceSites();
// These are known from now on, and nothing has been traced.
void SetTraceSites(const std::vector<const std::string*>& known);
// Whether a site was registered or an event begun since.
bool HasTraced();

}  // namespace explorer
