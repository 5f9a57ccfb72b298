// What a TV may be like, and how it changes, told by the fuzzer's bytes.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <string>

namespace fuzz {

// Mostly a list of assistants as a TV has it, with members left out, of other types, or twice; else
// any text.
std::string PolicyText(FuzzedDataProvider& bytes);

// A TV on which everything is set up, so that less has to come together by chance: one that hears
// by itself, one that hears through another device, or one for China that nobody has set up yet.
enum Ready : int { NOT_READY, FAR_FIELD, NEW_IN_CHINA, PASS_THROUGH };
void MakeReady(Ready which);

// One setting, feature, service, file, translation or voice of the recording platform.
void ChangeTv(FuzzedDataProvider& bytes);

}  // namespace fuzz
