// The processes below this one, so that none of them outlives what it was started for.
#pragma once

#include <sys/types.h>

#include <set>

namespace host {

// From here on a process below this one whose parent ends becomes this one's child: neither a
// fork() of a fork() nor a session of its own gets away.
void AdoptOrphans();

// How many processes below this one are running; one that has ended and was not waited for is none.
// Throws vtv::Error (kPlatform) when that cannot be told.
size_t RunningDescendants();

// Ends every process below this one, but those of `spare` with all that is below them. Gives up
// after some seconds, when one cannot be ended.
void EndDescendants(const std::set<pid_t>& spare = {});

}  // namespace host
