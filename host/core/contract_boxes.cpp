// Confirmations and popups, written into buffers of the host's.
#include <cstring>

#include "contract_subject.h"

namespace host {

namespace {

constexpr size_t kTitle = 3;   // of a confirmation
constexpr size_t kFirst = 2;   // button of a popup
constexpr size_t kAction = 4;  // of a popup

using AskBuffers = void (BoxBuffers::*)(const Subject&, const char*);

// Whatever stands in the buffers, the same is written, or nothing.
void RequireReplaced(const Subject& subject, const Item& item, AskBuffers ask) {
    BoxBuffers one("before", -7);
    BoxBuffers two("something else", -8);
    (one.*ask)(subject, item.key);
    (two.*ask)(subject, item.key);
    for (size_t i = 0; i < one.text.size(); ++i) {
        const std::string first = one.Text(i);
        const std::string second = two.Text(i);
        Require(first == second || (first == "before" && second == "something else"),
                std::string(item.name) + ": \"before\" becomes \"" + first.substr(0, 60) +
                    "\", and \"something else\" \"" + second.substr(0, 60) + "\"");
    }
    Require(one.count == two.count || (one.count == -7 && two.count == -8),
            std::string(item.name) + ": the number of buttons depends on what stood there");
}

void BoxSlotsReturnZero(const std::string& file) {
    const Subject subject(file);
    std::vector<std::string> keys = StrangeKeys();
    for (const std::string& key : PageKeys()) {
        keys.push_back(key);
    }
    for (const std::string& key : keys) {
        BoxBuffers b;
        const std::string otherwise = " of " + QuotedKey(key) + " does not return 0";
        Require(subject.table->get_messagebox_info(key.c_str(), b[0], b[1], b[2], &b.count) == 0,
                "get_messagebox_info()" + otherwise);
        Require(subject.table->get_messagebox_title(key.c_str(), b[3]) == 0,
                "get_messagebox_title()" + otherwise);
        Require(subject.table->get_disablepopup_info(key.c_str(), b[0], b[1], b[2], b[3], &b.count,
                                                     b[4]) == 0,
                "get_disablepopup_info()" + otherwise);
    }
}

void BoxesAreTerminated(const std::string& file) {
    const Subject subject(file);
    BoxBuffers buffers;
    buffers.AskBox(subject, kAssistantKey);
    for (const size_t i : {size_t{0}, size_t{1}, kTitle}) {
        Require(!buffers.Text(i).empty(), "a text of the box is empty");
    }
}

void BoxesHaveButtons(const std::string& file) {
    const Subject subject(file);
    for (const Item& item : PageItems()) {
        BoxBuffers buffers;
        buffers.AskBox(subject, item.key);
        if (buffers.Untouched()) {
            continue;
        }
        Require(buffers.count == 1 || buffers.count == 2,
                std::string(item.name) + ": the confirmation has " + std::to_string(buffers.count) +
                    " buttons");
        Require(!buffers.Text(1).empty() && (buffers.count == 1 || !buffers.Text(2).empty()),
                std::string(item.name) + ": a button of the confirmation has no text");
    }
}

void BoxesReplace(const std::string& file) {
    const Subject subject(file);
    for (const Item& item : PageItems()) {
        RequireReplaced(subject, item, &BoxBuffers::AskBox);
    }
}

void BoxesEndWithText(const std::string& file) {
    const Subject subject(file);
    for (const Item& item : PageItems()) {
        BoxBuffers buffers;
        buffers.AskBox(subject, item.key);
        buffers.RequireNothingBehindTexts(std::string(item.name) + ": the confirmation");
    }
}

void TitlesHaveBoxes(const std::string& file) {
    const Subject subject(file);
    for (const Item& item : PageItems()) {
        BoxBuffers buffers;
        buffers.AskBox(subject, item.key);
        Require(buffers.Text(kTitle).empty() == buffers.Text(0).empty(),
                std::string(item.name) + ": a confirmation has a title and a text, or neither");
    }
}

void PopupsAct(const std::string& file) {
    const Subject subject(file);
    int popups = 0;
    for (const Item& item : PageItems()) {
        BoxBuffers buffers;
        buffers.AskPopup(subject, item.key);
        if (buffers.Untouched()) {
            continue;
        }
        ++popups;
        Require(buffers.Text(kAction) == SI_ACTION_TEXT,
                std::string(item.name) + ": the action is \"" +
                    buffers.Text(kAction).substr(0, 20) + "\", not " + SI_ACTION_TEXT);
    }
    Require(popups > 0, "no item offers a popup");
}

void PopupsAreWhole(const std::string& file) {
    const Subject subject(file);
    for (const Item& item : PageItems()) {
        BoxBuffers buffers;
        buffers.AskPopup(subject, item.key);
        if (buffers.Untouched()) {
            continue;
        }
        const std::string popup = std::string(item.name) + ": the popup has ";
        Require(!buffers.Text(0).empty() && !buffers.Text(1).empty(), popup + "no text or title");
        Require(buffers.count == 1 || buffers.count == 2,
                popup + std::to_string(buffers.count) + " buttons");
        Require(!buffers.Text(kFirst).empty(), popup + "no first button");
        Require(buffers.Text(kFirst + 1).empty() == (buffers.count == 1),
                popup + "a text for another number of buttons than it counts");
    }
}

void PopupsReplace(const std::string& file) {
    const Subject subject(file);
    for (const Item& item : PageItems()) {
        RequireReplaced(subject, item, &BoxBuffers::AskPopup);
    }
}

void PopupsEndWithText(const std::string& file) {
    const Subject subject(file);
    for (const Item& item : PageItems()) {
        BoxBuffers buffers;
        buffers.AskPopup(subject, item.key);
        buffers.RequireNothingBehindTexts(std::string(item.name) + ": the popup");
    }
}

void ActionsTakeFiveBytes(const std::string& file) {
    const Subject subject(file);
    for (const Item& item : PageItems()) {
        BoxBuffers buffers;
        char action[16];
        std::memset(action, '#', sizeof action);
        action[0] = '\0';
        subject.table->get_disablepopup_info(item.key, buffers[0], buffers[1], buffers[2],
                                             buffers[3], &buffers.count, action);
        Require(std::string(action + 5, sizeof action - 5) == std::string(sizeof action - 5, '#'),
                std::string(item.name) + ": more than five bytes of the action are written");
    }
}

void BoxesNotLeaked(const std::string& file) {
    const Subject subject(file);
    BoxBuffers buffers;
    for (const Item& item : PageItems()) {
        RequireNoGrowth(std::string(item.name) + ": the confirmation and the popup", [&] {
            buffers.AskBox(subject, item.key);
            buffers.AskPopup(subject, item.key);
        });
    }
}

}  // namespace

std::vector<ContractCheck> BoxChecks() {
    return {
        {"box-slots-return-0", "The slots of boxes return 0, whatever the key.",
         BoxSlotsReturnZero},
        {"boxes-are-terminated", "The confirmation of the assistant has texts, and they end.",
         BoxesAreTerminated},
        {"boxes-have-buttons", "A confirmation has one or two buttons, each with a text.",
         BoxesHaveButtons},
        {"boxes-replace-what-was-there",
         "A confirmation does not depend on what stood in the host's buffers.", BoxesReplace},
        {"boxes-end-with-their-text",
         "A confirmation writes no byte behind the end of a text of its own.", BoxesEndWithText},
        {"box-titles-have-boxes", "A confirmation has a title and a text, or neither.",
         TitlesHaveBoxes},
        {"popups-act", "Some item offers a popup, and each popup's action is 9999.", PopupsAct},
        {"popups-are-whole", "A popup has a text, a title, and as many buttons as it counts.",
         PopupsAreWhole},
        {"popups-replace-what-was-there",
         "A popup does not depend on what stood in the host's buffers.", PopupsReplace},
        {"popups-end-with-their-text",
         "A popup writes no byte behind the end of a text of its own.", PopupsEndWithText},
        {"actions-take-five-bytes", "The action of a popup takes five bytes.",
         ActionsTakeFiveBytes},
        {"boxes-are-not-leaked", "Confirmations and popups leave nothing behind on the heap.",
         BoxesNotLeaked},
    };
}

}  // namespace host
