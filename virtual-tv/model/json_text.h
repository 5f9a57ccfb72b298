// JSON: as a TV reads and writes it, and as people do, who are told the file, line and column.
#pragma once

#include <json/json.h>

#include <string>

namespace vtv {

// As a TV reads it, which takes comments and anything behind the document. False for what is none.
bool ParseJson(const std::string& text, Json::Value* root);
// On one line.
std::string CompactJson(const Json::Value& json);
// For people; without a newline at the end.
std::string PrettyJson(const Json::Value& json);

// A document that somebody wrote.
class JsonText {
  public:
    // Never throws for what is wrong with the text: see Problem(). Stricter than a TV, which takes
    // comments, trailing commas and anything behind the document.
    JsonText(std::string file, std::string text);

    // Why the text is not JSON, with its place; empty when it is.
    const std::string& Problem() const { return problem_; }
    int ProblemLine() const { return problemLine_; }
    const Json::Value& Root() const { return root_; }
    // "FILE:LINE:COLUMN: what". The part is one of Root(), or a copy of one.
    std::string At(const Json::Value& part, const std::string& what) const;
    int LineOf(const Json::Value& part) const;

  private:
    void NoteProblem(const std::string& complaints);
    std::string Before(const Json::Value& part) const;

    std::string file_;
    std::string text_;
    std::string problem_;
    int problemLine_ = 1;
    Json::Value root_;
};

}  // namespace vtv
