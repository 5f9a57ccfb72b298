// Every pointer that a host may leave out, alone and with the others.
#pragma once

#include "subject.h"

namespace explorer {

struct Question;

// All slots with the question's key, which may be null as well.
void AskNulls(const Subject& subject, const Question& question);
// Those that have no key.
void AskNullsOfTheTable(const Subject& subject, const Question& question);

}  // namespace explorer
