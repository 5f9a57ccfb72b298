// A model of anybody's is read, or refused with a text that names the file. What is read can be
// printed as a model again.
#include <cstdint>
#include <string>

#include "promises.h"
#include "virtual-tv/model/tv_model.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    fuzz::ReadsOrRefuses("model.toml", [&] { vtv::ParseModel(text, "model.toml"); });
    return 0;
}
