// A platform whose every answer is taken from the fuzzer's input.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <map>
#include <string>

#include "platform/settings_store.h"

// The answers of one run. A string is chosen once a key and stays until it is written.
extern FuzzedDataProvider* answers;
extern std::map<std::string, std::string> strings;
extern vconf_callback_fn policyCallback;
