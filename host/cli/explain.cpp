// vtv explain: why an item looks as it does.
#include "host/core/explain.h"

#include <iostream>
#include <memory>

#include "json_views.h"
#include "program/text_width.h"
#include "program/visible_text.h"
#include "verbs.h"

namespace cli {

namespace {

std::string Quoted(const vtv::Read& read) {
    if (!read.value) {
        return "missing";
    }
    const bool text = std::holds_alternative<std::string>(*read.value);
    return text ? "\"" + vtv::ToText(*read.value) + "\"" : vtv::ToText(*read.value);
}

void PrintReads(const std::vector<vtv::Read>& reads, const vtv::Tv& tv) {
    for (size_t i = 0; i < reads.size(); ++i) {
        const vtv::Read& read = reads[i];
        // Rules that ask one another read the same thing again; a reader needs it once.
        if (i > 0 && read.subject == reads[i - 1].subject &&
            read.function == reads[i - 1].function && read.value == reads[i - 1].value) {
            continue;
        }
        std::cout << "  " << program::Pad(read.subject.empty() ? read.function : read.subject, 52)
                  << ' ' << program::Cut(Quoted(read), 60) << '\n'
                  << Paint(Look::kDim, "      " + host::Describe(read, tv)) << '\n';
    }
}

std::string InWords(const host::Rule& rule) {
    return std::string(rule.function) + " in " + rule.source;
}

void Print(const host::Reasons& reasons, const std::string& about, const vtv::Tv& tv) {
    std::cout << '\n'
              << Paint(Look::kNote, about + host::Heading(reasons)) << ": "
              << program::OneLine(reasons.because) << '\n';
    if (reasons.rule.function != nullptr) {
        std::cout << Paint(Look::kDim, "  rule: " + InWords(reasons.rule)) << '\n';
    }
    for (const host::Difference& difference : reasons.differences.found) {
        const std::string other = difference.answer.empty() ? "nothing" : difference.answer;
        std::cout << "  " << program::OneLine(other + " with " + host::ToText(difference)) << '\n';
    }
    PrintReads(reasons.reads, tv);
}

void Print(const host::Explanation& explanation, const vtv::Tv& tv) {
    std::cout << Paint(Look::kBold, explanation.sentence) << '\n';
    if (explanation.barrier != nullptr) {
        Print(explanation.barrierReasons, explanation.barrier->name + std::string(" is "), tv);
        std::cout << "\nThe item's own rules:\n";
    }
    for (const host::Reasons& reasons : explanation.reasons) {
        Print(reasons, "", tv);
    }
    std::cout << "\nWhere the rest is decided:\n";
    for (const host::FurtherRule& further : explanation.further) {
        std::cout << "  " << program::Pad(further.inWords, 29)
                  << Paint(Look::kDim, InWords(further.rule)) << '\n';
    }
}

}  // namespace

void AddExplain(CLI::App& app, Common& common) {
    const auto name = std::make_shared<std::string>();
    const auto with = std::make_shared<With>();
    CLI::App* verb =
        AddVerb(app, common, "explain", "Tell why an item is hidden, dimmed, or reads as it does",
                "  vtv explain voice-wake-up\n"
                "  vtv explain voice-wake-up --with account=signed-out     what if?\n"
                "  vtv explain voice-settings-google --json\n\n"
                "Each answer is followed by its reason, the rule in the provider's source, what\n"
                "would change the answer, and what was read for it, in order; last come the\n"
                "functions behind the item's texts, choices, presses and popup. Reasons are\n"
                "found by experiment: the provider is asked again with other values, of which\n"
                "nothing reaches the TV.",
                kTv | kProvider | kJson);
    verb->add_option("ITEM", *name, "The item, by name or key")->required();
    AddWith(*verb, *with);
    verb->callback([&common, name, with] {
        const host::Item& item = RequireItem(*name);
        vtv::WatchNothing();
        const Session session(common, *with);
        const host::Explanation explanation = host::Explain(session.provider, session.tv, item);
        if (common.json) {
            PrintJson(ToJson(explanation, session.tv));
        } else {
            Print(explanation, session.tv);
            PrintTried(*with);
        }
    });
}

}  // namespace cli
