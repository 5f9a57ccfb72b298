// A policy of anybody's is read as a TV reads it, described, and changed for experiments.
#include <cstdint>
#include <string>

#include "promises.h"
#include "virtual-tv/model/json_text.h"
#include "virtual-tv/model/policy.h"
#include "virtual-tv/model/policy_changes.h"
#include "virtual-tv/model/policy_fault.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    fuzz::Reads([&] {
        const vtv::PolicyReading reading = vtv::ReadPolicy(text);
        vtv::PolicyEntries(text);
        fuzz::Require(!vtv::DescribePolicy(text).empty(), "every policy can be described");
        vtv::PolicyChanges(text, {});
        vtv::FindFault(vtv::JsonText("policy.json", text));
        const std::string written = vtv::WritePolicy(reading.assistants);
        fuzz::Require(vtv::WritePolicy(vtv::ReadPolicy(written).assistants) == written,
                      "a policy that was written reads as it was meant");
    });
    return 0;
}
