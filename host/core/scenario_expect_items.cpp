// What a scenario expects of the page's items, and of the provider's answers for them.
#include "scenario_expect.h"

namespace host {

namespace {

using Texts = std::vector<std::string>;

// How an item's fact is written in a scenario.
enum class Form {
    kFlag,    // true or false
    kText,    // a text
    kTexts,   // a text or a list of texts
    kValue,   // the value of an item on the page: a number, or what it stands for
    kAnswer,  // the value that a provider answers: a number, or "none"
};

// What is expected, as texts, since that is how it is told.
struct Wanted {
    Texts texts;
    bool isNumber = false;
    bool isList = false;
};

Wanted ReadWanted(ScenarioReader& reader, const toml::node& node, const std::string& name,
                  Form form) {
    switch (form) {
        case Form::kFlag:
            return {{reader.Flag(node, name) ? "true" : "false"}};
        case Form::kText:
            return {{reader.Text(node, name)}};
        case Form::kTexts:
            return {reader.Texts(node, name), false, true};
        case Form::kValue:
        case Form::kAnswer:
            break;
    }
    if (!node.is_string()) {
        return {{std::to_string(reader.Number(node, name))}, true};
    }
    const std::string text = node.as_string()->get();
    if (form == Form::kAnswer && text != "none") {
        reader.Problem(node, "\"value\" of an answer must be a whole number, or \"none\".");
    }
    return {{text}};
}

void Hold(Judge& judge, int line, const std::string& what, const Wanted& wanted,
          const Texts& found) {
    if (wanted.isList) {
        judge.SameList(line, what, wanted.texts, found);
    } else {
        judge.Same(line, what, wanted.texts.front(), found.front());
    }
}

Texts TextsOf(const std::optional<Box>& box) {
    Texts texts;
    if (box) {
        texts = {box->title, box->message};
        texts.insert(texts.end(), box->buttons.begin(), box->buttons.end());
    }
    return texts;
}

// ---------------------------------------------------------------------------------------------
// The page: what a viewer sees of an item
// ---------------------------------------------------------------------------------------------

const char* OfFlag(bool flag) {
    return flag ? "true" : "false";
}

struct PageFact {
    const char* name;
    Form form;
    Texts (*found)(const Page& page, const ItemView& view, const Wanted& wanted);
    bool ofValueOnly = false;  // items without a value have none of it
};
constexpr PageFact kPageFacts[] = {
    {"visible", Form::kFlag,
     [](const Page& page, const ItemView& view, const Wanted&) {
         return Texts{OfFlag(page.IsReachable(*view.item))};
     }},
    {"enabled", Form::kFlag,
     [](const Page&, const ItemView& view, const Wanted&) { return Texts{OfFlag(view.enabled)}; }},
    {"value", Form::kValue,
     [](const Page&, const ItemView& view, const Wanted& wanted) {
         return Texts{wanted.isNumber ? std::to_string(view.value.value_or(-1)) : view.ValueText()};
     },
     true},
    {"title", Form::kText,
     [](const Page&, const ItemView& view, const Wanted&) {
         return Texts{view.title.value_or("")};
     }},
    {"help", Form::kText,
     [](const Page&, const ItemView& view, const Wanted&) {
         return Texts{view.help.value_or("")};
     }},
    {"reason", Form::kText,
     [](const Page&, const ItemView& view, const Wanted&) {
         return Texts{view.disableText.value_or("")};
     }},
    {"popup", Form::kText,
     [](const Page&, const ItemView& view, const Wanted&) {
         return Texts{view.disablePopup ? view.disablePopup->title : ""};
     }},
    {"choices", Form::kTexts,
     [](const Page&, const ItemView& view, const Wanted&) {
         Texts texts;
         for (const Choice& choice : view.choices) {
             texts.push_back(choice.text);
         }
         return texts;
     },
     true},
};

Expectation ReadItemState(ScenarioReader& reader, const toml::node& node, const Item* item) {
    const std::string state = node.is_string() ? node.as_string()->get() : "";
    if (state != "hidden" && state != "dimmed" && state != "enabled") {
        reader.Problem(node, "an item is \"hidden\", \"dimmed\", \"enabled\", or a table." +
                                 DidYouMean(state, {"hidden", "dimmed", "enabled"}));
    }
    return [item, state, line = LineOf(node)](Judge& judge) {
        const Page& page = judge.Outcome().page;
        const char* found = !page.IsReachable(*item)   ? "hidden"
                            : page[item->name].enabled ? "enabled"
                                                       : "dimmed";
        judge.Same(line, item->name, state, found);
    };
}

Expectation ReadFact(ScenarioReader& reader, const toml::node& node, const Item* item,
                     const PageFact& fact) {
    if (fact.ofValueOnly && item != nullptr && !HasValue(*item)) {
        reader.Problem(node, item->name + std::string(" has no ") + fact.name +
                                 ": leave it out, or expect its \"title\" or \"enabled\".");
        return nullptr;
    }
    const Wanted wanted = ReadWanted(reader, node, fact.name, fact.form);
    return [item, wanted, found = fact.found, name = std::string(fact.name),
            line = LineOf(node)](Judge& judge) {
        const Page& page = judge.Outcome().page;
        Hold(judge, line, item->name + (" " + name), wanted, found(page, page[item->name], wanted));
    };
}

// ---------------------------------------------------------------------------------------------
// Answers: what the provider says of an item, wherever the item lies
// ---------------------------------------------------------------------------------------------

struct AnswerFact {
    const char* name;
    Form form;
    Texts (*found)(const Provider& provider, const char* key);
    bool byId = false;  // may be told by the ids of texts
};
constexpr AnswerFact kAnswerFacts[] = {
    {"visible", Form::kFlag,
     [](const Provider& provider, const char* key) {
         return Texts{OfFlag(provider.IsVisible(key))};
     }},
    {"enabled", Form::kFlag,
     [](const Provider& provider, const char* key) {
         return Texts{OfFlag(provider.IsEnabled(key))};
     }},
    {"value", Form::kAnswer,
     [](const Provider& provider, const char* key) {
         const std::optional<int> value = provider.GetInt(key);
         return Texts{value ? std::to_string(*value) : "none"};
     }},
    {"title", Form::kText,
     [](const Provider& provider, const char* key) {
         return Texts{provider.Title(key).value_or("")};
     },
     true},
    {"help", Form::kText,
     [](const Provider& provider, const char* key) {
         return Texts{provider.Help(key).value_or("")};
     },
     true},
    {"reason", Form::kText,
     [](const Provider& provider, const char* key) {
         return Texts{provider.DisableText(key).value_or("")};
     },
     true},
    {"choices", Form::kTexts,
     [](const Provider& provider, const char* key) {
         Texts texts;
         for (const Choice& choice : provider.Choices(key)) {
             texts.push_back(std::to_string(choice.value) + ": " + choice.text);
         }
         return texts;
     },
     true},
    {"box", Form::kTexts,
     [](const Provider& provider, const char* key) { return TextsOf(provider.Confirmation(key)); },
     true},
    {"popup", Form::kTexts,
     [](const Provider& provider, const char* key) { return TextsOf(provider.DisablePopup(key)); },
     true},
};

Expectation ReadFact(ScenarioReader& reader, const toml::node& node, const Item* item,
                     const AnswerFact& fact) {
    const Wanted wanted = ReadWanted(reader, node, fact.name, fact.form);
    return [item, wanted, fact, line = LineOf(node)](Judge& judge) {
        Wanted shown = wanted;
        if (fact.byId) {
            shown.texts = InWords(shown.texts);
        }
        Hold(judge, line, std::string("answer for ") + item->name + " " + fact.name, shown,
             fact.found(*judge.Outcome().provider, item->key));
    };
}

template <typename Facts>
void ReadFacts(ScenarioReader& reader, const toml::table& table, const std::string& where,
               const Item* item, const Facts& facts, std::vector<Expectation>* all) {
    reader.Members(table, where, facts, [&](const auto& fact, const toml::node& value) {
        all->push_back(ReadFact(reader, value, item, fact));
    });
}

}  // namespace

Expectation ReadPageExpectation(ScenarioReader& reader, const toml::node& node) {
    std::vector<Expectation> all;
    for (const auto& [key, value] : reader.Table(node, "page")) {
        const std::string name(key.str());
        const Item* item = reader.ItemNamed(key.source(), name);
        if (value.is_table()) {
            ReadFacts(reader, reader.Table(value, name), "an item", item, kPageFacts, &all);
        } else {
            all.push_back(ReadItemState(reader, value, item));
        }
    }
    return Together(std::move(all));
}

Expectation ReadAnswerExpectation(ScenarioReader& reader, const toml::node& node) {
    std::vector<Expectation> all;
    for (const auto& [key, value] : reader.Table(node, "answer")) {
        const std::string name(key.str());
        const Item* item = reader.ItemNamed(key.source(), name);
        ReadFacts(reader, reader.Table(value, name), "an answer", item, kAnswerFacts, &all);
    }
    return Together(std::move(all));
}

}  // namespace host
