// Who has written a value: noted beside it by its writer, where the file system keeps such notes.
// The value's file is the same with it and without.
#pragma once

namespace vtv {

// Notes this process as the writer of an open file. What cannot be noted is left out.
void SignWriting(int fd);

}  // namespace vtv
