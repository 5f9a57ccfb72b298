// JSON as the tests read it.
#pragma once

#include <json/json.h>

#include <utility>

// A part of a document that nobody has named is a copy, so that a loop over Parse(text)["items"]
// has items to loop over: with the library's own type it would loop over memory that was freed.
class JsonDocument : public Json::Value {
  public:
    JsonDocument() = default;
    JsonDocument(Json::Value value) : Json::Value(std::move(value)) {}

    template <typename Key>
    const Json::Value& operator[](const Key& key) const& {
        return Json::Value::operator[](key);
    }
    template <typename Key>
    JsonDocument operator[](const Key& key) && {
        return Json::Value(std::as_const(*this).Json::Value::operator[](key));
    }
};
