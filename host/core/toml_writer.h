// The one writer of TOML: for models and scenarios that are made from what others have written.
#pragma once

#include <toml++/toml.h>

#include <string>

namespace host {

// The document as text that ends with a newline. It is read back and compared before it is
// returned: whatever stands in a text, it stays a text. Throws std::runtime_error, with the key,
// for what TOML cannot hold: a text or key that is no UTF-8.
std::string ToToml(const toml::table& document);

}  // namespace host
