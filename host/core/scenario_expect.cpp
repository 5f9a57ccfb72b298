#include "scenario_expect.h"

#include <libintl.h>

#include <algorithm>

namespace host {

namespace {

std::string Quoted(const std::string& text) {
    return "\"" + text + "\"";
}

std::string List(const std::vector<std::string>& texts) {
    std::string list;
    for (const std::string& text : texts) {
        list += (list.empty() ? "" : ", ") + Quoted(text);
    }
    return "[" + list + "]";
}

std::string NodeText(const toml::node& node) {
    if (const auto* text = node.as_string()) {
        return text->get();
    }
    if (const auto* number = node.as_integer()) {
        return std::to_string(number->get());
    }
    if (const auto* flag = node.as_boolean()) {
        return flag->get() ? "true" : "false";
    }
    return "?";
}

std::vector<std::string> NodeTexts(const toml::node& node) {
    std::vector<std::string> texts;
    if (const toml::array* array = node.as_array()) {
        for (const toml::node& one : *array) {
            texts.push_back(NodeText(one));
        }
    } else {
        texts.push_back(NodeText(node));
    }
    return texts;
}

// A text that is told by its ids as the provider shows it: "TITLE_ID", "ID_WITH_A_NAME Alexa".
std::string InWords(const std::string& ids) {
    const size_t end = ids.find_first_of(" \n");
    const std::string word = ids.substr(0, end);
    std::string text = word.empty() ? "" : dgettext("si-ready", word.c_str());
    if (end == std::string::npos) {
        return text;
    }
    const std::string rest = InWords(ids.substr(end + 1));
    const size_t name = text.find("<<A>>");
    return name != std::string::npos ? text.replace(name, 5, rest) : text + ids[end] + rest;
}

std::vector<std::string> InWords(std::vector<std::string> texts) {
    for (std::string& text : texts) {
        text = InWords(text);
    }
    return texts;
}

std::vector<std::string> TextsOf(const std::optional<Box>& box) {
    std::vector<std::string> texts;
    if (box) {
        texts = {box->title, box->message};
        texts.insert(texts.end(), box->buttons.begin(), box->buttons.end());
    }
    return texts;
}

std::vector<std::string> TextsOf(const std::vector<Choice>& choices) {
    std::vector<std::string> texts;
    for (const Choice& choice : choices) {
        texts.push_back(std::to_string(choice.value) + ": " + choice.text);
    }
    return texts;
}

class Judge {
  public:
    Judge(const std::string& file, const StepOutcome& outcome, const vtv::Tv& tv)
        : file_(file), outcome_(outcome), tv_(tv) {}

    std::vector<std::string> Unmet(const toml::table& step) {
        const toml::node* node = step.get("expect");
        static const toml::table kNothing;
        const toml::table& expect = node != nullptr ? *node->as_table() : kNothing;
        CheckRefusal(step, expect);
        for (const auto& [key, wanted] : expect) {
            Check(std::string(key.str()), wanted);
        }
        return failures_;
    }

  private:
    void Fail(const toml::node& where, const std::string& text) {
        failures_.push_back(file_ + ":" + std::to_string(where.source().begin.line) + ": " + text);
    }

    void Same(const toml::node& where, const std::string& what, const std::string& wanted,
              const std::string& found) {
        if (wanted != found) {
            Fail(where, what + ": expected " + Quoted(wanted) + ", found " + Quoted(found));
        }
    }

    void SameList(const toml::node& where, const std::string& what,
                  const std::vector<std::string>& wanted, const std::vector<std::string>& found) {
        if (wanted != found) {
            Fail(where, what + ": expected " + List(wanted) + ", found " + List(found));
        }
    }

    void CheckRefusal(const toml::table& step, const toml::table& expect) {
        const bool refused = outcome_.press && !outcome_.press->done;
        const toml::node* wanted = expect.get("refused");
        if (refused && wanted == nullptr) {
            Fail(*step.get("press"), "the press was refused: " + outcome_.press->refusal);
        }
        if (wanted != nullptr && NodeText(*wanted) != (refused ? "true" : "false")) {
            Fail(*wanted, refused ? "the press was refused: " + outcome_.press->refusal
                                  : "the press was not refused");
        }
    }

    void Check(const std::string& what, const toml::node& wanted) {
        if (what == "page") {
            for (const auto& [name, item] : *wanted.as_table()) {
                CheckItem(outcome_.page[FindItem(name.str())->name], item);
            }
        } else if (what == "answer") {
            for (const auto& [name, item] : *wanted.as_table()) {
                for (const auto& [key, value] : *item.as_table()) {
                    CheckAnswer(*FindItem(name.str()), std::string(key.str()), value);
                }
            }
        } else if (what == "state") {
            for (const auto& [name, value] : *wanted.as_table()) {
                const auto state = tv_.State();
                const auto found = state.find(std::string(name.str()));
                Same(value, std::string(name.str()), NodeText(value),
                     found != state.end() ? vtv::ToText(found->second) : "(missing)");
            }
        } else if (what == "sees") {
            SameList(wanted, "the viewer sees", NodeTexts(wanted), SightKinds());
        } else if (what == "box" || what == "popup") {
            CheckBox(what, *wanted.as_table());
        } else if (what == "reason") {
            SameList(wanted, "the reason", NodeTexts(wanted), SightTexts(Sight::Kind::kReason));
        } else if (what == "launched") {
            SameList(wanted, "launched", NodeTexts(wanted), Launched(Sight::Kind::kApplication));
        } else if (what == "toast") {
            SameList(wanted, "the toasts", InWords(NodeTexts(wanted)),
                     Launched(Sight::Kind::kToast));
        } else if (what == "setting") {
            for (const auto& [key, value] : *wanted.as_table()) {
                CheckSetting(std::string(key.str()), value);
            }
        } else if (what == "running") {
            CheckRunning(wanted);
        } else if (what == "log-run") {
            CheckLogRun(wanted);
        } else if (what == "log" || what == "no-log") {
            CheckLog(wanted, what == "log");
        } else if (what == "trace") {
            CheckTrace(wanted);
        } else if (what == "file") {
            CheckFiles(wanted);
        }
    }

    void CheckItem(const ItemView& view, const toml::node& wanted) {
        const std::string name = view.item->name;
        const bool there = outcome_.page.IsReachable(*view.item);
        const std::string state = !there ? "hidden" : view.enabled ? "enabled" : "dimmed";
        if (wanted.is_string()) {
            Same(wanted, name, wanted.as_string()->get(), state);
            return;
        }
        for (const auto& [key, value] : *wanted.as_table()) {
            const std::string what(key.str());
            const std::string where = name + " " + what;
            if (what == "visible") {
                Same(value, where, NodeText(value), there ? "true" : "false");
            } else if (what == "enabled") {
                Same(value, where, NodeText(value), view.enabled ? "true" : "false");
            } else if (what == "value") {
                const bool number = value.is_integer();
                Same(value, where, NodeText(value),
                     number ? std::to_string(view.value.value_or(-1)) : view.ValueText());
            } else if (what == "title") {
                Same(value, where, NodeText(value), view.title.value_or(""));
            } else if (what == "help") {
                Same(value, where, NodeText(value), view.help.value_or(""));
            } else if (what == "reason") {
                Same(value, where, NodeText(value), view.disableText.value_or(""));
            } else if (what == "popup") {
                Same(value, where, NodeText(value),
                     view.disablePopup ? view.disablePopup->title : "");
            } else if (what == "choices") {
                std::vector<std::string> texts;
                for (const Choice& choice : view.choices) {
                    texts.push_back(choice.text);
                }
                SameList(value, where, NodeTexts(value), texts);
            }
        }
    }

    // What the provider says of the item, wherever the item lies.
    void CheckAnswer(const Item& item, const std::string& what, const toml::node& wanted) {
        const Provider& provider = *outcome_.provider;
        const std::string where = std::string("answer for ") + item.name + " " + what;
        if (what == "visible") {
            Same(wanted, where, NodeText(wanted), provider.IsVisible(item.key) ? "true" : "false");
        } else if (what == "enabled") {
            Same(wanted, where, NodeText(wanted), provider.IsEnabled(item.key) ? "true" : "false");
        } else if (what == "value") {
            const std::optional<int> value = provider.GetInt(item.key);
            Same(wanted, where, NodeText(wanted), value ? std::to_string(*value) : "none");
        } else if (what == "title") {
            Same(wanted, where, InWords(NodeText(wanted)), provider.Title(item.key).value_or(""));
        } else if (what == "help") {
            Same(wanted, where, InWords(NodeText(wanted)), provider.Help(item.key).value_or(""));
        } else if (what == "reason") {
            Same(wanted, where, InWords(NodeText(wanted)),
                 provider.DisableText(item.key).value_or(""));
        } else if (what == "choices") {
            SameList(wanted, where, InWords(NodeTexts(wanted)),
                     TextsOf(provider.Choices(item.key)));
        } else if (what == "box") {
            SameList(wanted, where, InWords(NodeTexts(wanted)),
                     TextsOf(provider.Confirmation(item.key)));
        } else if (what == "popup") {
            SameList(wanted, where, InWords(NodeTexts(wanted)),
                     TextsOf(provider.DisablePopup(item.key)));
        }
    }

    std::vector<std::string> SightKinds() const {
        std::vector<std::string> kinds;
        for (const Sight& sight : outcome_.press ? outcome_.press->sights : std::vector<Sight>()) {
            if (sight.kind != Sight::Kind::kChange) {
                kinds.emplace_back(ToText(sight.kind));
            }
        }
        return kinds;
    }

    std::vector<std::string> SightTexts(Sight::Kind kind) const {
        std::vector<std::string> texts;
        for (const Sight& sight : outcome_.press ? outcome_.press->sights : std::vector<Sight>()) {
            if (sight.kind == kind) {
                texts.push_back(sight.text);
            }
        }
        return texts;
    }

    void CheckBox(const std::string& what, const toml::table& wanted) {
        const Sight::Kind kind = what == "box" ? Sight::Kind::kBox : Sight::Kind::kPopup;
        for (const Sight& sight : outcome_.press ? outcome_.press->sights : std::vector<Sight>()) {
            if (sight.kind != kind) {
                continue;
            }
            if (const toml::node* title = wanted.get("title")) {
                Same(*title, what + " title", NodeText(*title), sight.box->title);
            }
            if (const toml::node* message = wanted.get("message")) {
                Same(*message, what + " message", NodeText(*message), sight.box->message);
            }
            if (const toml::node* buttons = wanted.get("buttons")) {
                SameList(*buttons, what + " buttons", NodeTexts(*buttons), sight.box->buttons);
            }
            return;
        }
        Fail(wanted, "no " + what + " was shown");
    }

    std::vector<std::string> Launched(Sight::Kind kind) const {
        std::vector<std::string> texts;
        const std::vector<vtv::Launch> launches = tv_.Launches();
        for (size_t i = outcome_.launchesBefore; i < launches.size(); ++i) {
            const Sight sight = SightOf(launches[i]);
            if (sight.kind == kind) {
                texts.push_back(sight.text);
            }
        }
        return texts;
    }

    void CheckSetting(const std::string& key, const toml::node& wanted) {
        const std::optional<vtv::Value> value = tv_.Get(key);
        Same(wanted, key, NodeText(wanted), value ? vtv::ToText(*value) : "(missing)");
    }

    void CheckRunning(const toml::node& wanted) {
        std::vector<std::string> running;
        for (const vtv::RunningApplication& one : tv_.RunningApplications()) {
            running.push_back(one.appId);
        }
        std::vector<std::string> sorted = NodeTexts(wanted);
        std::sort(sorted.begin(), sorted.end());
        std::sort(running.begin(), running.end());
        SameList(wanted, "running", sorted, running);
    }

    // Each text must be part of a record of this step, in that order.
    void CheckLog(const toml::node& wanted, bool there) {
        const std::vector<vtv::LogRecord> records = tv_.ReadLog();
        size_t at = std::min(outcome_.logBefore, records.size());
        for (const std::string& text : NodeTexts(wanted)) {
            const auto holds = [&](const vtv::LogRecord& record) {
                return (record.function + ": " + record.message).find(text) != std::string::npos;
            };
            const size_t begin = there ? at : std::min(outcome_.logBefore, records.size());
            const auto found = std::find_if(records.begin() + static_cast<std::ptrdiff_t>(begin),
                                            records.end(), holds);
            if (there && found == records.end()) {
                Fail(wanted, "the log of this step has no " + Quoted(text));
                return;
            }
            if (!there && found != records.end()) {
                Fail(wanted, "the log of this step has " + Quoted(found->message));
            }
            at = there ? static_cast<size_t>(found - records.begin()) + 1 : at;
        }
    }

    // The whole records, one after the other.
    void CheckLogRun(const toml::node& wanted) {
        std::vector<std::string> found;
        const std::vector<vtv::LogRecord> records = tv_.ReadLog();
        for (size_t i = outcome_.logBefore; i < records.size(); ++i) {
            found.push_back(records[i].function + ": " + records[i].message);
        }
        const std::vector<std::string> run = NodeTexts(wanted);
        if (std::search(found.begin(), found.end(), run.begin(), run.end()) == found.end()) {
            Fail(wanted, "the log of this step does not have these records in a row: " + List(run));
        }
    }

    void CheckTrace(const toml::node& wanted) {
        std::vector<std::string> messages;
        const std::vector<vtv::TraceEvent> events = tv_.ReadTrace();
        for (size_t i = outcome_.traceBefore; i < events.size(); ++i) {
            messages.push_back(events[i].message);
        }
        for (const std::string& text : NodeTexts(wanted)) {
            const auto holds = [&](const std::string& message) {
                return message.find(text) != std::string::npos;
            };
            if (std::none_of(messages.begin(), messages.end(), holds)) {
                Fail(wanted,
                     "the trace of this step has no " + Quoted(text) + ", but " + List(messages));
            }
        }
    }

    void CheckFiles(const toml::node& wanted) {
        const std::vector<std::string> files = tv_.OwnerFiles();
        for (const std::string& file : NodeTexts(wanted)) {
            if (std::find(files.begin(), files.end(), file) == files.end()) {
                Fail(wanted, "there is no file /home/owner/" + file);
            }
        }
    }

    std::string file_;
    const StepOutcome& outcome_;
    const vtv::Tv& tv_;
    std::vector<std::string> failures_;
};

}  // namespace

std::vector<std::string> Unmet(const std::string& file, const toml::table& step,
                               const StepOutcome& outcome, const vtv::Tv& tv) {
    return Judge(file, outcome, tv).Unmet(step);
}

}  // namespace host
