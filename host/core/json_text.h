// A JSON document that somebody wrote: every complaint about it has the file, line and column.
#pragma once

#include <json/json.h>

#include <string>

namespace host {

class JsonText {
  public:
    // Never throws for what is wrong with the text: see Problem(). Stricter than a TV, which takes
    // comments, trailing commas and anything behind the document.
    JsonText(std::string file, std::string text);

    // Why the text is not JSON, with its place; empty when it is.
    const std::string& Problem() const { return problem_; }
    const Json::Value& Root() const { return root_; }
    // "FILE:LINE:COLUMN: what". The part is one of Root(), or a copy of one.
    std::string At(const Json::Value& part, const std::string& what) const;

  private:
    std::string ProblemOf(const std::string& complaints) const;

    std::string file_;
    std::string text_;
    std::string problem_;
    Json::Value root_;
};

}  // namespace host
