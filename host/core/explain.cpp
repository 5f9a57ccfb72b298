#include "explain.h"

#include <algorithm>

#include "program/counted.h"

namespace host {

namespace {

constexpr size_t kMostWays = 3;  // that a sentence names

std::string Joined(const std::vector<std::string>& parts, const char* last) {
    std::string text;
    for (size_t i = 0; i < parts.size(); ++i) {
        text += (i == 0 ? "" : i + 1 == parts.size() ? last : ", ") + parts[i];
    }
    return text;
}

bool WasRead(const std::vector<vtv::Read>& reads, const vtv::Read& read) {
    return std::any_of(reads.begin(), reads.end(), [&](const vtv::Read& one) {
        return one.function == read.function && one.subject == read.subject;
    });
}

// What is so now, of all that would have to be otherwise. What the provider has not come to look at
// is no reason yet.
std::vector<std::string> Present(const Reasons& reasons) {
    std::vector<std::string> seen;
    std::vector<std::string> all;
    const auto add = [](const std::string& text, std::vector<std::string>* texts) {
        if (std::find(texts->begin(), texts->end(), text) == texts->end()) {
            texts->push_back(text);
        }
    };
    for (const Difference& difference : reasons.differences.found) {
        for (const Supposition& supposition : difference.suppositions) {
            add(supposition.now, &all);
            if (supposition.mends || WasRead(reasons.reads, supposition.read) ||
                difference.suppositions.size() == 1) {
                add(supposition.now, &seen);
            }
        }
    }
    return seen.empty() ? all : seen;
}

// "it would show with consent tnc, or with the feature x=1"; empty where the answer is no lack.
std::string WhatItWouldTake(const Reasons& reasons) {
    std::string would;
    if (reasons.question == "visible" && reasons.answer == "hidden") {
        would = "it would show with ";
    } else if (reasons.question == "enabled" && reasons.answer == "dimmed") {
        would = "it would be enabled with ";
    } else if (reasons.question == "value" && reasons.answer == "off") {
        would = "it would be on with ";
    } else {
        return "";
    }
    std::vector<std::string> ways;
    for (const Difference& difference : reasons.differences.found) {
        if (reasons.question != "value" || difference.answer == "on") {
            ways.push_back(ToText(difference));
        }
    }
    const size_t more = ways.size() > kMostWays ? ways.size() - kMostWays : 0;
    ways.resize(ways.size() - more);
    if (ways.empty()) {
        return "";
    }
    return "; " + would + Joined(ways, ", or with ") +
           (more > 0 ? ", or in " + program::Counted(more, "other way") : "");
}

std::string NothingFound(const Reasons& reasons) {
    const Differences& differences = reasons.differences;
    if (differences.otherAnswer) {
        return "asked again it is " + *differences.otherAnswer +
               ": what it reads was changed meanwhile, or failed for once";
    }
    if (reasons.reads.empty()) {
        return "always so: nothing is read for it, and no policy that was tried changes it";
    }
    return "nothing that was tried changes it: all known values of what it reads, up to " +
           std::to_string(differences.tried) + " at a time";
}

std::string Because(const Reasons& reasons) {
    if (reasons.differences.found.empty()) {
        return NothingFound(reasons);
    }
    return Joined(Present(reasons), " and ") + WhatItWouldTake(reasons);
}

class Asker {
  public:
    Asker(const Provider& provider, const vtv::Tv& tv) : whatIf_(provider, tv) {}

    Reasons Ask(const Item& item, const std::string& name, const WhatIf::Question& question) {
        const Reply answer = whatIf_.Ask(question);
        Reasons reasons;
        reasons.question = name;
        reasons.answer = answer.text;
        reasons.rule = RuleOf(item, name);
        reasons.reads = answer.reads;
        reasons.differences = whatIf_.Find(question, answer);
        reasons.because = Because(reasons);
        return reasons;
    }

    Reasons Visible(const Item& item) {
        return Ask(item, "visible", [&item](const Provider& provider) {
            return provider.IsVisible(item.key) ? "shown" : "hidden";
        });
    }

    Reasons Enabled(const Item& item) {
        return Ask(item, "enabled", [&item](const Provider& provider) {
            return provider.IsEnabled(item.key) ? "enabled" : "dimmed";
        });
    }

    Reasons Value(const Item& item) {
        return Ask(item, "value", [&item](const Provider& provider) {
            ItemView view;
            view.item = &item;
            view.value = provider.GetInt(item.key);
            if (item.kind == ItemKind::kList) {
                view.choices = provider.Choices(item.key);
            }
            return view.ValueText();
        });
    }

    // What a viewer is told who selects the dimmed item: the reason, or the popup's message.
    Reasons DimmedReason(const ItemView& view) {
        const Item& item = *view.item;
        Reasons reasons = Ask(item, "reason", [&item](const Provider& asked) {
            const std::optional<Box> popup = asked.DisablePopup(item.key);
            return asked.DisableText(item.key).value_or(popup ? popup->message : "");
        });
        if (!view.disableText && !reasons.answer.empty()) {
            reasons.rule = RuleOf(item, "popup");
        }
        return reasons;
    }

  private:
    WhatIf whatIf_;
};

// "shown: ...", to stand behind "Voice is ".
std::string State(const Reasons& reasons) {
    return reasons.answer + ": " + reasons.because;
}

// The outermost thing that the item cannot be reached without, other than itself.
const Item* BarrierOf(const Page& page, const Item& item) {
    const ItemView* hidden = page.FirstHidden(item);
    if (hidden != nullptr) {
        return hidden->item != &item ? hidden->item : nullptr;
    }
    return page.IsReachable(item) ? nullptr : page.items.front().item;
}

std::string NameOf(const Page& page, const Item& barrier) {
    return barrier.kind == ItemKind::kPage ? std::string("the page itself")
                                           : page[barrier.name].Label() + " (" + barrier.name + ")";
}

std::string SentenceOf(const Page& page, const Explanation& explanation) {
    const std::string label = explanation.view.Label();
    if (explanation.barrier != nullptr) {
        const bool hidden = !page.IsShown(*explanation.item);
        return label + (hidden ? " is not on the page: " : " cannot be reached: ") +
               NameOf(page, *explanation.barrier) + " is " + explanation.barrierReasons.answer +
               " because " + explanation.barrierReasons.because;
    }
    const ItemView& view = explanation.view;
    const Reasons& visible = explanation.reasons[0];
    const Reasons& enabled = explanation.reasons[1];
    const bool hasValue = HasValue(*explanation.item);
    const Reasons& decisive = !view.visible                ? visible
                              : !view.enabled || !hasValue ? enabled
                                                           : explanation.reasons[2];
    if (view.visible && view.enabled && !hasValue) {
        return label + " is shown and " + State(decisive);
    }
    return label + " is " + State(decisive);
}

}  // namespace

std::string Heading(const Reasons& reasons) {
    if (reasons.question == "value") {
        return "reads " + reasons.answer;
    }
    if (reasons.question == "reason") {
        return "tells the viewer " +
               (reasons.answer.empty() ? std::string("nothing") : '"' + reasons.answer + '"');
    }
    return reasons.answer;
}

std::string ToText(const Difference& difference) {
    static const std::string kConsent = "consent ";
    std::vector<std::string> parts;
    for (const Supposition& supposition : difference.suppositions) {
        // "consent tnc and pp" and not "consent tnc and consent pp"
        const bool again = !parts.empty() && parts.back().rfind(kConsent, 0) == 0 &&
                           supposition.then.rfind(kConsent, 0) == 0;
        if (again) {
            parts.back() += " and " + supposition.then.substr(kConsent.size());
        } else {
            parts.push_back(supposition.then);
        }
    }
    return Joined(parts, " and ");
}

Explanation Explain(const Provider& provider, const vtv::Tv& tv, const Item& item) {
    const Page page = LookAtPage(provider);
    Asker asker(provider, tv);
    Explanation explanation;
    explanation.item = &item;
    explanation.view = page[item.name];
    explanation.reachable = page.IsReachable(item);
    explanation.barrier = BarrierOf(page, item);
    if (explanation.barrier != nullptr) {
        const Item& barrier = *explanation.barrier;
        explanation.barrierReasons =
            page[barrier.name].visible ? asker.Enabled(barrier) : asker.Visible(barrier);
    }
    explanation.reasons.push_back(asker.Visible(item));
    explanation.reasons.push_back(asker.Enabled(item));
    if (HasValue(item)) {
        explanation.reasons.push_back(asker.Value(item));
    }
    if (!explanation.view.enabled) {
        explanation.reasons.push_back(asker.DimmedReason(explanation.view));
    }
    explanation.further = FurtherRulesOf(item);
    explanation.sentence = SentenceOf(page, explanation);
    return explanation;
}

}  // namespace host
