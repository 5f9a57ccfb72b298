// Loaded before the JSON library, it gives that library's exceptions other texts.
#include <json/json.h>

namespace Json {

[[noreturn]] __attribute__((visibility("default"))) void throwRuntimeError(const String&) {
    throw RuntimeError("another text");
}

}  // namespace Json
