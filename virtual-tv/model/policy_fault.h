// What is wrong with an assistant policy, before it is published.
#pragma once

#include <string>

#include "json_text.h"

namespace vtv {

// The first fault of a policy document, with its place: "FILE:LINE:COLUMN: what is wrong". Empty
// when there is none.
std::string FaultOf(const JsonText& document);

}  // namespace vtv
