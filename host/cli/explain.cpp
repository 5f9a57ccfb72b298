// vtv explain: why an item looks as it does.
#include "host/core/explain.h"

#include <iostream>
#include <memory>

#include "json_views.h"
#include "text_width.h"
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

void Print(const host::Explanation& explanation, const vtv::Tv& tv) {
    std::cout << Paint(Look::kBold, explanation.sentence) << '\n';
    for (const host::Reasons& reasons : explanation.reasons) {
        const std::string title =
            reasons.question == "value" ? "reads " + reasons.answer : reasons.answer;
        std::cout << '\n' << Paint(Look::kNote, title) << ": " << reasons.because << '\n';
        for (size_t i = 0; i < reasons.reads.size(); ++i) {
            const vtv::Read& read = reasons.reads[i];
            // Rules that ask one another read the same thing again; a reader needs it once.
            if (i > 0 && read.subject == reasons.reads[i - 1].subject &&
                read.function == reasons.reads[i - 1].function &&
                read.value == reasons.reads[i - 1].value) {
                continue;
            }
            std::cout << "  " << Pad(read.subject.empty() ? read.function : read.subject, 52) << ' '
                      << Cut(Quoted(read), 60) << '\n'
                      << Paint(Look::kDim, "      " + host::Describe(read, tv)) << '\n';
        }
    }
}

}  // namespace

void AddExplain(CLI::App& app, Common& common) {
    const auto name = std::make_shared<std::string>();
    CLI::App* verb =
        AddVerb(app, common, "explain", "Tell why an item is hidden, dimmed, or reads as it does",
                "  vtv explain voice-wake-up\n"
                "  vtv explain voice-settings-google --json\n\n"
                "Each answer is followed by what was read for it, in order; the last read\n"
                "settled it.",
                kTv | kProvider | kJson);
    verb->add_option("ITEM", *name, "The item, by name or key")->required();
    verb->callback([&common, name] {
        const host::Item& item = RequireItem(*name);
        const Session session(common);
        const host::Explanation explanation = host::Explain(session.provider, session.tv, item);
        if (common.json) {
            PrintJson(ToJson(explanation));
        } else {
            Print(explanation, session.tv);
        }
    });
}

}  // namespace cli
