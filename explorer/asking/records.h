// How the records of two providers are made, so that what they tell is compared.
#pragma once

namespace explorer {

struct RecordOptions {
    bool logs = true;    // log messages and trace events
    bool lines = false;  // the files and lines of log records, too
    bool reads = true;   // which inputs are read, and in which order
};
// On the TV of this process.
void UseRecords(const RecordOptions& options);

}  // namespace explorer
