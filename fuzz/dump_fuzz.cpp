// A dump or a snapshot of anybody's is read, or refused with its place; what was read is written as
// a document that says the same.
#include <cstdint>
#include <string>

#include "host/core/dump.h"
#include "promises.h"
#include "virtual-tv/model/tv_model.h"

namespace {

const char* const FILE_NAME = "dump.json";

template <typename Document>
void ReadAgain(const Document& document, Document (*parse)(const vtv::JsonText&)) {
    const std::string text = vtv::PrettyJson(host::ToJson(document));
    const Document again = parse(vtv::JsonText("again.json", text));
    fuzz::Require(vtv::PrettyJson(host::ToJson(again)) == text, "a document says the same again");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const vtv::JsonText document(FILE_NAME, std::string(reinterpret_cast<const char*>(data), size));
    if (!document.Problem().empty()) {
        return 0;
    }
    fuzz::ReadsOrRefuses(FILE_NAME, [&] {
        const host::Dump dump = host::ParseDump(document);
        fuzz::Reads([&] { ReadAgain(dump, host::ParseDump); });
        std::string model;
        fuzz::ReadsOrRefuses("the dump", [&] { model = host::ModelText(dump); });
        fuzz::Reads([&] { vtv::ParseModel(model, "model.toml"); });
    });
    fuzz::ReadsOrRefuses(FILE_NAME, [&] {
        const vtv::Snapshot snapshot = host::ParseSnapshot(document);
        fuzz::Reads([&] { ReadAgain(snapshot, host::ParseSnapshot); });
    });
    return 0;
}
