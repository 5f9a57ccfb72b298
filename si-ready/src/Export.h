// What the library exports is listed in exports.txt; everything else is hidden.
#pragma once

#define SI_EXPORT __attribute__((visibility("default")))
