// What a host, and other programs of the TV, ask of the provider, chosen by the fuzzer's bytes; and
// what every answer must be like.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include "abi/si_provider.h"

namespace fuzz {

// Everything that a host asks to show one item.
void ShowItem(FuzzedDataProvider& bytes, const SIProviderTable& page);

// One slot of the table, or one check. Where memory has run out, only the slots that say so may
// throw.
void AskAsHost(FuzzedDataProvider& bytes, const SIProviderTable& page);

// One of the exported C++ functions. std::bad_alloc may leave it.
void AskAsProgram(FuzzedDataProvider& bytes);

}  // namespace fuzz
